#pragma once
/// Rates and time bases as fractions, so that 30000/1001 stays what it is.

namespace zemora {

struct Rational {
    int num = 0;
    int den = 1;

    [[nodiscard]] double value() const { return den != 0 ? static_cast<double>(num) / den : 0.0; }
    [[nodiscard]] bool is_positive() const { return num > 0 && den > 0; }
    friend bool operator==(const Rational&, const Rational&) = default;
};

}  // namespace zemora
