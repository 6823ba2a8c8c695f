#include "analysis/phases.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "analysis/disparity_statistics.h"
#include "tests/analysis/texture_pair.h"

namespace zemora {
namespace {

using testing::analysis_options;
using testing::Displacement;
using testing::TexturePair;

constexpr int kWidth = 800;
constexpr int kHeight = 600;

AnalyseStatus run(AnalysisState& state, const StereoPicture& pair, AnalysePhase phase, int iteration = 1,
                  bool reduced = true) {
    return analyse_phase(state, pair, {phase, iteration, false, reduced}, {});
}

TEST(PhaseShift, FindsTheDisplacementOfLandscapeAndPortrait) {
    struct Case {
        int width;
        int height;
        Displacement shift;
    };
    for (const Case& c :
         {Case{800, 600, {40.0, -24.0}}, Case{800, 600, {-120.0, 8.0}}, Case{600, 800, {-32.0, 60.0}},
          Case{800, 800, {16.0, 16.0}}, Case{800, 300, {-48.0, 12.0}}}) {
        const TexturePair pair(
            c.width, c.height, [&](double, double) { return c.shift; }, 6.0);
        AnalysisState state(analysis_options());
        ASSERT_EQ(run(state, pair.pictures(), AnalysePhase::shift), AnalyseStatus::done);
        EXPECT_NEAR(state.dx[0][0], c.shift.dx, 4.0);
        EXPECT_NEAR(state.dy[0][0], c.shift.dy, 4.0);
    }
}

TEST(PhaseShift, RefusesTwoHundredPixels) {
    const TexturePair sideways(
        kWidth, kHeight,
        [](double, double) {
            return Displacement{-210.0, 0.0};
        },
        9.0);
    AnalysisState state(analysis_options());
    EXPECT_EQ(run(state, sideways.pictures(), AnalysePhase::shift), AnalyseStatus::shift_too_large);
    EXPECT_NEAR(state.oversize_shift_px, -210.0, 6.0);
    EXPECT_FALSE(state.oversize_is_vertical);
    const TexturePair upward(
        600, 800,
        [](double, double) {
            return Displacement{0.0, 212.0};
        },
        9.0);
    EXPECT_EQ(run(state, upward.pictures(), AnalysePhase::shift), AnalyseStatus::shift_too_large);
    EXPECT_TRUE(state.oversize_is_vertical);
}

TEST(PhaseShift, TellsThatAPatternFitsASecondTime) {
    const auto is_ambiguous = [](const testing::Surface& surface, bool robust) {
        const TexturePair pair(
            kWidth, kHeight,
            [](double, double) {
                return Displacement{24.0, -12.0};
            },
            surface);
        AnalysisState state(analysis_options());
        state.options.robust = robust;
        EXPECT_EQ(run(state, pair.pictures(), AnalysePhase::shift), AnalyseStatus::done);
        return state.ambiguous_shift;
    };
    for (const double period : {72.0, 96.0, 120.0, 144.0}) {
        const auto board = [period](double x, double y, int) { return testing::chequers(x, y, period); };
        EXPECT_TRUE(is_ambiguous(board, true)) << period;
        EXPECT_FALSE(is_ambiguous(board, false)) << "the plain rule asks nobody, " << period;
    }
    for (const double scale : {1.0, 3.0, 6.0, 9.0}) {
        const auto plain = [scale](double x, double y, int c) { return testing::texture(x, y, c, scale); };
        EXPECT_FALSE(is_ambiguous(plain, true)) << scale;
    }
}

TEST(PhaseFirstGrid, GivesHeightShiftAndSize) {
    const TexturePair pair(
        kWidth, kHeight,
        [](double x, double y) {
            return Displacement{-31.0 + 0.01 * x, 11.0 + 0.02 * y};
        },
        2.0);
    AnalysisState state(analysis_options());
    ASSERT_EQ(run(state, pair.pictures(), AnalysePhase::shift), AnalyseStatus::done);
    ASSERT_EQ(run(state, pair.pictures(), AnalysePhase::first_grid), AnalyseStatus::done);
    ASSERT_EQ(estimate_geometry(state, kHeight, kWidth, 3, 3, AnalysePhase::first_grid),
              EstimateStatus::done);
    EXPECT_NEAR(state.correction.height_px, 11.0, 0.5);
    EXPECT_NEAR(state.correction.shift_px, -31.0, 1.0);
    EXPECT_NEAR(state.correction.size, 0.02, 0.002);
    EXPECT_EQ(state.correction.rotation_rad, 0.0F);
    EXPECT_EQ(state.correction.vergence_v_rad, 0.0F);
    EXPECT_NEAR(state.disparity.near_point, -34.0, 1.5);
    EXPECT_NEAR(state.disparity.far_point, -28.0, 1.5);
}

struct GeometryCase {
    const char* name;
    Correction truth;
};
void PrintTo(const GeometryCase& c, std::ostream* out) {
    *out << c.name;
}
class PhaseGeometry : public ::testing::TestWithParam<GeometryCase> {};

Displacement model_displacement(const Correction& v, int height, int width, double x, double y) {
    // Some depth: the near cells of a scene without any would all count as outliers.
    return {v.shift_px + 8.0 * std::sin(x / 90.0 + 1.0) * std::cos(y / 110.0),
            v.height_px + v.size * y + v.rotation_rad * x + v.vergence_v_rad * x * y / (width / 2.0) +
                v.vergence_h_rad * (y * y / (height / 2.0) - height / 6.0)};
}

TEST_P(PhaseGeometry, MeasuresEveryTermInBothDirections) {
    const Correction& truth = GetParam().truth;
    const TexturePair pair(kWidth, kHeight, [&](double x, double y) {
        return model_displacement(truth, kHeight, kWidth, x, y);
    });
    for (const float sign : {1.0F, -1.0F}) {
        AnalysisState state(analysis_options());
        ASSERT_EQ(run(state, sign > 0 ? pair.pictures() : pair.exchanged(), AnalysePhase::geometry),
                  AnalyseStatus::done);
        ASSERT_EQ(estimate_geometry(state, kHeight, kWidth, 10, 10, AnalysePhase::geometry),
                  EstimateStatus::done);
        // A fifth of the vertical displacements stay by the share of the sub-pixel step.
        EXPECT_NEAR(sign * state.correction.height_px, truth.height_px, 0.2);
        EXPECT_NEAR(sign * state.correction.shift_px, truth.shift_px, 1.5);
        EXPECT_NEAR(sign * state.correction.size * kHeight / 2, truth.size * kHeight / 2, 0.3);
        EXPECT_NEAR(sign * state.correction.rotation_rad * kWidth / 2, truth.rotation_rad * kWidth / 2, 0.3);
        EXPECT_NEAR(sign * state.correction.vergence_v_rad * kHeight / 2, truth.vergence_v_rad * kHeight / 2,
                    0.35);
        EXPECT_NEAR(sign * state.correction.vergence_h_rad * kHeight / 2, truth.vergence_h_rad * kHeight / 2,
                    0.35);
        EXPECT_EQ(state.corner_coverage, 1);
        EXPECT_LT(state.residual_rms_px, 0.35F);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Terms, PhaseGeometry,
    ::testing::Values(GeometryCase{"identical", {}}, GeometryCase{"height", {.height_px = 4.0F}},
                      GeometryCase{"shift", {.shift_px = -4.0F}}, GeometryCase{"size", {.size = 0.012F}},
                      GeometryCase{"rotation", {.rotation_rad = -0.01F}},
                      GeometryCase{"keystone", {.vergence_v_rad = 0.012F}},
                      GeometryCase{"barrel", {.vergence_h_rad = 0.012F}},
                      GeometryCase{"all", {2.0F, 6.0F, 0.006F, 0.005F, -0.006F, 0.005F}}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(Grids, LeaveHalfASearchAndAPixelFreeAtTheirEdges) {
    // Odd tiles and searches: half of them is no whole number of pixels.
    const TexturePair pair(kWidth, kHeight, [](double, double) { return Displacement{3.0, 0.0}; });
    AnalysisState state(analysis_options());
    ASSERT_EQ(run(state, pair.pictures(), AnalysePhase::first_grid), AnalyseStatus::done);
    EXPECT_EQ(state.middle_x[0][0], 68 + 66);
    EXPECT_EQ(state.middle_x[2][2], 600 + 66);
    EXPECT_EQ(state.middle_y[0][0], 68 + 50);
    EXPECT_EQ(state.middle_y[2][2], 433 + 50);
    ASSERT_EQ(run(state, pair.pictures(), AnalysePhase::geometry), AnalyseStatus::done);
    EXPECT_EQ(state.middle_x[0][0], 23 + 38);
    EXPECT_EQ(state.middle_x[9][9], 702 + 38);
    EXPECT_EQ(state.middle_y[0][0], 23 + 28);
    EXPECT_EQ(state.middle_y[9][9], 521 + 28);
}

TEST(PhaseGeometryLarge, StepsOfTwoAndThreeKeepTheCentre) {
    // Searches of full-size pictures are no multiples of their steps.
    const TexturePair pair(
        1900, 1420,
        [](double, double) {
            return Displacement{6.0, 0.0};
        },
        2.5);
    AnalysisState state(analysis_options());
    state.previous_width = kWidth;
    ASSERT_EQ(run(state, pair.pictures(), AnalysePhase::geometry, 1, false), AnalyseStatus::done);
    ASSERT_EQ(estimate_geometry(state, 1420, 1900, 10, 10, AnalysePhase::geometry), EstimateStatus::done);
    EXPECT_NEAR(state.correction.height_px, 0.0, 0.1);
    EXPECT_NEAR(state.correction.shift_px, 6.0, 0.3);
}

TEST(PhaseGeometryLater, PredictsFromTheIterationBeforeInItsOwnScale) {
    const TexturePair small(kWidth, kHeight, [](double, double) { return Displacement{19.0, 2.0}; });
    const TexturePair large(
        2 * kWidth, 2 * kHeight,
        [](double, double) {
            return Displacement{38.0, 0.0};
        },
        2.0);
    AnalysisState state(analysis_options());
    ASSERT_EQ(run(state, small.pictures(), AnalysePhase::geometry), AnalyseStatus::done);
    for (auto& row : state.search_columns) {
        row.fill(12);  // too narrow without the prediction
    }
    ASSERT_EQ(run(state, large.pictures(), AnalysePhase::geometry, 2, true), AnalyseStatus::done);
    ASSERT_EQ(estimate_geometry(state, 2 * kHeight, 2 * kWidth, 10, 10, AnalysePhase::geometry),
              EstimateStatus::done);
    EXPECT_NEAR(state.correction.shift_px, 38.0, 1.0);
}

TEST(PhaseGeometryResults, DoNotDependOnThreadsOrInstructionSet) {
    const TexturePair pair(kWidth, kHeight, [](double x, double y) {
        return Displacement{-5.0 + 0.02 * y, 3.0 + 0.01 * x};
    });
    const int threads = omp_get_max_threads();
    AnalysisState first(analysis_options());
    (void)run(first, pair.pictures(), AnalysePhase::geometry);
    for (const int count : {1, 2, 8}) {
        omp_set_num_threads(count);
        testing::for_each_instruction_set([&] {
            AnalysisState state(analysis_options());
            (void)run(state, pair.pictures(), AnalysePhase::geometry);
            EXPECT_EQ(state.dy, first.dy);
            EXPECT_EQ(state.sharpness, first.sharpness);
        });
    }
    omp_set_num_threads(threads);
}

TEST(PhasesWithoutMatch, EndWithTheirStatus) {
    const Bitmap flat = Bitmap::create(kWidth, kHeight);
    fill(flat.picture(), {90, 120, 150});
    const StereoPicture pair{flat.picture(), flat.picture()};
    AnalysisState state(analysis_options());
    EXPECT_EQ(run(state, pair, AnalysePhase::shift), AnalyseStatus::done);
    EXPECT_EQ(run(state, pair, AnalysePhase::first_grid), AnalyseStatus::done);
    EXPECT_EQ(estimate_geometry(state, kHeight, kWidth, 3, 3, AnalysePhase::first_grid),
              EstimateStatus::no_cell);
    EXPECT_EQ(run(state, pair, AnalysePhase::geometry), AnalyseStatus::done);
    EXPECT_EQ(state.cell_course[4][4], -97);
    EXPECT_EQ(estimate_geometry(state, kHeight, kWidth, 10, 10, AnalysePhase::geometry),
              EstimateStatus::too_few_cells);
    EXPECT_EQ(run(state, pair, AnalysePhase::disparity), AnalyseStatus::no_disparity);
}

TEST(PhasesOfTinyPictures, EndWithoutAMatch) {
    for (const auto& [width, height] : {std::pair(1, 1), {3, 800}, {800, 5}, {30, 30}, {12, 9}}) {
        const TexturePair pair(width, height, [](double, double) { return Displacement{}; });
        AnalysisState state(analysis_options());
        (void)run(state, pair.pictures(), AnalysePhase::shift);
        (void)run(state, pair.pictures(), AnalysePhase::first_grid);
        (void)estimate_geometry(state, height, width, 3, 3, AnalysePhase::first_grid);
        (void)run(state, pair.pictures(), AnalysePhase::geometry);
        (void)estimate_geometry(state, height, width, 10, 10, AnalysePhase::geometry);
        (void)run(state, pair.pictures(), AnalysePhase::disparity);
        EXPECT_TRUE(std::isfinite(state.correction.height_px)) << width << " x " << height;
    }
}

TEST(PhaseDisparity, FindsNearFarEdgesAndCentre) {
    // Nearest at the left edge, farthest at the right one; 2048 pixels are measured at half the size.
    const auto depth = [](double x, double) { return Displacement{x / 1024.0 * 60.0, 0.0}; };
    const TexturePair pair(2048, 1200, depth, 3.0);
    AnalysisOptions options = analysis_options();
    options.estimate_window = 3;
    AnalysisState state(options);
    ASSERT_EQ(run(state, pair.pictures(), AnalysePhase::disparity), AnalyseStatus::done);
    EXPECT_EQ(state.disparity_copy_width, 1024);
    EXPECT_NEAR(state.disparity.near_point, -56.0, 4.0);
    EXPECT_NEAR(state.disparity.far_point, 56.0, 4.0);
    EXPECT_NEAR(state.disparity.left_edge_near, state.disparity.near_point, 2.1);
    EXPECT_NEAR(state.disparity.right_edge_near, state.disparity.far_point, 2.1);
    EXPECT_NEAR(state.disparity.centre_disparity, 0.0, 3.0);
    EXPECT_NEAR(state.correction.shift_px, 0.0, 3.0);
    EXPECT_FLOAT_EQ(state.window_px, std::min({state.disparity.left_edge_near, state.disparity.top_edge_near,
                                               state.disparity.bottom_edge_near}));
    AnalysisState exchanged(options);
    ASSERT_EQ(run(exchanged, pair.exchanged(), AnalysePhase::disparity), AnalyseStatus::done);
    EXPECT_NEAR(exchanged.disparity.right_edge_near, -56.0, 4.0);
}

TEST(ResetAnalysis, KeepsDisplacementsOnlyWhenTold) {
    AnalysisState state(analysis_options());
    state.dx[2][3] = 5.0F;
    state.previous_width = 800.0F;
    reset_analysis(state, true);
    EXPECT_EQ(state.dx[2][3], 5.0F);
    EXPECT_EQ(state.previous_width, 0.0F);
    reset_analysis(state, false);
    EXPECT_EQ(state.dx[2][3], 0.0F);
}

TEST(Progress, GrowsToOneHundredOnTheCallingThread) {
    const TexturePair pair(400, 300, [](double, double) { return Displacement{}; });
    AnalysisState state(analysis_options());
    double last = 0.0;
    const int caller = omp_get_thread_num();
    (void)analyse_phase(state, pair.pictures(), {AnalysePhase::disparity, 1, false, true},
                        [&](double percent) {
                            EXPECT_GE(percent, last);
                            EXPECT_EQ(omp_get_thread_num(), caller);
                            last = percent;
                        });
    EXPECT_EQ(last, 100.0);
}

// --- Acceptance over whole grids -------------------------------------------------------------------

/// For the plain rule.
AnalysisState valid_grid() {
    AnalysisState state(analysis_options());
    state.options.robust = false;
    for (std::size_t k = 0; k < 100; ++k) {
        state.valid[k / 10][k % 10] = 1;
        state.dx[k / 10][k % 10] = static_cast<float>(static_cast<int>(k % 10) - 5);
    }
    return state;
}

TEST(Outliers, FarOnTheNearSideAndVerticalExtremesGo) {
    AnalysisState state = valid_grid();
    state.dx[4][4] = -60.0F;
    state.dx[5][5] = 60.0F;
    state.dy[7][2] = 3.0F;
    state.dy[2][7] = -3.0F;
    phases::remove_outliers(state, 1);
    EXPECT_EQ(state.valid[4][4], 0);
    EXPECT_EQ(state.valid[5][5], 1) << "the far side is never cut";
    EXPECT_EQ(state.valid[7][2], 0);
    EXPECT_EQ(state.valid[2][7], 0);
}

TEST(Outliers, TheRobustFitGetsTheVerticalExtremes) {
    AnalysisState state = valid_grid();
    state.options.robust = true;
    state.dx[4][4] = -60.0F;
    state.dy[7][2] = 3.0F;
    state.dy[2][7] = -3.0F;
    phases::remove_outliers(state, 1);
    EXPECT_EQ(state.valid[4][4], 0);
    EXPECT_EQ(state.valid[7][2], 1);
    EXPECT_EQ(state.valid[2][7], 1);
}

TEST(Outliers, FlatSubjectOnTheNearSideKeepsItsCells) {
    AnalysisState state = valid_grid();
    for (auto& row : state.dx) {
        row.fill(-6.0F);
    }
    state.dx[4][4] = -16.0F;
    phases::remove_outliers(state, 3);
    int kept = 0;
    for (const auto& row : state.valid) {
        kept += static_cast<int>(std::count(row.begin(), row.end(), 1));
    }
    EXPECT_EQ(state.valid[4][4], 0);
    EXPECT_EQ(kept, 98) << "one outlier, and the first cell as vertical extreme of equals";
}

TEST(Outliers, OfEqualExtremesTheFirstGoesAndTwoCellsStay) {
    AnalysisState state = valid_grid();
    state.dy[3][3] = state.dy[6][6] = 2.0F;
    phases::remove_outliers(state, 1);
    EXPECT_EQ(state.valid[3][3], 0);
    EXPECT_EQ(state.valid[6][6], 1);
    AnalysisState few(analysis_options());
    phases::remove_outliers(few, 1);
    few.valid[1][1] = few.valid[8][8] = 1;
    phases::remove_outliers(few, 1);
    EXPECT_EQ(few.valid[1][1] + few.valid[8][8], 2);
}

TEST(Corners, EachNeedsWeight) {
    AnalysisState state(analysis_options());
    state.valid[0][0] = state.valid[9][0] = state.valid[0][9] = 1;
    EXPECT_FALSE(phases::corners_covered(state));
    state.valid[8][9] = 1;  // 6 of the 7 that are needed
    EXPECT_FALSE(phases::corners_covered(state));
    state.valid[6][6] = 1;
    EXPECT_TRUE(phases::corners_covered(state));
}

TEST(IsolatedExtremes, SingleCellsBeyondAGapGo) {
    AnalysisState state(analysis_options());
    const auto set = [&state](std::size_t cell, float x) {
        state.valid_disparity[cell / 16][cell % 16] = 1;
        state.dx[cell / 16][cell % 16] = x;
    };
    for (std::size_t k = 0; k < 40; ++k) {
        set(k, static_cast<float>(k % 9));
    }
    set(50, 13.0F);  // five empty bins: 8 .. 13 leaves four
    set(60, -6.0F);  // -1 .. -5 are empty
    phases::remove_isolated_extremes(state);
    EXPECT_EQ(state.valid_disparity[50 / 16][50 % 16], 1) << "a gap of four";
    EXPECT_EQ(state.valid_disparity[60 / 16][60 % 16], 0);
    set(61, -6.4F);
    set(60, -6.0F);
    phases::remove_isolated_extremes(state);
    EXPECT_EQ(state.valid_disparity[60 / 16][60 % 16], 1) << "two cells are no accident";
}

TEST(Estimate, LastColumnCornersOnlyGiveNoKeystone) {
    AnalysisOptions options = analysis_options();
    options.estimate_vergence_v = 2;
    AnalysisState state(options);
    for (std::size_t k = 0; k < 100; ++k) {
        const std::size_t i = k / 10;
        const std::size_t j = k % 10;
        state.middle_x[i][j] = static_cast<int>(40 + 80 * j);
        state.middle_y[i][j] = static_cast<int>(30 + 60 * i);
        state.dy[i][j] =
            0.001F * static_cast<float>((state.middle_x[i][j] - 400) * (state.middle_y[i][j] - 300)) / 400.0F;
        state.valid[i][j] = i < 5 || j < 5 ? 1 : 0;
    }
    state.corner_coverage = phases::corners_covered(state) ? 1 : 0;
    ASSERT_EQ(estimate_geometry(state, kHeight, kWidth, 10, 10, AnalysePhase::geometry),
              EstimateStatus::done);
    EXPECT_EQ(state.correction.vergence_v_rad, 0.0F);
}

TEST(StereoWindow, EveryChoiceAndUnit) {
    AnalysisState state(analysis_options());
    state.correction.shift_px = 3.0F;
    state.disparity = {-20.0F, 40.0F, 0.0F, -12.0F, -14.0F, -9.0F, -8.0F};
    state.options.far_point_limit = 30;
    state.options.win_off_reference = 1;
    const auto window = [&state](int choice) {
        state.options.estimate_window = choice;
        (void)choose_window(state, 600, 800);
        return state.window_px;
    };
    EXPECT_FLOAT_EQ(window(0), 0.0F);
    EXPECT_FLOAT_EQ(window(1), 3.0F);
    EXPECT_FLOAT_EQ(window(2), -20.0F);
    EXPECT_FLOAT_EQ(window(3), -14.0F);
    EXPECT_FLOAT_EQ(window(4), 40.0F);
    EXPECT_FLOAT_EQ(window(5), 40.0F - 24.0F);
    EXPECT_FLOAT_EQ(window(7), 16.0F) << "unknown choices keep the window";
    state.options.far_point_limit = 99;
    EXPECT_FLOAT_EQ(window(5), -20.0F) << "never before the near point";
    EXPECT_DOUBLE_EQ(window_length_px(10, 0, 600, 800), 10.0);
    EXPECT_DOUBLE_EQ(window_length_px(10, 2, 600, 800), 8.0);
    EXPECT_DOUBLE_EQ(window_length_px(10, 3, 600, 800), 9.6);
}

TEST(DisparityStatistics, CentreTakesTheNextLargerBlock) {
    AnalysisState state(analysis_options());
    EXPECT_FALSE(update_line_disparities(state, 1024));
    state.valid_disparity[4][8] = 1;
    state.dx[4][8] = 6.0F;
    state.valid_disparity[0][0] = 1;
    state.dx[0][0] = -10.0F;
    ASSERT_TRUE(update_line_disparities(state, 1024));
    EXPECT_FLOAT_EQ(state.disparity.centre_disparity, 6.0F);
    EXPECT_FLOAT_EQ(state.disparity.bottom_edge_near, -10.0F);
    EXPECT_FLOAT_EQ(state.disparity.top_edge_near, 6.0F) << "edges without cells show the far point";
    EXPECT_FLOAT_EQ(state.correction.shift_px, -2.0F);
}

}  // namespace
}  // namespace zemora
