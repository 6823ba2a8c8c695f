#include "numerics/small_numerics.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace zemora {
namespace {

TEST(Raico, ValuesAtThePolesJoinTheCurve) {
    EXPECT_EQ(raico(0.0, 0.3), 1.0);
    EXPECT_NEAR(raico(0.5, 1.0), 0.5, 1e-12);
    EXPECT_NEAR(raico(0.5 + 1e-6, 1.0), 0.5, 1e-5);
    for (const double r : {0.2, 0.5, 1.0}) {
        for (const int x : {1, 2, 3, -4}) {
            if (std::fabs(2.0 * r * x) != 1.0) {
                EXPECT_NEAR(raico(x, r), 0.0, 1e-12) << "other samples do not interfere";
            }
        }
        EXPECT_DOUBLE_EQ(raico(0.7, r), raico(-0.7, r));
    }
    EXPECT_TRUE(std::isnan(raico(1.0, 1.5)));
}

TEST(WindowMedian, EntriesOutsideCountAsZero) {
    const std::vector<float> data = {5, 9, -3, 7, 8};
    std::vector<float> scratch(6);
    const auto median = [&](int size, int centre) {
        return window_median(data.data(), 5, scratch.data(), size, centre);
    };
    EXPECT_EQ(median(3, 2), 7.0F);
    EXPECT_EQ(median(3, 0), 5.0F);
    EXPECT_EQ(median(5, 0), 0.0F);
    EXPECT_EQ(median(4, 2), 7.0F) << "an even window takes the lower middle of indices 1 to 4";
    EXPECT_EQ(median(1, 4), 8.0F);
    EXPECT_EQ(median(3, 9), 0.0F);
}

struct System {
    std::vector<std::vector<double>> rows;
    std::vector<double> b;
    std::vector<double> x;
};

TEST(LinearSystem, TotalPivotingSolvesWhereThePlainOrderDivides_ByZero) {
    for (const System& system : {System{{{0, 2, 1}, {3, 0, 1}, {1, 1, 0}}, {7, 6, 3}, {1, 2, 3}},
                                 System{{{1e-18, 1, 0}, {1, 1, 1}, {0, 5, 2}}, {2, 9, 22}, {1, 2, 6}},
                                 System{{{4}}, {8}, {2}}, System{{{0, 2}, {3, 0}}, {4, 9}, {3, 2}}}) {
        const int n = static_cast<int>(system.b.size());
        auto rows = system.rows;
        auto b = system.b;
        std::vector<double*> a;
        for (auto& row : rows) {
            a.push_back(row.data());
        }
        std::vector<int> perm(static_cast<std::size_t>(n));
        ASSERT_EQ(gauss_lr_kijtp(n, a.data(), b.data(), perm.data()), Solution::done);
        forward_substitution(n, a.data(), b.data());
        ASSERT_EQ(back_substitution(n, a.data(), b.data()), Solution::done);
        backpermut(n, b.data(), perm.data());
        for (std::size_t i = 0; i < b.size(); ++i) {
            EXPECT_NEAR(b[i], system.x[i], 1e-12);
        }
    }
}

TEST(LinearSystem, SingularMatricesAreToldApart) {
    std::array<double, 2> r0 = {1, 2};
    std::array<double, 2> r1 = {2, 4};
    std::array<double*, 2> a = {r0.data(), r1.data()};
    std::array<double, 2> b = {1, 2};
    std::array<int, 2> perm = {};
    EXPECT_EQ(gauss_lr_kijtp(2, a.data(), b.data(), perm.data()), Solution::done)
        << "the last pivot is not looked at";
    forward_substitution(2, a.data(), b.data());
    EXPECT_EQ(back_substitution(2, a.data(), b.data()), Solution::singular);
    r0 = r1 = {0, 0};
    EXPECT_EQ(gauss_lr_kijtp(2, a.data(), b.data(), perm.data()), Solution::singular);
}

}  // namespace
}  // namespace zemora
