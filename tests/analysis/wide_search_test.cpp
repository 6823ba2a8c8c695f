#include "analysis/wide_search.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <ostream>
#include <vector>

#include "tests/analysis/texture_pair.h"

namespace zemora {
namespace {

using testing::analysis_options;
using testing::Displacement;
using testing::TexturePair;

constexpr int kWidth = 800;
constexpr int kHeight = 600;
constexpr float kSize = 0.004F;
constexpr float kRotation = 0.006F;
/// Below this share the program believes no correction; a sound start has more than the other.
constexpr double kRefused = 0.38;
constexpr double kSound = 0.7;

AnalyseStatus run(AnalysisState& state, const StereoPicture& pair, AnalysePhase phase) {
    return analyse_phase(state, pair, {phase, 1, false, true}, {});
}

/// A chequered wall in front of a scene that shows beside it, `side` pixels to the left and the right of the
/// middle.
struct Wall {
    double period;
    double side;
    double height_px;
};
void PrintTo(const Wall& wall, std::ostream* out) {
    *out << wall.period << " px period, " << wall.side << " px wide, " << wall.height_px << " px high";
}

TexturePair wall_pair(const Wall& wall) {
    return {kWidth, kHeight,
            [wall](double x, double y) {
                return Displacement{12.0, wall.height_px + kSize * y + kRotation * x};
            },
            [wall](double x, double y, int channel) {
                const bool chequered = std::fabs(x) < wall.side && std::fabs(y) < 0.78 * wall.side;
                return chequered ? testing::chequers(x, y, wall.period) : testing::texture(x, y, channel);
            }};
}

class WideSearchWalls : public ::testing::TestWithParam<Wall> {};

TEST_P(WideSearchWalls, FindsTheHeightThatTheFirstPhasesMiss) {
    const Wall& wall = GetParam();
    const TexturePair pair = wall_pair(wall);
    AnalysisState state(analysis_options());
    ASSERT_EQ(run(state, pair.pictures(), AnalysePhase::shift), AnalyseStatus::done);
    (void)run(state, pair.pictures(), AnalysePhase::first_grid);
    (void)estimate_geometry(state, kHeight, kWidth, 3, 3, AnalysePhase::first_grid);
    const Correction missed = state.correction;
    EXPECT_GT(std::fabs(missed.height_px - wall.height_px), wall.period / 3) << "the wall misleads";

    const WideSearch wide(state, pair.pictures(), {});
    const std::optional<Correction> best = wide.best_correction();
    ASSERT_TRUE(best);
    EXPECT_NEAR(best->height_px, wall.height_px, 0.3);
    EXPECT_NEAR(best->size * kHeight / 2, kSize * kHeight / 2, 0.3);
    EXPECT_NEAR(best->rotation_rad * kWidth / 2, kRotation * kWidth / 2, 0.3);
    EXPECT_NEAR(best->vergence_v_rad * kHeight / 2, 0.0, 0.3);
    EXPECT_NEAR(best->vergence_h_rad * kHeight / 2, 0.0, 0.3);
    EXPECT_NEAR(best->shift_px, 12.0, 1.0);

    const Correction truth = {static_cast<float>(wall.height_px), 12.0F, kSize, kRotation, 0, 0};
    EXPECT_GT(wide.agreement(*best), kSound);
    EXPECT_GT(wide.agreement(truth), kSound);
    for (const double periods : {-1.0, 1.0}) {
        Correction off = truth;
        off.height_px += static_cast<float>(periods * wall.period);
        EXPECT_LT(wide.agreement(off), 0.6 * wide.agreement(truth)) << periods << " periods off";
    }
    EXPECT_LT(wide.agreement(missed), 0.6 * wide.agreement(truth));
}

INSTANTIATE_TEST_SUITE_P(Periods, WideSearchWalls,
                         ::testing::Values(Wall{40, 340, 26}, Wall{48, 260, 20}, Wall{54, 340, 26},
                                           Wall{54, 340, -30}));

TEST(WideSearch, ViewsOfDifferentScenesAgreeOnNothing) {
    const TexturePair pair(kWidth, kHeight, [](double, double) { return Displacement{5000.0, 3000.0}; });
    AnalysisState state(analysis_options());
    const WideSearch wide(state, pair.pictures(), {});
    const std::optional<Correction> best = wide.best_correction();
    EXPECT_TRUE(!best || wide.agreement(*best) < kRefused);
    EXPECT_LT(wide.agreement({}), kRefused);
}

TEST(WideSearch, AWallWithoutAnythingBesideItSaysLittle) {
    const TexturePair pair(
        kWidth, kHeight,
        [](double, double) {
            return Displacement{12.0, 20.0};
        },
        [](double x, double y, int) { return testing::chequers(x, y, 24.0); });
    AnalysisState state(analysis_options());
    const WideSearch wide(state, pair.pictures(), {});
    Correction off;
    off.height_px = 20.0F;
    const double at_truth = wide.agreement(off);
    off.height_px -= 24.0F;
    EXPECT_NEAR(wide.agreement(off), at_truth, 0.15) << "one period is as good as another";
}

TEST(WideSearch, WithoutContrastThereIsNoCorrection) {
    const Bitmap flat = Bitmap::create(kWidth, kHeight);
    fill(flat.picture(), {90, 120, 150});
    const Bitmap dot = Bitmap::create(3, 2);
    fill(dot.picture(), {0, 0, 0});
    for (const Bitmap* view : {&flat, &dot}) {
        AnalysisState state(analysis_options());
        const WideSearch wide(state, {view->picture(), view->picture()}, {});
        EXPECT_FALSE(wide.best_correction());
        EXPECT_EQ(wide.agreement({}), 0.0);
    }
}

TEST(WideSearch, TermsThatAreNotWantedStayZero) {
    const TexturePair pair = wall_pair({48, 260, 20});
    AnalysisOptions options = analysis_options();
    options.estimate_vergence_v = options.estimate_vergence_h = 0;
    AnalysisState state(options);
    const WideSearch wide(state, pair.pictures(), {});
    const std::optional<Correction> best = wide.best_correction();
    ASSERT_TRUE(best);
    EXPECT_EQ(best->vergence_v_rad, 0.0F);
    EXPECT_EQ(best->vergence_h_rad, 0.0F);
    EXPECT_NEAR(best->height_px, 20.0, 0.3);
}

TEST(WideSearch, GuidesOnlyTheCellsThatAreNotValid) {
    constexpr float kDepth = 0.1F;     // pixels of disparity per pixel to the right
    constexpr float kBefore = -77.0F;  // as left by another measurement
    constexpr int kRowsBefore = 99;
    const TexturePair pair(
        kWidth, kHeight,
        [](double x, double) {
            return Displacement{12.0 + kDepth * x, 20.0};
        },
        [](double x, double y, int channel) {  // nothing to see in the upper left quarter
            return x < 0.0 && y > 0.0 ? 0.5 : testing::texture(x, y, channel);
        });
    AnalysisState state(analysis_options());
    const WideSearch wide(state, pair.pictures(), {});
    for (std::size_t i = 0; i < kGeometryGrid; ++i) {
        for (std::size_t j = 0; j < kGeometryGrid; ++j) {
            state.valid[i][j] = (i + j) % 2 == 0 ? 1 : 0;
            state.dx[i][j] = kBefore;
            state.search_rows[i][j] = kRowsBefore;
        }
    }
    wide.guide_cells(state, {20.0F, 7.0F, 0, 0, 0, 0});
    int guided = 0;
    for (std::size_t i = 0; i < kGeometryGrid; ++i) {
        for (std::size_t j = 0; j < kGeometryGrid; ++j) {
            if (state.valid[i][j] != 0) {
                EXPECT_EQ(state.dx[i][j], kBefore) << i << " " << j;
                EXPECT_EQ(state.search_rows[i][j], kRowsBefore) << i << " " << j;
                continue;
            }
            EXPECT_LT(state.search_rows[i][j], 20) << "the height is known: " << i << " " << j;
            if (state.dx[i][j] != kBefore) {
                // Tiles of 76 pixels between margins of 30, from the middle of the picture.
                const double x = 30.4 + 38.0 + 74.0 * static_cast<double>(j) - kWidth / 2.0;
                EXPECT_NEAR(state.dx[i][j], 12.0 - 7.0 + kDepth * x, 3.0) << i << " " << j;
                ++guided;
            }
        }
    }
    EXPECT_GE(guided, 30);
    EXPECT_EQ(state.dx[9][0], kBefore) << "a cell without contrast has no place";
    EXPECT_LT(state.search_rows[9][0], state.search_rows[0][9])
        << "nor a search that could find one by chance";
}

TEST(WideSearch, GivesTheSameNumbersForAnyThreadsAndInstructionSet) {
    const TexturePair pair = wall_pair({40, 340, 26});
    const int threads = omp_get_max_threads();
    std::vector<Correction> all;
    std::vector<double> agreements;
    for (const int count : {1, 2}) {
        omp_set_num_threads(count);
        testing::for_each_instruction_set([&] {
            AnalysisState state(analysis_options());
            const WideSearch wide(state, pair.pictures(), {});
            all.push_back(wide.best_correction().value_or(Correction{}));
            agreements.push_back(wide.agreement(all.front()));
        });
    }
    omp_set_num_threads(threads);
    EXPECT_NE(all.front().height_px, 0.0F);
    for (std::size_t k = 1; k < all.size(); ++k) {
        EXPECT_EQ(all[k].height_px, all[0].height_px);
        EXPECT_EQ(all[k].shift_px, all[0].shift_px);
        EXPECT_EQ(all[k].size, all[0].size);
        EXPECT_EQ(all[k].rotation_rad, all[0].rotation_rad);
        EXPECT_EQ(all[k].vergence_v_rad, all[0].vergence_v_rad);
        EXPECT_EQ(all[k].vergence_h_rad, all[0].vergence_h_rad);
        EXPECT_EQ(agreements[k], agreements[0]);
    }
}

}  // namespace
}  // namespace zemora
