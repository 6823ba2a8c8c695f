#pragma once
/// One sample of a source picture at a position between pixels: the interpolation kernels.
///
/// A source may hold areas of the background colour, which is no picture: such taps count as the
/// pixel nearest to the sample, and a sample whose nearest pixel is background has no picture.

#include <array>
#include <cstdint>

#include "numerics/bitmap.h"

namespace zemora {

/// Kernels by number.
enum class Kernel { nearest = 0, bilinear = 1, bicubic = 2, tent = 3 };

/// Whether the number is one of `Kernel`.
[[nodiscard]] constexpr bool has_kernel(int interpolation) {
    return interpolation >= 0 && interpolation <= 3;
}
/// Rows of `Kernel`; another number is the bilinear kernel.
[[nodiscard]] Kernel kernel_of(int interpolation);

/// A sample: blue, green, red in 8.8 fixed point, 0 to 65535.
struct Sample {
    std::array<std::uint16_t, kPixelBytes> value{};
    std::uint16_t empty = 0;  ///< 1 where there is no picture.
    friend bool operator==(const Sample&, const Sample&) = default;
};

/// The four weights per fraction of 1/128 pixel for the taps -1, 0, 1, 2 of an axis, in 1/128.
using AxisWeights = std::array<std::array<std::int16_t, 4>, 128>;
[[nodiscard]] const AxisWeights& bicubic_weights();
[[nodiscard]] const AxisWeights& bilinear_weights();

/// One axis of a separable kernel: taps from `first` on, weights with a fixed sum.
struct Axis {
    static constexpr int kMostTaps = 8;
    int first = 0;
    int taps = 0;
    std::array<int, kMostTaps> weight{};
};

/// What is the same for all samples of a call.
struct Sampler {
    Sampler(Kernel chosen, int tent_radius, float gamma_value, Colour background_colour);

    Kernel kernel;
    int filter_radius;          ///< Of the tent, 1 to 3.
    bool linear_light = false;  ///< Blend in linear light by `gamma`.
    double gamma;
    Colour background;
    std::array<double, 256> light{};  ///< pow(byte, gamma).
};

/// The taps of the kernel for a position in 1/128 pixel; not of the nearest one.
[[nodiscard]] Axis axis_of(const Sampler& sampler, int position);
/// Sum of the weights of one axis.
[[nodiscard]] double axis_sum(const Sampler& sampler);

/// The sample at (x, y), in 1/128 pixel from the centre of pixel (0, 0).
[[nodiscard]] Sample sample_pixel(const Sampler& sampler, const ConstPicture& source, int x, int y);

/// Moves the first channel by one step of 256 when all high bytes equal `background`, so that picture
/// is not taken for background.
inline void keep_from_background(std::array<std::uint16_t, kPixelBytes>& value, Colour background) {
    constexpr int kMiddle = 32768;
    if ((value[0] >> 8) == background.blue && (value[1] >> 8) == background.green &&
        (value[2] >> 8) == background.red) {
        value[0] = static_cast<std::uint16_t>(value[0] < kMiddle ? value[0] + 256 : value[0] - 256);
    }
}

}  // namespace zemora
