#pragma once
/// Which part of a warped frame is warped and kept: selection window, common area, ratio, forced cut.

#include "render/warp_pair.h"

namespace zemora {

/// The smallest side of a common image area that counts as a picture, pixels.
inline constexpr int kSmallestCommonSide = 16;

/// The rows and columns to warp in a frame of that size; the whole frame without a window.
/// Tells when the window is brought to the ratio of the target.
[[nodiscard]] PixelRectangle find_range(const CropPlan& crop, const PictureSize& frame, Notes& notes);

/// The width over height that `CroppOutput` 4 and 5 cut to; 0 when a target side is missing.
[[nodiscard]] double target_ratio(const CropPlan& crop);

/// Cuts to the forced sides where they are reached. `window`: for a rectangle chosen by a window.
[[nodiscard]] PixelRectangle forced_cut(PixelRectangle rectangle, const SizeWish& wish, bool window);

/// Sets to `background` in both views what is background in one.
void blank_common(const WorkingViews& views, Colour background);

/// The part of the warped frame that is kept, after the warp of `range`. Empty when the common image
/// area is too small. `CroppOutput` 1 blanks the views and writes the area into a file.
[[nodiscard]] PixelRectangle find_kept(const WorkingViews& frame, const CropPlan& crop, Colour background,
                                       const PixelRectangle& range, Notes& notes);

/// Moves the rectangle of both views to their origin; they have its size then.
void keep_part(WarpedPair& pair, const PixelRectangle& kept);

/// Tells a selection without window which part of the frame was kept, in fractions of the frame.
void select_kept(const WarpedPair& pair, SelectionBox& selection);

/// Cuts both finished views, equally at both sides, to `width` where they are wider.
void narrow_views(WarpedPair& pair, int width);

}  // namespace zemora
