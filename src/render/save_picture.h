#pragma once
/// Encodes a bitmap by the suffix of its file name and writes it whole.

#include <string>

#include "codec/encode.h"
#include "numerics/bitmap.h"

namespace zemora {

/// What the user chose for the written files.
struct SaveOptions {
    int output_format = 0;
    bool compress = true;
    int jpeg_quality = 100;
    int dots_per_inch_x = 0;  ///< 0 leaves the library's value.
    int dots_per_inch_y = 0;
    std::string cmyk_profile;  ///< A data file of the program, or an absolute path.
};

/// Whether files of that suffix (in lower case, with its dot) can be written.
[[nodiscard]] bool is_written_suffix(const std::string& suffix);

/// Whether the name is that of a TIFF file.
[[nodiscard]] bool is_tiff_name(const std::string& path);

/// Saves `picture`, of 24 bits, under `path` in the format of its suffix and of `OutputFormat`. Empty, or the
/// reason why there is no such file.
[[nodiscard]] std::string save_picture(const Bitmap& picture, const std::string& path,
                                       const SaveOptions& options);

/// `picture`, of 24 bits, as a JPEG file in memory with the colours of two neighbours together (4:2:2), as
/// cameras write it: readers of multi-picture files in displays know nothing else.
[[nodiscard]] EncodedPicture encode_camera_jpeg(const Bitmap& picture, const SaveOptions& options);

/// Saves a bitmap of 48 bits as TIFF: LZW of the differences where that is wanted and smaller, else plain.
[[nodiscard]] std::string save_deep_picture(const Bitmap& picture, const std::string& path,
                                            const SaveOptions& options);

}  // namespace zemora
