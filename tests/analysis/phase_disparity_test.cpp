// Phase 5: which extremes are believed, and a search that is centred where the scene is.

#include <gtest/gtest.h>

#include <cmath>

#include "analysis/phases.h"
#include "tests/analysis/texture_pair.h"

namespace zemora {
namespace {

using testing::analysis_options;
using testing::Displacement;
using testing::TexturePair;

// --- Lonely extremes -------------------------------------------------------------------------------

/// All cells valid with 0 but the given ones.
struct Cell {
    std::size_t row;
    std::size_t column;
    float dx;
};
AnalysisState grid_with(std::initializer_list<Cell> cells) {
    AnalysisState state(analysis_options());
    for (auto& row : state.valid_disparity) {
        row.fill(1);
    }
    for (const Cell& cell : cells) {
        state.dx[cell.row][cell.column] = cell.dx;
    }
    return state;
}

bool is_valid(const AnalysisState& state, std::size_t row, std::size_t column) {
    return state.valid_disparity[row][column] != 0;
}

TEST(LonelyExtremes, GoUntilOneHasANeighbour) {
    // Each hides the next one, as false matches of a pattern do: they are no gap in the histogram.
    AnalysisState state = grid_with({{2, 2, -40},
                                     {5, 9, -37},
                                     {9, 3, -34},
                                     {12, 12, -31},
                                     {3, 13, 50},
                                     {13, 4, 46},
                                     {10, 8, 22},
                                     {10, 9, 21},
                                     {7, 13, -12},
                                     {8, 12, -8}});
    phases::remove_lonely_extremes(state);
    for (const auto& [row, column] :
         {std::pair<std::size_t, std::size_t>{2, 2}, {5, 9}, {9, 3}, {12, 12}, {3, 13}, {13, 4}}) {
        EXPECT_FALSE(is_valid(state, row, column)) << row << " " << column;
    }
    EXPECT_TRUE(is_valid(state, 10, 8)) << "beside one of nearly the same disparity";
    EXPECT_TRUE(is_valid(state, 10, 9));
    EXPECT_TRUE(is_valid(state, 7, 13)) << "the neighbour may lie across the corner";
    EXPECT_TRUE(is_valid(state, 8, 12));
    EXPECT_TRUE(is_valid(state, 0, 0));
}

TEST(LonelyExtremes, NeighboursAreNearInPlaceAndDisparityAndValid) {
    AnalysisState far_off = grid_with({{4, 4, 30}, {4, 6, 30}});
    phases::remove_lonely_extremes(far_off);
    EXPECT_FALSE(is_valid(far_off, 4, 4)) << "two cells away";
    EXPECT_FALSE(is_valid(far_off, 4, 6));
    for (const auto& [difference, kept] : {std::pair(5.0F, true), {5.1F, false}}) {
        AnalysisState state = grid_with({{4, 4, 30}, {5, 4, 30.0F - difference}, {5, 5, 30.0F - difference}});
        phases::remove_lonely_extremes(state);
        EXPECT_EQ(is_valid(state, 4, 4), kept) << difference;
        EXPECT_TRUE(is_valid(state, 5, 4)) << "they stand by each other";
    }
    AnalysisState beside_a_rejected_one = grid_with({{4, 4, -30}, {4, 5, -30}});
    beside_a_rejected_one.valid_disparity[4][5] = 0;
    phases::remove_lonely_extremes(beside_a_rejected_one);
    EXPECT_FALSE(is_valid(beside_a_rejected_one, 4, 4));
}

TEST(LonelyExtremes, CornersOfTheGridAndEmptyGridsAreNoSpecialCases) {
    AnalysisState corners = grid_with({{0, 0, 30}, {15, 15, -30}, {0, 15, 25}, {0, 14, 24}});
    phases::remove_lonely_extremes(corners);
    EXPECT_FALSE(is_valid(corners, 0, 0));
    EXPECT_FALSE(is_valid(corners, 15, 15));
    EXPECT_TRUE(is_valid(corners, 0, 15));
    AnalysisState one(analysis_options());
    phases::remove_lonely_extremes(one);
    one.valid_disparity[7][7] = 1;
    phases::remove_lonely_extremes(one);
    EXPECT_TRUE(is_valid(one, 7, 7)) << "none is left to be better";
}

TEST(LonelyExtremes, StayWhereAllCellsStandAlone) {
    for (const bool couple : {false, true}) {
        AnalysisState state(analysis_options());
        const auto set = [&state](std::size_t row, std::size_t column, float dx) {
            state.valid_disparity[row][column] = 1;
            state.dx[row][column] = dx;
        };
        set(2, 2, -20.0F);
        set(8, 8, 3.0F);
        set(14, 5, 30.0F);
        if (couple) {
            set(8, 9, 4.0F);
        }
        phases::remove_lonely_extremes(state);
        EXPECT_EQ(is_valid(state, 2, 2), !couple);
        EXPECT_EQ(is_valid(state, 14, 5), !couple);
        EXPECT_TRUE(is_valid(state, 8, 8));
    }
}

TEST(LonelyExtremes, ThePlainRuleAsksTheHistogram) {
    // A pole that only one cell shows: the plain rule keeps it, as its disparity is no gap off.
    const TexturePair pair(1024, 576, [](double x, double y) {
        const bool pole = std::fabs(x - 30.0) < 30.0 && std::fabs(y - 20.0) < 30.0;
        return Displacement{pole ? -22.0 : x / 1024.0 * 40.0, 0.0};
    });
    for (const bool robust : {true, false}) {
        AnalysisState state(analysis_options());
        state.options.robust = robust;
        ASSERT_EQ(analyse_phase(state, pair.pictures(), {AnalysePhase::disparity, 1, false, false}, {}),
                  AnalyseStatus::done);
        EXPECT_NEAR(state.disparity.near_point, robust ? -18.0 : -22.0, 0.6);
    }
}

// --- The search ------------------------------------------------------------------------------------

/// Phase 5 with the search round `centre_px`.
AnalysisState searched(const TexturePair& pair, double centre_px, AnalyseStatus& status) {
    AnalysisState state(analysis_options());
    PhaseRequest request{AnalysePhase::disparity, 1, false, false};
    request.centre_px = centre_px;
    status = analyse_phase(state, pair.pictures(), request, {});
    return state;
}

TEST(DisparitySearch, ReachesAFifthOfTheWidthFromACentreOfItsOwn) {
    // 2048 pixels are measured at half the size; the centre is told in pixels of the picture.
    for (const double middle : {410.0, -410.0}) {
        const TexturePair pair(
            2048, 1024,
            [middle](double x, double) {
                return Displacement{middle + 60.0 * x / 2048.0, 0.0};
            },
            4.0);
        AnalyseStatus status = AnalyseStatus::done;
        const AnalysisState state = searched(pair, middle, status);
        ASSERT_EQ(status, AnalyseStatus::done);
        EXPECT_GT(state.disparity.near_point, middle - 34.0);
        EXPECT_LT(state.disparity.far_point, middle + 34.0);
        EXPECT_GT(state.disparity.far_point - state.disparity.near_point, 30.0) << "a depth, not a point";
        EXPECT_NEAR(state.disparity.centre_disparity, middle, 6.0);
        EXPECT_FALSE(state.disparity_end_reached);
        // The match of a left tile there would lie outside: only the right view's tiles can be found.
        const std::size_t last = middle > 0.0 ? kGridMax - 1 : 0;
        EXPECT_EQ(state.valid_disparity[8][last], 1) << "both directions search round the centre";
        const AnalysisState uncentred = searched(pair, 0.0, status);
        EXPECT_TRUE(status == AnalyseStatus::no_disparity ||
                    std::fabs(uncentred.disparity.centre_disparity - middle) > 60.0)
            << "beyond a search round 0";
    }
}

TEST(DisparitySearch, TellsThatNearOrFarPointLieAtItsEnd) {
    struct Case {
        double left_half;
        double right_half;
        double centre;
        bool end;
    };
    // Searches of 152 pixels to either side; the last five are the end.
    for (const Case& c : {Case{-110, 110, 0, false}, Case{150, 90, 0, true}, Case{138, 90, 0, false},
                          Case{-90, -150, 0, true}, Case{150, 90, 40, false}, Case{40, 100, -50, true}}) {
        const TexturePair pair(
            1024, 512,
            [&c](double x, double) {
                return Displacement{x < 0.0 ? c.left_half : c.right_half, 0.0};
            },
            2.0);
        AnalyseStatus status = AnalyseStatus::done;
        const AnalysisState state = searched(pair, c.centre, status);
        ASSERT_EQ(status, AnalyseStatus::done);
        EXPECT_EQ(state.disparity_end_reached, c.end)
            << c.left_half << ", " << c.right_half << " round " << c.centre << ": "
            << state.disparity.near_point << " to " << state.disparity.far_point;
    }
}

}  // namespace
}  // namespace zemora
