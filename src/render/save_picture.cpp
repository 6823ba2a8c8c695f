#include "render/save_picture.h"

#include <FreeImage.h>

#include <algorithm>
#include <string_view>

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
    FREE_IMAGE_FORMAT format;
    int plain_flags;
    int compressed_flags;
};

constexpr FormatRow kFormats[] = {
    {".jpg", FIF_JPEG, JPEG_SUBSAMPLING_444, JPEG_SUBSAMPLING_444},
    {".jpeg", FIF_JPEG, JPEG_SUBSAMPLING_444, JPEG_SUBSAMPLING_444},
    {".jps", FIF_JPEG, JPEG_SUBSAMPLING_444, JPEG_SUBSAMPLING_444},
    {".bmp", FIF_BMP, BMP_DEFAULT, BMP_SAVE_RLE},
    {".png", FIF_PNG, PNG_Z_NO_COMPRESSION, PNG_Z_DEFAULT_COMPRESSION},
    {".tif", FIF_TIFF, TIFF_NONE, TIFF_LZW},
    {".tiff", FIF_TIFF, TIFF_NONE, TIFF_LZW},
    {".tga", FIF_TARGA, 0, 0},
    {".ppm", FIF_PPM, 0, 0},
    {".pgm", FIF_PPM, 0, 0},  // with colours: readers go by the first bytes
    {".pbm", FIF_PPM, 0, 0},
    {".webp", FIF_WEBP, 0, 0},
    {".jp2", FIF_JP2, 0, 0},
    {".j2k", FIF_J2K, 0, 0},
    {".j2c", FIF_J2K, 0, 0},
    {".psd", FIF_PSD, PSD_NONE, PSD_DEFAULT},
    {".jng", FIF_JNG, 0, 0},
};

const FormatRow* find_format(const std::string& path) {
    const std::string suffix = lower_case(suffix_of(path));
    const auto* row = std::find_if(std::begin(kFormats), std::end(kFormats),
                                   [&suffix](const FormatRow& format) { return format.suffix == suffix; });
    return row == std::end(kFormats) ? nullptr : row;
}

int quality_flag(const SaveOptions& options) {
    return std::clamp(options.jpeg_quality, 1, 100);
}

int flags_of(const FormatRow& format, const SaveOptions& options) {
    const int flags = options.compress ? format.compressed_flags : format.plain_flags;
    constexpr int kLosslessSize = 101;  // so that the quality of 85 gives the library's usual 16 to 1
    switch (format.format) {
        case FIF_JPEG:
        case FIF_WEBP:
        case FIF_JNG: return flags | quality_flag(options);
        case FIF_JP2:
        case FIF_J2K: return kLosslessSize - quality_flag(options);  // source bytes for one of the file
        default: return flags;
    }
}

void set_resolution(FIBITMAP* picture, const SaveOptions& options) {
    const auto per_metre = [](int per_inch) {
        return static_cast<unsigned>(round_half_up(per_inch * kInchesPerMetre));
    };
    if (options.dots_per_inch_x > 0) {
        FreeImage_SetDotsPerMeterX(picture, per_metre(options.dots_per_inch_x));
    }
    if (options.dots_per_inch_y > 0) {
        FreeImage_SetDotsPerMeterY(picture, per_metre(options.dots_per_inch_y));
    }
}

/// The 24-bit picture in the form that `OutputFormat` gives a TIFF file; empty when it stays as it is.
Bitmap special_form(const Bitmap& picture, const SaveOptions& options, int& flags, std::string& reason) {
    Bitmap form;
    switch (options.output_format) {
        case kWithAlpha: form = Bitmap(FreeImage_ConvertTo32Bits(picture.handle())); break;
        case kCmykByFormula:
            form = cmyk_by_formula(picture.picture());
            flags = TIFF_CMYK;
            break;
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
    const auto size = [&sample](int flags) {
        return EncodedPicture(sample.handle(), FIF_TIFF, flags).bytes().size();
    };
    return size(TIFF_LZW) < size(TIFF_NONE);
}

}  // namespace

bool is_written_suffix(const std::string& suffix) {
    return find_format("a" + suffix) != nullptr;
}

bool is_tiff_name(const std::string& path) {
    const FormatRow* format = find_format(path);
    return format != nullptr && format->format == FIF_TIFF;
}

std::string save_picture(const Bitmap& picture, const std::string& path, const SaveOptions& options) {
    const FormatRow* format = find_format(path);
    if (format == nullptr) {
        return "this type of file cannot be written";
    }
    if (!picture) {
        return "not enough memory";
    }
    int flags = flags_of(*format, options);
    std::string reason;
    Bitmap form;
    if (format->format == FIF_TIFF) {
        form = special_form(picture, options, flags, reason);
    }
    if (!reason.empty()) {
        return reason;
    }
    FIBITMAP* written = form ? form.handle() : picture.handle();
    set_resolution(written, options);
    return encode_and_write(written, format->format, flags, path);
}

EncodedPicture encode_camera_jpeg(const Bitmap& picture, const SaveOptions& options) {
    return {picture.handle(), FIF_JPEG, JPEG_SUBSAMPLING_422 | quality_flag(options)};
}

std::string save_deep_picture(const Bitmap& picture, const std::string& path, const SaveOptions& options) {
    set_resolution(picture.handle(), options);
    const bool is_packed = options.compress && packs_well(picture);
    return encode_and_write(picture.handle(), FIF_TIFF, is_packed ? TIFF_LZW : TIFF_NONE, path);
}

}  // namespace zemora
