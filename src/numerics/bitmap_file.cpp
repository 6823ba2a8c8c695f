#include "numerics/bitmap_file.h"

#include "platform/quiet_tiff.h"
#include "platform/safe_file.h"

namespace zemora {

std::string encode_and_write(FIBITMAP* picture, FREE_IMAGE_FORMAT format, int flags,
                             const std::string& path) {
    struct MemoryStream {
        FIMEMORY* handle = FreeImage_OpenMemory(nullptr, 0);
        MemoryStream() = default;
        MemoryStream(const MemoryStream&) = delete;
        MemoryStream& operator=(const MemoryStream&) = delete;
        ~MemoryStream() { FreeImage_CloseMemory(handle); }
    } stream;
    BYTE* bytes = nullptr;
    DWORD size = 0;
    silence_tiff_library();
    if (stream.handle == nullptr || FreeImage_SaveToMemory(format, picture, stream.handle, flags) == FALSE ||
        FreeImage_AcquireMemory(stream.handle, &bytes, &size) == FALSE || size == 0) {
        return "the picture cannot be encoded";
    }
    return write_file_whole(path, {bytes, size});
}

}  // namespace zemora
