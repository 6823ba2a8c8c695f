#pragma once
/// Time and settings of taking straight from the EXIF directories of a file, without reading the rest of it.

#include <cstdint>
#include <optional>
#include <string>

namespace zemora {

/// The tag DateTimeOriginal as it stands in JPEG files, PNG files, TIFF files and the camera raw files of
/// their family: of the EXIF directory or, where that has none, of the picture's own. Empty when there is
/// none, no text, or the directories are damaged. Nothing for files of other kinds.
[[nodiscard]] std::optional<std::string> exif_time_text(const std::string& path);

struct ExifFraction {
    std::uint32_t numerator = 0;
    std::uint32_t denominator = 0;
    friend bool operator==(const ExifFraction&, const ExifFraction&) = default;
};

/// The orientation of the same files, 1 to 8; 0 without one.
[[nodiscard]] int exif_orientation(const std::string& path);

enum class ExifFractionTag : std::uint32_t {
    exposure_time = 0x829A,  ///< Seconds.
    f_number = 0x829D,
};

/// A value of the EXIF directory of the same files. Nothing when there is none or its denominator is 0.
[[nodiscard]] std::optional<ExifFraction> exif_fraction(const std::string& path, ExifFractionTag tag);

}  // namespace zemora
