#include "analysis/error_model.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zemora {
namespace {

constexpr int kWidth = 800;
constexpr int kHeight = 600;

/// dy of the model at a point of the picture.
double model(const Correction& v, int x, int y) {
    const double cx = x - kWidth / 2;
    const double cy = y - kHeight / 2;
    return v.height_px + v.size * cy + v.rotation_rad * cx + v.vergence_v_rad * cx * cy / (kWidth / 2.0) +
           v.vergence_h_rad * (cy * cy / (kHeight / 2.0) - kHeight / 6.0);
}

/// Cells of a 10 x 10 grid; `thinned` leaves a lopsided third of them.
std::vector<ModelPoint> points(const Correction& v, bool thinned) {
    std::vector<ModelPoint> all;
    for (int i = 0; i < 10; ++i) {
        for (int j = 0; j < 10; ++j) {
            if (!thinned || (i * 7 + j * 3) % 5 < (j > 5 ? 3 : 1)) {
                const int x = 60 + 75 * j;
                const int y = 50 + 55 * i;
                all.push_back({x, y, model(v, x, y)});
            }
        }
    }
    return all;
}

struct TermCase {
    const char* name;
    Correction truth;
};
void PrintTo(const TermCase& c, std::ostream* out) {
    *out << c.name;
}
class ErrorModel : public ::testing::TestWithParam<TermCase> {};

TEST_P(ErrorModel, RecoversEachTermAndKeepsThemApart) {
    const Correction& truth = GetParam().truth;
    for (const bool thinned : {false, true}) {
        const ModelFit fit = solve_error_model(points(truth, thinned), kHeight, kWidth, {true, true});
        const double tolerance_px = thinned ? 0.15 : 0.01;
        EXPECT_NEAR(fit.values.height_px, truth.height_px, tolerance_px);
        EXPECT_NEAR(fit.values.size * kHeight / 2, truth.size * kHeight / 2, tolerance_px);
        EXPECT_NEAR(fit.values.rotation_rad * kWidth / 2, truth.rotation_rad * kWidth / 2, tolerance_px);
        EXPECT_NEAR(fit.values.vergence_v_rad * kHeight / 2, truth.vergence_v_rad * kHeight / 2,
                    tolerance_px);
        EXPECT_NEAR(fit.values.vergence_h_rad * kHeight / 2, truth.vergence_h_rad * kHeight / 2,
                    tolerance_px);
        EXPECT_LT(fit.residual_rms_px, tolerance_px);
    }
}

INSTANTIATE_TEST_SUITE_P(Terms, ErrorModel,
                         ::testing::Values(TermCase{"height", {.height_px = -3.0F}},
                                           TermCase{"size", {.size = 0.01F}},
                                           TermCase{"rotation", {.rotation_rad = -0.01F}},
                                           TermCase{"keystone", {.vergence_v_rad = 0.008F}},
                                           TermCase{"barrel", {.vergence_h_rad = -0.008F}},
                                           TermCase{"all", {2.0F, 0, -0.004F, 0.006F, 0.003F, 0.004F}}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(ErrorModelTerms, SettingTwoWantsPointsInAllCorners) {
    struct Level {
        int v;
        int h;
        bool corners;
        ModelTerms terms;
    };
    for (const Level& level : {Level{0, 0, true, {false, false}}, Level{1, 0, false, {true, false}},
                               Level{2, 0, false, {false, false}}, Level{2, 0, true, {true, false}},
                               Level{0, 1, false, {false, true}}, Level{2, 1, false, {false, true}},
                               Level{1, 2, false, {true, false}}, Level{0, 2, true, {false, true}},
                               Level{2, 2, true, {true, true}}, Level{2, 2, false, {false, false}}}) {
        EXPECT_EQ(model_terms(level.v, level.h, level.corners), level.terms)
            << level.v << level.h << level.corners;
    }
}

TEST(ErrorModel, TermsThatAreLeftOutAreExactlyZeroAndStayInTheResidual) {
    const ModelFit fit =
        solve_error_model(points({.vergence_v_rad = 0.01F}, false), kHeight, kWidth, {false, true});
    EXPECT_EQ(fit.values.vergence_v_rad, 0.0F);
    EXPECT_GT(fit.residual_rms_px, 0.5);
    const ModelFit nothing = solve_error_model({}, kHeight, kWidth, {true, true});
    EXPECT_EQ(nothing.values.height_px, 0.0F);
}

TEST(ErrorModel, OneColumnOfPointsGivesNoRotation) {
    const std::vector<ModelPoint> column = {{400, 100, 1.0}, {400, 300, 1.0}, {400, 500, 1.0}};
    const ModelFit fit = solve_error_model(column, kHeight, kWidth, {true, false});
    EXPECT_EQ(fit.values.rotation_rad, 0.0F);
    EXPECT_FLOAT_EQ(fit.values.height_px, 1.0F);
}

TEST(MeanModelError, AveragesTheAbsoluteDisplacement) {
    EXPECT_DOUBLE_EQ(mean_model_error({.height_px = -2.5F}, 600, 800), 2.5);
    EXPECT_NEAR(mean_model_error({.size = 0.01F}, 600, 800), 1.5, 1e-6) << "mean |Y| of the lattice is H/4";
    EXPECT_NEAR(mean_model_error({.vergence_h_rad = 0.01F}, 600, 800),
                0.01 * (600.0 / 6.0) * (1.0 + 2.0 / 256.0), 1e-3)
        << "no constant part";
}

}  // namespace
}  // namespace zemora
