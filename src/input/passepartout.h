#pragma once
/// The frame round an input picture that is painted over, in the colour that means "no picture here".

#include <cstdint>

#include "numerics/bitmap.h"

namespace zemora {

/// The colour that marks the absence of picture: `chosen`, black where a measured frame is painted.
[[nodiscard]] Colour passe_colour_of(int passepartout, Colour chosen);

inline void set_colour(std::uint8_t* pixel, Colour colour) {
    pixel[0] = colour.blue;
    pixel[1] = colour.green;
    pixel[2] = colour.red;
}
/// Sum of the absolute differences of the three channels.
[[nodiscard]] inline int colour_distance(const std::uint8_t* pixel, Colour colour) {
    const auto difference = [](int a, int b) { return a < b ? b - a : a - b; };
    return difference(pixel[0], colour.blue) + difference(pixel[1], colour.green) +
           difference(pixel[2], colour.red);
}

/// Changes the blue of every pixel of exactly that colour by one, so that no pixel of the picture is taken
/// for background.
void protect_from_colour(Picture picture, Colour colour);

/// Finds the frame from the four edges inward and paints it in `colour`; what is left of the picture is
/// protected from that colour. The frame's colour is `colour` too, or with `measured` the mean of the edge.
/// `tolerance`: colour distance up to which a pixel is frame.
void paint_frame(Picture picture, Colour colour, bool measured, int tolerance);

/// Paints the pixels in `colour` that are black in `mask`, which has the same size.
void paint_by_mask(Picture picture, ConstPicture mask, Colour colour);

/// Makes `mask` white, black where the picture of the same size has that colour.
void draw_mask(ConstPicture picture, Colour colour, Picture mask);

namespace passepartout_kernels {

/// Blue is raised below this value and lowered from it on.
inline constexpr int kBlueFallsFrom = 129;

/// One row of `protect_from_colour`: `colour` as three bytes.
void protect_row_portable(std::uint8_t* pixels, int count, const std::uint8_t* colour);
#if defined(__x86_64__)
/// The same for the leading pixels of a row; returns how many it did.
int protect_row_avx2(std::uint8_t* pixels, int count, const std::uint8_t* colour);
#endif

}  // namespace passepartout_kernels

}  // namespace zemora
