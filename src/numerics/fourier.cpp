#include "numerics/fourier.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>

namespace zemora {

namespace {

using Values = std::vector<std::complex<double>>;

void order_by_reversed_bits(Values& values) {
    for (std::size_t i = 1, reversed = 0; i < values.size(); ++i) {
        std::size_t bit = values.size() / 2;
        for (; (reversed & bit) != 0; bit /= 2) {
            reversed ^= bit;
        }
        reversed |= bit;
        if (i < reversed) {
            std::swap(values[i], values[reversed]);
        }
    }
}

}  // namespace

void fourier(Values& values) {
    order_by_reversed_bits(values);
    Values turns(values.size() / 2);
    for (std::size_t i = 0; i < turns.size(); ++i) {
        const double angle =
            -2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(values.size());
        turns[i] = {std::cos(angle), std::sin(angle)};
    }
    for (std::size_t half = 1; half < values.size(); half *= 2) {
        const std::size_t turn_step = turns.size() / half;
        for (std::size_t start = 0; start < values.size(); start += 2 * half) {
            for (std::size_t i = 0; i < half; ++i) {
                std::complex<double>& low = values[start + i];
                std::complex<double>& high = values[start + i + half];
                const std::complex<double> turn = turns[i * turn_step];
                // Written out: the operator takes care of infinite values, which costs much.
                const std::complex<double> turned(high.real() * turn.real() - high.imag() * turn.imag(),
                                                  high.real() * turn.imag() + high.imag() * turn.real());
                high = low - turned;
                low += turned;
            }
        }
    }
}

std::vector<double> cross_correlation(const std::vector<float>& a, const std::vector<float>& b) {
    const std::size_t count = std::bit_ceil(a.size() + b.size() + 1);
    // Both in one transform: a as the real, b as the imaginary part.
    Values values(count);
    for (std::size_t i = 0; i < a.size(); ++i) {
        values[i].real(a[i]);
    }
    for (std::size_t i = 0; i < b.size(); ++i) {
        values[i].imag(b[i]);
    }
    fourier(values);
    const auto product = [](std::complex<double> here, std::complex<double> mirrored) {
        const std::complex<double> of_a = 0.5 * (here + std::conj(mirrored));
        const std::complex<double> of_b = std::complex<double>(0.0, -0.5) * (here - std::conj(mirrored));
        return of_a * std::conj(of_b);  // conjugate, so that the same transform leads back
    };
    for (std::size_t k = 0; k <= count / 2; ++k) {
        std::complex<double>& low = values[k];
        std::complex<double>& high = values[(count - k) % count];
        const std::complex<double> of_low = product(low, high);
        high = product(high, low);
        low = of_low;
    }
    fourier(values);
    std::vector<double> sums(count);
    for (std::size_t d = 0; d < count; ++d) {
        sums[d] = values[d].real() / static_cast<double>(count);
    }
    return sums;
}

}  // namespace zemora
