#pragma once
/// What the input did to one view between its file and the pair in memory.

namespace zemora {

/// From the file to the view that is measured. Rows count from the bottom.
struct InputGeometry {
    int crop_x = 0;  ///< The kept region of the loaded view, in its own pixels.
    int crop_y = 0;
    int crop_width = 0;
    int crop_height = 0;
    int rot_mir = 0;       ///< RotMirInput value applied, 0 to 7.
    int scaled_width = 0;  ///< Size to which the turned view was enlarged; 0 where it was not.
    int scaled_height = 0;
    /// Place of the view in the common canvas, or the negated amount cut off at the left and bottom.
    int frame_x = 0;
    int frame_y = 0;
    int frame_width = 0;  ///< Common size of both views.
    int frame_height = 0;
};

}  // namespace zemora
