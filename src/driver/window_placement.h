#pragma once
/// Placing the stereo window: from the measured window value to the shift of the views.

#include "config/parameter_set.h"
#include "numerics/pair_geometry.h"

namespace zemora {

/// `shift_px` and `window_px` in input pixels, the window relative to the shift; `scale` output
/// pixels per input pixel; the working size in pixels serves the unit of `WindowOffset`.
[[nodiscard]] WindowPlacement place_window(const ParameterSet& parameters, double shift_px, double window_px,
                                           double scale, int working_height, int working_width);

}  // namespace zemora
