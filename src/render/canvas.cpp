#include "render/canvas.h"

#include <FreeImage.h>

#include <algorithm>
#include <array>

namespace zemora {

namespace {

/// A bitmap that shows `picture` without owning its pixels.
Bitmap borrowed(Picture picture) {
    return Bitmap(FreeImage_ConvertFromRawBitsEx(
        FALSE, picture.bits, FIT_BITMAP, picture.width, picture.height, static_cast<int>(picture.pitch),
        8 * kPixelBytes, FI_RGBA_RED_MASK, FI_RGBA_GREEN_MASK, FI_RGBA_BLUE_MASK, FALSE));
}

}  // namespace

Picture clipped(Picture picture, int x, int y, int width, int height) {
    const int left = std::clamp(x, 0, picture.width);
    const int bottom = std::clamp(y, 0, picture.height);
    const int right = std::clamp(x + width, left, picture.width);
    const int top = std::clamp(y + height, bottom, picture.height);
    return picture.part(left, bottom, right - left, top - bottom);
}

void copy_clipped(ConstPicture source, Picture target, int x, int y) {
    const Picture covered = clipped(target, x, y, source.width, source.height);
    if (covered.width > 0 && covered.height > 0) {
        copy(source.part(std::max(0, -x), std::max(0, -y), covered.width, covered.height), covered);
    }
}

void draw_thin_line(const WarpState& warp, Picture canvas, int x, int y) {
    const int line = warp.frame.thin_line;
    if (line > 0) {
        fill(clipped(canvas, x - line, y - line, warp.width + 2 * line, warp.height + 2 * line), Colour{});
    }
}

CaptionPlace caption_place(const WarpState& warp, int picture_column, View view) {
    const bool is_mirrored = view == View::left ? warp.left_is_mirrored : warp.right_is_mirrored;
    return {picture_column - floating_share(warp, view) + warp.width / 2, is_mirrored};
}

Bitmap compose_view(const WarpState& warp, const CanvasLayout& layout, View view) {
    const Bitmap& working = view == View::left ? warp.left : warp.right;
    const Picture picture = working.picture(warp.width, warp.height);
    const int column = view == View::left ? layout.left_picture_column : layout.right_picture_column;
    if (layout.width == warp.width && layout.height == warp.height && column == 0 &&
        layout.picture_row == 0) {
        return borrowed(picture);
    }
    Bitmap canvas = Bitmap::create(layout.width, layout.height);
    if (canvas) {
        fill(canvas.picture(), warp.frame.colour);
        draw_thin_line(warp, canvas.picture(), column, layout.picture_row);
        const CaptionPlace caption = caption_place(warp, column, view);
        draw_cell_texts(warp, canvas.picture(), {&caption, 1});
        copy_clipped(picture, canvas.picture(), column, layout.picture_row);
    }
    return canvas;
}

Bitmap compose_side_by_side(const WarpState& warp, const CanvasLayout& layout) {
    Bitmap canvas = Bitmap::create(layout.width, layout.height);
    if (canvas) {
        const StereoPicture pair = warp.pair();
        // The library hands out black; only another colour has to be filled in.
        if (warp.frame.colour != Colour{}) {
            fill(canvas.picture(), warp.frame.colour);
        }
        draw_thin_line(warp, canvas.picture(), layout.left_picture_column, layout.picture_row);
        draw_thin_line(warp, canvas.picture(), layout.right_picture_column, layout.picture_row);
        const std::array<CaptionPlace, 2> captions = {
            caption_place(warp, layout.left_picture_column, View::left),
            caption_place(warp, layout.right_picture_column, View::right)};
        draw_cell_texts(warp, canvas.picture(), captions);
        copy_clipped(pair.left, canvas.picture(), layout.left_picture_column, layout.picture_row);
        copy_clipped(pair.right, canvas.picture(), layout.right_picture_column, layout.picture_row);
    }
    return canvas;
}

}  // namespace zemora
