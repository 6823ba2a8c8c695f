#include "codec/decode.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "codec/library.h"
#include "platform/quiet_tiff.h"

namespace zemora {

namespace {

/// What the library says while it works on this thread.
thread_local std::string t_library_message;
constexpr char kMessageEnd = '\n';
constexpr std::size_t kLongestMessage = 2000;  // characters; a broken file may bring thousands of lines

void keep_library_message(FREE_IMAGE_FORMAT /*format*/, const char* message) {
    if (t_library_message.size() < kLongestMessage) {
        t_library_message += std::string(message) + kMessageEnd;
    }
}

/// The library has one way for its messages, which is set once for the process.
void listen_to_library() {
    [[maybe_unused]] static const bool set = [] {
        FreeImage_SetOutputMessage(keep_library_message);
        silence_tiff_library();
        return true;
    }();
}

/// The content of a file as the library reads it.
class LibraryStream {
public:
    explicit LibraryStream(std::span<const std::uint8_t> bytes) : bytes_(bytes) { listen_to_library(); }
    [[nodiscard]] bool ran_out() const { return ran_out_; }
    [[nodiscard]] FREE_IMAGE_FORMAT type() { return FreeImage_GetFileTypeFromHandle(&io_, this, 0); }
    [[nodiscard]] Bitmap load(PictureFormat format, int flags) {
        return LibraryBitmap::owner(FreeImage_LoadFromHandle(library_format(format), &io_, this, flags));
    }

private:
    static unsigned DLL_CALLCONV read(void* buffer, unsigned size, unsigned count, fi_handle handle) {
        auto& stream = *static_cast<LibraryStream*>(handle);
        const std::size_t start = std::min(stream.position_, stream.bytes_.size());
        const std::size_t wanted = std::size_t{size} * count;
        const std::size_t given = std::min(wanted, stream.bytes_.size() - start);
        stream.ran_out_ = stream.ran_out_ || given < wanted;
        std::memcpy(buffer, stream.bytes_.data() + start, given);
        stream.position_ = start + given;
        return static_cast<unsigned>(size == 0 ? 0 : given / size);
    }
    static unsigned DLL_CALLCONV write(void*, unsigned, unsigned, fi_handle) { return 0; }
    static int DLL_CALLCONV seek(fi_handle handle, long offset, int origin) {
        auto& stream = *static_cast<LibraryStream*>(handle);
        const auto size = static_cast<long>(stream.bytes_.size());
        const long base =
            origin == SEEK_END ? size : (origin == SEEK_CUR ? static_cast<long>(stream.position_) : 0);
        if (base + offset < 0) {
            return -1;
        }
        stream.position_ = static_cast<std::size_t>(base + offset);
        return 0;
    }
    static long DLL_CALLCONV tell(fi_handle handle) {
        return static_cast<long>(static_cast<LibraryStream*>(handle)->position_);
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t position_ = 0;
    bool ran_out_ = false;
    FreeImageIO io_{read, write, seek, tell};
};

/// The header as a bitmap without pixels; empty where the format has none for itself.
Bitmap load_header(std::span<const std::uint8_t> content, PictureFormat format) {
    return FreeImage_FIFSupportsNoPixels(library_format(format)) == FALSE
               ? Bitmap()
               : LibraryStream(content).load(format, FIF_LOAD_NOPIXELS);
}

/// How the library is to decode a format.
int flags_of(PictureFormat format) {
    if (format == PictureFormat::jpeg) {
        return JPEG_ACCURATE;  // the fast transform tints the picture green
    }
    return format == PictureFormat::raw ? RAW_DISPLAY : 0;  // as a camera would show it, not linear light
}

}  // namespace

PictureFormat format_of_file(std::span<const std::uint8_t> content, const std::string& path) {
    const FREE_IMAGE_FORMAT by_content = LibraryStream(content).type();
    return by_content != FIF_UNKNOWN ? format_of_library(by_content) : format_of_name(path);
}

PictureSize size_in_header(std::span<const std::uint8_t> content, PictureFormat format) {
    const Bitmap header = load_header(content, format);
    return {header.width(), header.height()};
}

std::string exif_text(std::span<const std::uint8_t> content, PictureFormat format, const char* tag_name) {
    const Bitmap header = load_header(content, format);
    FITAG* tag = nullptr;
    const auto has_tag = [&](FREE_IMAGE_MDMODEL model) {
        return FreeImage_GetMetadata(model, LibraryBitmap::of(header), tag_name, &tag) != FALSE;
    };
    if (!header || (!has_tag(FIMD_EXIF_EXIF) && !has_tag(FIMD_EXIF_MAIN)) ||
        FreeImage_GetTagType(tag) != FIDT_ASCII) {
        return {};
    }
    const auto* text = static_cast<const char*>(FreeImage_GetTagValue(tag));
    return text == nullptr ? std::string() : std::string(text, FreeImage_GetTagLength(tag));
}

DecodedPicture decode(std::span<const std::uint8_t> content, PictureFormat format) {
    LibraryStream stream(content);
    t_library_message.clear();
    DecodedPicture decoded;
    decoded.bitmap = stream.load(format, flags_of(format));
    if (decoded.bitmap && FreeImage_HasPixels(LibraryBitmap::of(decoded.bitmap)) == FALSE) {
        decoded.bitmap.reset();
    }
    decoded.messages = std::exchange(t_library_message, {});
    decoded.ran_out = stream.ran_out();
    return decoded;
}

}  // namespace zemora
