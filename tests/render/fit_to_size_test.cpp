#include "render/fit_to_size.h"

#include <gtest/gtest.h>

namespace zemora {
namespace {

/// A frame of 1000 by 800 working pixels, half of the input, of which 900 by 700 are common.
MeasuredFrame half_frame() {
    return {{1000, 800}, {50, 949, 50, 749}, 0.5, 40.0};
}

struct FirstSizeCase {
    const char* name;
    int cropp_output;
    bool has_window, is_shown_first;
    double width, height;  ///< Of what the ratios are taken.
};

class FirstSizes : public ::testing::TestWithParam<FirstSizeCase> {};

TEST_P(FirstSizes, AreThoseOfWhatIsKept) {
    const FirstSizeCase& c = GetParam();
    CropPlan crop;
    crop.cropp_output = c.cropp_output;
    crop.is_shown_first = c.is_shown_first;
    crop.wish.width = 400;
    crop.wish.height = 300;
    crop.selection.mode = c.has_window ? 1 : 0;
    crop.selection.right = 0.5F;
    crop.selection.top = 0.25F;
    Sizing sizing;
    sizing.correction.shift_px = 20.0;  // 10 working pixels
    sizing.window_offset = 0.03F;       // 30 the other way
    const SizeRepeat first = first_size(half_frame(), sizing, crop);
    EXPECT_TRUE(first.needed());
    EXPECT_NEAR(first.ratio_width, 400.0 / c.width, 1e-6);
    EXPECT_NEAR(first.ratio_height, 300.0 / c.height, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(Rows, FirstSizes,
                         ::testing::Values(FirstSizeCase{"whole_frame", 0, false, false, 1000, 800},
                                           FirstSizeCase{"common_area", 2, false, false, 900, 700},
                                           // The area lost 20 by the shift of the views; the warp takes 20.
                                           FirstSizeCase{"viewer", 2, false, true, 900 + 20 - 20, 700},
                                           FirstSizeCase{"window", 2, true, true, 500, 200}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ForceInsideTarget, TakesTheSideThatNeedsTheSmallerFactor) {
    CropPlan crop;
    crop.cropp_output = 3;
    crop.wish.width = 400;
    crop.wish.height = 300;
    crop.wish.force = kForceWidth;
    SizeRepeat first;
    first.ratio_height = 0.4;
    first.ratio_width = 0.5;
    EXPECT_EQ(force_inside_target(crop, first), kForceWidth) << "only of a window";
    crop.selection.mode = 1;
    EXPECT_EQ(force_inside_target(crop, first), kForceHeight);
    first.ratio_height = 0.6;
    EXPECT_EQ(force_inside_target(crop, first), kForceWidth);
    crop.wish.force = kForceBothWidthLarger;
    EXPECT_EQ(force_inside_target(crop, first), kForceBothWidthLarger);
}

TEST(NextPlan, BringsFrameScaleAndCorrectionToTheWantedSize) {
    WarpPlan last;
    last.frame = {1000, 800};
    last.scale = 0.5F;
    last.crop.is_sized = true;
    last.crop.wish.width = 400;
    last.crop.wish.force = kForceWidth;
    last.crop.wish.aspect = 1.25F;
    Sizing sizing;
    sizing.correction.height_px = 8.0;
    sizing.correction.shift_px = 60.0;
    sizing.correction.rotation_rad = 0.01;
    sizing.window_offset = 0.01F;
    sizing.interpolation_mode = 4;
    SizeRepeat repeat;
    repeat.width_done = false;
    repeat.ratio_width = 0.5;
    const WarpPlan plan = next_plan(last, sizing, repeat);
    EXPECT_EQ(plan.frame, (PictureSize{500, 400}));
    EXPECT_EQ(plan.scale, 0.25F);
    EXPECT_EQ(plan.size_step, 0.5);
    // In pixels of the frame before the step.
    EXPECT_DOUBLE_EQ(plan.correction.height_px, 4.0);
    EXPECT_NEAR(plan.correction.shift_px, 30.0 - 10.0, 1e-6);
    EXPECT_EQ(plan.correction.rotation_rad, 0.01);
    EXPECT_EQ(plan.interpolation.kernel, 3) << "soft for the smaller picture";
    EXPECT_EQ(plan.interpolation.tent_radius, 2);
    last.crop.is_sized = false;
    EXPECT_EQ(next_plan(last, sizing, repeat).frame, last.frame);
}

}  // namespace
}  // namespace zemora
