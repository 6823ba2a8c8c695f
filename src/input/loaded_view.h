#pragma once
/// One view in memory on its way from the file to the corrected picture.

#include <cstring>
#include <utility>

#include "input/view_geometry.h"
#include "numerics/bitmap.h"

namespace zemora {

/// One view with its present picture size; the bitmap may be larger.
struct LoadedView {
    Bitmap bitmap;
    int width = 0;
    int height = 0;
    [[nodiscard]] Picture picture() const { return bitmap.picture(width, height); }
    void take(Bitmap&& other) {
        bitmap = std::move(other);
        width = bitmap.width();
        height = bitmap.height();
    }
};

/// A view at work with the record of what is done to it.
struct RecordedView {
    LoadedView& view;
    InputGeometry& geometry;
};

/// Moves the region of the given size at (x, y) to the lower left corner.
inline void move_to_corner(Picture picture, int x, int y, int width, int height) {
    if (x == 0 && y == 0) {
        return;
    }
    for (int row = 0; row < height; ++row) {
        std::memmove(picture.row(row), picture.pixel(x, row + y),
                     static_cast<std::size_t>(width) * kPixelBytes);
    }
}

/// Keeps that region as the view.
inline void keep_region(LoadedView& view, int x, int y, int width, int height) {
    move_to_corner(view.picture(), x, y, width, height);
    view.width = width;
    view.height = height;
}

/// Gives the view a bitmap of exactly its size, so that both views of a pair have one pitch. Without memory
/// the view is empty.
inline void make_exact(LoadedView& view) {
    if (view.bitmap.width() == view.width && view.bitmap.height() == view.height) {
        return;
    }
    Bitmap exact = Bitmap::create(view.width, view.height);
    if (exact) {
        copy(view.picture(), exact.picture());
    }
    view.take(std::move(exact));
}

}  // namespace zemora
