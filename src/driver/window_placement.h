#pragma once
/// Placing the stereo window: from the measured window value to the shift of the views.

#include "numerics/pair_geometry.h"
#include "numerics/rescale.h"

namespace zemora {

/// Where a user wants the window.
struct WindowWish {
    int estimate_window = 2;
    int offset = 0;  ///< `WindowOffset`, in the unit of `reference`.
    int reference = 1;
};

/// The window is relative to the shift; `scale` are working pixels per input pixel; the working size in
/// pixels serves the unit of the offset.
[[nodiscard]] WindowPlacement place_window(const WindowWish& wish, double shift_input_px,
                                           double window_input_px, double scale, const PictureSize& working);

}  // namespace zemora
