#include "render/save_picture.h"

#include <algorithm>
#include <string_view>

#include "codec/bitmap_forms.h"
#include "numerics/rounding.h"
#include "platform/paths.h"
#include "render/cmyk.h"
#include "render/deep_picture.h"

namespace zemora {

namespace {

constexpr double kInchesPerMetre = 39.37;

/// Values of `OutputFormat` that give a special TIFF file.
enum TiffForm { kWithAlpha = 6, kCmykByFormula = 8, kCmykByProfile = 9 };

struct FormatRow {
    std::string_view suffix;
    PictureFormat format;
};

// clang-format off
constexpr FormatRow kFormats[] = {
    {".jpg",  PictureFormat::jpeg},
    {".jpeg", PictureFormat::jpeg},
    {".jps",  PictureFormat::jpeg},
    {".bmp",  PictureFormat::bmp},
    {".png",  PictureFormat::png},
    {".tif",  PictureFormat::tiff},
    {".tiff", PictureFormat::tiff},
    {".tga",  PictureFormat::targa},
    {".ppm",  PictureFormat::ppm},
    {".pgm",  PictureFormat::ppm},  // with colours: readers go by the first bytes
    {".pbm",  PictureFormat::ppm},
    {".webp", PictureFormat::webp},
    {".jp2",  PictureFormat::jp2},
    {".j2k",  PictureFormat::j2k},
    {".j2c",  PictureFormat::j2k},
    {".psd",  PictureFormat::psd},
    {".jng",  PictureFormat::jng},
};
// clang-format on

const FormatRow* find_format(const std::string& path) {
    const std::string suffix = lower_case(suffix_of(path));
    const auto* row = std::find_if(std::begin(kFormats), std::end(kFormats),
                                   [&suffix](const FormatRow& format) { return format.suffix == suffix; });
    return row == std::end(kFormats) ? nullptr : row;
}

EncodeOptions encode_options(PictureFormat format, const SaveOptions& options) {
    const auto per_metre = [](int per_inch) {
        return per_inch > 0 ? static_cast<unsigned>(round_half_up(per_inch * kInchesPerMetre)) : 0U;
    };
    return {.format = format,
            .compress = options.compress,
            .quality = std::clamp(options.jpeg_quality, 1, 100),
            .chroma = Chroma::full,
            .dots_per_metre_x = per_metre(options.dots_per_inch_x),
            .dots_per_metre_y = per_metre(options.dots_per_inch_y)};
}

/// The 24-bit picture in the form that `OutputFormat` gives a TIFF file; empty when it stays as it is.
Bitmap special_form(const Bitmap& picture, const SaveOptions& options, std::string& reason) {
    Bitmap form;
    switch (options.output_format) {
        case kWithAlpha: form = with_alpha(picture); break;
        case kCmykByFormula: form = cmyk_by_formula(picture.picture()); break;
        case kCmykByProfile: form = cmyk_by_profile(picture.picture(), options.cmyk_profile, reason); break;
        default: return {};
    }
    if (!form && reason.empty()) {
        reason = "not enough memory";
    }
    return form;
}

/// Whether LZW makes a deep picture smaller: noise in its lower bytes may make it larger, and takes long.
/// Some of its rows, which are packed each for itself, tell.
bool packs_well(const Bitmap& picture) {
    constexpr int kFewRows = 256;
    constexpr int kStep = 16;
    const int step = picture.height() < kFewRows ? 1 : kStep;
    const DeepPicture all = deep_picture(picture);
    const Bitmap sample = create_deep(all.width, all.height / step);
    if (!sample) {
        return false;
    }
    for (int y = 0; y < sample.height(); ++y) {
        copy_deep({reinterpret_cast<std::uint8_t*>(all.pixel(0, y * step)), all.pitch, all.width, 1},
                  deep_picture(sample), 0, y);
    }
    const auto size = [&sample](bool compress) {
        return EncodedPicture(sample, {.format = PictureFormat::tiff, .compress = compress}).bytes().size();
    };
    return size(true) < size(false);
}

}  // namespace

bool is_written_suffix(const std::string& suffix) {
    return find_format("a" + suffix) != nullptr;
}

bool is_tiff_name(const std::string& path) {
    const FormatRow* format = find_format(path);
    return format != nullptr && format->format == PictureFormat::tiff;
}

std::string save_picture(const Bitmap& picture, const std::string& path, const SaveOptions& options) {
    const FormatRow* format = find_format(path);
    if (format == nullptr) {
        return "this type of file cannot be written";
    }
    if (!picture) {
        return "not enough memory";
    }
    EncodeOptions encoding = encode_options(format->format, options);
    std::string reason;
    Bitmap form;
    if (format->format == PictureFormat::tiff) {
        form = special_form(picture, options, reason);
        // Inks by the formula are packed always.
        encoding.compress = encoding.compress || options.output_format == kCmykByFormula;
    }
    if (!reason.empty()) {
        return reason;
    }
    return encode_and_write(form ? form : picture, encoding, path);
}

EncodedPicture encode_camera_jpeg(const Bitmap& picture, const SaveOptions& options) {
    const int quality = encode_options(PictureFormat::jpeg, options).quality;
    return {picture, {.format = PictureFormat::jpeg, .quality = quality, .chroma = Chroma::half}};
}

std::string save_deep_picture(const Bitmap& picture, const std::string& path, const SaveOptions& options) {
    EncodeOptions encoding = encode_options(PictureFormat::tiff, options);
    encoding.compress = options.compress && packs_well(picture);
    return encode_and_write(picture, encoding, path);
}

}  // namespace zemora
