#include "numerics/bitmap_file.h"

#include <mutex>

#include "platform/quiet_tiff.h"
#include "platform/safe_file.h"

namespace zemora {

EncodedPicture::EncodedPicture(FIBITMAP* picture, FREE_IMAGE_FORMAT format, int flags)
    : stream_(FreeImage_OpenMemory(nullptr, 0)) {
    BYTE* bytes = nullptr;
    DWORD size = 0;
    silence_tiff_library();
    if (stream_ != nullptr && FreeImage_SaveToMemory(format, picture, stream_.get(), flags) != FALSE &&
        FreeImage_AcquireMemory(stream_.get(), &bytes, &size) != FALSE) {
        bytes_ = {bytes, size};
    }
}

FREE_IMAGE_FORMAT format_of_name(const std::string& path) {
    static std::mutex one_at_a_time;
    const std::lock_guard lock(one_at_a_time);
    return FreeImage_GetFIFFromFilename(path.c_str());
}

std::string encode_and_write(FIBITMAP* picture, FREE_IMAGE_FORMAT format, int flags,
                             const std::string& path) {
    const EncodedPicture file(picture, format, flags);
    return file.bytes().empty() ? "the picture cannot be encoded" : write_file_whole(path, file.bytes());
}

}  // namespace zemora
