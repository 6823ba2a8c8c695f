#pragma once
/// The frame round the pictures of a product, and the curtains of a floating window.

#include "numerics/bitmap.h"

namespace zemora {

enum class View { left, right };

/// The frame round a picture, in pixels of the output. Starts from the parameters; the automatic frame and
/// the layouts settle it.
struct FrameSettings {
    int top = 0;
    int bottom = 0;
    int left_right = 0;
    int central = 0;
    int floating = 0;  ///< The left picture moves by -floating/2, the right by +floating/2.
    int fill_height = 0;
    int fill_width = 0;
    int thin_line = 0;
    Colour colour;

    friend bool operator==(const FrameSettings&, const FrameSettings&) = default;
};

/// Widths of the curtains of a floating window, pixels.
struct Curtains {
    int left = 0;
    int right = 0;
    [[nodiscard]] explicit operator bool() const { return left != 0 || right != 0; }
};

/// Both views of a pair, of one size, to be changed in place.
struct WorkingViews {
    Picture left;
    Picture right;
};

}  // namespace zemora
