#pragma once
/// The rounding of real values to integers throughout: q(x) = floor(x + 0.5).

#include <cmath>
#include <cstdint>

namespace zemora {

/// floor(x + 0.5), limited to the range of an int; not-a-number gives 0.
[[nodiscard]] inline int round_half_up(double x) {
    const double rounded = std::floor(x + 0.5);
    if (rounded >= -2147483648.0 && rounded <= 2147483647.0) {
        return static_cast<int>(rounded);
    }
    return rounded > 0.0 ? INT32_MAX : (rounded < 0.0 ? INT32_MIN : 0);
}

}  // namespace zemora
