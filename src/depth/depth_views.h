#pragma once
/// The two views of a pair from one picture and its depth mask. Bright means near.

#include <array>

#include "config/setting_values.h"
#include "numerics/bitmap.h"
#include "numerics/result.h"

namespace zemora {

/// How grey becomes parallax.
struct DepthSettings {
    int deviation_target = 0;   ///< Parallax of a table value of 256, per mille of the width.
    int depth_mask_offset = 0;  ///< Parallax of white, per mille of the width.
    int depth_mask_nonlin = 0;  ///< Bends the scale; 0 leaves it straight.
    int depth_mask_nl_type = setting::depth_mask_nl_type::power;
};

/// Table value of a grey: 0 for white, which stands in the window, to 255 for black.
using ShiftTable = std::array<double, 256>;
[[nodiscard]] ShiftTable grey_to_shift(const DepthSettings& settings);
/// `DepthMaskOffset` in units of the table; 0 without parallax.
[[nodiscard]] int shift_offset(const DepthSettings& settings);

/// The most columns that a pixel of a view of this mask is moved by, rounded up. So many columns at the sides
/// of a view may hold nothing.
[[nodiscard]] int largest_shift_px(const DepthSettings& settings, ConstPicture depth);

enum class DepthView { right = 0, left = 1 };

/// Renders views; one per run. The result does not depend on the number of threads.
class DepthState {
public:
    explicit DepthState(const DepthSettings& settings) : settings_(settings) {}

    /// Renders one view of `colour` with `depth`, of the same size, into `view_b` (right) or `view_a`
    /// (left). What comes out behind an edge takes the colour of the far side. Fails for the run
    /// without memory.
    [[nodiscard]] Result<void> render_view_from_depth(ConstPicture colour, ConstPicture depth,
                                                      DepthView view);

    Bitmap view_a;  ///< Left; at least as large as the picture.
    Bitmap view_b;  ///< Right.

private:
    DepthSettings settings_;
};

}  // namespace zemora
