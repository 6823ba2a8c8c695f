#pragma once
/// The small pictures of the reports.

#include <string>

#include "numerics/bitmap.h"
#include "numerics/result.h"

namespace zemora {

inline constexpr int kThumbWidth = 267;   // pixels
inline constexpr int kThumbHeight = 178;  // pixels

/// Both views scaled into thumbnail size, centred on green.
struct Thumbnails {
    Bitmap left;
    Bitmap right;
};
/// Fails without memory.
[[nodiscard]] Result<Thumbnails> make_thumbs(const StereoPicture& views);

/// Saves the views at thumbnail size, without the bars, as JPEG. Empty, or the reason why a file is not
/// there; fails without memory.
[[nodiscard]] Result<std::string> save_thumbs(const StereoPicture& views, const std::string& left_file,
                                              const std::string& right_file);

}  // namespace zemora
