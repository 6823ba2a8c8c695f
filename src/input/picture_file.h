#pragma once
/// Reading and typing picture files through the image library, with its traps closed.

#include <cstdint>
#include <string>
#include <vector>

#include "numerics/bitmap.h"

namespace zemora {

enum class LoadStatus {
    done,
    unsupported,  ///< The format is not read here; a conversion may be tried.
    unreadable,   ///< Missing, no plain file, empty, cut off, damaged, too large.
};

struct LoadedPicture {
    LoadStatus status = LoadStatus::unreadable;
    Bitmap bitmap;       ///< 24 bits; with `keep_depth` 48 for 16 bits a channel, others as in the file.
    std::string reason;  ///< For the user, when not done.
};

/// The suffix of a name in lower case, for formats of several suffixes the usual one: ".jpeg", ".jpe",
/// ".jfif" and ".jps" are ".jpg", ".tiff" is ".tif". Empty without a suffix.
[[nodiscard]] std::string usual_suffix(const std::string& name);

/// Whether the content of a file is a TIFF picture (and no camera's raw file of that family).
[[nodiscard]] bool is_tiff_file(const std::string& path);

/// Whether a picture is loaded upright, whatever its orientation tag says: camera raw is developed so, and so
/// is what goes through the converter.
[[nodiscard]] bool is_loaded_upright(const std::string& path);

/// Loads a picture as 24 bits, or as the file has it with `keep_depth` (the 16-bit output).
[[nodiscard]] LoadedPicture load_picture(const std::string& path, bool keep_depth = false);

/// The same for a file in memory; `path` stands for its suffix.
[[nodiscard]] LoadedPicture decode_picture(std::vector<std::uint8_t> content, const std::string& path,
                                           bool keep_depth = false);

/// The EXIF tag DateTimeOriginal, "YYYY:MM:DD hh:mm:ss"; empty when there is none. Straight from the file
/// where its kind is known, else (some camera raw files) from the picture library.
[[nodiscard]] std::string capture_time_text(const std::string& path);

}  // namespace zemora
