#pragma once
/// The vector forms of the steps of the bilinear rescaling. Each does the start or the middle of a row, gives
/// how far it came, and leaves the rest to the plain code, with the same numbers.
///
/// This header holds plain numbers only, no inline functions: the files that include it are compiled
/// for other instruction sets.

#include <cstdint>

namespace zemora::rescale_kernels {

/// Largest factor whose weights are summed without a shift, see `Triangle`.
constexpr int kLargestPlainFactor = 15;

/// Where a sample of the result lies between two samples of the source.
struct Place {
    std::int32_t first;
    std::int32_t second;
    float first_weight;
    float second_weight;  ///< `first_weight` is 1 minus this.
};

/// Sums `count` samples of the 2n - 1 `rows` with the weights 1, 2, ..., n, ..., 2, 1; `n` is at most
/// `kLargestPlainFactor`. Gives the number of samples done from the first on.
int sum_rows_avx2(const std::uint8_t* const* rows, int n, int count, std::uint16_t* sums);

/// Sums round every n-th of `width` pixels of such sums, each three samples, with the same weights, divided
/// by n x n x n x n. `weights` are the 2n - 1 weights and a 0 in pairs, the earlier in the low half. Does the
/// pixels of the result from pixel 1 on, which the edge does not touch, and gives the first of them that is
/// not done.
int reduce_row_avx2(const std::uint16_t* sums, int width, int n, const std::int32_t* weights,
                    std::uint8_t* out);

/// Interpolates `count` pixels from two rows of pixels. The places are those of the first byte of a pixel;
/// one byte behind the pixels of each is read. Gives the number of pixels done from the first on.
int interpolate_row_avx2(const std::uint8_t* lower, const std::uint8_t* upper, float upper_weight,
                         const Place* places, int count, std::uint8_t* out);

}  // namespace zemora::rescale_kernels
