#pragma once
/// Anaglyph mixes that are one 3 by 3 matrix for each view, between two curves.

#include <cstdint>

namespace zemora {

/// Pixels of one block; channels in planes of their own.
inline constexpr int kLinearBlock = 64;
inline constexpr int kLinearPlanes = 3;

/// Red, green, blue of both views behind the first curve.
struct LinearBlock {
    alignas(64) double left[kLinearPlanes][kLinearBlock];
    alignas(64) double right[kLinearPlanes][kLinearBlock];
};

/// Places in the tables of the second curve, for red, green, blue.
struct LinearPlaces {
    alignas(64) std::int32_t channel[kLinearPlanes][kLinearBlock];
};

/// The mix between the curves: the three terms of each view are summed, limited to 0 and `term_limit`; both
/// views are added, limited to `sum_limit`, and the place is sum * scale + offset, cut off.
struct LinearRule {
    double left[kLinearPlanes][kLinearPlanes];  ///< Row: output channel, column: input channel.
    double right[kLinearPlanes][kLinearPlanes];
    double term_limit;
    double sum_limit;
    double scale;
    double offset;
};

/// The same numbers with each instruction set.
void mix_linear_portable(const LinearBlock& block, const LinearRule& rule, LinearPlaces& places);
void mix_linear_avx2(const LinearBlock& block, const LinearRule& rule, LinearPlaces& places);

}  // namespace zemora
