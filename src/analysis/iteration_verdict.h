#pragma once
/// The test that ends the iteration of a pair.

#include "numerics/pair_geometry.h"

namespace zemora {

/// What one iteration's remaining errors amount to.
struct StopVerdict {
    StatusCode status = StatusCode::no_result;
    bool converged = false;
    bool worth_keeping = false;  ///< Met the strict or the loose test.
};

/// Judges the remaining errors of an iteration, their height in input pixels, for a pair of `input_height`
/// rows, analysed in the first instance at `reduced_height` rows.
[[nodiscard]] StopVerdict judge_iteration(const Correction& remaining, int input_height, int reduced_height);

}  // namespace zemora
