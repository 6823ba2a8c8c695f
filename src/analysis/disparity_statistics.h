#pragma once
/// Disparities of a grid and the choice of the stereo window.

#include "analysis/stereo_analyse.h"

namespace zemora {

/// Sets `disparity` and the mean disparity in `correction.shift_px` by the valid cells of a grid of `columns`
/// x `rows` cells, that of phase 2 or 3. `width` of the image in pixels is the start of the extremes.
void update_grid_disparities(AnalysisState& state, int width, int columns, int rows);

/// The same for the grid of phase 5, with the centre, in pixels of the measured copy. False without a valid
/// cell.
[[nodiscard]] bool update_line_disparities(AnalysisState& state, int width);

/// Sets `window_px` by `EstimateWindow` for a measured image of that size; another value of the
/// setting keeps the window of the measurement before and gives false.
bool choose_window(AnalysisState& state, int height, int width);

/// A length given by a setting in the unit of `WinOffReference`, in pixels of an image of that size:
/// pixels, per mille of the width, or per mille of the width of a picture of that height with the
/// aspect 4:3, 16:10, 16:9, 17:9.
[[nodiscard]] double window_length_px(double length, int reference, double height, double width);

}  // namespace zemora
