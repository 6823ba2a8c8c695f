#include "report/window_judgement.h"

#include <gtest/gtest.h>

namespace zemora {
namespace {

constexpr int kWidth = 300000;  // every limit is a whole number of pixels

/// A pair with the given deviation, near point against the curtain and far point, in pixels.
WindowFigures figures_of(int deviation, int near_point, int far_point, int edge) {
    WindowFigures figures;
    figures.width = kWidth;
    figures.height = kWidth / 2;
    figures.far_px = far_point;
    figures.near_px = far_point - deviation;
    figures.left_curtain_px = near_point - (far_point - deviation);
    figures.right_curtain_px = figures.left_curtain_px + 7;
    figures.left_edge_px = edge + 7;
    figures.right_edge_px = edge;
    return figures;
}

/// The first and the last whole pixel of a range.
using Range = int[2];
using Verdicts = NearVerdict[3][4];

/// Tries the ends of every range of near points with those of every range of deviations.
void expect_verdicts(const Range (&near_points)[3], const Range (&deviations)[4], const Verdicts& wanted,
                     const EdgeVerdict (&wanted_edges)[4], int edge) {
    for (int cell = 0; cell < 48; ++cell) {
        const int row = cell / 16;
        const int column = cell / 4 % 4;
        const int near_point = near_points[row][cell % 2];
        const int deviation = deviations[column][cell / 2 % 2];
        const WindowJudgement judgement = judge_window(figures_of(deviation, near_point, 10000, edge));
        EXPECT_EQ(judgement.near_verdict, wanted[row][column]) << near_point << " of " << deviation;
        EXPECT_EQ(judgement.edges, wanted_edges[column]) << near_point << " of " << deviation;
    }
}

TEST(WindowJudgement, NearPointBehindTheWindowByItsDistanceAndTheDeviation) {
    using enum NearVerdict;
    expect_verdicts(
        {{6001, 30000}, {3001, 6000}, {1, 3000}},
        {{20001, 90000}, {15001, 20000}, {10001, 15000}, {0, 10000}},
        {{very_far_behind_unfavourable, very_far_behind_in_print, very_far_behind,
          very_far_behind_unfavourable},
         {clearly_behind, too_far_behind_in_print, too_far_behind, clearly_behind_control},
         {close_behind, close_behind_favourable, close_behind_favourable, close_behind_favourable}},
        {}, -90000);
}

TEST(WindowJudgement, NearPointBeforeTheWindowByTheFarPointTheDeviationAndTheEdges) {
    using enum NearVerdict;
    using enum EdgeVerdict;
    constexpr Range kNear[] = {{0, -5999}, {-6001, -9999}, {-10000, -30000}};
    constexpr Range kDeviations[] = {{20001, 90000}, {15001, 20000}, {3001, 15000}, {0, 3000}};
    constexpr Verdicts kWanted = {
        {before_warning, before_warning, before, before_as_designed},
        {far_before, clearly_before, clearly_before, possibly_too_far_before},
        {extremely_before, extremely_before, extremely_before, probably_too_far_before}};
    expect_verdicts(kNear, kDeviations, kWanted, {not_judged, no_solution, violation, not_judged}, -1);
    expect_verdicts(kNear, kDeviations, kWanted, {not_judged, not_judged, no_violation, not_judged}, 0);
}

TEST(WindowJudgement, MiddleMayComeForwardWhereTheEdgesStandWellBehindTheNearPoint) {
    constexpr int kFar = 12000;
    for (const int deviation : {20000, 10001}) {
        const int near_px = kFar - deviation;
        EXPECT_EQ(judge_window(figures_of(deviation, 3000, kFar, near_px + 2001)).near_verdict,
                  NearVerdict::close_behind_with_room);
        EXPECT_EQ(judge_window(figures_of(deviation, 3000, kFar, near_px + 2000)).near_verdict,
                  NearVerdict::close_behind_favourable);
    }
    EXPECT_EQ(judge_window(figures_of(20001, 3000, kFar, kFar)).near_verdict, NearVerdict::close_behind);
    EXPECT_EQ(judge_window(figures_of(10000, 3000, kFar, kFar)).near_verdict,
              NearVerdict::close_behind_favourable);
}

TEST(WindowJudgement, DeviationAndFarPointShareTheirLimits) {
    constexpr Range kRanges[] = {{90000, 20001}, {20000, 15001}, {15000, 10001}, {10000, 3001}, {3000, 0}};
    for (int range = 0; range < 5; ++range) {
        for (const int value : kRanges[range]) {
            const WindowJudgement j = judge_window(figures_of(value, 1, value, 0));
            EXPECT_EQ(static_cast<int>(j.depth), range) << value;
            EXPECT_EQ(static_cast<int>(j.far_verdict), range) << value;
        }
    }
}

TEST(WindowJudgement, NarrowPictureFillsAShareOfTheProjection) {
    WindowFigures figures = {.near_px = 100.0, .far_px = 140.0, .width = 1600, .height = 900};
    figures.projection_ratio = 2;
    EXPECT_EQ(judge_window(figures).picture_share, 1.0);
    EXPECT_NEAR(judge_window(figures).limit_per_mille, 33.333, 1e-9);
    figures.width = 1200;
    figures.projection_ratio = 5;
    const WindowJudgement j = judge_window(figures);
    EXPECT_NEAR(j.picture_share, 4.0 / 3.0 / 1.896, 1e-9);
    EXPECT_NEAR(j.deviation, 40.0 / 1200 * j.picture_share, 1e-9);
    EXPECT_NEAR(j.near_point, 100.0 / 1200 * j.picture_share, 1e-9);
    EXPECT_NEAR(j.limit_per_mille, 33.333 * 1.896 / (4.0 / 3.0), 1e-9);
}

TEST(WindowJudgement, IsReadFromTheWindowOverTheDepthToTheFarPoint) {
    WindowFigures figures = figures_of(16000, -4000, 12000, -1);
    figures.estimate_window = 5;
    const WindowJudgement judgement = judge_window(figures);
    const auto texts = judgement_texts(judgement, 0, MessageCatalogue(Language::english));
    ASSERT_EQ(texts.size(), 5U);
    EXPECT_TRUE(texts[0].starts_with("Warning: A strict near point framing"));
    EXPECT_NE(texts[1].find("ratio of  2.00. It is assumed"), std::string::npos) << texts[1];
    EXPECT_NE(texts[1].find("exceed 33.33 promille\n"), std::string::npos) << texts[1];
    EXPECT_TRUE(texts[2].starts_with("Deviation definitely too large for projection!"));
    EXPECT_EQ(
        texts[3],
        "Warning: Near point detected before the stereo window!\n"
        "         Violation of stereo window. There is no optimal mounting solution\n for that image.\n");
    EXPECT_TRUE(texts[4].starts_with("Warning: far point disparity may be critical"));

    figures.near_px = 0.0;
    const auto german = judgement_texts(judge_window(figures), 4, MessageCatalogue(Language::german));
    ASSERT_EQ(german.size(), 4U);
    EXPECT_TRUE(german[0].starts_with("Es wurde ein Projektionsverhaeltnis von  2.00 angegeben"))
        << german[0];
}

}  // namespace
}  // namespace zemora
