#include "report/window_judgement.h"

#include <gtest/gtest.h>

namespace zemora {
namespace {

/// A pair with the given deviation, near point against the curtain and far point, in pixels. Every limit is
/// a whole number of pixels.
WindowJudgement judged(int deviation, int near_point, int far_point, int edge, int estimate_window = 2) {
    const int curtain = near_point - (far_point - deviation);
    const WindowFigures figures = {.near_px = static_cast<double>(far_point - deviation),
                                   .far_px = static_cast<double>(far_point),
                                   .left_edge_px = edge + 7.0,
                                   .right_edge_px = static_cast<double>(edge),
                                   .left_curtain_px = curtain,
                                   .right_curtain_px = curtain + 7,
                                   .width = 300000,
                                   .height = 150000,
                                   .estimate_window = estimate_window};
    return judge_window(figures);
}

/// The first and the last whole pixel of a range.
using Range = int[2];

/// Tries the ends of every range of near points with those of every range of deviations.
void expect_verdicts(const Range (&near_points)[3], const Range (&deviations)[4],
                     const NearVerdict (&wanted)[3][4], const EdgeVerdict (&wanted_edges)[4], int edge) {
    for (int cell = 0; cell < 48; ++cell) {
        const int row = cell / 16;
        const int column = cell / 4 % 4;
        const int near_point = near_points[row][cell % 2];
        const int deviation = deviations[column][cell / 2 % 2];
        const WindowJudgement judgement = judged(deviation, near_point, 10000, edge);
        EXPECT_EQ(judgement.near_verdict, wanted[row][column]) << near_point << " of " << deviation;
        EXPECT_EQ(judgement.edges, wanted_edges[column]) << near_point << " of " << deviation;
    }
}

TEST(WindowJudgement, NearPointByItsDistanceTheDeviationTheFarPointAndTheEdges) {
    using enum NearVerdict;
    using enum EdgeVerdict;
    expect_verdicts(
        {{6001, 30000}, {3001, 6000}, {1, 3000}},
        {{20001, 90000}, {15001, 20000}, {10001, 15000}, {0, 10000}},
        {{very_far_behind_unfavourable, very_far_behind_in_print, very_far_behind,
          very_far_behind_unfavourable},
         {clearly_behind, too_far_behind_in_print, too_far_behind, clearly_behind_control},
         {close_behind, close_behind_favourable, close_behind_favourable, close_behind_favourable}},
        {}, -90000);
    for (const bool cut : {true, false}) {
        expect_verdicts(
            {{0, -5999}, {-6001, -9999}, {-10000, -30000}},
            {{20001, 90000}, {15001, 20000}, {3001, 15000}, {0, 3000}},
            {{before_warning, before_warning, before, before_as_designed},
             {far_before, clearly_before, clearly_before, possibly_too_far_before},
             {extremely_before, extremely_before, extremely_before, probably_too_far_before}},
            {not_judged, cut ? no_solution : not_judged, cut ? violation : no_violation, not_judged},
            cut ? -1 : 0);
    }
}

TEST(WindowJudgement, MiddleMayComeForwardWhereTheEdgesStandWellBehindTheNearPoint) {
    using enum NearVerdict;
    constexpr int kFar = 12000;
    for (const int deviation : {20000, 10001}) {
        const int room = kFar - deviation + 2000;
        EXPECT_EQ(judged(deviation, 3000, kFar, room + 1).near_verdict, close_behind_with_room);
        EXPECT_EQ(judged(deviation, 3000, kFar, room).near_verdict, close_behind_favourable);
    }
    EXPECT_EQ(judged(20001, 3000, kFar, kFar).near_verdict, close_behind);
    EXPECT_EQ(judged(10000, 3000, kFar, kFar).near_verdict, close_behind_favourable);
}

TEST(WindowJudgement, DeviationAndFarPointShareTheirLimits) {
    constexpr Range kRanges[] = {{90000, 20001}, {20000, 15001}, {15000, 10001}, {10000, 3001}, {3000, 0}};
    for (int range = 0; range < 5; ++range) {
        for (const int value : kRanges[range]) {
            const WindowJudgement judgement = judged(value, 1, value, 0);
            EXPECT_EQ(static_cast<int>(judgement.depth), range) << value;
            EXPECT_EQ(static_cast<int>(judgement.far_verdict), range) << value;
        }
    }
}

TEST(WindowJudgement, NarrowPictureFillsAShareOfTheProjection) {
    WindowFigures figures = {.near_px = 100.0, .far_px = 140.0, .width = 1600, .height = 900};
    figures.projection_ratio = 2;
    EXPECT_EQ(judge_window(figures).picture_share, 1.0);
    figures.width = 1200;
    figures.projection_ratio = 5;
    const WindowJudgement judgement = judge_window(figures);
    EXPECT_NEAR(judgement.picture_share, 4.0 / 3.0 / 1.896, 1e-9);
    EXPECT_NEAR(judgement.deviation, 40.0 / 1200 * judgement.picture_share, 1e-9);
    EXPECT_NEAR(judgement.near_point, 2.5 * judgement.deviation, 1e-9);
    EXPECT_NEAR(judgement.limit_per_mille, 33.333 * 1.896 / (4.0 / 3.0), 1e-9);
}

TEST(WindowJudgement, IsReadFromTheWindowOverTheDepthToTheFarPoint) {
    const auto texts =
        judgement_texts(judged(16000, -4000, 12000, -1, 5), 0, MessageCatalogue(Language::english));
    const char* const kWanted[] = {
        "Warning: A strict near point framing would violate the divergence rule,\n",
        "A projection ratio has not been given. The resulting image shows a\nwidth-to-height ratio of  2.00. "
        "It",
        "Deviation definitely too large for projection!",
        "Warning: Near point detected before the stereo window!\n         Violation of stereo window. There "
        "is",
        "Warning: far point disparity may be critical"};
    ASSERT_EQ(texts.size(), std::size(kWanted));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_TRUE(texts[i].starts_with(kWanted[i])) << texts[i];
    }
    const auto german = judgement_texts(judged(100, 0, 100, 0, 5), 4, MessageCatalogue(Language::german));
    ASSERT_EQ(german.size(), 4U);
    EXPECT_TRUE(german[0].starts_with("Es wurde ein Projektionsverhaeltnis von  2.00 angegeben"))
        << german[0];
}

}  // namespace
}  // namespace zemora
