#pragma once
/// The body of `mix_linear_...`, compiled once for each instruction set.

#include "render/anaglyph_linear.h"

namespace zemora {

namespace {

/// A view's share of one output channel.
inline double limited_term(const double (&row)[kLinearPlanes], double red, double green, double blue,
                           double limit) {
    const double sum = row[0] * red + row[1] * green + row[2] * blue;
    const double floored = sum > 0.0 ? sum : 0.0;
    return floored < limit ? floored : limit;
}

inline void mix_linear_rows(const LinearBlock& block, const LinearRule& rule, LinearPlaces& places) {
    for (int k = 0; k < kLinearPlanes; ++k) {
        for (int x = 0; x < kLinearBlock; ++x) {
            const double sum = limited_term(rule.left[k], block.left[0][x], block.left[1][x],
                                            block.left[2][x], rule.term_limit) +
                               limited_term(rule.right[k], block.right[0][x], block.right[1][x],
                                            block.right[2][x], rule.term_limit);
            const double limited = sum < rule.sum_limit ? sum : rule.sum_limit;
            places.channel[k][x] = static_cast<std::int32_t>(limited * rule.scale + rule.offset);
        }
    }
}

}  // namespace

}  // namespace zemora
