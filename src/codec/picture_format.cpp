#include "codec/picture_format.h"

#include <algorithm>
#include <iterator>
#include <mutex>

#include "codec/library.h"

namespace zemora {

namespace {

struct FormatRow {
    FREE_IMAGE_FORMAT library;
    PictureFormat format;
    bool is_decoded;  ///< Its reader holds up against broken files.
};

/// Of several rows of a format the first is the one that is written. The library reads and writes all of the
/// PPM family alike.
// clang-format off
constexpr FormatRow kFormats[] = {
    {FIF_BMP,    PictureFormat::bmp,   true},
    {FIF_JPEG,   PictureFormat::jpeg,  true},
    {FIF_PNG,    PictureFormat::png,   true},
    {FIF_TIFF,   PictureFormat::tiff,  true},
    {FIF_TARGA,  PictureFormat::targa, true},
    {FIF_GIF,    PictureFormat::gif,   true},
    {FIF_PPM,    PictureFormat::ppm,   true},
    {FIF_PPMRAW, PictureFormat::ppm,   true},
    {FIF_PGM,    PictureFormat::ppm,   true},
    {FIF_PGMRAW, PictureFormat::ppm,   true},
    {FIF_PBM,    PictureFormat::ppm,   true},
    {FIF_PBMRAW, PictureFormat::ppm,   true},
    {FIF_RAW,    PictureFormat::raw,   true},
    {FIF_WEBP,   PictureFormat::webp,  false},
    {FIF_JP2,    PictureFormat::jp2,   false},
    {FIF_J2K,    PictureFormat::j2k,   false},
    {FIF_PSD,    PictureFormat::psd,   false},
    {FIF_JNG,    PictureFormat::jng,   false},
    {FIF_XPM,    PictureFormat::xpm,   false},
    {FIF_ICO,    PictureFormat::icon,  false},
};
// clang-format on

const FormatRow* find_row(PictureFormat format) {
    const auto* row = std::find_if(std::begin(kFormats), std::end(kFormats),
                                   [format](const FormatRow& known) { return known.format == format; });
    return row == std::end(kFormats) ? nullptr : row;
}

}  // namespace

PictureFormat format_of_library(FREE_IMAGE_FORMAT format) {
    const auto* row = std::find_if(std::begin(kFormats), std::end(kFormats),
                                   [format](const FormatRow& known) { return known.library == format; });
    return row == std::end(kFormats) ? PictureFormat::unknown : row->format;
}

FREE_IMAGE_FORMAT library_format(PictureFormat format) {
    const FormatRow* row = find_row(format);
    return row == nullptr ? FIF_UNKNOWN : row->library;
}

FREE_IMAGE_FORMAT library_format_of_name(const std::string& path) {
    static std::mutex one_at_a_time;
    const std::lock_guard lock(one_at_a_time);
    return FreeImage_GetFIFFromFilename(path.c_str());
}

bool is_decoded(PictureFormat format) {
    const FormatRow* row = find_row(format);
    return row != nullptr && row->is_decoded && FreeImage_FIFSupportsReading(row->library) != FALSE;
}

PictureFormat format_of_name(const std::string& path) {
    return format_of_library(library_format_of_name(path));
}

}  // namespace zemora
