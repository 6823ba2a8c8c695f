#pragma once
/// Brings decoded pictures from the many forms that the library leaves them in into those of Zemora: 24 bits,
/// or 16 bits a channel.

#include "numerics/bitmap.h"

namespace zemora {

/// 24 bits from any form; of 16 bits a channel the upper 8 stay. Empty where there is no way, or no memory.
[[nodiscard]] Bitmap as_24_bits(Bitmap bitmap);

/// Pixels of 16 bits in red, green and blue: from grey, and without alpha. Others stay as they are.
[[nodiscard]] Bitmap as_deep_colours(Bitmap bitmap);

/// 24 bits from cyan, magenta, yellow and black of 8 bits, as the library leaves them in a tiled TIFF file:
/// in the places of red, green, blue and alpha. Converted by the formula that the library uses for strips.
/// Empty for other depths.
[[nodiscard]] Bitmap inks_as_24_bits(const Bitmap& inks);

/// Grey of 16 bits from grey and alpha. The library takes them for a number of 32 bits, or for red, green,
/// blue and alpha of 8 bits, where red is the low byte of the grey and green its high one. Empty for other
/// pictures.
[[nodiscard]] Bitmap grey_of_deep_pairs(const Bitmap& pairs);

/// Turns grey of 16 bits into its negative; other pictures stay as they are.
void invert_deep_grey(Bitmap& bitmap);

}  // namespace zemora
