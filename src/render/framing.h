#pragma once
/// Where the views stand on the canvas of a written picture, and the automatic frame. Numbers only: a layout
/// changes nothing and gives back the frame as it settled it.

#include "config/notes.h"
#include "render/finished.h"

namespace zemora {

/// A value in the unit of `WinOffReference` (0 pixels; 1 per mille of the width; 2 to 5 per mille of
/// the height times 4:3, 1.6, 16:9, 17:9) as pixels.
[[nodiscard]] double pixels_from_reference(int value, int win_off_reference, int height, int width);

/// What a layout found wrong with the frame.
struct FrameFaults {
    bool fill_height_too_low = false;
    bool fill_width_too_low = false;
    bool floating_reduced = false;
};
void tell_frame_faults(const FrameFaults& faults, Notes& notes);

/// Frame left and right of one picture with its line.
struct CellFrame {
    int left = 0;
    int right = 0;
};

/// The frame after filling and limiting. Products of a pair take the settled frame of the product before
/// them: a fill or a floating displacement that one of them limited stays limited.
struct SettledFrame {
    FrameSettings frame;
    CellFrame cell;
    FrameFaults faults;
};
/// A `FillWidth` below `least_fill_width` is a fault.
[[nodiscard]] SettledFrame settle_frame(const Finished& pair, const FrameSettings& frame,
                                        int least_fill_width);

/// Canvas of one view, of the side-by-side picture or of the anaglyph; pixels, rows from the bottom.
struct CanvasLayout {
    int height = 0;
    int width = 0;
    int picture_row = 0;           ///< Bottom row of the pictures.
    int left_picture_column = 0;   ///< First column of the left (or only) picture.
    int right_picture_column = 0;  ///< Of the right picture of two.
    FrameSettings frame;           ///< As it was settled for this canvas.
    FrameFaults faults;
};

[[nodiscard]] CanvasLayout single_view_layout(const Finished& pair, const FrameSettings& frame, View view);
[[nodiscard]] CanvasLayout side_by_side_layout(const Finished& pair, const FrameSettings& frame);
/// Both views on one another: the canvas of a single view without its line.
[[nodiscard]] CanvasLayout anaglyph_layout(const Finished& pair, const FrameSettings& frame);

/// How far `FrameFloating` moves the picture that stands there; pixels to the right.
[[nodiscard]] int floating_share(const Finished& pair, const FrameSettings& frame, View view);
/// Least part of `FrameCentral` between two pictures side by side: the gap of their margins may be closed,
/// never more.
[[nodiscard]] int held_central(const FrameSettings& frame, const CellFrame& cell);

/// What the automatic `FrameFloating` (`AutoFrameFloating` 1, 2) goes by.
struct AutomaticFrameRequest {
    int mode = 0;  ///< `AutoFrameFloating`; without a frame of its own for other values than 1 and 2.
    int floating_target = 0;
    int win_off_reference = 0;
    int output_width = 0;  ///< As the user wants it; 0 for none.
    int width = 0;         ///< Of the warped views, pixels of the size worked at.
    int height = 0;
    int forced_width = 0;  ///< Which the views are brought to; 0 for none.
    double far_point_px = 0.0;
    double reduction = 1.0;  ///< Pixels of the output, and so of the frame, per pixel of the size worked at.
};

struct AutomaticFrame {
    FrameSettings frame;
    /// In mode 2 the width that the views are narrowed to before they are reduced, so that their canvas keeps
    /// its own; 0 when they stay.
    int narrowed_width = 0;
};

/// Tells a frame that is too small for the displacement.
[[nodiscard]] AutomaticFrame automatic_frame(const FrameSettings& frame, const AutomaticFrameRequest& request,
                                             Notes& notes);

/// Blackens (or ramps, `AutoFrameFloating` 4 and 6) the outer edges of the finished views.
void floating_bands(const WorkingViews& views, Curtains curtains, int auto_frame_floating);

}  // namespace zemora
