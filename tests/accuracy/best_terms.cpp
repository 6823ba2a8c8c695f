#include "tests/accuracy/best_terms.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "numerics/small_numerics.h"

namespace zemora::test {

namespace {

constexpr int kTerms = 5;
using Terms = std::array<double, kTerms>;

/// Height, size, rotation, vergence V and H.
Terms terms_at(const HeightError& error) {
    return {1.0, error.y, error.x, error.x * error.y, error.y * error.y};
}

double remainder(const HeightError& error, const Terms& fit) {
    const Terms terms = terms_at(error);
    double value = error.dy;
    for (std::size_t i = 0; i < kTerms; ++i) {
        value -= fit[i] * terms[i];
    }
    return value;
}

/// Weighted least squares; false when the terms cannot be told apart.
bool solve(const std::vector<HeightError>& errors, const std::vector<double>& weights, Terms& fit) {
    std::array<Terms, kTerms> matrix{};
    fit = {};
    for (std::size_t k = 0; k < errors.size(); ++k) {
        const Terms terms = terms_at(errors[k]);
        for (std::size_t i = 0; i < kTerms; ++i) {
            fit[i] += weights[k] * terms[i] * errors[k].dy;
            for (std::size_t j = 0; j < kTerms; ++j) {
                matrix[i][j] += weights[k] * terms[i] * terms[j];
            }
        }
    }
    std::array<double*, kTerms> rows{};
    std::transform(matrix.begin(), matrix.end(), rows.begin(), [](Terms& row) { return row.data(); });
    std::array<int, kTerms> order{};
    if (gauss_lr_kijtp(kTerms, rows.data(), fit.data(), order.data()) != Solution::done) {
        return false;
    }
    forward_substitution(kTerms, rows.data(), fit.data());
    if (back_substitution(kTerms, rows.data(), fit.data()) != Solution::done) {
        return false;
    }
    backpermut(kTerms, fit.data(), order.data());
    return true;
}

std::vector<double> magnitudes(const std::vector<HeightError>& errors, const Terms& fit) {
    std::vector<double> left;
    left.reserve(errors.size());
    for (const HeightError& error : errors) {
        left.push_back(std::fabs(remainder(error, fit)));
    }
    return left;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace

std::vector<double> left_by_best_terms(const std::vector<HeightError>& errors) {
    constexpr int kRounds = 30;
    constexpr double kBend = 1.345 * 1.4826;  // of the median; 95 % efficiency where the errors are normal
    constexpr double kLeastSpread = 1e-6;     // pixels
    if (errors.size() < kTerms) {
        return {};
    }
    std::vector<double> weights(errors.size(), 1.0);
    std::vector<double> left;
    for (int round = 0; round < kRounds; ++round) {
        Terms fit;
        if (!solve(errors, weights, fit)) {
            return {};
        }
        left = magnitudes(errors, fit);
        const double limit = kBend * std::max(median(left), kLeastSpread);
        std::transform(left.begin(), left.end(), weights.begin(),
                       [limit](double value) { return value <= limit ? 1.0 : limit / value; });
    }
    return left;
}

}  // namespace zemora::test
