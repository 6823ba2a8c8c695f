#pragma once
/// The time of taking straight from the EXIF directories of a file, without reading the rest of it.

#include <optional>
#include <string>

namespace zemora {

/// The tag DateTimeOriginal as it stands in JPEG files, PNG files, TIFF files and the camera raw files of
/// their family: of the EXIF directory or, where that has none, of the picture's own. Empty when there is
/// none, no text, or the directories are damaged. Nothing for files of other kinds.
[[nodiscard]] std::optional<std::string> exif_time_text(const std::string& path);

}  // namespace zemora
