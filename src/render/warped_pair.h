#pragma once
/// What a warp gives: both views of a pair at one size, in bitmaps that serve one pair after the other.

#include "numerics/bitmap.h"
#include "render/frame_settings.h"

namespace zemora {

struct WarpedPair {
    /// `width` by `height` pixels in the lower left of bitmaps of one pitch.
    Bitmap left;
    Bitmap right;
    int height = 0;
    int width = 0;

    [[nodiscard]] StereoPicture pair() const {
        return {left.picture(width, height), right.picture(width, height)};
    }
    [[nodiscard]] WorkingViews views() { return {left.picture(width, height), right.picture(width, height)}; }
};

/// Why there is no pair where its bitmaps find no memory.
inline constexpr const char* kNoMemoryForViews = "w1024: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE\n";

}  // namespace zemora
