#pragma once
/// The window that a viewer, a mask or a stored record chose in a warped frame.

namespace zemora {

/// Fractions of the frame unless said otherwise; `bottom` and
/// `top` count rows from the bottom.
struct SelectionBox {
    int mode = 0;            ///< 0 none, 1 a window, 2 and 3 the forms of video.
    float band_left = 0.0F;  ///< Floating band, fraction of the width.
    float band_right = 0.0F;
    float window_offset = 0.0F;  ///< Window shift, fraction of the width.
    float left = 0.0F;
    float right = 0.0F;
    float top = 0.0F;
    float bottom = 0.0F;
    float result_left = 0.0F;  ///< Rectangle kept by a warp without window.
    float result_bottom = 0.0F;
    float result_right = 0.0F;
    float result_top = 0.0F;

    /// Whether a window is in force.
    [[nodiscard]] bool has_window() const { return mode != 0; }
};

}  // namespace zemora
