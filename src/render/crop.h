#pragma once
/// Which part of a warped frame is warped and kept: selection window, common area, ratio, forced cut.

#include "render/output_size.h"
#include "render/warp_state.h"

namespace zemora {

/// The smallest side of a common image area that counts as a picture, pixels.
inline constexpr int kSmallestCommonSide = 16;

/// Whether a selection window is in force.
[[nodiscard]] inline bool has_window(const SelectionBox& selection) {
    return selection.mode != 0;
}

/// The rows and columns to warp in a frame of the given size; the whole frame without a window.
/// Tells when the window is brought to the ratio of the target.
[[nodiscard]] PixelRectangle find_range(const WarpState& warp, const SelectionBox& selection, int size_step,
                                        int height, int width);

/// The width over height that `CroppOutput` 4 and 5 cut to; 0 when a target side is missing.
[[nodiscard]] double target_ratio(const WarpState& warp);

/// Cuts to the forced sides where they are reached. `window`: for a rectangle chosen by a window.
[[nodiscard]] PixelRectangle forced_cut(PixelRectangle rectangle, const WarpState& warp, bool window);

/// Sets to `background` in both views what is background in one.
void blank_common(Picture left, Picture right, Colour background);

/// The part of the warped frame that is kept, after the warp of `range`. Empty when the common image
/// area is too small.
[[nodiscard]] PixelRectangle find_kept(WarpState& warp, const SelectionBox& selection, int size_step,
                                       const PixelRectangle& range);

/// Moves the rectangle of both working pictures to their origin.
void move_to_origin(WarpState& warp, const PixelRectangle& kept);

/// Cuts both finished views, equally at both sides, to `width` where they are wider.
void narrow_views(WarpState& warp, int width);

}  // namespace zemora
