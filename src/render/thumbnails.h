#pragma once
/// The small pictures of the reports.

#include <string>

#include "numerics/bitmap.h"
#include "numerics/result.h"

namespace zemora {

inline constexpr int kThumbWidth = 267;   // pixels
inline constexpr int kThumbHeight = 178;  // pixels

/// Both views in the largest size inside a thumbnail. A view that is too narrow for one has none.
struct Thumbnails {
    Bitmap left;
    Bitmap right;
};
/// Fails without memory.
[[nodiscard]] Result<Thumbnails> make_thumbnails(const StereoPicture& views);

/// Each centred on green, in the full size of a thumbnail. Fails without memory.
[[nodiscard]] Result<Thumbnails> with_bars(const Thumbnails& thumbnails);

/// Saves them as JPEG. Empty, or the reasons why files are not there, a line each.
[[nodiscard]] std::string save_thumbnails(const Thumbnails& thumbnails, const std::string& left_file,
                                          const std::string& right_file);

}  // namespace zemora
