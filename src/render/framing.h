#pragma once
/// The canvas of a written picture, the automatic frame and the floating window.

#include "render/warp_state.h"

namespace zemora {

/// A value in the unit of `WinOffReference` (0 pixels; 1 per mille of the width; 2 to 5 per mille of
/// the height times 4:3, 1.6, 16:9, 17:9) as pixels.
[[nodiscard]] double pixels_from_reference(int value, int win_off_reference, int height, int width);

/// Canvas of one view, of the side-by-side picture or of the anaglyph; pixels, rows from the bottom.
struct CanvasLayout {
    int height = 0;
    int width = 0;
    int picture_row = 0;           ///< Bottom row of the pictures.
    int left_picture_column = 0;   ///< First column of the left (or only) picture.
    int right_picture_column = 0;  ///< Of the right picture of two.
};

enum class View { left, right };

/// Work out a canvas; the settings in `warp.frame` take what filling and limiting make of them.
[[nodiscard]] CanvasLayout single_view_layout(WarpState& warp, View view);
[[nodiscard]] CanvasLayout side_by_side_layout(WarpState& warp);
/// Both views on one another: the canvas of a single view without its line.
[[nodiscard]] CanvasLayout anaglyph_layout(WarpState& warp);

/// Frame left and right of one picture with its line, for canvases of several cells.
struct CellFrame {
    int left = 0;
    int right = 0;
};
/// How far `FrameFloating` moves the picture that stands there; pixels to the right.
[[nodiscard]] int floating_share(const WarpState& warp, View view);
/// As the layouts do it; `frame.top` and `frame.bottom` of `warp` are settled too. A `FillWidth` below
/// `least_fill_width` is told.
[[nodiscard]] CellFrame settle_cell_frame(WarpState& warp, int least_fill_width);
/// Least part of `FrameCentral` between two pictures side by side: the gap of their margins may be closed,
/// never more.
[[nodiscard]] int held_central(const WarpState& warp, const CellFrame& cell);

/// Automatic `FrameFloating` (`AutoFrameFloating` 1, 2) for a far point in pixels of the size worked at,
/// which times `reduction` is that of the output, and so of the frames. Changes `warp.frame` and, in mode 2
/// with a forced width, `work_width` of `warp`. The width that mode 2 narrows the views to before they are
/// reduced, so that their canvas keeps its own; 0 when they stay.
[[nodiscard]] int apply_automatic_frame(WarpState& warp, const ParameterSet& parameters, double far_point_px,
                                        double reduction);

/// Widths of the curtains, pixels.
struct Curtains {
    int left = 0;
    int right = 0;
};

/// Blackens (or ramps, `AutoFrameFloating` 4 and 6) the outer edges of the finished views.
void floating_bands(WarpState& warp, Curtains curtains, int auto_frame_floating);

}  // namespace zemora
