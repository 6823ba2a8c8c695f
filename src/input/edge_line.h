#pragma once
/// The line along one edge of a frame, from the places where single rows or columns leave it.

#include <cstddef>
#include <cstdint>
#include <span>

#include "numerics/bitmap.h"

namespace zemora {

/// v = slope * u + offset. For the left and right edge u is a row and v a column, for the lower and
/// upper edge the reverse.
struct EdgeLine {
    double slope = 0.0;
    double offset = 0.0;
    [[nodiscard]] double at(double u) const { return slope * u + offset; }
};

/// An edge as its rows (columns) see it: line u runs across the edge, pixel v of it lies deeper in the
/// picture, or less deep, by the direction.
struct EdgeStrip {
    const std::uint8_t* origin = nullptr;
    std::ptrdiff_t along = 0;   ///< Bytes from line to line.
    std::ptrdiff_t across = 0;  ///< Bytes from pixel to pixel of a line.
    int first = 0;              ///< Range of pixels that belong to the edge's half of the picture.
    int last = 0;
    bool frame_below = true;  ///< The frame has the smaller v.
    Colour colour;            ///< Of the frame.
};

/// Pixels that are compared on each side of a candidate, which itself takes no part.
inline constexpr int kEdgeSidePixels = 5;

/// How the places are looked for.
struct EdgeSearch {
    int first_line = 0;
    int last_line = -1;
    int reach = 5;             ///< Pixels to both sides of the expected place.
    int saturation = 3 * 255;  ///< Colour distance beyond which pixels are equally foreign to the frame.
    int least_contrast = 1;    ///< Inside less outside, each the sum over five pixels.
    bool innermost_of_equals = false;  ///< Of equally good places the innermost, not the first.
};

/// Value of a line without a place.
inline constexpr int kNoPlace = -1;

/// For each line the pixel at which frame turns into picture most clearly, or `kNoPlace`: five pixels to
/// its one side look most like the frame, five to its other side least. `places` starts at the first line.
void find_edge_places(const EdgeStrip& strip, const EdgeSearch& search, const EdgeLine& expected,
                      std::span<int> places);

/// Least squares line through the places of the lines `first_line` and following. False without any place;
/// with one line only, or all on one, the slope is 0.
[[nodiscard]] bool fit_edge_line(std::span<const int> places, int first_line, EdgeLine& line);

/// The same, leaving out in a few rounds what lies far off.
[[nodiscard]] bool fit_edge_line_without_strays(std::span<int> places, int first_line, EdgeLine& line);

}  // namespace zemora
