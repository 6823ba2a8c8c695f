#pragma once
/// Pictures of 16 bits per channel, as the image library keeps them: red, green, blue of a pixel in this
/// order, rows from the bottom. A value is 256 times a level of the 8-bit pictures, and its fraction.

#include <cstddef>
#include <cstdint>

#include "codec/bitmap_forms.h"
#include "numerics/bitmap.h"

namespace zemora {

inline constexpr int kDeepBytes = 6;  ///< Bytes of a pixel.

/// A view of such a picture; owns nothing.
struct DeepPicture {
    std::uint8_t* bits = nullptr;
    std::ptrdiff_t pitch = 0;  ///< Bytes.
    int width = 0;
    int height = 0;

    [[nodiscard]] std::uint16_t* pixel(int x, int y) const {
        return reinterpret_cast<std::uint16_t*>(bits + y * pitch +
                                                static_cast<std::ptrdiff_t>(x) * kDeepBytes);
    }
};

[[nodiscard]] DeepPicture deep_picture(const Bitmap& bitmap);
/// Copies `source` with its lower left pixel at (x, y) of `target`, as far as both reach.
void copy_deep(DeepPicture source, DeepPicture target, int x, int y);
/// The same picture in 48 bits: white becomes the largest value.
[[nodiscard]] Bitmap widened(ConstPicture picture);

/// The 16-bit form of a level, for colours that are set and not measured.
[[nodiscard]] constexpr std::uint16_t deep_level(std::uint8_t level) {
    return static_cast<std::uint16_t>(level * 257);
}

}  // namespace zemora
