#include "render/canvas.h"

#include <algorithm>
#include <array>

#include "codec/bitmap_forms.h"

namespace zemora {

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

Bitmap framed_canvas(int width, int height, Colour frame) {
    Bitmap canvas = Bitmap::create(width, height);
    // The library hands out black; only another colour has to be filled in.
    if (canvas && frame != Colour{}) {
        fill(canvas.picture(), frame);
    }
    return canvas;
}

void draw_thin_line(const Finished& pair, int line, Picture canvas, int x, int y) {
    if (line > 0) {
        fill(clipped(canvas, x - line, y - line, pair.width() + 2 * line, pair.height() + 2 * line),
             Colour{});
    }
}

CaptionPlace caption_place(const Finished& pair, const FrameSettings& frame, int picture_column, View view) {
    return {picture_column - floating_share(pair, frame, view) + pair.width() / 2,
            pair.view(view).is_mirrored};
}

Bitmap compose_view(const Finished& pair, const CanvasLayout& layout, View view, Notes& notes) {
    const ConstPicture& picture = pair.view(view).picture;
    const int column = view == View::left ? layout.left_picture_column : layout.right_picture_column;
    if (layout.width == picture.width && layout.height == picture.height && column == 0 &&
        layout.picture_row == 0) {
        return borrowed(picture);
    }
    Bitmap canvas = framed_canvas(layout.width, layout.height, layout.frame.colour);
    if (canvas) {
        draw_thin_line(pair, layout.frame.thin_line, canvas.picture(), column, layout.picture_row);
        const CaptionPlace caption = caption_place(pair, layout.frame, column, view);
        draw_cell_texts(pair.texts, layout.frame, pair.height(), canvas.picture(), {&caption, 1}, notes);
        copy_clipped(picture, canvas.picture(), column, layout.picture_row);
    }
    return canvas;
}

Bitmap compose_side_by_side(const Finished& pair, const CanvasLayout& layout, Notes& notes) {
    Bitmap canvas = framed_canvas(layout.width, layout.height, layout.frame.colour);
    if (canvas) {
        const Picture picture = canvas.picture();
        const int row = layout.picture_row;
        draw_thin_line(pair, layout.frame.thin_line, picture, layout.left_picture_column, row);
        draw_thin_line(pair, layout.frame.thin_line, picture, layout.right_picture_column, row);
        const std::array<CaptionPlace, 2> captions = {
            caption_place(pair, layout.frame, layout.left_picture_column, View::left),
            caption_place(pair, layout.frame, layout.right_picture_column, View::right)};
        draw_cell_texts(pair.texts, layout.frame, pair.height(), picture, captions, notes);
        copy_clipped(pair.left.picture, picture, layout.left_picture_column, row);
        copy_clipped(pair.right.picture, picture, layout.right_picture_column, row);
    }
    return canvas;
}

}  // namespace zemora
