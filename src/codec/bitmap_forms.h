#pragma once
/// Bitmaps of other forms than 24 bits, parts of bitmaps, and the library's own scaling. What gives a bitmap
/// gives an empty one when the memory is not there.

#include "numerics/bitmap.h"

namespace zemora {

/// Whether the pixels are red, green and blue of 16 bits.
[[nodiscard]] bool is_deep(const Bitmap& bitmap);

/// A black bitmap of red, green and blue of 16 bits, which the library keeps in this order; empty also when a
/// side is not positive.
[[nodiscard]] Bitmap create_deep(int width, int height);

/// A bitmap of blue, green, red and alpha of 8 bits, all 0.
[[nodiscard]] Bitmap create_with_alpha(int width, int height);

/// A bitmap of cyan, magenta, yellow and black of 8 bits, all 0, marked as CMYK.
[[nodiscard]] Bitmap create_cmyk(int width, int height);

/// The picture with full alpha: 32 bits.
[[nodiscard]] Bitmap with_alpha(const Bitmap& picture);

/// A bitmap that shows `picture` without owning its pixels. The library wants them writable; encoding them
/// writes none.
[[nodiscard]] Bitmap borrowed(ConstPicture picture);

/// The columns [first, end) of a bitmap as a bitmap of their own.
[[nodiscard]] Bitmap columns_of(const Bitmap& bitmap, int first, int end);

/// The bitmap in another size, by a bicubic filter.
[[nodiscard]] Bitmap scaled_bicubic(const Bitmap& bitmap, int width, int height);

/// The lower left part of `part_width` by `part_height` pixels in another size, by a cubic B-spline.
[[nodiscard]] Bitmap scaled_b_spline(const Bitmap& bitmap, int part_width, int part_height, int width,
                                     int height);

}  // namespace zemora
