#pragma once
/// Turning and mirroring pictures by the eight modes of the RotMir parameters.

#include <cstddef>
#include <cstdint>

namespace zemora {

/// Modes 0 to 7, as displayed: unchanged; turned 90 degrees counter-clockwise; 180 degrees; 90 degrees
/// clockwise; mirrored left to right; at the diagonal from upper right to lower left; top to bottom;
/// at the diagonal from upper left to lower right.
inline constexpr int kTurnModes = 8;

/// Odd modes exchange height and width.
[[nodiscard]] constexpr bool exchanges_sides(int mode) {
    return mode % 2 != 0;
}

/// Pixels of any depth in rows from the bottom.
struct PixelRows {
    std::uint8_t* bits = nullptr;
    std::ptrdiff_t pitch = 0;
};
struct ConstPixelRows {
    const std::uint8_t* bits = nullptr;
    std::ptrdiff_t pitch = 0;
};

/// Writes the `width` x `height` pixels of `pixel_bytes` bytes (3 or 6) turned into `target`, which has
/// room for the turned picture and does not overlap. A mode outside 0 to 7 counts as 0.
void turn_pixels(ConstPixelRows source, int width, int height, int pixel_bytes, int mode, PixelRows target);

}  // namespace zemora
