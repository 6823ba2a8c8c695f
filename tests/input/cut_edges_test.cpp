#include "input/cut_edges.h"

#include <gtest/gtest.h>

#include "input/edge_line.h"
#include "tests/input/framed_scan.h"

namespace zemora {
namespace {

using test::FramedScan;
using test::make_scan;
using test::ScanPlan;

constexpr std::array<Colour, 4> all(Colour colour) {
    return {colour, colour, colour, colour};
}

struct CutCase {
    const char* name;
    ScanPlan plan;
    bool measured;
};

class CutScan : public testing::TestWithParam<CutCase> {};

TEST_P(CutScan, GivesTheLargestRectangleWithoutFrameToTwoPixels) {
    const CutCase& c = GetParam();
    const FramedScan scan = make_scan(c.plan);
    CutRule rule;
    rule.tolerance = 100;
    if (!c.measured) {
        rule.frame = c.plan.frame[0];
    }
    const auto kept = find_inside_of_frame(scan.view, rule);
    ASSERT_TRUE(kept);
    const auto ideal = scan.ideal();
    const double lost[] = {kept->x - ideal[0], ideal[1] - (kept->x + kept->width - 1), kept->y - ideal[2],
                           ideal[3] - (kept->y + kept->height - 1)};
    for (const double side : lost) {
        EXPECT_GE(side, 0.0) << c.name << ": frame remains";
        EXPECT_LE(side, 2.0) << c.name << ": picture lost";
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, CutScan,
    testing::Values(
        CutCase{"black", {.frame = all({5, 5, 5})}, false},
        CutCase{"small", {.width = 300, .height = 200, .tilt_deg = 1.0, .frame = all({})}, false},
        CutCase{"white, turned", {.tilt_deg = -1.0, .frame = all({250, 250, 250}), .noise = 8}, false},
        CutCase{"red", {.tilt_deg = 0.5, .frame = all({30, 40, 200}), .noise = 8}, false},
        CutCase{"portrait", {.width = 600, .height = 900, .tilt_deg = 0.5, .frame = all({5, 5, 5})}, true},
        CutCase{"wide and noisy",
                {.width = 2400,
                 .height = 900,
                 .border = 0.05,
                 .tilt_deg = 0.4,
                 .frame = all({9, 5, 2}),
                 .noise = 10},
                true},
        CutCase{
            "far turned", {.width = 1500, .height = 1100, .tilt_deg = 2.0, .frame = all({5, 5, 5})}, true},
        CutCase{"tall and far turned",
                {.width = 701,
                 .height = 1714,
                 .border = 0.112,
                 .tilt_deg = -2.56,
                 .frame = all({31, 15, 14}),
                 .noise = 0.6},
                true},
        CutCase{"dark at its left side",
                {.width = 1200,
                 .height = 500,
                 .border = 0.05,
                 .tilt_deg = 1.0,
                 .frame = all({30, 25, 35}),
                 .noise = 3,
                 .left_light = 0.4},
                false},
        CutCase{"as bright as its frame",
                {.width = 1500, .border = 0.12, .tilt_deg = 0.8, .frame = all({32, 155, 194}), .noise = 2},
                false},
        CutCase{"four colours",
                {.tilt_deg = -0.5,
                 .frame = {Colour{20, 20, 90}, Colour{90, 20, 20}, Colour{20, 90, 20}, Colour{45, 40, 45}},
                 .noise = 4},
                true}),
    [](const auto& tested) { return std::to_string(tested.index); });

TEST(CutEdges, PictureWithoutFrameStaysWhole) {
    const FramedScan scan = make_scan({.border = -0.05});
    for (const bool measured : {false, true}) {
        CutRule rule;
        rule.tolerance = 100;
        if (!measured) {
            rule.frame = Colour{};
        }
        EXPECT_EQ(find_inside_of_frame(scan.view, rule), (KeptRegion{0, 0, 800, 600})) << measured;
    }
}

TEST(CutEdges, BarsAtTwoSidesLeaveTheOtherSidesWhole) {
    const FramedScan scan = make_scan({.border = -0.05});
    fill(scan.view.picture().part(0, 0, 90, 600), {});
    fill(scan.view.picture().part(740, 0, 60, 600), {});
    CutRule rule;
    rule.tolerance = 100;
    for (const bool measured : {false, true}) {
        if (measured) {
            rule.frame.reset();
        } else {
            rule.frame = Colour{};
        }
        const auto kept = find_inside_of_frame(scan.view, rule);
        ASSERT_TRUE(kept);
        EXPECT_EQ(kept->y, 0) << measured;
        EXPECT_EQ(kept->height, 600);
        EXPECT_NEAR(kept->x, 91, 1);
        EXPECT_NEAR(kept->x + kept->width, 739, 1);
    }
}

TEST(CutEdges, ViewIsTheLowerLeftPartOfItsBitmap) {
    ScanPlan plan;
    plan.frame = all({});
    const FramedScan scan = make_scan(plan);
    LoadedView part;
    part.bitmap = Bitmap::create(900, 700);
    fill(part.bitmap.picture(), {255, 255, 255});
    copy(scan.view.picture(), part.bitmap.picture(800, 600));
    part.width = 800;
    part.height = 600;
    CutRule rule;
    rule.tolerance = 100;
    EXPECT_EQ(find_inside_of_frame(part, rule), find_inside_of_frame(scan.view, rule));
}

TEST(CutEdges, OddShapesStayWithinTheView) {
    struct Shape {
        int width, height;
        bool whole;  ///< Too flat or too slim for a work copy.
    };
    for (const Shape& s : {Shape{1, 1, true}, Shape{1, 40, true}, Shape{2, 2, false}, Shape{2, 3000, true},
                           Shape{3000, 2, true}, Shape{900, 6, true}, Shape{600, 5, false},
                           Shape{5, 4, false}, Shape{64, 900, false}}) {
        for (const int tolerance : {0, 100, 255}) {
            LoadedView view;
            view.take(Bitmap::create(s.width, s.height));
            fill(view.picture().part(s.width / 2, s.height / 2, (s.width + 1) / 2, (s.height + 1) / 2),
                 {200, 200, 200});
            for (const bool measured : {false, true}) {
                CutRule rule{Colour{}, tolerance};
                if (measured) {
                    rule.frame.reset();
                }
                const auto kept = find_inside_of_frame(view, rule);
                ASSERT_TRUE(kept);
                EXPECT_GE(kept->x, 0);
                EXPECT_GE(kept->y, 0);
                EXPECT_GE(kept->width, 1);
                EXPECT_GE(kept->height, 1);
                EXPECT_LE(kept->x + kept->width, s.width);
                EXPECT_LE(kept->y + kept->height, s.height);
                EXPECT_TRUE(!s.whole || *kept == (KeptRegion{0, 0, s.width, s.height}));
            }
        }
    }
}

TEST(EdgeLine, FewPlacesGiveALevelLine) {
    EdgeLine line;
    const std::array<int, 3> none{kNoPlace, kNoPlace, kNoPlace};
    EXPECT_FALSE(fit_edge_line(none, 4, line));
    const std::array<int, 3> one{kNoPlace, 7, kNoPlace};
    ASSERT_TRUE(fit_edge_line(one, 4, line));
    EXPECT_EQ(line.slope, 0.0);
    EXPECT_EQ(line.offset, 7.0);
    const std::array<int, 4> two{10, kNoPlace, kNoPlace, 16};
    ASSERT_TRUE(fit_edge_line(two, 100, line));
    EXPECT_DOUBLE_EQ(line.slope, 2.0);
    EXPECT_DOUBLE_EQ(line.at(100), 10.0);
}

TEST(EdgeLine, StraysDoNotBendTheLine) {
    std::array<int, 60> places{};
    for (std::size_t i = 0; i < places.size(); ++i) {
        places[i] = i % 5 == 0 ? 90 : 20 + static_cast<int>(i) / 10;
    }
    EdgeLine line;
    ASSERT_TRUE(fit_edge_line_without_strays(places, 0, line));
    EXPECT_NEAR(line.slope, 0.1, 0.01);
    EXPECT_NEAR(line.offset, 19.55, 0.3);
}

}  // namespace
}  // namespace zemora
