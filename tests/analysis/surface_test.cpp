#include "analysis/surface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace zemora {
namespace {

using Errors = std::function<double(int row, int column)>;

ErrorSurface surface_of(int search_rows, int search_columns, int step_y, int step_x, const Errors& errors) {
    ErrorSurface surface;
    TileSearch search;
    search.search_rows = search_rows;
    search.search_columns = search_columns;
    search.step_y = step_y;
    search.step_x = step_x;
    surface.reshape(search);
    for (int i = 0; i < surface.rows(); ++i) {
        for (int j = 0; j < surface.columns(); ++j) {
            surface.set(i, j, static_cast<float>(errors(i, j)));
        }
    }
    return surface;
}

/// The figures of the plain rule.
SurfaceFigures plain_figures(const ErrorSurface& surface, int height, int width) {
    return evaluate_surface(surface, height, width, SubPixel::damped_height);
}

/// A bowl with its lowest point at (row, column), steeper along the columns.
Errors bowl(double row, double column) {
    return [=](int i, int j) {
        return 20.0 + 40.0 * (i - row) * (i - row) + 10.0 * (j - column) * (j - column);
    };
}

TEST(Surface, MinimumIsCountedFromTheCentreInPixels) {
    // Searches of 41 columns in steps of 3 have 14 columns with the centre at the 7th.
    const ErrorSurface surface = surface_of(22, 41, 2, 3, bowl(8, 9));
    EXPECT_EQ(surface.columns(), 14);
    const SurfaceFigures figures = plain_figures(surface, 600, 800);
    EXPECT_FLOAT_EQ(figures.dx, 9.0F) << "three columns of three pixels";
    EXPECT_FLOAT_EQ(figures.dy, 6.0F);
}

TEST(Surface, OnlyTheVerticalDisplacementIsRefinedByThreeQuarters) {
    const SurfaceFigures figures = plain_figures(surface_of(20, 20, 1, 1, bowl(12.4, 7.4)), 600, 800);
    EXPECT_FLOAT_EQ(figures.dx, -3.0F);
    EXPECT_NEAR(figures.dy, 2.0 + 0.75 * 0.4, 1e-5);
    EXPECT_NEAR(plain_figures(surface_of(40, 40, 2, 2, bowl(11.6, 10)), 600, 800).dy,
                2 * (2.0 - 0.75 * 0.4), 1e-5);
}

TEST(Surface, AmongEqualMinimaTheFirstOfTheSpiralWins) {
    const auto ties = [](std::initializer_list<std::pair<int, int>> cells) {
        const std::vector<std::pair<int, int>> all(cells);
        return plain_figures(surface_of(10, 10, 1, 1,
                                           [all](int i, int j) {
                                               for (const auto& [row, column] : all) {
                                                   if (row == i && column == j) {
                                                       return 1.0;
                                                   }
                                               }
                                               return 50.0;
                                           }),
                                600, 800);
    };
    EXPECT_EQ(plain_figures(surface_of(10, 10, 1, 1, [](int, int) { return 7.0; }), 600, 800).dx, 0.0F);
    EXPECT_EQ(ties({{5, 4}, {5, 6}}).dx, 1.0F) << "columns to the right first";
    EXPECT_EQ(ties({{4, 5}, {6, 5}}).dy, 1.0F) << "rows above first";
    EXPECT_EQ(ties({{6, 6}, {4, 4}}).dx, 1.0F);
    EXPECT_EQ(ties({{0, 0}, {5, 2}}).dx, -3.0F) << "the nearer ring first";
    EXPECT_EQ(ties({{10, 10}}).dy, 5.0F) << "the last cell is reached";
}

TEST(Surface, SharpnessFollowsTheCurvatureAndTheImageSize) {
    const ErrorSurface surface = surface_of(20, 20, 1, 1, bowl(10, 10));
    const SurfaceFigures figures = plain_figures(surface, 600, 800);
    // Rises of 10 k^2 and 40 k^2 over 20 + 1.
    EXPECT_NEAR(figures.sharpness_x, 100.0 * 10.0 / 21.0, 1e-3);
    EXPECT_NEAR(figures.sharpness_y, 100.0 * 40.0 / 21.0, 1e-3);
    EXPECT_NEAR(figures.sharpness, 100.0 * 10.0 / 21.0, 1e-3) << "the direction of weakest rise";
    const SurfaceFigures large = plain_figures(surface, 2400, 3200);
    EXPECT_NEAR(large.sharpness_x, 4.0 * figures.sharpness_x, 1e-2);
    EXPECT_NEAR(large.sharpness_y, 3.0 * figures.sharpness_y, 1e-2);
    EXPECT_NEAR(large.sharpness, 12.0 * figures.sharpness, 1e-1);
}

TEST(Surface, ALongEdgeIsSharpOnlyAcross) {
    const SurfaceFigures figures = plain_figures(
        surface_of(20, 20, 1, 1,
                   [](int i, int j) {
                       return 5.0 * std::pow(i - 10.0 + (j - 10.0), 2) + 0.002 * std::pow(j - 10.0, 2);
                   }),
        600, 800);
    EXPECT_GT(figures.sharpness_x, 50.0F);
    EXPECT_GT(figures.sharpness_y, 50.0F);
    EXPECT_LT(figures.sharpness, 0.5F);
}

struct Border {
    double row;
    double column;
    bool x;
    bool y;
    bool z;
};

TEST(Surface, MinimumAtTheBorderIsNoMinimum) {
    for (const Border& at : {Border{10, 0, true, false, true}, Border{10, 20, true, false, true},
                             Border{0, 10, false, true, true}, Border{20, 10, false, true, true},
                             Border{10, 1, false, false, true}, Border{19, 10, false, false, true},
                             Border{18, 2, false, false, false}}) {
        const SurfaceFigures figures =
            plain_figures(surface_of(20, 20, 1, 1, bowl(at.row, at.column)), 600, 800);
        EXPECT_EQ(figures.sharpness_x == kNoMinimum, at.x) << at.row << " " << at.column;
        EXPECT_EQ(figures.sharpness_y == kNoMinimum, at.y) << at.row << " " << at.column;
        EXPECT_EQ(figures.sharpness == kNoMinimum, at.z) << at.row << " " << at.column;
    }
}

TEST(Surface, DisplacementsWithoutOverlapCountAsOutside) {
    const auto cut = [](int i, int j) { return i > 11 ? kNoOverlap : bowl(10.3, 10)(i, j); };
    const SurfaceFigures figures = plain_figures(surface_of(20, 20, 1, 1, cut), 600, 800);
    EXPECT_EQ(figures.sharpness, kNoMinimum);
    EXPECT_NEAR(figures.sharpness_y, 100.0 * 40.0 / 24.6, 60.0) << "no leap to 1e8 in the slope";
    const auto border = [](int i, int j) { return i > 10 ? kNoOverlap : bowl(10.3, 10)(i, j); };
    EXPECT_EQ(plain_figures(surface_of(20, 20, 1, 1, border), 600, 800).dy, 0.0F) << "no parabola";
    const SurfaceFigures none =
        plain_figures(surface_of(20, 20, 1, 1, [](int, int) { return kNoOverlap; }), 600, 800);
    EXPECT_EQ(none.dx, 0.0F);
    EXPECT_EQ(none.sharpness_x, 0.0F);
}

TEST(Surface, AmbiguityCountsErrorsUpToTwiceTheLeast) {
    const auto errors = [](int i, int j) { return i == 2 && j == 2 ? 10.0 : (i == 0 ? 20.0 : 20.5); };
    const SurfaceFigures figures = plain_figures(surface_of(4, 4, 1, 1, errors), 600, 800);
    EXPECT_EQ(figures.ambiguity, 6);
    EXPECT_EQ(figures.value, 400) << "10 per mille of 25 cells";
    EXPECT_EQ(plain_figures(surface_of(4, 4, 1, 1, [](int, int) { return 3.0; }), 600, 800).ambiguity, 24)
        << "never all of them";
}

TEST(Profile, FigureIsTheFlankThatRisesLess) {
    const auto valley = [](double left, double right, int bottom) {
        return evaluate_profile(surface_of(0, 304, 1, 1, [=](int, int j) {
            return 9.0 + (j < bottom ? left * (bottom - j) : right * (j - bottom));
        }));
    };
    EXPECT_NEAR(valley(3.0, 2.0, 100).sharpness_x, 20.0, 1e-3);
    EXPECT_EQ(valley(3.0, 2.0, 100).dx, -52.0F);
    EXPECT_EQ(valley(3.0, 2.0, 100).ambiguity, 3 + 1 + 4);
    EXPECT_EQ(valley(3.0, 2.0, 100).value, 2 + 4) << "strictly below twice the least error";
    EXPECT_EQ(valley(1.0, 1.0, 0).sharpness_x, kNoMinimum);
    EXPECT_EQ(valley(1.0, 1.0, 304).sharpness_x, kNoMinimum);
    EXPECT_NEAR(valley(1.0, 1.0, 2).sharpness_x, 10.0, 1e-3) << "cells off the line are left out";
}

TEST(Profile, PerfectMatchIsNarrow) {
    const SurfaceFigures figures =
        evaluate_profile(surface_of(0, 304, 1, 1, [](int, int j) { return j == 152 ? 0.0 : 5.0; }));
    EXPECT_EQ(figures.value, -1 - 304);
    EXPECT_EQ(figures.ambiguity, 1);
}

}  // namespace
}  // namespace zemora
