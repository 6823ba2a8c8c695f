#pragma once
/// The small pictures of the reports.

#include <string>

#include "render/warp_state.h"

namespace zemora {

inline constexpr int kThumbWidth = 267;   // pixels
inline constexpr int kThumbHeight = 178;  // pixels

/// Both views scaled into thumbnail size, centred on green.
struct Thumbnails {
    Bitmap left;
    Bitmap right;
};
[[nodiscard]] Thumbnails make_thumbs(const WarpState& warp);

/// Saves the views at thumbnail size, without the bars, as JPEG. Empty, or the reason of a failure.
[[nodiscard]] std::string save_thumbs(const WarpState& warp, const std::string& left_file,
                                      const std::string& right_file);

}  // namespace zemora
