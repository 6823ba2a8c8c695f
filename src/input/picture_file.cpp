#include "input/picture_file.h"

#include <FreeImage.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

#include "input/bmp_header.h"
#include "input/bmp_pixels.h"
#include "input/exif_time.h"
#include "input/jpeg_check.h"
#include "input/jpeg_metadata.h"
#include "input/targa_check.h"
#include "input/tiff_directory.h"
#include "input/tiff_profile.h"
#include "numerics/bitmap_file.h"
#include "platform/paths.h"
#include "platform/quiet_tiff.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

/// The largest picture that is loaded: rows of it fit into 32-bit sizes with room to spare.
constexpr unsigned kLargestLoadedSide = 65500;   // pixels
constexpr double kLargestLoadedPicture = 6.0e8;  // pixels; 1.8 GB

/// Formats of the image library that hold up against broken files.
struct FormatRow {
    FREE_IMAGE_FORMAT library;
    PictureFormat format;
};
constexpr std::array kFormats{
    FormatRow{FIF_BMP, PictureFormat::bmp},     FormatRow{FIF_JPEG, PictureFormat::jpeg},
    FormatRow{FIF_PNG, PictureFormat::png},     FormatRow{FIF_TIFF, PictureFormat::tiff},
    FormatRow{FIF_TARGA, PictureFormat::targa}, FormatRow{FIF_GIF, PictureFormat::gif},
    FormatRow{FIF_PPM, PictureFormat::ppm},     FormatRow{FIF_PPMRAW, PictureFormat::ppm},
    FormatRow{FIF_PGM, PictureFormat::ppm},     FormatRow{FIF_PGMRAW, PictureFormat::ppm},
    FormatRow{FIF_PBM, PictureFormat::ppm},     FormatRow{FIF_PBMRAW, PictureFormat::ppm},
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
constexpr char kMessageEnd = '\n';
constexpr std::size_t kLongestMessage = 2000;  // characters; a broken file may bring thousands of lines

void keep_library_message(FREE_IMAGE_FORMAT /*format*/, const char* message) {
    if (t_library_message.size() < kLongestMessage) {
        t_library_message += std::string(message) + kMessageEnd;
    }
}

/// The image library's message road, set once for the process.
void listen_to_library() {
    [[maybe_unused]] static const bool set = [] {
        FreeImage_SetOutputMessage(keep_library_message);
        silence_tiff_library();
        return true;
    }();
}

/// The content of a file as the image library reads it. Remembers a read that wanted more than there
/// was: some readers take a cut-off file for a whole one.
class LibraryStream {
public:
    explicit LibraryStream(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    [[nodiscard]] bool ran_out() const { return ran_out_; }
    [[nodiscard]] FREE_IMAGE_FORMAT type() {
        rewind();
        return FreeImage_GetFileTypeFromHandle(&io_, this, 0);
    }
    [[nodiscard]] Bitmap load(FREE_IMAGE_FORMAT format, int flags) {
        rewind();
        return Bitmap(FreeImage_LoadFromHandle(format, &io_, this, flags));
    }

private:
    void rewind() {
        position_ = 0;
        ran_out_ = false;
    }
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

FREE_IMAGE_FORMAT library_format(std::span<const std::uint8_t> content, const std::string& path) {
    listen_to_library();
    const FREE_IMAGE_FORMAT by_content = LibraryStream(content).type();
    return by_content != FIF_UNKNOWN ? by_content : format_of_name(path);
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
bool header_is_too_large(LibraryStream& stream, FREE_IMAGE_FORMAT format) {
    if (FreeImage_FIFSupportsNoPixels(format) == FALSE) {
        return false;
    }
    const Bitmap header = stream.load(format, FIF_LOAD_NOPIXELS);
    return header && is_too_large(header);
}

/// Whether the file ended before its pixels did, for the formats whose reader does not report it.
bool is_cut_off(const LibraryStream& stream, PictureFormat format, std::span<const std::uint8_t> content) {
    switch (format) {
        case PictureFormat::bmp:
        case PictureFormat::tiff:
        case PictureFormat::ppm: return stream.ran_out();
        case PictureFormat::targa: return targa_is_cut_off(content);
        case PictureFormat::jpeg: return !jpeg_shape(content).end;
        default: return false;
    }
}

/// A message of the library that means that pixels are missing or wrong.
bool tells_damage(std::string_view message) {
    static constexpr std::array<std::string_view, 9> kSigns{
        "Premature end", "premature end", "Corrupt JPEG",           "truncated", "Truncated", "Read Error",
        "not enough",    "Not enough",    "Image may be incomplete"};
    const auto holds = [&](std::string_view text) { return message.find(text) != std::string_view::npos; };
    return std::any_of(kSigns.begin(), kSigns.end(), holds);
}

/// Bytes between the last pixel and the end of a JPEG file are a trace of damage, but not a camera's padding.
bool tells_padding(const std::string& message, std::span<const std::uint8_t> content) {
    constexpr unsigned kEndMarker = 0xD9;
    unsigned count = 0;
    unsigned marker = 0;
    return std::sscanf(message.c_str(), "Corrupt JPEG data: %u extraneous bytes before marker 0x%x", &count,
                       &marker) == 2 &&
           marker == kEndMarker && is_jpeg_padding(content, count);
}

/// The first of the library's messages that means damage; empty without one.
std::string told_damage(std::string_view messages, std::span<const std::uint8_t> content) {
    while (!messages.empty()) {
        std::string message(messages.substr(0, messages.find(kMessageEnd)));
        if (tells_damage(message) && !tells_padding(message, content)) {
            return message;
        }
        messages.remove_prefix(std::min(message.size() + 1, messages.size()));
    }
    return {};
}

/// What is wrong with a picture that was just loaded, in words for the user; empty when it is whole.
std::string fault_of(const Bitmap& bitmap, const LibraryStream& stream, PictureFormat format,
                     std::span<const std::uint8_t> content) {
    if (!bitmap || FreeImage_HasPixels(bitmap.handle()) == FALSE) {
        const std::string first = t_library_message.substr(0, t_library_message.find(kMessageEnd));
        return first.empty() ? "the content is no picture of its type" : first;
    }
    if (const std::string damage = told_damage(t_library_message, content); !damage.empty()) {
        return "the file is damaged or cut off: " + damage;
    }
    return is_cut_off(stream, format, content) ? "the file is cut off" : "";
}

/// Whether a TIFF file that gave no pixels is of a form that the library does not read, and perhaps whole.
bool is_foreign_tiff(const TiffLayout& layout, const Bitmap& bitmap) {
    constexpr std::uint64_t kMostBits = 16;  // of a channel
    return !bitmap && (layout.bits > kMostBits ||
                       t_library_message.find("Unable to handle this format") != std::string::npos);
}

/// How the library is to decode a format.
int flags_of(PictureFormat format) {
    if (format == PictureFormat::jpeg) {
        return JPEG_ACCURATE;  // the fast transform tints the picture green
    }
    return format == PictureFormat::raw ? RAW_DISPLAY : 0;  // as a camera would show it, not linear light
}

/// Cyan, magenta, yellow and black of 8 bits, as the library leaves them in a tiled TIFF file: in the places
/// of red, green, blue and alpha. Converted by the formula that the library uses for strips. Nothing for
/// other depths.
Bitmap inks_as_24_bits(const Bitmap& inks) {
    constexpr int kInks = 4;
    constexpr int kFull = 255;
    if (FreeImage_GetImageType(inks.handle()) != FIT_BITMAP || inks.bits_per_pixel() != 8 * kInks) {
        return {};
    }
    Bitmap result = Bitmap::create(inks.width(), inks.height());
    for (int y = 0; result && y < inks.height(); ++y) {
        const BYTE* from = FreeImage_GetScanLine(inks.handle(), y);
        std::uint8_t* to = result.picture().row(y);
        for (int x = 0; x < inks.width(); ++x, from += kInks, to += kPixelBytes) {
            for (int c = 0; c < kPixelBytes; ++c) {
                to[c] = static_cast<std::uint8_t>((kFull - from[c]) * (kFull - from[kPixelBytes]) / kFull);
            }
        }
    }
    return result;
}

/// Grey of 16 bits from grey and alpha. The library takes them for a number of 32 bits, or for red, green,
/// blue and alpha of 8 bits, where red is the low byte of the grey and green its high one. Nothing for other
/// pictures.
Bitmap grey_of_deep_pairs(const Bitmap& pairs) {
    constexpr int kPairBytes = 4;
    const FREE_IMAGE_TYPE type = FreeImage_GetImageType(pairs.handle());
    const bool is_colours = type == FIT_BITMAP && pairs.bits_per_pixel() == 8 * kPairBytes;
    if (!is_colours && type != FIT_UINT32) {
        return {};
    }
    const int low = is_colours ? FI_RGBA_RED : 0;
    const int high = is_colours ? FI_RGBA_GREEN : 1;
    Bitmap grey(FreeImage_AllocateT(FIT_UINT16, pairs.width(), pairs.height()));
    for (int y = 0; grey && y < pairs.height(); ++y) {
        const BYTE* from = FreeImage_GetScanLine(pairs.handle(), y);
        auto* to = reinterpret_cast<std::uint16_t*>(FreeImage_GetScanLine(grey.handle(), y));
        for (int x = 0; x < pairs.width(); ++x, from += kPairBytes) {
            to[x] = static_cast<std::uint16_t>(from[high] << 8U | from[low]);
        }
    }
    return grey;
}

void invert_deep_grey(Bitmap& grey) {
    for (int y = 0; y < grey.height(); ++y) {
        auto* row = reinterpret_cast<std::uint16_t*>(FreeImage_GetScanLine(grey.handle(), y));
        std::transform(row, row + grey.width(), row,
                       [](std::uint16_t value) { return static_cast<std::uint16_t>(UINT16_MAX - value); });
    }
}

/// Grey of 16 bits has no direct way to 24 bits; like the others it keeps its upper 8.
Bitmap as_24_bits(Bitmap bitmap) {
    if (FreeImage_GetImageType(bitmap.handle()) == FIT_UINT16) {
        bitmap = Bitmap(FreeImage_ConvertTo8Bits(bitmap.handle()));
    }
    return bitmap ? Bitmap(FreeImage_ConvertTo24Bits(bitmap.handle())) : Bitmap();
}

/// Pixels of 16 bits in red, green and blue: from grey, and without alpha. Others stay as they are.
Bitmap as_deep_colours(Bitmap bitmap) {
    const FREE_IMAGE_TYPE type = FreeImage_GetImageType(bitmap.handle());
    return type == FIT_UINT16 || type == FIT_RGBA16 ? Bitmap(FreeImage_ConvertToRGB16(bitmap.handle()))
                                                    : std::move(bitmap);
}

/// Brings a file into the form that the image library reads well and without harm.
void make_harmless(std::vector<std::uint8_t>& content) {
    if (auto shortened = with_short_bmp_header(content)) {
        content = std::move(*shortened);
    }
    if (auto plain = with_plain_bmp_pixels(content)) {
        content = std::move(*plain);
    }
    hide_tiff_profile(content);
    hide_jpeg_metadata(content);
    mend_jpeg_header(content);
}

std::optional<std::vector<std::uint8_t>> read_content(const std::string& path, std::string& reason) {
    auto content = read_file_whole(path, reason);
    if (content) {
        make_harmless(*content);
    }
    return content;
}

}  // namespace

PictureFormat picture_format_of(std::span<const std::uint8_t> content, const std::string& path) {
    return allowed(library_format(content, path));
}

std::string usual_suffix(const std::string& name) {
    struct Row {
        std::string_view suffix;
        std::string_view usual;
    };
    static constexpr Row kRows[] = {{".jpeg", ".jpg"}, {".jpe", ".jpg"}, {".jif", ".jpg"},
                                    {".jfif", ".jpg"}, {".jps", ".jpg"}, {".tiff", ".tif"}};
    const std::string suffix = lower_case(suffix_of(name));
    const auto* row = std::find_if(std::begin(kRows), std::end(kRows),
                                   [&suffix](const Row& known) { return known.suffix == suffix; });
    return row == std::end(kRows) ? suffix : std::string(row->usual);
}

bool is_tiff_file(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return false;
    }
    std::array<char, 2> order{};
    std::ifstream(path, std::ios::binary).read(order.data(), order.size());
    const std::string_view mark(order.data(), order.size());
    if (mark != "II" && mark != "MM") {
        return false;
    }
    std::string reason;
    const auto content = read_content(path, reason);
    return content && !content->empty() && content->size() <= UINT32_MAX &&
           picture_format_of(*content, path) == PictureFormat::tiff;
}

bool is_loaded_upright(const std::string& path) {
    std::string reason;
    auto content = read_content(path, reason);
    if (!content || content->empty() || content->size() > UINT32_MAX) {
        return false;
    }
    const PictureFormat format = picture_format_of(*content, path);
    if (format == PictureFormat::tiff && !tiff_layout(*content).usual) {
        return decode_picture(std::move(*content), path).status == LoadStatus::unsupported;
    }
    return format == PictureFormat::raw || format == PictureFormat::unknown;
}

LoadedPicture load_picture(const std::string& path, bool keep_depth) {
    std::string reason;
    auto content = read_file_whole(path, reason);
    return content ? decode_picture(std::move(*content), path, keep_depth)
                   : failed(LoadStatus::unreadable, reason);
}

LoadedPicture decode_picture(std::vector<std::uint8_t> content, const std::string& path, bool keep_depth) {
    make_harmless(content);
    if (content.empty()) {
        return failed(LoadStatus::unreadable, "the file is empty");
    }
    if (content.size() > UINT32_MAX) {
        return failed(LoadStatus::unreadable, "the file is too large");
    }
    const FREE_IMAGE_FORMAT format = library_format(content, path);
    const PictureFormat known = allowed(format);
    if (known == PictureFormat::unknown || FreeImage_FIFSupportsReading(format) == FALSE) {
        return failed(LoadStatus::unsupported, "the format is not supported");
    }
    const TiffLayout layout = known == PictureFormat::tiff ? tiff_layout(content) : TiffLayout();
    if (layout.tiled && layout.planes_apart) {
        return failed(LoadStatus::unsupported, "tiles with a plane for each colour are not supported");
    }
    LibraryStream stream(content);
    if (header_is_too_large(stream, format)) {
        return failed(LoadStatus::unreadable, "the picture is too large");
    }
    t_library_message.clear();
    LoadedPicture loaded;
    loaded.bitmap = stream.load(format, flags_of(known));
    loaded.reason = fault_of(loaded.bitmap, stream, known, content);
    if (!loaded.reason.empty()) {
        const bool foreign = known == PictureFormat::tiff && is_foreign_tiff(layout, loaded.bitmap);
        return failed(foreign ? LoadStatus::unsupported : LoadStatus::unreadable, loaded.reason);
    }
    if (layout.deep_grey_alpha) {
        loaded.bitmap = grey_of_deep_pairs(loaded.bitmap);
    }
    if (layout.white_is_zero && FreeImage_GetImageType(loaded.bitmap.handle()) == FIT_UINT16) {
        invert_deep_grey(loaded.bitmap);  // the library does it for 8 bits
    }
    if (!loaded.bitmap) {
        return failed(LoadStatus::unsupported, "deep grey with alpha is not read in this form");
    }
    if (layout.inks && layout.tiled) {
        loaded.bitmap = inks_as_24_bits(loaded.bitmap);
    } else if (keep_depth) {
        loaded.bitmap = as_deep_colours(std::move(loaded.bitmap));
    } else if (loaded.bitmap.bits_per_pixel() != 8 * kPixelBytes) {
        loaded.bitmap = as_24_bits(std::move(loaded.bitmap));
    }
    if (!loaded.bitmap) {
        return failed(LoadStatus::unsupported, "the pixels cannot be converted to 24 bits");
    }
    loaded.status = LoadStatus::done;
    return loaded;
}

std::string capture_time_text(const std::string& path) {
    if (const auto text = exif_time_text(path)) {
        return *text;
    }
    std::string reason;
    const auto content = read_content(path, reason);
    if (!content || content->empty() || content->size() > UINT32_MAX) {
        return {};
    }
    const FREE_IMAGE_FORMAT format = library_format(*content, path);
    if (allowed(format) == PictureFormat::unknown) {
        return {};
    }
    const Bitmap header = LibraryStream(*content).load(format, FIF_LOAD_NOPIXELS);
    FITAG* tag = nullptr;
    const auto has_time = [&](FREE_IMAGE_MDMODEL model) {
        return FreeImage_GetMetadata(model, header.handle(), "DateTimeOriginal", &tag) != FALSE;
    };
    if (!header || (!has_time(FIMD_EXIF_EXIF) && !has_time(FIMD_EXIF_MAIN)) ||
        FreeImage_GetTagType(tag) != FIDT_ASCII) {
        return {};
    }
    const auto* text = static_cast<const char*>(FreeImage_GetTagValue(tag));
    return text == nullptr ? std::string() : std::string(text, FreeImage_GetTagLength(tag));
}

}  // namespace zemora
