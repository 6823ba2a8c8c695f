#pragma once
/// The warps that bring a pair to the wanted size: each is decided from the one before.

#include "render/warp_pair.h"

namespace zemora {

/// What all warps of a pair to its size share.
struct Sizing {
    Correction correction;       ///< Pixels of the input; its shift is that of the views.
    float window_offset = 0.0F;  ///< How far a person has moved the window, fraction of the frame's width.
    int interpolation_mode = 0;
};

/// What is known of the views before their first warp to a size.
struct MeasuredFrame {
    PictureSize frame;            ///< Whole, working pixels.
    PixelRectangle common_area;   ///< Of that frame.
    double scale = 1.0;           ///< Working pixels per input pixel.
    double shift_input_px = 0.0;  ///< Of the views when the area was found.
};

/// Target over present size before the first warp: of the selected window, of the whole frame where nothing
/// is cropped, or of what is kept of it.
[[nodiscard]] SizeRepeat first_size(const MeasuredFrame& measured, const Sizing& sizing,
                                    const CropPlan& crop);

/// `CroppOutput` 3 with a window forces the side that needs the smaller factor, so that all of the window
/// stays inside the target; else what the wish forces.
[[nodiscard]] int force_inside_target(const CropPlan& crop, const SizeRepeat& first);

/// The warp behind `last`, at the size that `repeat` asks for.
[[nodiscard]] WarpPlan next_plan(const WarpPlan& last, const Sizing& sizing, const SizeRepeat& repeat);

/// Repeats the warp of `pair` from `plan` on until its size is the wanted one, at most five times; once more
/// where `is_changed` (as by a new tone). True when the size is reached. Fails as `warp_pair`.
[[nodiscard]] Result<bool> fit_to_size(const StereoPicture& source, WarpPlan plan, bool is_changed,
                                       const Sizing& sizing, const ColourChange* colours, WarpedPair& pair,
                                       Notes& notes);

}  // namespace zemora
