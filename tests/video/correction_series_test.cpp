#include "video/correction_series.h"

#include <gtest/gtest.h>

#include <limits>

namespace zemora {
namespace {

/// What was measured at the analysed frames of a film; a hole is no result.
constexpr float kHole = -999.0F;

/// Height and window are the given values, the left curtain twice as much; an unmeasured frame has 7
/// everywhere.
CorrectionSeries series_of(int frames, FrameWalk walk, const std::vector<float>& measured) {
    CorrectionSeries series;
    series.analysed = walk;
    series.resize(frames);
    for (std::size_t i = 0; i < measured.size(); ++i) {
        const auto frame = static_cast<std::size_t>(walk.at(static_cast<int>(i)));
        const float value = measured[i] == kHole ? 7.0F : measured[i];
        series.valid[frame] = measured[i] == kHole ? 0 : 1;
        series.values[frame].height_px = value;
        series.values[frame].window_px = value;
        series.values[frame].curtain_left_px = 2.0F * value;
    }
    return series;
}

std::vector<float> all(const CorrectionSeries& series, float FrameValues::*member) {
    std::vector<float> values;
    for (const FrameValues& frame : series.values) {
        values.push_back(frame.*member);
    }
    return values;
}

std::vector<float> heights(const CorrectionSeries& series) {
    return all(series, &FrameValues::height_px);
}

using Floats = std::vector<float>;

void expect_near(const Floats& values, const Floats& expected) {
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t frame = 0; frame < expected.size(); ++frame) {
        EXPECT_NEAR(values[frame], expected[frame], 1e-5) << frame;
    }
}

constexpr SmoothSettings kAsMeasured = {1, 1};

struct MedianCase {
    int length;
    Floats smoothed;
};

class Medians : public testing::TestWithParam<MedianCase> {};

// The same eleven values smoothed by each length; worked out by hand.
TEST_P(Medians, ReachOneFrameFurtherEachAndLeaveTheEnds) {
    CorrectionSeries series = series_of(11, {0, 11, 1}, {5, 1, 9, 2, 8, 3, 7, 4, 6, 0, 10});
    SmoothSettings settings = {GetParam().length, 1};
    ASSERT_TRUE(smooth_series(series, settings));
    EXPECT_EQ(heights(series), GetParam().smoothed);
    EXPECT_EQ(all(series, &FrameValues::window_px), (Floats{5, 1, 9, 2, 8, 3, 7, 4, 6, 0, 10}));
    series = series_of(11, {0, 11, 1}, {5, 1, 9, 2, 8, 3, 7, 4, 6, 0, 10});
    settings = {1, GetParam().length};
    ASSERT_TRUE(smooth_series(series, settings));
    EXPECT_EQ(all(series, &FrameValues::window_px), GetParam().smoothed);
    EXPECT_EQ(series.values[5].curtain_left_px, 2.0F * GetParam().smoothed[5]);
    EXPECT_EQ(heights(series), (Floats{5, 1, 9, 2, 8, 3, 7, 4, 6, 0, 10}));
}

INSTANTIATE_TEST_SUITE_P(Lengths, Medians,
                         testing::Values(MedianCase{0, {5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5}},
                                         MedianCase{1, {5, 1, 9, 2, 8, 3, 7, 4, 6, 0, 10}},
                                         MedianCase{2, {5, 5, 2, 8, 3, 7, 4, 6, 4, 6, 10}},
                                         MedianCase{3, {5, 1, 5, 3, 7, 4, 6, 4, 6, 0, 10}},
                                         MedianCase{4, {5, 1, 9, 5, 4, 6, 4, 6, 6, 0, 10}},
                                         MedianCase{5, {5, 1, 9, 2, 5, 4, 6, 4, 6, 0, 10}}));

TEST(CorrectionSeries, ALengthBeyondTheFilmBecomesItsOwn) {
    CorrectionSeries series = series_of(4, {0, 4, 1}, {1, 9, 2, 3});
    SmoothSettings settings = {5, 0};
    ASSERT_TRUE(smooth_series(series, settings));
    EXPECT_EQ(settings.geometry, 2);  // (4 + 1) / 2
    EXPECT_EQ(settings.window, 0);
    EXPECT_EQ(heights(series), (Floats{1, 2, 3, 3}));
    EXPECT_EQ(series.values[3].window_px, 3.75F);
    EXPECT_EQ(series.values[0].curtain_left_px, 7.5F);
}

TEST(CorrectionSeries, HolesTakeWhatLiesAroundThem) {
    const Floats measured = {kHole, 2, kHole, kHole, 8, kHole};
    CorrectionSeries series = series_of(6, {0, 6, 1}, measured);
    SmoothSettings settings = kAsMeasured;
    ASSERT_TRUE(smooth_series(series, settings));
    EXPECT_EQ(heights(series), (Floats{2, 2, 4, 6, 8, 8}));
    EXPECT_EQ(all(series, &FrameValues::window_px), (Floats{2, 2, 4, 6, 8, 8}));
    EXPECT_EQ(series.values[2].curtain_left_px, 14.0F) << "curtains are not filled";
    CorrectionSeries as_it_was = series_of(6, {0, 6, 1}, measured);
    fill_holes(as_it_was, {0, 0});
    EXPECT_EQ(heights(as_it_was), (Floats{7, 2, 7, 7, 8, 7}));
    const FrameValues mean = mean_values(as_it_was);
    EXPECT_EQ(mean.height_px, 5.0F);
    EXPECT_EQ(mean.curtain_left_px, 10.0F);
}

TEST(CorrectionSeries, FramesBetweenLieOnLinesAndTheEndsStayLevel) {
    // Of a film of 20 frames 3, 8 and 13 are analysed.
    CorrectionSeries series = series_of(20, {3, 17, 5}, {10, 20, 0});
    SmoothSettings settings = kAsMeasured;
    ASSERT_TRUE(smooth_series(series, settings));
    expect_near(heights(series), {10, 10, 10, 10, 12, 14, 16, 18, 20, 16, 12, 8, 4, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(all(series, &FrameValues::window_px), heights(series));
    EXPECT_EQ(series.values[4].curtain_left_px, 24.0F);
    CorrectionSeries rare = series_of(52, {0, 52, 25}, {0, kHole, 50});
    settings = {2, 2};
    ASSERT_TRUE(smooth_series(rare, settings));
    EXPECT_EQ(rare.values[25].height_px, 25.0F);
    EXPECT_EQ(rare.values[26].height_px, 26.0F);
    EXPECT_EQ(rare.values[51].height_px, 50.0F);
}

TEST(CorrectionSeries, NothingIsMixedAcrossACut) {
    // Scenes: 0 to 6, 7 to 11, 12 to 13 without an analysed frame, from 14 on.
    CorrectionSeries series = series_of(24, {0, 24, 3}, {1, 2, kHole, 50, kHole, kHole, 9, 90});
    series.scene_starts = {7, 12, 14};
    SmoothSettings settings = kAsMeasured;
    ASSERT_TRUE(smooth_series(series, settings));
    expect_near(heights(series), {1,  4 / 3.0F, 5 / 3.0F, 2, 2, 2, 2, 50, 50, 50, 50, 50,
                                  50, 50,       9,        9, 9, 9, 9, 36, 63, 90, 90, 90});
}

TEST(CorrectionSeries, AShortSceneHasTheMedianThatFitsIntoIt) {
    CorrectionSeries series = series_of(9, {0, 9, 1}, {1, 5, 3, 80, 20, 70, 30, 60, 2});
    series.scene_starts = {3, 8};
    SmoothSettings settings = {5, 1};
    ASSERT_TRUE(smooth_series(series, settings));
    EXPECT_EQ(heights(series), (Floats{1, 3, 3, 80, 20, 60, 30, 60, 2}));
}

TEST(CorrectionSeries, ASceneWithoutAResultHasThatOfAnother) {
    CorrectionSeries series = series_of(8, {0, 8, 1}, {kHole, kHole, 4, kHole, kHole, kHole, 6, kHole});
    series.scene_starts = {2, 4, 6};
    SmoothSettings settings = kAsMeasured;
    ASSERT_TRUE(smooth_series(series, settings));
    EXPECT_EQ(heights(series), (Floats{4, 4, 4, 4, 4, 4, 6, 6}));
}

TEST(CorrectionSeries, OneAnalysedFrameHoldsForTheWholeFilm) {
    for (const int length : {0, 1, 3}) {
        CorrectionSeries series = series_of(5, {2, 3, 1}, {6});
        SmoothSettings settings = {length, length};
        ASSERT_TRUE(smooth_series(series, settings));
        EXPECT_EQ(heights(series), (Floats{6, 6, 6, 6, 6}));
        EXPECT_EQ(settings.window, std::min(length, 2));
    }
}

TEST(CorrectionSeries, WithoutAResultNothingChanges) {
    CorrectionSeries series = series_of(3, {0, 3, 1}, {kHole, kHole, kHole});
    SmoothSettings settings = {5, 5};
    EXPECT_FALSE(smooth_series(series, settings));
    EXPECT_EQ(heights(series), (Floats{7, 7, 7}));
    EXPECT_EQ(settings.geometry, 5);
    CorrectionSeries empty = series_of(3, {2, 2, 1}, {});
    EXPECT_FALSE(smooth_series(empty, settings));
}

TEST(CorrectionSeries, WhatIsNoNumberIsAHole) {
    CorrectionSeries series = series_of(3, {0, 3, 1}, {1, 2, 5});
    series.values[1].curtain_right_px = std::numeric_limits<float>::quiet_NaN();
    series.disparities[2].far_px = std::numeric_limits<float>::infinity();
    SmoothSettings settings = kAsMeasured;
    ASSERT_TRUE(smooth_series(series, settings));
    EXPECT_EQ(heights(series), (Floats{1, 3, 5}));
    EXPECT_EQ(series.values[1].curtain_right_px, 0.0F);
    EXPECT_EQ(series.disparities[2].far_px, 0.0F);
}

TEST(CorrectionSeries, StoredValuesStandAtTheirFramesAndLeaveTheCurtains) {
    CorrectionSeries series = series_of(8, {0, 1, 1}, {3});
    series.scene_starts = {6};
    SmoothSettings settings = kAsMeasured;
    ASSERT_TRUE(smooth_series(series, settings));
    take_stored_values(series, {{1, {.height_px = 10}}, {3, {.height_px = 20}}, {7, {.height_px = -1}}});
    EXPECT_EQ(heights(series), (Floats{10, 10, 15, 20, 20, 20, -1, -1}));
    EXPECT_EQ(series.values[5].curtain_left_px, 6.0F);
}

}  // namespace
}  // namespace zemora
