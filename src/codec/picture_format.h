#pragma once
/// The formats of picture files that the picture library knows and Zemora has a use for.

#include <string>

namespace zemora {

/// Each of `ppm`, `pgm` and `pbm` is `ppm`; `raw` stands for the raw files of all cameras.
enum class PictureFormat {
    unknown,
    bmp,
    jpeg,
    png,
    tiff,
    targa,
    gif,
    ppm,
    raw,
    webp,
    jp2,
    j2k,
    psd,
    jng,
    xpm,
    icon
};

/// The format that the suffix of a name stands for; `unknown` for suffixes of other formats. May be called
/// from any thread.
[[nodiscard]] PictureFormat format_of_name(const std::string& path);

/// Whether a format is decoded: those whose reader in the library holds up against broken files.
[[nodiscard]] bool is_decoded(PictureFormat format);

}  // namespace zemora
