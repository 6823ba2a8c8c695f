#pragma once
/// What was done to one view between its file and the corrected picture.

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

/// The whole way of a view. The input part is that of `InputViews`, the warp writes the next, the writers
/// read both; the 16-bit output repeats the whole way from it.
struct ViewGeometry : InputGeometry {
    // Warp: the transform as applied to this view, signed for it; fixed point as in render/warp_plan.h.
    float total_scale = 1.0F;  ///< Output pixels per source pixel.
    int height = 0;            ///< Frame of the warp before the crop, pixels.
    int width = 0;
    double phantogram = 0.0;
    double edge_warp = 0.0;
    double vertical_ax = 0.0;
    double common_trapez = 0.0;
    double sym_trapez = 0.0;
    double trapez_scale = 1.0;
    int window_shift_128 = 0;  ///< 1/128 pixel.
    int height_shift_128 = 0;  ///< 1/128 pixel.
    int size_32768 = 0;
    int rotation_16384 = 0;
    int pre_rotation_16384 = 0;
    int vergence_v_16384 = 0;
    int pre_vergence_v_16384 = 0;
    int vergence_h_32768 = 0;
    int kept_x = 0;  ///< Crop of the warped frame.
    int kept_y = 0;
    int kept_width = 0;
    int kept_height = 0;

    // Output: tone and frame of this view.
    int tone_mode = 0;  ///< AutoOutputContrast where this view is adapted, else 0.
    int fill_height = 0;
    int fill_width = 0;
    int frame_top = 0;
    int frame_bottom = 0;
    int frame_left_right = 0;
    int frame_central = 0;
    int frame_floating = 0;  ///< Signed share of this view.
};

}  // namespace zemora
