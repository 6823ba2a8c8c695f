#include "analysis/height_check.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>

#include "tests/analysis/texture_pair.h"

namespace zemora {
namespace {

using testing::analysis_options;
using testing::Displacement;
using testing::DisplacementField;
using testing::TexturePair;

HeightCheck checked(const StereoPicture& pair, double scale = 1.0) {
    AnalysisState state(analysis_options());
    EXPECT_EQ(analyse_phase(state, pair, {AnalysePhase::disparity, 1, false, false}, {}),
              AnalyseStatus::done);
    return check_heights(state, pair, scale);
}

struct HeightCase {
    const char* name;
    int width;
    int height;
    double dy;
    double depth_px = 10.0;
};

class KnownHeight : public ::testing::TestWithParam<HeightCase> {};

TEST_P(KnownHeight, IsFoundInFractionsOfAPixel) {
    const HeightCase& c = GetParam();
    const TexturePair pair(c.width, c.height, [&](double x, double y) {
        return Displacement{c.depth_px * std::sin(x / c.width * 5.0) * std::cos(y / c.height * 3.0), c.dy};
    });
    const HeightCheck check = checked(pair.pictures());
    EXPECT_GE(check.matched, kHeightCheckTiles * 2 / 3);
    EXPECT_NEAR(check.median_input_px, std::abs(c.dy), 0.1);
    EXPECT_NEAR(check.most_input_px, std::abs(c.dy), 0.3);
    EXPECT_LT(check.rough_input_px, 0.15);
    EXPECT_EQ(check.height_input_px, c.height);
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, KnownHeight,
    ::testing::Values(HeightCase{"aligned", 1400, 1000, 0.0}, HeightCase{"half", 1400, 1000, -0.5},
                      HeightCase{"third", 1400, 1000, 0.33}, HeightCase{"several", 1400, 1000, 7.25},
                      HeightCase{"small", 300, 200, 0.6, 3.0}, HeightCase{"strip", 3000, 400, -2.5},
                      HeightCase{"large", 3200, 2400, 3.3, 30.0}, HeightCase{"deep", 1400, 1000, 1.5, 112.0}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(HeightCheck, CountsPixelsOfTheInput) {
    const TexturePair pair(1400, 1000, [](double, double) { return Displacement{4.0, 3.0}; });
    const HeightCheck check = checked(pair.pictures(), 0.5);
    EXPECT_NEAR(check.median_input_px, 6.0, 0.1);
    EXPECT_NEAR(check.most_input_px, 6.0, 0.2);
    EXPECT_EQ(check.height_input_px, 2000.0);
    EXPECT_EQ(check.pixel_input_px, 2.0);
}

TEST(HeightCheck, APartThatIsOffShowsAndTheRestDoesNotHideIt) {
    const TexturePair pair(1400, 1000, [](double x, double y) {
        return Displacement{5.0, x > 0.0 && y > 0.0 ? 8.0 : 0.0};
    });
    const HeightCheck check = checked(pair.pictures());
    EXPECT_LT(check.median_input_px, 0.3);
    EXPECT_NEAR(check.most_input_px, 8.0, 0.5);
    const TexturePair gross(1400, 1000, [](double x, double) {
        return Displacement{5.0, x > 0.0 ? -22.0 : 0.0};  // phase 5 finds no disparity in the right half
    });
    EXPECT_NEAR(checked(gross.pictures()).most_input_px, 22.0, 0.5);
}

/// The texture where `is_free`, dots of one kind elsewhere; the right view is lower by `dy` pixels.
TexturePair with_dots(int period, int dy, bool (*is_free)(int x)) {
    TexturePair pair(1400, 1000, [dy](double, double) { return Displacement{0.0, static_cast<double>(dy)}; });
    for (const auto& [view, offset] :
         {std::pair{pair.left.picture(), 0}, std::pair{pair.right.picture(), dy}}) {
        for (int y = 0; y < view.height; ++y) {
            for (int x = 0; x < view.width; ++x) {
                const double wave = std::sin(6.2832 * x / period) + std::sin(6.2832 * (y - offset) / period);
                for (int c = 0; c < kPixelBytes && !is_free(x); ++c) {
                    view.pixel(x, y)[c] = static_cast<std::uint8_t>(std::lround(128.0 + 50.0 * wave));
                }
            }
        }
    }
    return pair;
}

TEST(HeightCheck, APatternThatRepeatsSaysNothing) {
    const TexturePair whole = with_dots(22, 22, [](int) { return false; });
    const HeightCheck check = checked(whole.pictures());
    EXPECT_LT(check.matched, 6);
    EXPECT_GT(check.ambiguous, kHeightCheckTiles / 2);
}

TEST(HeightCheck, WhatStandsBesideAPatternTellsThatItIsOnePeriodOff) {
    const TexturePair half = with_dots(22, 22, [](int x) { return x < 500; });
    const HeightCheck check = checked(half.pictures());
    EXPECT_GT(check.matched, 10);
    EXPECT_GT(check.ambiguous, 20);
    EXPECT_NEAR(check.median_input_px, 22.0, 0.3);
}

TEST(HeightCheck, ViewsOfDifferentThingsHaveNothingToMatch) {
    const TexturePair one(1400, 1000, [](double, double) { return Displacement{}; });
    const TexturePair other(1400, 1000, [](double, double) { return Displacement{900.0, 700.0}; });
    AnalysisState state(analysis_options());
    ASSERT_EQ(analyse_phase(state, one.pictures(), {AnalysePhase::disparity, 1, false, false}, {}),
              AnalyseStatus::done);
    // The disparities of a pair that can be matched, with copies of one that cannot.
    const Grid<int> valid = state.valid_disparity;
    const StereoPicture mixed{one.left.picture(), other.right.picture()};
    (void)analyse_phase(state, mixed, {AnalysePhase::disparity, 1, false, false}, {});
    state.valid_disparity = valid;
    const HeightCheck check = check_heights(state, mixed, 1.0);
    EXPECT_EQ(check.tiles, kHeightCheckTiles);
    EXPECT_LT(check.matched, 6);
}

TEST(HeightCheck, APlainPictureOrForeignCopiesMeasureNothing) {
    const TexturePair pair(1400, 1000, [](double, double) { return Displacement{}; });
    AnalysisState state(analysis_options());
    EXPECT_EQ(check_heights(state, pair.pictures(), 1.0).tiles, 0) << "no copies";
    ASSERT_EQ(analyse_phase(state, pair.pictures(), {AnalysePhase::disparity, 1, false, false}, {}),
              AnalyseStatus::done);
    const TexturePair portrait(1000, 1400, [](double, double) { return Displacement{}; });
    EXPECT_EQ(check_heights(state, portrait.pictures(), 1.0).tiles, 0) << "copies of another pair";
    fill(pair.left.picture(), {90, 90, 90});
    fill(state.working_left.picture(), {90, 90, 90});
    EXPECT_EQ(check_heights(state, pair.pictures(), 1.0).tiles, 0) << "no contrast";
}

TEST(HeightCheck, GivesTheSameForEveryNumberOfThreadsAndInstructionSet) {
    const TexturePair pair(1400, 1000, [](double x, double y) {
        return Displacement{20.0 * std::sin(x / 200.0), 1.0 + y / 400.0};
    });
    const HeightCheck first = checked(pair.pictures());
    ASSERT_GT(first.matched, 40);
    const int threads = omp_get_max_threads();
    for (const int count : {1, 3}) {
        omp_set_num_threads(count);
        testing::for_each_instruction_set([&] {
            const HeightCheck again = checked(pair.pictures());
            EXPECT_EQ(again.median_input_px, first.median_input_px);
            EXPECT_EQ(again.most_input_px, first.most_input_px);
            EXPECT_EQ(again.matched, first.matched);
        });
    }
    omp_set_num_threads(threads);
}

/// Samples on all tiles.
std::vector<HeightSample> samples_of(double (*dy)(int row, int column)) {
    std::vector<HeightSample> samples;
    for (int row = 0; row < kHeightCheckSide; ++row) {
        for (int column = 0; column < kHeightCheckSide; ++column) {
            samples.push_back({row, column, dy(row, column)});
        }
    }
    return samples;
}

TEST(HeightSummary, SingleFalseMatchesFallAwayAndPlacesThatAgreeStay) {
    const HeightCheck scattered = summarise_heights(samples_of(
        [](int row, int column) { return row % 3 == 1 && column % 4 == 1 ? 9.0 + row + column : 0.2; }));
    EXPECT_EQ(scattered.isolated, 6);
    EXPECT_EQ(scattered.matched, kHeightCheckTiles - 6);
    EXPECT_NEAR(scattered.most_input_px, 0.2, 1e-9);
    const HeightCheck corner =
        summarise_heights(samples_of([](int row, int column) { return row < 3 && column < 3 ? -8.0 : 0.2; }));
    EXPECT_EQ(corner.isolated, 0);
    EXPECT_NEAR(corner.median_input_px, 0.2, 1e-9);
    EXPECT_NEAR(corner.most_input_px, 8.0, 1e-9);
}

TEST(HeightSummary, MedianMostAndRoughnessOfASlope) {
    const HeightCheck slope = summarise_heights(samples_of([](int row, int) { return row - 4.0; }));
    EXPECT_EQ(slope.median_input_px, 2.0);
    EXPECT_EQ(slope.most_input_px, 4.0);
    EXPECT_LT(slope.rough_input_px, 0.6);
    EXPECT_EQ(summarise_heights({}).matched, 0);
    EXPECT_EQ(summarise_heights({{2, 3, -1.5}}).most_input_px, 1.5);
}

}  // namespace
}  // namespace zemora
