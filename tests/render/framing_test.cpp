#include "render/framing.h"

#include <gtest/gtest.h>

#include <climits>

#include "render/canvas.h"
#include "render/crop.h"
#include "render/extra_layout.h"
#include "render/output_writer.h"
#include "tests/render/render_scene.h"

namespace zemora {
namespace {

using testing::colour_at;
using testing::Rig;
using testing::textured;

constexpr Colour kFrame{30, 20, 10};

/// A rig with a working pair of 60 by 40 in frame colour 10, 20, 30.
struct FramedRig : Rig {
    explicit FramedRig(const FrameSettings& settings, int width = 60, int height = 40) {
        warp->left = textured(width + 3, height + 2, 1);
        warp->right = textured(width + 3, height + 2, 2);
        warp->width = width;
        warp->height = height;
        frame = settings;
        frame.colour = kFrame;
    }
};

FrameSettings settings(int top, int bottom, int left_right, int central, int floating, int line) {
    FrameSettings frame;
    frame.top = top;
    frame.bottom = bottom;
    frame.left_right = left_right;
    frame.central = central;
    frame.floating = floating;
    frame.thin_line = line;
    return frame;
}

TEST(SingleViewLayout, FloatingMovesTheViewsApartOnTheirCanvases) {
    FramedRig rig(settings(3, 5, 8, 0, 10, 2));
    const CanvasLayout left = single_view_layout(rig.finished(), rig.frame, View::left);
    const CanvasLayout right = single_view_layout(rig.finished(), rig.frame, View::right);
    EXPECT_EQ(left.height, 40 + 4 + 8);
    EXPECT_EQ(left.width, 60 + 4 + 16);
    EXPECT_EQ(left.picture_row, 7);
    EXPECT_EQ(left.left_picture_column, 8 + 2 - 5);
    EXPECT_EQ(right.right_picture_column, 8 + 2 + 5);
}

TEST(SideBySideLayout, SettingsFarOutsideTheirLimitsMakeACanvasThatNoMemoryHolds) {
    ParameterSet set;
    set.frame_top = set.frame_bottom = set.frame_left_right = set.frame_central = set.thin_black_line =
        INT_MAX;
    Rig rig(set);
    rig.warp->height = rig.warp->width = 40;
    const CanvasLayout layout = side_by_side_layout(rig.finished(), rig.frame);
    EXPECT_GT(layout.height, 1 << 24);
    EXPECT_GT(layout.width, 1 << 24);
}

TEST(SingleViewLayout, FillingSplitsTheExcessAndLargerPicturesWin) {
    FrameSettings fill;
    fill.fill_height = 51;
    fill.fill_width = 30;
    fill.thin_line = 1;
    FramedRig rig(fill);
    const CanvasLayout layout = single_view_layout(rig.finished(), rig.frame, View::left);
    EXPECT_EQ(layout.height, 51);
    EXPECT_EQ(layout.frame.top, 4);
    EXPECT_EQ(layout.frame.bottom, 5);
    EXPECT_EQ(layout.width, 62) << "the fill is too low";
    EXPECT_EQ(layout.frame.fill_width, 62);
    EXPECT_TRUE(layout.faults.fill_width_too_low && !layout.faults.fill_height_too_low);
}

TEST(SingleViewLayout, FloatingIsHeldToTheMargin) {
    FramedRig rig(settings(0, 0, 4, 0, -30, 0));
    const CanvasLayout layout = single_view_layout(rig.finished(), rig.frame, View::left);
    EXPECT_EQ(layout.left_picture_column, 8);
    EXPECT_EQ(layout.frame.floating, -8);
    EXPECT_TRUE(layout.faults.floating_reduced);
}

struct StereoCase {
    const char* name;
    FrameSettings frame;
    int width, left_column, right_column, central;
};

class StereoLayouts : public ::testing::TestWithParam<StereoCase> {};

TEST_P(StereoLayouts, PlaceBothPictures) {
    const StereoCase& c = GetParam();
    FramedRig rig(c.frame);
    const CanvasLayout layout = side_by_side_layout(rig.finished(), rig.frame);
    EXPECT_EQ(layout.width, c.width);
    EXPECT_EQ(layout.left_picture_column, c.left_column);
    EXPECT_EQ(layout.right_picture_column, c.right_column);
    EXPECT_EQ(layout.frame.central, c.central);
}

FrameSettings filled_width(int width, int central) {
    FrameSettings frame;
    frame.fill_width = width;
    frame.central = central;
    return frame;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, StereoLayouts,
    ::testing::Values(StereoCase{"bare", settings(0, 0, 0, 0, 0, 0), 120, 0, 60, 0},
                      StereoCase{"framed", settings(0, 0, 10, 6, 0, 2), 2 * 64 + 40 + 6, 12, 12 + 64 + 20 + 6,
                                 6},
                      StereoCase{"touching", settings(0, 0, 10, -99, 0, 0), 140, 10, 70, -20},
                      StereoCase{"floating_keeps_its_gap", settings(0, 0, 10, -99, -8, 0), 148, 14, 74, -12},
                      StereoCase{"filled", filled_width(71, -4), 138, 5, 72, -4},
                      StereoCase{"filled_touching", filled_width(71, -50), 131, 5, 65, -11}),
    [](const auto& row) { return std::string(row.param.name); });

/// What one product has limited stays limited for the next one, as far as the value is handed on.
TEST(StereoLayouts, HandTheirFrameOnAndChangeNothing) {
    FramedRig rig(settings(4, 4, 10, -50, 0, 0));
    const Tiling above_below{{"l", "r"}};
    const FrameSettings held = side_by_side_layout(rig.finished(), rig.frame).frame;
    EXPECT_EQ(held.central, -20);
    EXPECT_EQ(tiled_layout(rig.finished(), rig.frame, above_below).height, 2 * 48 - 8);
    FrameSettings closer = held;
    closer.central = -3;
    EXPECT_EQ(tiled_layout(rig.finished(), closer, above_below).height, 2 * 48 - 3);
    EXPECT_EQ(rig.frame.central, -50);
}

TEST(ComposeSideBySide, PutsFrameLineAndPicturesWhereTheyBelong) {
    FramedRig rig(settings(3, 5, 10, 4, 6, 2));
    const CanvasLayout layout = side_by_side_layout(rig.finished(), rig.frame);
    const Bitmap canvas = compose_side_by_side(rig.finished(), layout, rig.voice);
    const ConstPicture picture = canvas.picture();
    ASSERT_EQ(picture.width, layout.width);
    const StereoPicture pair = rig.warp->pair();
    EXPECT_EQ(colour_at(picture, 9, 7), colour_at(pair.left, 0, 0));
    EXPECT_EQ(colour_at(picture, 8, 7), Colour{}) << "line";
    EXPECT_EQ(colour_at(picture, 7, 5), Colour{}) << "corner of the line";
    EXPECT_EQ(colour_at(picture, 6, 7), kFrame);
    EXPECT_EQ(colour_at(picture, 9, 4), kFrame) << "bottom frame";
    EXPECT_EQ(colour_at(picture, layout.right_picture_column + 59, 7 + 39), colour_at(pair.right, 59, 39));
    EXPECT_EQ(colour_at(picture, layout.width - 1, layout.height - 1), kFrame);
}

TEST(ComposeView, WithoutFrameShowsTheWorkingPictureItself) {
    FramedRig rig(FrameSettings{});
    const CanvasLayout layout = single_view_layout(rig.finished(), rig.frame, View::right);
    const Bitmap canvas = compose_view(rig.finished(), layout, View::right, rig.voice);
    EXPECT_EQ(canvas.bits(), rig.warp->right.bits());
    EXPECT_EQ(canvas.width(), 60);
}

TEST(CopyClipped, LeavesOutWhatLiesBeside) {
    const Bitmap source = textured(10, 10);
    for (const int x : {-7, 4, 30, -30}) {
        Bitmap target = Bitmap::create(12, 9);
        copy_clipped(source.picture(), target.picture(), x, -3);
        const int column = std::max(x, 0);
        if (x > -10 && x < 12) {
            EXPECT_EQ(colour_at(target.picture(), column, 0), colour_at(source.picture(), column - x, 3));
        }
        EXPECT_EQ(colour_at(target.picture(), 11, 8), Colour{}) << "beyond the source";
    }
}

struct AutoCase {
    const char* name;
    int mode, left_right, fill_width;
    double far_point;
    int floating, new_left_right, new_fill;
    int narrowed;
};

class AutomaticFrames : public ::testing::TestWithParam<AutoCase> {};

/// A width of 1000 forced, target 20 per mille.
TEST_P(AutomaticFrames, DrawThePicturesTogether) {
    const AutoCase& c = GetParam();
    FrameSettings frame;
    frame.left_right = c.left_right;
    frame.fill_width = c.fill_width;
    FramedRig rig(frame, 1000, 20);
    AutomaticFrameRequest request;
    request.mode = c.mode;
    request.floating_target = 20;
    request.win_off_reference = 1;
    request.width = 1000;
    request.height = 20;
    request.forced_width = 1000;
    request.far_point_px = c.far_point;
    const AutomaticFrame automatic = automatic_frame(rig.frame, request, rig.voice);
    EXPECT_EQ(automatic.narrowed_width, c.narrowed);
    EXPECT_EQ(automatic.frame.floating, c.floating);
    EXPECT_EQ(automatic.frame.left_right, c.new_left_right);
    EXPECT_EQ(automatic.frame.fill_width, c.new_fill);
}

INSTANTIATE_TEST_SUITE_P(Modes, AutomaticFrames,
                         ::testing::Values(AutoCase{"below_target", 1, 5, 0, 12.0, 0, 5, 0, 0},
                                           AutoCase{"one_below_target", 1, 5, 0, 19.0, 0, 5, 0, 0},
                                           AutoCase{"odd_becomes_even", 1, 50, 0, 33.4, -12, 50, 0, 0},
                                           AutoCase{"frame_grows", 1, 5, 0, 50.0, -30, 15, 0, 0},
                                           AutoCase{"picture_narrows", 2, 5, 0, 50.0, -30, 15, 0, 980},
                                           AutoCase{"fill_grows", 1, 0, 1010, 50.0, -30, 0, 1030, 0},
                                           AutoCase{"fill_narrows", 2, 0, 1010, 50.0, -30, 0, 1010, 980},
                                           AutoCase{"off", 0, 5, 0, 50.0, 0, 5, 0, 0}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(AutomaticFrames, WithoutAForcedWidthTheViewsAreCutEquallyAndTheCanvasStays) {
    FrameSettings frame;
    frame.left_right = 5;
    FramedRig rig(frame, 1000, 20);
    rig.left_record.kept_x = 7;
    AutomaticFrameRequest request;
    request.mode = 2;
    request.floating_target = 33;
    request.width = 1000;
    request.height = 20;
    request.far_point_px = 30.0 + request.floating_target;
    const int canvas = single_view_layout(rig.finished(), rig.frame, View::left).width;
    const Bitmap before = rig.warp->right.clone();
    const AutomaticFrame automatic = automatic_frame(rig.frame, request, rig.voice);
    EXPECT_EQ(automatic.narrowed_width, 980);
    rig.frame = automatic.frame;
    narrow_views(*rig.warp, automatic.narrowed_width);
    EXPECT_EQ(single_view_layout(rig.finished(), rig.frame, View::left).width, canvas);
    EXPECT_EQ(rig.warp->width, 980);
    EXPECT_EQ(colour_at(rig.warp->pair().right, 0, 3), colour_at(before.picture(), 10, 3));
    EXPECT_EQ(rig.left_record.kept_x, 17);
    EXPECT_EQ(rig.left_record.kept_width, 980);
}

/// Of the sides, in signs: where the pictures that stand left and right move for a positive `FrameFloating`.
struct FloatingCase {
    int turn_left, turn_right, inverse;
    int left, right;
};

TEST(FrameFloating, BelongsToTheTrueViewAndToItsSidesAsSeen) {
    for (const FloatingCase& c : {FloatingCase{0, 0, 0, -1, 1},
                                  {0, 0, 1, 1, -1},
                                  {4, 0, 0, 1, 1},
                                  {0, 4, 0, -1, -1},
                                  {4, 4, 0, 1, -1},
                                  {2, 2, 0, 1, -1},
                                  {6, 6, 0, -1, 1},
                                  {0, 4, 1, -1, -1},
                                  {4, 0, 1, 1, 1},
                                  {4, 4, 1, -1, 1}}) {
        FramedRig rig(settings(0, 0, 20, 0, 10, 0));
        rig.parameters.rot_mir_output_left = c.turn_left;
        rig.parameters.rot_mir_output_right = c.turn_right;
        rig.parameters.inverse_output = c.inverse;
        rig.arrange();
        const std::string name =
            std::to_string(c.turn_left) + std::to_string(c.turn_right) + std::to_string(c.inverse);
        EXPECT_EQ(single_view_layout(rig.finished(), rig.frame, View::left).left_picture_column,
                  20 + 5 * c.left)
            << name;
        EXPECT_EQ(single_view_layout(rig.finished(), rig.frame, View::right).left_picture_column,
                  20 + 5 * c.right)
            << name;
        const CanvasLayout both = side_by_side_layout(rig.finished(), rig.frame);
        EXPECT_EQ(both.left_picture_column, 20 + 5 * c.left) << name;
        EXPECT_EQ(both.right_picture_column, 120 + 5 * c.right) << name;
        const CanvasLayout merged = anaglyph_layout(rig.finished(), rig.frame);
        EXPECT_EQ(merged.left_picture_column, 20 + 5 * c.left) << name;
        EXPECT_EQ(merged.right_picture_column, 20 + 5 * c.right) << name;
        const TiledLayout tiled = tiled_layout(rig.finished(), rig.frame, {{"lr", ""}});
        EXPECT_EQ(tiled.rows[0].views[0].column, 20 + 5 * c.left) << name;
        EXPECT_EQ(tiled.rows[0].views[1].column, 120 + 5 * c.right) << name;
        EXPECT_EQ(
            caption_place(rig.finished(), rig.frame, both.left_picture_column, View::left).middle_column,
            20 + 30)
            << name << ": the caption stays in the middle of its frame";
    }
}

TEST(PixelsFromReference, KnowsTheUnits) {
    EXPECT_DOUBLE_EQ(pixels_from_reference(20, 0, 500, 1000), 20.0);
    EXPECT_DOUBLE_EQ(pixels_from_reference(20, 1, 500, 1000), 20.0);
    EXPECT_NEAR(pixels_from_reference(30, 2, 500, 1000), 20.0, 1e-9);
    EXPECT_NEAR(pixels_from_reference(10, 3, 500, 1000), 8.0, 1e-9);
    EXPECT_DOUBLE_EQ(pixels_from_reference(20, 77, 500, 1000), 20.0) << "an unknown unit is pixels";
}

TEST(FloatingBands, HardCurtainsBlackenTheOuterEdgesOnly) {
    FramedRig rig(FrameSettings{});
    const Bitmap before = rig.warp->left.clone();
    floating_bands(rig.warp->views(), {5, 99}, 3);
    const StereoPicture pair = rig.warp->pair();
    EXPECT_EQ(colour_at(pair.left, 4, 20), Colour{});
    EXPECT_EQ(colour_at(pair.left, 5, 20), colour_at(before.picture(), 5, 20));
    EXPECT_NE(colour_at(pair.right, 29, 20), Colour{}) << "at most half of the picture";
    EXPECT_EQ(colour_at(pair.right, 30, 20), Colour{});
    EXPECT_EQ(colour_at(rig.warp->left.picture(), 61, 20), colour_at(before.picture(), 61, 20))
        << "nothing outside the picture";
}

TEST(FloatingBands, SoftCurtainsRampOnceToFullBrightness) {
    FramedRig rig(FrameSettings{}, 400, 4);
    fill(rig.warp->left.picture(), Colour{200, 200, 200});
    fill(rig.warp->right.picture(), Colour{200, 200, 200});
    floating_bands(rig.warp->views(), {10, 0}, 4);
    const StereoPicture pair = rig.warp->pair();
    const auto left = [&pair](int x) { return int{colour_at(pair.left, x, 2).green}; };
    // The ramp of 1 per cent is 4 columns, half of them inside the curtain's edge.
    EXPECT_EQ(left(8), 0);
    EXPECT_EQ(left(9), 0);
    EXPECT_EQ(left(10), 100);
    EXPECT_EQ(left(11), 200);
    EXPECT_EQ(int{colour_at(pair.left, 399, 2).green}, 0) << "the opposite edge is feathered";
    EXPECT_EQ(int{colour_at(pair.left, 398, 2).green}, 100);
    EXPECT_EQ(int{colour_at(pair.right, 1, 2).green}, 100);
    EXPECT_EQ(int{colour_at(pair.right, 2, 2).green}, 200);
}

TEST(FloatingBands, NarrowPicturesAndModesWithoutCurtainsOfTheirOwnHaveNoRamp) {
    FramedRig hard(FrameSettings{});
    floating_bands(hard.warp->views(), {5, 0}, 6);  // 1 per cent of 60 is below 2 columns
    EXPECT_EQ(colour_at(hard.warp->pair().left, 4, 2), Colour{});
    for (const int mode : {0, 1, 2}) {  // curtains that a selection brings
        FramedRig selected(FrameSettings{}, 400, 4);
        const Bitmap before = selected.warp->left.clone();
        floating_bands(selected.warp->views(), {5, 5}, mode);
        const StereoPicture pair = selected.warp->pair();
        EXPECT_EQ(colour_at(pair.left, 4, 2), Colour{}) << mode;
        EXPECT_EQ(colour_at(pair.left, 5, 2), colour_at(before.picture(), 5, 2)) << mode;
        EXPECT_EQ(colour_at(pair.right, 395, 2), Colour{}) << mode;
    }
}

}  // namespace
}  // namespace zemora
