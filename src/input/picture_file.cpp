#include "input/picture_file.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

#include "codec/decode.h"
#include "codec/decoded_forms.h"
#include "input/bmp_header.h"
#include "input/bmp_pixels.h"
#include "input/exif_time.h"
#include "input/jpeg_check.h"
#include "input/jpeg_metadata.h"
#include "input/targa_check.h"
#include "input/tiff_directory.h"
#include "input/tiff_profile.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

/// The largest picture that is loaded: rows of it fit into 32-bit sizes with room to spare.
constexpr unsigned kLargestLoadedSide = 65500;   // pixels
constexpr double kLargestLoadedPicture = 6.0e8;  // pixels; 1.8 GB

/// `unknown` stands for all formats that are not decoded.
PictureFormat decoded_format(std::span<const std::uint8_t> content, const std::string& path) {
    const PictureFormat format = format_of_file(content, path);
    return is_decoded(format) ? format : PictureFormat::unknown;
}

LoadedPicture failed(LoadStatus status, std::string reason) {
    LoadedPicture picture;
    picture.status = status;
    picture.reason = std::move(reason);
    return picture;
}

bool is_too_large(PictureSize size) {
    const auto width = static_cast<unsigned>(size.width);
    const auto height = static_cast<unsigned>(size.height);
    return width > kLargestLoadedSide || height > kLargestLoadedSide ||
           static_cast<double>(width) * height > kLargestLoadedPicture;
}

/// Whether the file ended before its pixels did, for the formats whose reader does not report it.
bool is_cut_off(const DecodedPicture& decoded, PictureFormat format, std::span<const std::uint8_t> content) {
    switch (format) {
        case PictureFormat::bmp:
        case PictureFormat::tiff:
        case PictureFormat::ppm: return decoded.ran_out;
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
        std::string message(messages.substr(0, messages.find('\n')));
        if (tells_damage(message) && !tells_padding(message, content)) {
            return message;
        }
        messages.remove_prefix(std::min(message.size() + 1, messages.size()));
    }
    return {};
}

/// What is wrong with a picture that was just loaded, in words for the user; empty when it is whole.
std::string fault_of(const DecodedPicture& decoded, PictureFormat format,
                     std::span<const std::uint8_t> content) {
    if (!decoded.bitmap) {
        const std::string first = decoded.messages.substr(0, decoded.messages.find('\n'));
        return first.empty() ? "the content is no picture of its type" : first;
    }
    if (const std::string damage = told_damage(decoded.messages, content); !damage.empty()) {
        return "the file is damaged or cut off: " + damage;
    }
    return is_cut_off(decoded, format, content) ? "the file is cut off" : "";
}

/// Whether a TIFF file that gave no pixels is of a form that the library does not read, and perhaps whole.
bool is_foreign_tiff(const TiffLayout& layout, const DecodedPicture& decoded) {
    constexpr std::uint64_t kMostBits = 16;  // of a channel
    return !decoded.bitmap && (layout.bits > kMostBits ||
                               decoded.messages.find("Unable to handle this format") != std::string::npos);
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
           decoded_format(*content, path) == PictureFormat::tiff;
}

bool is_loaded_upright(const std::string& path) {
    std::string reason;
    auto content = read_content(path, reason);
    if (!content || content->empty() || content->size() > UINT32_MAX) {
        return false;
    }
    const PictureFormat format = decoded_format(*content, path);
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
    const PictureFormat format = decoded_format(content, path);
    if (format == PictureFormat::unknown) {
        return failed(LoadStatus::unsupported, "the format is not supported");
    }
    const TiffLayout layout = format == PictureFormat::tiff ? tiff_layout(content) : TiffLayout();
    if (layout.tiled && layout.planes_apart) {
        return failed(LoadStatus::unsupported, "tiles with a plane for each colour are not supported");
    }
    if (is_too_large(size_in_header(content, format))) {
        return failed(LoadStatus::unreadable, "the picture is too large");
    }
    DecodedPicture decoded = decode(content, format);
    if (const std::string reason = fault_of(decoded, format, content); !reason.empty()) {
        const bool foreign = format == PictureFormat::tiff && is_foreign_tiff(layout, decoded);
        return failed(foreign ? LoadStatus::unsupported : LoadStatus::unreadable, reason);
    }
    LoadedPicture loaded{LoadStatus::done, std::move(decoded.bitmap), {}};
    if (layout.deep_grey_alpha) {
        loaded.bitmap = grey_of_deep_pairs(loaded.bitmap);
    }
    if (layout.white_is_zero) {
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
    return exif_text(*content, decoded_format(*content, path), "DateTimeOriginal");
}

}  // namespace zemora
