#pragma once
/// Composes the picture that is written: frame, thin line and one or two views.

#include "render/framing.h"
#include "render/warp_state.h"

namespace zemora {

/// The part of `picture` that the rectangle covers; empty (no width or height) beside it.
[[nodiscard]] Picture clipped(Picture picture, int x, int y, int width, int height);

/// Copies `source` with its lower left pixel at (x, y) of `target`; what lies beside the target is left out.
void copy_clipped(ConstPicture source, Picture target, int x, int y);

/// Black where a picture at (x, y) and its thin line come to stand.
void draw_thin_line(const WarpState& warp, Picture canvas, int x, int y);

/// The caption below a view whose picture stands at that column, with its share of `FrameFloating`.
[[nodiscard]] CaptionPlace caption_place(const WarpState& warp, int picture_column, View view);

/// One view on its canvas. Without frame and line the bitmap is a window into the working picture and
/// must not outlive it. Empty when the memory is not there.
[[nodiscard]] Bitmap compose_view(const WarpState& warp, const CanvasLayout& layout, View view);

/// Both views side by side.
[[nodiscard]] Bitmap compose_side_by_side(const WarpState& warp, const CanvasLayout& layout);

}  // namespace zemora
