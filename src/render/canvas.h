#pragma once
/// Composes the picture that is written: frame, thin line and one or two views.

#include "render/framing.h"

namespace zemora {

/// The part of `picture` that the rectangle covers; empty (no width or height) beside it.
[[nodiscard]] Picture clipped(Picture picture, int x, int y, int width, int height);

/// Copies `source` with its lower left pixel at (x, y) of `target`; what lies beside the target is left out.
void copy_clipped(ConstPicture source, Picture target, int x, int y);

/// A canvas in the colour of the frame; empty when the memory is not there.
[[nodiscard]] Bitmap framed_canvas(int width, int height, Colour frame);

/// Black where a picture of `pair` at (x, y) and its thin line come to stand.
void draw_thin_line(const Finished& pair, int thin_line, Picture canvas, int x, int y);

/// The caption below a view whose picture stands at that column, with its share of `FrameFloating`.
[[nodiscard]] CaptionPlace caption_place(const Finished& pair, const FrameSettings& frame, int picture_column,
                                         View view);

/// One view on its canvas. Without frame and line the bitmap is a window into the finished picture, which
/// must not be changed by it nor end before it. Empty when the memory is not there.
[[nodiscard]] Bitmap compose_view(const Finished& pair, const CanvasLayout& layout, View view, Notes& notes);

/// Both views side by side. Empty when the memory is not there.
[[nodiscard]] Bitmap compose_side_by_side(const Finished& pair, const CanvasLayout& layout, Notes& notes);

}  // namespace zemora
