// The estimates out of measured cells: the first grid with false matches, the cells that the fit rejects, and
// a robust round on a pair.

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "analysis/phases.h"
#include "tests/analysis/texture_pair.h"

namespace zemora {
namespace {

using testing::analysis_options;
using testing::Displacement;
using testing::TexturePair;

constexpr int kWidth = 800;
constexpr int kHeight = 600;

// --- The first grid --------------------------------------------------------------------------------

constexpr float kFirstHeight = -1.5F;
constexpr float kFirstSize = 0.003F;
constexpr float kTellingSpread = 0.01F * kWidth;  ///< Pixels; from here on the start counts as doubtful.

/// Nine valid cells of a true correction.
AnalysisState first_grid() {
    AnalysisState state(analysis_options());
    for (std::size_t k = 0; k < 9; ++k) {
        const std::size_t i = k / 3;
        const std::size_t j = k % 3;
        state.valid[i][j] = 1;
        state.middle_x[i][j] = static_cast<int>(134 + 266 * j);
        state.middle_y[i][j] = static_cast<int>(118 + 182 * i);
        const auto y = static_cast<float>(state.middle_y[i][j] - kHeight / 2);
        state.dy[i][j] = kFirstHeight + kFirstSize * y + (j == 1 ? 0.2F : -0.1F);
        state.dx[i][j] = -12.0F;
    }
    return state;
}

void estimate_first(AnalysisState& state) {
    ASSERT_EQ(estimate_geometry(state, kHeight, kWidth, kFirstGrid, kFirstGrid, AnalysePhase::first_grid),
              EstimateStatus::done);
}

void expect_first_terms(const AnalysisState& state) {
    EXPECT_NEAR(state.correction.height_px, kFirstHeight, 0.4);
    EXPECT_NEAR(state.correction.size, kFirstSize, 0.001);
}

TEST(FirstGrid, TwoFalseCellsOfNineMakeNoSize) {
    for (const bool robust : {true, false}) {
        AnalysisState state = first_grid();
        state.options.robust = robust;
        state.dy[2][0] = -43.0F;
        state.dy[1][2] = 18.0F;
        estimate_first(state);
        if (robust) {
            expect_first_terms(state);
            EXPECT_NEAR(state.first_grid_spread_px, 42.0F, 1.0F) << "the worst cell counts";
        } else {
            EXPECT_LT(state.correction.size, -0.03F) << "the plain rule follows them";
        }
    }
}

TEST(FirstGrid, SoundCellsHaveNoSpread) {
    AnalysisState state = first_grid();
    estimate_first(state);
    expect_first_terms(state);
    EXPECT_LT(state.first_grid_spread_px, 1.0F);
}

TEST(FirstGrid, OneFalseCellAnywhereDoesNoHarm) {
    for (std::size_t k = 0; k < 9; ++k) {
        for (const float error : {-40.0F, -6.0F, 18.0F, 43.0F}) {
            AnalysisState state = first_grid();
            state.dy[k / 3][k % 3] += error;
            estimate_first(state);
            SCOPED_TRACE(::testing::Message() << "cell " << k << " off by " << error);
            expect_first_terms(state);
            EXPECT_NEAR(state.first_grid_spread_px, std::fabs(error), 1.0F);
        }
    }
}

TEST(FirstGrid, TwoFalseCellsDoNoHarmOrAreTold) {
    int harmless = 0;
    int told = 0;
    for (std::size_t a = 0; a < 9; ++a) {
        for (std::size_t b = 0; b < a; ++b) {
            for (const float sign : {1.0F, -1.0F}) {
                AnalysisState state = first_grid();
                state.dy[a / 3][a % 3] += 18.0F;
                state.dy[b / 3][b % 3] += 18.0F * sign;
                estimate_first(state);
                const bool right = std::fabs(state.correction.size - kFirstSize) < 0.001F;
                harmless += right ? 1 : 0;
                told += state.first_grid_spread_px > kTellingSpread ? 1 : 0;
                EXPECT_GT(state.first_grid_spread_px, kTellingSpread) << a << " and " << b << " " << sign;
            }
        }
    }
    EXPECT_EQ(told, 72);
    EXPECT_GE(harmless, 54) << "all but two in one outer row, or two that tilt it";
}

// --- The cells of phase 3 --------------------------------------------------------------------------

constexpr float kSkew = 0.003F;  ///< Vergence V of the cells, radians.

/// A valid 10 x 10 grid of a true correction; disparities of -9 to 9.
AnalysisState full_grid(const AnalysisOptions& options) {
    AnalysisState state(options);
    for (std::size_t i = 0; i < kGeometryGrid; ++i) {
        for (std::size_t j = 0; j < kGeometryGrid; ++j) {
            state.valid[i][j] = 1;
            state.middle_x[i][j] = static_cast<int>(61 + 71 * j);
            state.middle_y[i][j] = static_cast<int>(51 + 55 * i);
            const auto x = static_cast<float>(state.middle_x[i][j] - kWidth / 2);
            const auto y = static_cast<float>(state.middle_y[i][j] - kHeight / 2);
            state.dy[i][j] = 3.0F + kSkew * x * y / (kWidth / 2);
            state.dx[i][j] = static_cast<float>(2 * static_cast<int>(j) - 9);
        }
    }
    state.corner_coverage = 1;
    return state;
}

void estimate_full(AnalysisState& state) {
    ASSERT_EQ(estimate_geometry(state, kHeight, kWidth, kGeometryGrid, kGeometryGrid, AnalysePhase::geometry),
              EstimateStatus::done);
}

int valid_cells(const AnalysisState& state) {
    int count = 0;
    for (const auto& row : state.valid) {
        count += static_cast<int>(std::count(row.begin(), row.end(), 1));
    }
    return count;
}

TEST(RejectedCells, LeaveTheValidOnesAndTheDisparities) {
    AnalysisState state = full_grid(analysis_options());
    // Two false matches would be near and far point, a third one the right edge.
    const std::array<std::array<std::size_t, 2>, 3> cells = {{{4, 2}, {6, 7}, {3, 9}}};
    const std::array<float, 3> disparities = {-60.0F, 80.0F, -40.0F};
    for (std::size_t k = 0; k < cells.size(); ++k) {
        state.dx[cells[k][0]][cells[k][1]] = disparities[k];
        state.dy[cells[k][0]][cells[k][1]] += 7.0F;
    }
    estimate_full(state);
    EXPECT_EQ(valid_cells(state), 97);
    for (const auto& [i, j] : cells) {
        EXPECT_EQ(state.valid[i][j], 0);
    }
    EXPECT_FLOAT_EQ(state.rejected_share, 0.03F);
    EXPECT_EQ(state.disparity.near_point, -9.0F);
    EXPECT_EQ(state.disparity.far_point, 9.0F);
    EXPECT_NEAR(state.correction.shift_px, 0.0F, 0.15F);
    EXPECT_NEAR(state.correction.height_px, 3.0F, 0.01F);

    state.options.robust = false;  // the plain rule believes what phase 3 found
    state.valid[4][2] = 1;
    estimate_full(state);
    EXPECT_EQ(valid_cells(state), 98);
    EXPECT_EQ(state.disparity.near_point, -60.0F);
}

TEST(RejectedCells, CornersAreAskedAgainWithoutThem) {
    for (const int wanted : {1, 2}) {
        AnalysisOptions options = analysis_options();
        options.estimate_vergence_v = wanted;
        AnalysisState sound = full_grid(options);
        estimate_full(sound);
        EXPECT_NEAR(sound.correction.vergence_v_rad, kSkew, 1e-4);
        EXPECT_EQ(sound.corner_coverage, 1);
        EXPECT_EQ(sound.rejected_share, 0.0F);

        AnalysisState state = full_grid(options);
        for (std::size_t i = 6; i < kGeometryGrid; ++i) {
            for (std::size_t j = 6; j < kGeometryGrid; ++j) {
                state.dy[i][j] -= 20.0F;
            }
        }
        estimate_full(state);
        EXPECT_EQ(state.valid[9][9], 0);
        EXPECT_EQ(state.corner_coverage, 0) << "a corner of false matches is none";
        if (wanted == 2) {
            EXPECT_EQ(state.correction.vergence_v_rad, 0.0F) << "wanted with all corners only";
        } else {
            EXPECT_NEAR(state.correction.vergence_v_rad, kSkew, 1e-3);
        }
        EXPECT_NEAR(state.correction.height_px, 3.0F, 0.2F);
        EXPECT_GE(state.rejected_share, 0.16F);
    }
}

// --- A robust round of phase 3 ---------------------------------------------------------------------

/// Misaligned by two terms; a plate in front of a corner is another scene, which no correction fits.
TexturePair pair_with_a_foreign_corner() {
    return {kWidth, kHeight, [](double x, double y) {
                const bool foreign = x > 180.0 && y < -100.0;
                return Displacement{8.0 * std::sin(x / 90.0), 1.0 + 0.01 * x + (foreign ? 5.0 : 0.0)};
            }};
}

TEST(RobustRound, IsExactBesideACornerThatFitsNoCorrection) {
    const TexturePair pair = pair_with_a_foreign_corner();
    AnalysisState state(analysis_options());
    ASSERT_EQ(analyse_phase(state, pair.pictures(), {AnalysePhase::geometry, 1, false, true}, {}),
              AnalyseStatus::done);
    estimate_full(state);
    EXPECT_NEAR(state.correction.height_px, 1.0, 0.05);
    EXPECT_NEAR(state.correction.rotation_rad * kWidth / 2, 4.0, 0.1);
    EXPECT_NEAR(state.correction.size * kHeight / 2, 0.0, 0.1);
    EXPECT_NEAR(state.correction.vergence_v_rad * kHeight / 2, 0.0, 0.1);
    EXPECT_NEAR(state.correction.vergence_h_rad * kHeight / 2, 0.0, 0.1);
    EXPECT_GT(state.rejected_share, 0.04F);
    EXPECT_LT(state.rejected_share, 0.2F);
}

TEST(RobustRound, GivesTheSameNumbersForAnyThreads) {
    const TexturePair pair = pair_with_a_foreign_corner();
    const int threads = omp_get_max_threads();
    const auto measured = [&pair](int count) {
        omp_set_num_threads(count);
        AnalysisState state(analysis_options());
        (void)analyse_phase(state, pair.pictures(), {AnalysePhase::geometry, 1, false, true}, {});
        estimate_full(state);
        return state;
    };
    const AnalysisState one = measured(1);
    const AnalysisState two = measured(2);
    omp_set_num_threads(threads);
    EXPECT_EQ(one.dx, two.dx);
    EXPECT_EQ(one.dy, two.dy);
    EXPECT_EQ(one.looseness, two.looseness);
    EXPECT_EQ(one.valid, two.valid);
    EXPECT_EQ(one.correction.height_px, two.correction.height_px);
    EXPECT_EQ(one.correction.shift_px, two.correction.shift_px);
    EXPECT_EQ(one.correction.size, two.correction.size);
    EXPECT_EQ(one.correction.rotation_rad, two.correction.rotation_rad);
    EXPECT_EQ(one.correction.vergence_v_rad, two.correction.vergence_v_rad);
    EXPECT_EQ(one.correction.vergence_h_rad, two.correction.vergence_h_rad);
    EXPECT_EQ(one.residual_rms_px, two.residual_rms_px);
    EXPECT_EQ(one.disparity.near_point, two.disparity.near_point);
}

/// Middle of the first cell's tile, pixels from the left edge, behind two rounds on one picture.
struct TileCase {
    int width = 1600;
    double contrast = 1.0;
    float depth = 0.0F;  ///< What the first round left as disparities, pixels.
    bool reduced = false;
};
int first_middle(const TileCase& c, bool robust) {
    const TexturePair pair(
        c.width, 500,
        [](double, double) {
            return Displacement{3.0, 0.0};
        },
        [&c](double x, double y, int channel) { return c.contrast * testing::texture(x, y, channel, 3.0); });
    AnalysisState state(analysis_options());
    state.options.robust = robust;
    (void)analyse_phase(state, pair.pictures(), {AnalysePhase::geometry, 1, false, true}, {});
    state.disparity.near_point = -c.depth / 2.0F;
    state.disparity.far_point = c.depth / 2.0F;
    (void)analyse_phase(state, pair.pictures(), {AnalysePhase::geometry, 2, false, c.reduced}, {});
    return state.middle_x[0][0];
}

TEST(RobustRound, TexturedPicturesGetSmallerTilesAtFullSize) {
    const auto smaller = [](const TileCase& c) { return first_middle(c, false) - first_middle(c, true); };
    // Tiles of 152 and of 182 columns; all begin at the same place.
    EXPECT_EQ(smaller({}), 76 - 38) << "half the side";
    EXPECT_EQ(smaller({.contrast = 0.1}), 0) << "hardly any texture";
    EXPECT_EQ(smaller({.reduced = true}), 0) << "a reduced picture";
    EXPECT_EQ(smaller({.depth = 200.0F}), 76 - 38) << "deep, but too small for a third";
    EXPECT_EQ(smaller({.width = 1920, .depth = 110.0F}), 91 - 45) << "large, but not deep";
    EXPECT_EQ(smaller({.width = 1920, .depth = 120.0F}), 91 - 30) << "a third of the side";
}

}  // namespace
}  // namespace zemora
