// The robust fit of the error model: terms among gross errors, the weights, the fall back to the plain fit.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <string>
#include <utility>

#include "analysis/error_model.h"

namespace zemora {
namespace {

constexpr int kWidth = 800;
constexpr int kHeight = 600;
constexpr int kGrid = 10;
constexpr ModelTerms kAllTerms = {true, true};
constexpr Correction kTruth = {2.5F, 0, -0.006F, 0.012F, 0.005F, -0.004F};
/// What a pattern of 24 rows leads to that is one period off, in views that are a little turned.
constexpr Correction kPeriodOff = {26.5F, 0, -0.004F, 0.008F, 0.002F, -0.002F};

double model(const Correction& v, const ModelPoint& point) {
    const ModelBasis b = model_basis(point, kHeight, kWidth);
    return v.height_px * b[0] + v.size * b[1] + v.rotation_rad * b[2] + v.vergence_v_rad * b[3] +
           v.vergence_h_rad * b[4];
}

/// Numbers of -1 to 1 without order, the same in every run.
class Noise {
public:
    explicit Noise(std::uint32_t seed) : state_(seed) {}
    double next() {
        state_ = state_ * 1664525U + 1013904223U;
        return static_cast<double>(state_ >> 8U) / 8388608.0 - 1.0;
    }

private:
    std::uint32_t state_;
};

/// All cells of the grid, each up to `noise_px` off the correction.
std::vector<ModelPoint> grid_points(const Correction& truth, double noise_px) {
    Noise noise(7);
    std::vector<ModelPoint> points;
    for (int i = 0; i < kGrid; ++i) {
        for (int j = 0; j < kGrid; ++j) {
            ModelPoint point{60 + 75 * j, 50 + 55 * i, 0.0};
            point.dy = model(truth, point) + noise_px * noise.next();
            points.push_back(point);
        }
    }
    return points;
}

void expect_terms(const Correction& found, const Correction& truth, double tolerance_px) {
    EXPECT_NEAR(found.height_px, truth.height_px, tolerance_px);
    EXPECT_NEAR(found.size * kHeight / 2, truth.size * kHeight / 2, tolerance_px);
    EXPECT_NEAR(found.rotation_rad * kWidth / 2, truth.rotation_rad * kWidth / 2, tolerance_px);
    EXPECT_NEAR(found.vergence_v_rad * kHeight / 2, truth.vergence_v_rad * kHeight / 2, tolerance_px);
    EXPECT_NEAR(found.vergence_h_rad * kHeight / 2, truth.vergence_h_rad * kHeight / 2, tolerance_px);
}

struct GrossCase {
    const char* name;
    bool (*is_gross)(int row, int column);
    int count;
};
void PrintTo(const GrossCase& c, std::ostream* out) {
    *out << c.name;
}

class RobustModel : public ::testing::TestWithParam<GrossCase> {
protected:
    /// Whether point `k` is one of the gross errors.
    static bool is_gross(std::size_t k) {
        return GetParam().is_gross(static_cast<int>(k) / kGrid, static_cast<int>(k) % kGrid);
    }
    static void expect_found(const std::vector<ModelPoint>& points, const Correction& truth,
                             double tolerance_px) {
        const RobustFit robust = solve_error_model_robustly(points, kHeight, kWidth, kAllTerms);
        expect_terms(robust.fit.values, truth, tolerance_px);
        EXPECT_LT(robust.fit.residual_rms_px, 0.12);
        ASSERT_EQ(robust.weights.size(), points.size());
        int gross = 0;
        for (std::size_t k = 0; k < points.size(); ++k) {
            gross += is_gross(k) ? 1 : 0;
            if (is_gross(k)) {
                EXPECT_EQ(robust.weights[k], 0.0) << "gross error " << k;
            } else {
                EXPECT_GT(robust.weights[k], 0.5) << "sound point " << k;
                EXPECT_LE(robust.weights[k], 1.0) << "sound point " << k;
            }
        }
        EXPECT_EQ(gross, GetParam().count);
    }
};

TEST_P(RobustModel, FindsAllTermsWhereGrossErrorsAgreeOnAnotherCorrection) {
    // Either may be the nearer one to no correction at all, from which the fit must not drift to the false
    // one.
    for (const auto& [truth, other] : {std::pair(kTruth, kPeriodOff), std::pair(kPeriodOff, kTruth)}) {
        for (const double noise_px : {0.0, 0.12}) {
            std::vector<ModelPoint> points = grid_points(truth, noise_px);
            Noise noise(3);
            for (std::size_t k = 0; k < points.size(); ++k) {
                if (is_gross(k)) {
                    points[k].dy = model(other, points[k]) + noise_px * noise.next();
                }
            }
            const ModelFit plain = solve_error_model(points, kHeight, kWidth, kAllTerms);
            EXPECT_GT(std::fabs(plain.values.height_px - truth.height_px), 1.0) << "they do mislead";
            SCOPED_TRACE(truth.height_px);
            expect_found(points, truth, noise_px == 0.0 ? 1e-4 : 0.1);
        }
    }
}

TEST_P(RobustModel, FindsAllTermsWhereGrossErrorsLieAnywhere) {
    for (const std::uint32_t seed : {1U, 2U, 3U, 4U, 5U}) {
        std::vector<ModelPoint> points = grid_points(kTruth, 0.12);
        Noise noise(seed);
        for (std::size_t k = 0; k < points.size(); ++k) {
            if (is_gross(k)) {
                const double size_px = 3.0 + 20.0 * std::fabs(noise.next());
                points[k].dy += noise.next() < 0.0 ? -size_px : size_px;
            }
        }
        SCOPED_TRACE(seed);
        expect_found(points, kTruth, 0.1);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Places, RobustModel,
    ::testing::Values(
        GrossCase{"left_side", [](int, int column) { return column < 3; }, 30},
        GrossCase{"top_side", [](int row, int) { return row >= 7; }, 30},
        GrossCase{"corner", [](int row, int column) { return row < 5 && column >= 4; }, 30},
        GrossCase{"two_columns", [](int, int column) { return column == 2 || column == 7; }, 20},
        GrossCase{"scattered", [](int row, int column) { return (7 * row + 3 * column) % 10 < 3; }, 30}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(RobustModelTerms, ThoseLeftOutAreExactlyZero) {
    Correction truth = kTruth;
    for (const ModelTerms terms : {ModelTerms{false, false}, {true, false}, {false, true}}) {
        truth.vergence_v_rad = terms.vergence_v ? kTruth.vergence_v_rad : 0.0F;
        truth.vergence_h_rad = terms.vergence_h ? kTruth.vergence_h_rad : 0.0F;
        std::vector<ModelPoint> points = grid_points(truth, 0.1);
        for (std::size_t k = 0; k < 25; ++k) {
            points[k * 4].dy += 9.0;
        }
        const Correction found = solve_error_model_robustly(points, kHeight, kWidth, terms).fit.values;
        expect_terms(found, truth, 0.08);
        EXPECT_TRUE(terms.vergence_v || found.vergence_v_rad == 0.0F);
        EXPECT_TRUE(terms.vergence_h || found.vergence_h_rad == 0.0F);
        EXPECT_EQ(found.shift_px, 0.0F);
    }
}

TEST(RobustModel, FewPointsAreFittedPlainly) {
    std::vector<ModelPoint> points;
    for (const ModelPoint& point : grid_points(kTruth, 0.3)) {
        if ((point.x + point.y) % 9 == 2 && points.size() < kLeastRobustPoints) {
            points.push_back(point);
        }
    }
    ASSERT_EQ(points.size(), kLeastRobustPoints);
    points.front().dy += 12.0;
    const RobustFit enough = solve_error_model_robustly(points, kHeight, kWidth, {false, false});
    EXPECT_EQ(enough.weights.front(), 0.0) << "twelve points outvote one";
    points.pop_back();
    const RobustFit few = solve_error_model_robustly(points, kHeight, kWidth, {false, false});
    const ModelFit plain = solve_error_model(points, kHeight, kWidth, {false, false});
    EXPECT_EQ(few.weights, std::vector<double>(points.size(), 1.0));
    EXPECT_EQ(few.fit.values.height_px, plain.values.height_px);
    EXPECT_EQ(few.fit.values.size, plain.values.size);
    EXPECT_EQ(few.fit.values.rotation_rad, plain.values.rotation_rad);
    EXPECT_EQ(few.fit.residual_rms_px, plain.residual_rms_px);
    EXPECT_TRUE(solve_error_model_robustly({}, kHeight, kWidth, kAllTerms).weights.empty());
}

/// Every second point of a flat picture says 0.6 pixel; they hold their height by `looseness`.
RobustFit fit_of_two_voices(float looseness) {
    std::vector<ModelPoint> points = grid_points({}, 0.0);
    for (std::size_t k = 0; k < points.size(); ++k) {
        const bool odd = (k / kGrid + k) % 2 == 1;
        points[k].dy = odd ? 0.6 : 0.0;
        points[k].looseness = odd ? static_cast<double>(looseness) : 0.2;
    }
    return solve_error_model_robustly(points, kHeight, kWidth, {false, false});
}

TEST(RobustModel, PointsThatHoldTheirHeightLooselyCountLessAndMayMissMore) {
    EXPECT_NEAR(fit_of_two_voices(0.2F).fit.values.height_px, 0.3, 0.02) << "two equal voices";
    // Scales of hypot(1, 0.2 / 0.4) and hypot(1, looseness / 0.4).
    const RobustFit looser = fit_of_two_voices(0.8F);
    EXPECT_LT(looser.fit.values.height_px, 0.25);
    EXPECT_GT(looser.fit.values.height_px, 0.05);
    EXPECT_LT(fit_of_two_voices(3.0F).fit.values.height_px, 0.02);
    EXPECT_NEAR(fit_of_two_voices(30.0F).fit.values.height_px, 0.0, 0.005);
}

TEST(RobustModel, WhatContradictsAFirmPointIsNothingForALooseOne) {
    for (const double looseness : {0.2, 30.0}) {
        std::vector<ModelPoint> points = grid_points({}, 0.1);
        for (std::size_t k = 0; k < points.size(); ++k) {
            points[k].looseness = k % kGrid == 4 ? looseness : 0.2;
            points[k].dy += k % kGrid == 4 ? 3.0 : 0.0;
        }
        const RobustFit robust = solve_error_model_robustly(points, kHeight, kWidth, kAllTerms);
        const bool firm = looseness < 1.0;
        EXPECT_EQ(robust.weights[4] == 0.0, firm) << looseness;
        EXPECT_EQ(std::count(robust.weights.begin(), robust.weights.end(), 0.0), firm ? kGrid : 0);
        expect_terms(robust.fit.values, {}, 0.1);
    }
}

TEST(RobustModel, LooseTilesThatRunAwayAreNoMajority) {
    // A wall of vertical slats over most of the picture: its tiles slide. What stands beside it is firm.
    std::vector<ModelPoint> points = grid_points(kTruth, 0.1);
    Noise noise(11);
    for (std::size_t k = 0; k < points.size(); ++k) {
        const bool slat = k % kGrid >= 2 && k % kGrid < 8;
        points[k].looseness = slat ? 6.0 : 0.3;
        points[k].dy += slat ? 2.0 + 3.0 * noise.next() : 0.0;
    }
    const RobustFit robust = solve_error_model_robustly(points, kHeight, kWidth, kAllTerms);
    expect_terms(robust.fit.values, kTruth, 0.15);
}

TEST(RobustModel, GivesTheSameBitsInEveryCall) {
    std::vector<ModelPoint> points = grid_points(kTruth, 0.4);
    for (std::size_t k = 0; k < points.size(); k += 3) {
        points[k].dy += static_cast<double>(k % 7) * 3.0 - 9.0;
        points[k].looseness = static_cast<double>(k % 5) * 0.3;
    }
    const RobustFit first = solve_error_model_robustly(points, kHeight, kWidth, kAllTerms);
    for (int call = 0; call < 3; ++call) {
        const RobustFit again = solve_error_model_robustly(points, kHeight, kWidth, kAllTerms);
        EXPECT_EQ(again.weights, first.weights);
        EXPECT_EQ(again.fit.values.height_px, first.fit.values.height_px);
        EXPECT_EQ(again.fit.values.size, first.fit.values.size);
        EXPECT_EQ(again.fit.values.rotation_rad, first.fit.values.rotation_rad);
        EXPECT_EQ(again.fit.values.vergence_v_rad, first.fit.values.vergence_v_rad);
        EXPECT_EQ(again.fit.values.vergence_h_rad, first.fit.values.vergence_h_rad);
        EXPECT_EQ(again.fit.residual_rms_px, first.fit.residual_rms_px);
    }
}

TEST(RobustModel, PointsThatDetermineNothingGiveFiniteValues) {
    const std::vector<ModelPoint> one_place(20, ModelPoint{300, 200, 1.5});
    const RobustFit same = solve_error_model_robustly(one_place, kHeight, kWidth, kAllTerms);
    EXPECT_TRUE(std::isfinite(same.fit.values.height_px));
    EXPECT_TRUE(std::isfinite(same.fit.residual_rms_px));
    std::vector<ModelPoint> column;
    for (int i = 0; i < 20; ++i) {
        column.push_back({400, 25 * i + 60, 2.0});
    }
    const Correction values = solve_error_model_robustly(column, kHeight, kWidth, kAllTerms).fit.values;
    EXPECT_TRUE(std::isfinite(values.rotation_rad));
    EXPECT_LT(std::fabs(values.rotation_rad), 0.01F) << "one column says nothing about rotation";
}

}  // namespace
}  // namespace zemora
