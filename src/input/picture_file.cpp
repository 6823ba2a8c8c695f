#include "input/picture_file.h"

#include <FreeImage.h>

#include <array>
#include <algorithm>
#include <utility>
#include <vector>

#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

/// The largest picture that is loaded: rows of it fit into 32-bit sizes with room to spare.
constexpr unsigned kLargestLoadedSide = 65500;      // pixels
constexpr double kLargestLoadedPicture = 6.0e8;     // pixels; 1.8 GB

/// Formats of the image library that hold up against broken files.
struct FormatRow {
    FREE_IMAGE_FORMAT library;
    PictureFormat format;
};
constexpr std::array kFormats{
    FormatRow{FIF_BMP, PictureFormat::bmp},       FormatRow{FIF_JPEG, PictureFormat::jpeg},
    FormatRow{FIF_PNG, PictureFormat::png},       FormatRow{FIF_TIFF, PictureFormat::tiff},
    FormatRow{FIF_TARGA, PictureFormat::targa},   FormatRow{FIF_GIF, PictureFormat::gif},
    FormatRow{FIF_PPM, PictureFormat::ppm},       FormatRow{FIF_PPMRAW, PictureFormat::ppm},
    FormatRow{FIF_PGM, PictureFormat::ppm},       FormatRow{FIF_PGMRAW, PictureFormat::ppm},
    FormatRow{FIF_PBM, PictureFormat::ppm},       FormatRow{FIF_PBMRAW, PictureFormat::ppm},
    FormatRow{FIF_RAW, PictureFormat::raw},
};

PictureFormat allowed(FREE_IMAGE_FORMAT library) {
    for (const FormatRow& row : kFormats) {
        if (row.library == library) {
            return row.format;
        }
    }
    return PictureFormat::unknown;
}

/// What the image library says while it works on this thread.
thread_local std::string t_library_message;

void keep_library_message(FREE_IMAGE_FORMAT /*format*/, const char* message) {
    if (t_library_message.empty()) {
        t_library_message = message;
    }
}

/// The image library's message road, set once for the process.
void listen_to_library() {
    [[maybe_unused]] static const bool set = [] {
        FreeImage_SetOutputMessage(keep_library_message);
        return true;
    }();
}

/// A block of memory as the image library reads it.
class LibraryMemory {
public:
    explicit LibraryMemory(std::span<const std::uint8_t> bytes)
        : memory_(FreeImage_OpenMemory(const_cast<std::uint8_t*>(bytes.data()),  // NOLINT: read only
                                       static_cast<DWORD>(bytes.size()))) {}
    LibraryMemory(const LibraryMemory&) = delete;
    LibraryMemory& operator=(const LibraryMemory&) = delete;
    ~LibraryMemory() { FreeImage_CloseMemory(memory_); }
    [[nodiscard]] FIMEMORY* get() const { return memory_; }
    void rewind() { FreeImage_SeekMemory(memory_, 0, SEEK_SET); }

private:
    FIMEMORY* memory_;
};

FREE_IMAGE_FORMAT library_format(std::span<const std::uint8_t> content, const std::string& path) {
    listen_to_library();
    const LibraryMemory memory(content);
    const FREE_IMAGE_FORMAT by_content = FreeImage_GetFileTypeFromMemory(memory.get(), 0);
    return by_content != FIF_UNKNOWN ? by_content : FreeImage_GetFIFFromFilename(path.c_str());
}

/// A message of the library that means that pixels are missing or wrong.
bool tells_damage(const std::string& message, PictureFormat format) {
    if (message.empty()) {
        return false;
    }
    static constexpr std::array kSigns{"Premature end", "premature end", "Corrupt JPEG", "truncated",
                                       "Truncated", "Read Error", "not enough", "Not enough"};
    const bool sign = std::any_of(kSigns.begin(), kSigns.end(), [&](const char* text) {
        return message.find(text) != std::string::npos;
    });
    // Extraneous bytes before a marker leave the picture whole.
    return sign && !(format == PictureFormat::jpeg && message.find("extraneous bytes") != std::string::npos);
}

LoadedPicture failed(LoadStatus status, std::string reason) {
    LoadedPicture picture;
    picture.status = status;
    picture.reason = std::move(reason);
    return picture;
}

bool is_too_large(const Bitmap& header) {
    const auto width = static_cast<unsigned>(header.width());
    const auto height = static_cast<unsigned>(header.height());
    return width > kLargestLoadedSide || height > kLargestLoadedSide ||
           static_cast<double>(width) * height > kLargestLoadedPicture;
}

/// Looks at the header alone, so that a false size does not cost its memory.
bool header_is_too_large(LibraryMemory& memory, FREE_IMAGE_FORMAT format) {
    if (FreeImage_FIFSupportsNoPixels(format) == FALSE) {
        return false;
    }
    const Bitmap header(FreeImage_LoadFromMemory(format, memory.get(), FIF_LOAD_NOPIXELS));
    memory.rewind();
    return header && is_too_large(header);
}

bool library_loads(FREE_IMAGE_FORMAT format, LibraryMemory& memory, Bitmap& bitmap) {
    bitmap = Bitmap(FreeImage_LoadFromMemory(format, memory.get(), 0));
    return static_cast<bool>(bitmap) && FreeImage_HasPixels(bitmap.handle()) != FALSE;
}

}  // namespace

PictureFormat picture_format_of(std::span<const std::uint8_t> content, const std::string& path) {
    return allowed(library_format(content, path));
}

LoadedPicture load_picture(const std::string& path, bool keep_depth) {
    std::string reason;
    const auto content = read_file_whole(path, reason);
    if (!content) {
        return failed(LoadStatus::unreadable, reason);
    }
    if (content->empty()) {
        return failed(LoadStatus::unreadable, "the file is empty");
    }
    if (content->size() > UINT32_MAX) {
        return failed(LoadStatus::unreadable, "the file is too large");
    }
    const FREE_IMAGE_FORMAT format = library_format(*content, path);
    const PictureFormat known = allowed(format);
    if (known == PictureFormat::unknown || FreeImage_FIFSupportsReading(format) == FALSE) {
        return failed(LoadStatus::unsupported, "the format is not supported");
    }
    LibraryMemory memory(*content);
    t_library_message.clear();
    if (header_is_too_large(memory, format)) {
        return failed(LoadStatus::unreadable, "the picture is too large");
    }
    t_library_message.clear();
    LoadedPicture loaded;
    if (!library_loads(format, memory, loaded.bitmap)) {
        return failed(LoadStatus::unreadable,
                      t_library_message.empty() ? "the content is no picture of its type" : t_library_message);
    }
    if (tells_damage(t_library_message, known)) {
        return failed(LoadStatus::unreadable, "the file is damaged or cut off: " + t_library_message);
    }
    if (!keep_depth && loaded.bitmap.bits_per_pixel() != 8 * kPixelBytes) {
        loaded.bitmap = Bitmap(FreeImage_ConvertTo24Bits(loaded.bitmap.handle()));
        if (!loaded.bitmap) {
            return failed(LoadStatus::unreadable, "the pixels cannot be converted to 24 bits");
        }
    }
    loaded.status = LoadStatus::done;
    return loaded;
}

std::string capture_time_text(const std::string& path) {
    std::string reason;
    const auto content = read_file_whole(path, reason);
    if (!content || content->empty() || content->size() > UINT32_MAX) {
        return {};
    }
    const FREE_IMAGE_FORMAT format = library_format(*content, path);
    if (allowed(format) == PictureFormat::unknown) {
        return {};
    }
    const LibraryMemory memory(*content);
    const Bitmap header(FreeImage_LoadFromMemory(format, memory.get(), FIF_LOAD_NOPIXELS));
    FITAG* tag = nullptr;
    if (!header || FreeImage_GetMetadata(FIMD_EXIF_EXIF, header.handle(), "DateTimeOriginal", &tag) == FALSE ||
        FreeImage_GetTagType(tag) != FIDT_ASCII) {
        return {};
    }
    const auto* text = static_cast<const char*>(FreeImage_GetTagValue(tag));
    return text == nullptr ? std::string() : std::string(text, FreeImage_GetTagLength(tag));
}

}  // namespace zemora
