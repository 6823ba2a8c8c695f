#include "tests/accuracy/best_terms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace zemora::test {
namespace {

constexpr int kSide = 21;

/// A lattice over the picture with the errors of `dy`.
template <class Function>
std::vector<HeightError> lattice(Function dy) {
    std::vector<HeightError> errors;
    for (int j = 0; j < kSide; ++j) {
        for (int i = 0; i < kSide; ++i) {
            const double x = 2.0 * i / (kSide - 1) - 1.0;
            const double y = 2.0 * j / (kSide - 1) - 1.0;
            errors.push_back({x, y, dy(x, y)});
        }
    }
    return errors;
}

double misalignment(double x, double y) {
    return 17.0 - 9.0 * y + 20.0 * x + 5.0 * x * y - 6.0 * y * y;
}

TEST(BestTerms, TakeTheirOwnErrorsAwayWhole) {
    const std::vector<double> left = left_by_best_terms(lattice(misalignment));
    ASSERT_EQ(left.size(), std::size_t{kSide * kSide});
    EXPECT_LT(*std::max_element(left.begin(), left.end()), 1e-9);
}

TEST(BestTerms, AreNotPulledByTheErrorsOfAFewPoints) {
    std::vector<HeightError> errors =
        lattice([](double x, double y) { return misalignment(x, y) + 0.1 * std::sin(50.0 * x + 31.0 * y); });
    for (std::size_t k = 0; k < errors.size(); k += 10) {
        errors[k].dy += 30.0;
    }
    const std::vector<double> left = left_by_best_terms(errors);
    ASSERT_EQ(left.size(), errors.size());
    for (std::size_t k = 0; k < left.size(); ++k) {
        if (k % 10 == 0) {
            EXPECT_GT(left[k], 29.5) << k;
        } else {
            EXPECT_LT(left[k], 0.25) << k;
        }
    }
}

TEST(BestTerms, LeaveWhatIsNoneOfThem) {
    const std::vector<double> left = left_by_best_terms(lattice(
        [](double x, double y) { return misalignment(x, y) + 2.0 * (x * x - 1.0 / 3.0) + x * x * y; }));
    double sum = 0.0;
    for (const double value : left) {
        sum += value;
    }
    EXPECT_GT(sum / (kSide * kSide), 0.4);
}

TEST(BestTerms, NeedPointsThatTellThemApart) {
    EXPECT_TRUE(left_by_best_terms({}).empty());
    EXPECT_TRUE(
        left_by_best_terms({{0.0, 0.0, 1.0}, {1.0, 0.0, 1.0}, {0.0, 1.0, 1.0}, {1.0, 1.0, 1.0}}).empty());
    std::vector<HeightError> one_row;
    for (int i = 0; i < kSide; ++i) {
        one_row.push_back({i / 10.0, 0.5, 1.0});
    }
    EXPECT_TRUE(left_by_best_terms(one_row).empty());
}

}  // namespace
}  // namespace zemora::test
