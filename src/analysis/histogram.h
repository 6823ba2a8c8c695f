#pragma once
/// Histograms of a view.

#include <array>
#include <cstdint>

#include "analysis/colormap.h"

namespace zemora {

inline constexpr int kLevels = ToneTables::kLevels;
using Histogram = std::array<std::uint32_t, kLevels>;

/// Weights of the channels in a grey value, per mille.
inline constexpr int kGreyBlue = 114;
inline constexpr int kGreyGreen = 587;
inline constexpr int kGreyRed = 299;

/// The weighted mean of the channels, rounded down exactly.
[[nodiscard]] constexpr int grey_value(int blue, int green, int red) {
    return (kGreyBlue * blue + kGreyGreen * green + kGreyRed * red) / 1000;
}

/// Counts the grey values of the pixels that differ from `passe`.
[[nodiscard]] Histogram grey_histogram(ConstPicture view, Colour passe);

/// Counts each channel of the pixels that differ from `passe`: blue, green, red.
[[nodiscard]] std::array<Histogram, kPixelBytes> channel_histograms(ConstPicture view, Colour passe);

namespace histogram_kernels {

/// Level that stands for a pixel which is not counted.
inline constexpr int kNotCounted = kLevels;

/// levels[x] = grey value of pixel x, or `kNotCounted` for the colour `passe` (three bytes).
void grey_row_portable(const std::uint8_t* pixels, int count, const std::uint8_t* passe,
                       std::uint16_t* levels);
#if defined(__x86_64__)
/// The same for the leading pixels of a row; returns how many it did.
int grey_row_avx2(const std::uint8_t* pixels, int count, const std::uint8_t* passe, std::uint16_t* levels);
#endif

}  // namespace histogram_kernels

}  // namespace zemora
