#pragma once
/// The finished views of a pair and what stands round them: all that its products are made from.

#include "numerics/bitmap.h"
#include "render/frame_settings.h"
#include "render/picture_texts.h"
#include "render/thumbnails.h"

namespace zemora {

/// A view as the products show it at the left or at the right.
struct FinishedView {
    ConstPicture picture;
    bool is_mirrored = false;  ///< Turning has exchanged its left and right side.
    /// Where `FrameFloating` moves it: -1 and +1 for the true left and right view, the other way round where
    /// turning has exchanged its sides.
    int floating_sign = 0;
};

/// Both views have one size. Products take it as it stands, so that they may be made at the same time. The
/// pixels belong to the pair that was warped and must outlive it.
struct Finished {
    FinishedView left{{}, false, -1};
    FinishedView right{{}, false, 1};
    FrameSettings frame;  ///< As the first product finds it; each layout settles it for the next one.
    PictureTexts texts;
    Curtains curtains;
    bool eight_bits_only = false;  ///< A step that has no form with 16 bits has changed the views.
    int left_turn = 0;             ///< How the true views were turned, 0 to 7 as `RotMirOutputLeft`.
    int right_turn = 0;
    bool is_exchanged = false;  ///< The true left view stands at the right.
    Thumbnails thumbnails;      ///< Of the true views before their turning, where they were wanted.

    [[nodiscard]] const FinishedView& view(View side) const { return side == View::left ? left : right; }
    [[nodiscard]] StereoPicture views() const { return {left.picture, right.picture}; }
    [[nodiscard]] int width() const { return left.picture.width; }
    [[nodiscard]] int height() const { return left.picture.height; }
};

}  // namespace zemora
