#include "numerics/fourier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace zemora {
namespace {

std::vector<float> some_values(std::size_t count, unsigned seed) {
    std::vector<float> values(count);
    for (float& value : values) {
        seed = seed * 1664525U + 1013904223U;
        value = static_cast<float>(seed >> 8) / (1U << 24) - 0.5F;
    }
    return values;
}

TEST(Fourier, IsTheSumOfTurns) {
    for (const std::size_t count : {1U, 2U, 4U, 32U}) {
        std::vector<std::complex<double>> values(count);
        const std::vector<float> real = some_values(count, 1);
        const std::vector<float> imaginary = some_values(count, 2);
        for (std::size_t i = 0; i < count; ++i) {
            values[i] = {real[i], imaginary[i]};
        }
        const auto given = values;
        fourier(values);
        for (std::size_t k = 0; k < count; ++k) {
            std::complex<double> sum;
            for (std::size_t n = 0; n < count; ++n) {
                sum += given[n] * std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(k * n) /
                                                      static_cast<double>(count));
            }
            EXPECT_NEAR(std::abs(sum - values[k]), 0.0, 1e-12) << count << ' ' << k;
        }
    }
}

TEST(CrossCorrelation, IsTheSumOfProductsForEachLag) {
    for (const auto& [left, right] : {std::pair{7, 12}, std::pair{12, 3}, std::pair{1, 1}, std::pair{8, 8}}) {
        const std::vector<float> a = some_values(static_cast<std::size_t>(left), 3);
        const std::vector<float> b = some_values(static_cast<std::size_t>(right), 4);
        const std::vector<double> sums = cross_correlation(a, b);
        const auto count = static_cast<int>(sums.size());
        for (int lag = -left + 1; lag < right; ++lag) {
            double sum = 0.0;
            for (int t = std::max(0, -lag); t < std::min(left, right - lag); ++t) {
                sum += static_cast<double>(a[static_cast<std::size_t>(t)]) *
                       b[static_cast<std::size_t>(t + lag)];
            }
            EXPECT_NEAR(sums[static_cast<std::size_t>((lag + count) % count)], sum, 1e-12) << lag;
        }
    }
}

}  // namespace
}  // namespace zemora
