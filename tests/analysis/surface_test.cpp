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
    EXPECT_NEAR(plain_figures(surface_of(40, 40, 2, 2, bowl(11.6, 10)), 600, 800).dy, 2 * (2.0 - 0.75 * 0.4),
                1e-5);
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
    EXPECT_EQ(figures.match_error, 400) << "10 per mille of 25 cells";
    EXPECT_EQ(plain_figures(surface_of(4, 4, 1, 1, [](int, int) { return 3.0; }), 600, 800).ambiguity, 24)
        << "never all of them";
}

// --- The exact vertex ------------------------------------------------------------------------------

/// The figures of the exact rule.
SurfaceFigures vertex_figures(const ErrorSurface& surface) {
    return evaluate_surface(surface, 600, 800, SubPixel::vertex);
}

/// Coefficients of `least + xx u^2 + xy u v + yy v^2`, u columns and v rows from the lowest point.
struct Paraboloid {
    double row;
    double column;
    double xx;
    double xy;
    double yy;
    double least = 10.0;

    double operator()(int i, int j) const {
        const double u = j - column;
        const double v = i - row;
        return least + xx * u * u + xy * u * v + yy * v * v;
    }
};

TEST(Vertex, IsThatOfATiltedParaboloidInBothAxesAndStepSizes) {
    for (const Paraboloid& bowl : {Paraboloid{10.3, 10.4, 12, 0, 30}, Paraboloid{10.3, 9.6, 12, 10, 30},
                                   Paraboloid{9.7, 10.2, 30, -25, 12}, Paraboloid{10.45, 10.1, 3, 3, 4}}) {
        struct Steps {
            int y;
            int x;
        };
        for (const auto& [y, x] : {Steps{1, 1}, Steps{2, 3}, Steps{3, 2}}) {
            const SurfaceFigures figures = vertex_figures(surface_of(20 * y, 20 * x, y, x, bowl));
            EXPECT_NEAR(figures.dy, y * (bowl.row - 10.0), 1e-4) << bowl.xy << " step " << y;
            EXPECT_NEAR(figures.dx, x * (bowl.column - 10.0), 1e-4) << bowl.xy << " step " << x;
        }
    }
}

struct NineErrors {
    const char* name;
    double errors[3][3];  ///< [row][column] round the least one; all others are 200.
    double dx;            ///< Of a parabola along each axis, steps.
    double dy;
};

TEST(Vertex, WithoutALowestPointWithinAStepEachAxisHasAParabolaOfItsOwn) {
    for (const NineErrors& nine :
         {NineErrors{"saddle", {{21, 33, 60}, {24, 20, 22}, {60, 37, 21}}, 1.0 / 6.0, -2.0 / 30.0},
          NineErrors{
              "bent down along the rows", {{21, 80, 60}, {24, 20, 22}, {60, 90, 21}}, 1.0 / 6.0, -1.0 / 26.0},
          NineErrors{
              "lowest point far to the right", {{38, 26, 21}, {23.5, 20, 20.5}, {38, 30, 21}}, 0.375, -0.125},
          NineErrors{
              "lowest point far above", {{38, 23.5, 38}, {26, 20, 30}, {21, 20.5, 21}}, -0.125, 0.375}}) {
        const auto errors = [&nine](int i, int j) {
            const bool near = std::abs(i - 10) <= 1 && std::abs(j - 10) <= 1;
            return near ? nine.errors[i - 9][j - 9] : 200.0;
        };
        const SurfaceFigures figures = vertex_figures(surface_of(40, 60, 2, 3, errors));
        EXPECT_NEAR(figures.dx, 3 * nine.dx, 1e-5) << nine.name;
        EXPECT_NEAR(figures.dy, 2 * nine.dy, 1e-5) << nine.name;
        EXPECT_EQ(figures.looseness, 2000.0F) << nine.name << ": nothing holds the height";
    }
}

TEST(Vertex, BesideTheEndOfTheSearchTheWholeStepStays) {
    for (const auto& [row, column] : {std::pair(0.0, 10.3), {20.0, 10.3}, {10.3, 0.0}, {10.3, 20.0}}) {
        const SurfaceFigures figures = vertex_figures(surface_of(20, 20, 1, 1, bowl(row, column)));
        EXPECT_EQ(figures.dx, std::floor(column) - 10.0);
        EXPECT_EQ(figures.dy, std::floor(row) - 10.0);
        EXPECT_EQ(figures.looseness, 1000.0F);
    }
    const auto cut = [](int i, int j) { return i == 9 && j == 9 ? kNoOverlap : bowl(10.3, 10.4)(i, j); };
    EXPECT_EQ(vertex_figures(surface_of(20, 20, 1, 1, cut)).dy, 0.0F) << "a missing corner counts as well";
}

TEST(Looseness, IsTheHeightThatDoublesTheErrorWithTheOtherAxisFree) {
    const auto looseness = [](const Paraboloid& p, int step_y = 1) {
        return vertex_figures(surface_of(20 * step_y, 20, step_y, 1, p)).looseness;
    };
    EXPECT_NEAR(looseness({10, 10, 44, 0, 44}), std::sqrt(11.0 / 44.0), 1e-4) << "steep: half a row";
    EXPECT_NEAR(looseness({10, 10, 44, 0, 44}, 3), 3 * std::sqrt(11.0 / 44.0), 1e-4) << "in pixels";
    EXPECT_NEAR(looseness({10, 10, 0.01, 0, 0.01}), std::sqrt(11.0 / 0.01), 0.5) << "flat";
    const float vertical_edge = looseness({10, 10, 80, 0, 0.001});
    const float horizontal_edge = looseness({10, 10, 0.001, 0, 80});
    EXPECT_GT(vertical_edge, 50.0F) << "slides in height";
    EXPECT_LT(horizontal_edge, 0.4F) << "slides sideways, the height is held";
    // On an edge that leans both axes look steep; only the cross term tells.
    EXPECT_GT(looseness({10, 10, 40, -79.99, 40}), 20.0F);
    EXPECT_LT(looseness({10, 10, 40, 0, 40}), 0.6F);
    EXPECT_EQ(vertex_figures(surface_of(20, 20, 1, 1, [](int, int) { return 7.0; })).looseness, 1000.0F);
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
    EXPECT_EQ(valley(3.0, 2.0, 100).match_error, 2 + 4) << "strictly below twice the least error";
    EXPECT_EQ(valley(1.0, 1.0, 0).sharpness_x, kNoMinimum);
    EXPECT_EQ(valley(1.0, 1.0, 304).sharpness_x, kNoMinimum);
    EXPECT_NEAR(valley(1.0, 1.0, 2).sharpness_x, 10.0, 1e-3) << "cells off the line are left out";
}

TEST(Profile, PerfectMatchIsNarrow) {
    const SurfaceFigures figures =
        evaluate_profile(surface_of(0, 304, 1, 1, [](int, int j) { return j == 152 ? 0.0 : 5.0; }));
    EXPECT_EQ(figures.match_error, -1 - 304);
    EXPECT_EQ(figures.ambiguity, 1);
}

}  // namespace
}  // namespace zemora
