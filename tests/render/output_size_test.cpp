#include "render/output_size.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

#include "render/crop.h"
#include "render/size_step.h"
#include "tests/render/render_scene.h"

namespace zemora {
namespace {

using testing::colour_at;
using testing::count_differences;
using testing::Rig;
using testing::textured;

struct TargetCase {
    const char* name;
    int source_height, source_width, output_height, output_width, crop;
    int work_height, work_width;
    FinalRescale rescale;
    int final_width, final_height, size_flag;
};

class TargetSizes : public ::testing::TestWithParam<TargetCase> {};

TEST_P(TargetSizes, FollowTheTable) {
    const TargetCase& c = GetParam();
    const TargetSize target =
        find_target_size(c.source_height, c.source_width, c.output_height, c.output_width, c.crop);
    EXPECT_EQ(target.work_height, c.work_height);
    EXPECT_EQ(target.work_width, c.work_width);
    EXPECT_EQ(target.final_rescale, c.rescale);
    EXPECT_EQ(target.final_width, c.final_width);
    EXPECT_EQ(target.final_height, c.final_height);
    EXPECT_EQ(target.size_flag, c.size_flag);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TargetSizes,
    ::testing::Values(
        TargetCase{"free", 600, 800, 0, 0, 2, 600, 800, FinalRescale::none, 0, 0, 0},
        TargetCase{"free_crop_3", 600, 800, 0, 0, 3, 600, 800, FinalRescale::none, 0, 0, 1},
        TargetCase{"free_low", 200, 800, 0, 0, 2, 500, 2000, FinalRescale::by_factor, 800, 200, 0},
        TargetCase{"free_narrow", 800, 200, 0, 0, 2, 2000, 500, FinalRescale::by_factor, 200, 800, 0},
        TargetCase{"free_small_portrait", 200, 100, 0, 0, 2, 1000, 500, FinalRescale::by_factor, 100, 200, 0},
        TargetCase{"free_small_crop_4", 200, 100, 0, 0, 4, 200, 100, FinalRescale::none, 0, 0, 0},
        TargetCase{"both", 600, 800, 300, 400, 2, 300, 400, FinalRescale::none, 0, 0, 1},
        TargetCase{"both_crop_4", 600, 800, 30, 40, 4, 30, 40, FinalRescale::none, 0, 0, 0},
        TargetCase{"both_low", 600, 800, 200, 400, 2, 500, 1000, FinalRescale::by_factor, 400, 200, 1},
        TargetCase{"both_low_crop_3", 600, 800, 200, 400, 3, 500, 1000, FinalRescale::by_factor, 400, 200, 1},
        TargetCase{"both_narrow_crop_3", 600, 800, 400, 200, 3, 1000, 500, FinalRescale::by_factor, 200, 400,
                   1},
        TargetCase{"both_small", 600, 800, 100, 50, 2, 1000, 500, FinalRescale::by_factor, 50, 100, 1},
        TargetCase{"height_only", 600, 800, 300, 0, 2, 300, 0, FinalRescale::none, 0, 0, 1},
        TargetCase{"height_only_small", 600, 800, 200, 0, 0, 500, 0, FinalRescale::by_height, 0, 200, 1},
        TargetCase{"width_only_small", 600, 800, 0, 200, 3, 0, 500, FinalRescale::by_width, 200, 0, 1},
        TargetCase{"width_only_small_crop_4", 600, 800, 0, 200, 4, 0, 200, FinalRescale::none, 0, 0, 1}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(SetupOutputSize, ScalesByTheSideThatRules) {
    struct Row {
        int crop, work_height, work_width, force, height, width;
    };
    for (const Row& row :
         {Row{2, 300, 500, kForceBothWidthLarger, 375, 500},
          Row{2, 450, 500, kForceBothHeightLarger, 450, 600}, Row{3, 450, 500, kForceWidth, 375, 500},
          Row{3, 300, 500, kForceHeight, 300, 400}, Row{4, 300, 500, kForceNothing, 600, 800},
          Row{2, 0, 400, kForceWidth, 300, 400}, Row{2, 300, 0, kForceHeight, 300, 400}}) {
        Rig rig;
        rig.warp->cropp_output = row.crop;
        TargetSize target;
        target.work_height = row.work_height;
        target.work_width = row.work_width;
        ASSERT_TRUE(setup_output_size(*rig.warp, target, 600, 800));
        EXPECT_EQ(rig.warp->force_size, row.force);
        EXPECT_EQ(rig.warp->scaled_height, row.height) << "force " << row.force;
        EXPECT_EQ(rig.warp->scaled_width, row.width) << "force " << row.force;
        EXPECT_NEAR(rig.warp->total_scale, row.width / 800.0, 1e-6);
    }
}

TEST(SetupOutputSize, RefusesSidesAboveTheLargest) {
    Rig rig;
    TargetSize target;
    target.work_width = 16384;
    EXPECT_FALSE(setup_output_size(*rig.warp, target, 2000, 1000)) << "the height would be 32768";
    EXPECT_TRUE(setup_output_size(*rig.warp, target, 1000, 1000));
}

/// Repeats the final warp as the driver does; a correction that cuts wedges makes it necessary.
int warps_until_size(Rig& rig, const Bitmap& source, const WarpCorrection& correction,
                     const TargetSize& target, int output_height, int output_width) {
    EXPECT_TRUE(setup_output_size(*rig.warp, target, source.height(), source.width()));
    WarpRequest request = rig.request(source, source);
    request.crop = 1;
    request.correction = correction;
    request.frame_height = rig.warp->scaled_height;
    request.frame_width = rig.warp->scaled_width;
    EXPECT_TRUE(rig.run(request));
    int warps = 1;
    for (; warps < 6; ++warps) {
        const SizeRepeat repeat = check_forced_size(*rig.warp, target.size_flag);
        if (!repeat.needed()) {
            break;
        }
        request.size_step = target.size_flag;
        request.frame_height = rig.warp->frame_height;
        request.frame_width = rig.warp->frame_width;
        request.height_done = repeat.height_done ? 1 : 0;
        request.width_done = repeat.width_done ? 1 : 0;
        request.ratio_height = repeat.ratio_height;
        request.ratio_width = repeat.ratio_width;
        EXPECT_TRUE(rig.run(request));
    }
    EXPECT_FALSE(check_forced_size(*rig.warp, target.size_flag).needed())
        << output_height << " x " << output_width << ": " << rig.warp->height << " x " << rig.warp->width;
    return warps;
}

TEST(SizeStep, ReachesTheTargetWithinThreeWarps) {
    std::mt19937 random(7);
    const auto between = [&random](int low, int high) {
        return low + static_cast<int>(random() % (high - low + 1));
    };
    int most = 0;
    for (int round = 0; round < 45; ++round) {
        const Bitmap source = textured(between(280, 420), between(280, 420), static_cast<unsigned>(round));
        const int kind = round % 3;  // both, height only, width only
        const int output_height = kind == 2 ? 0 : between(250, 500);
        const int output_width = kind == 1 ? 0 : between(250, 500);
        Rig rig;
        rig.warp->cropp_output = between(2, 3);
        const TargetSize target = find_target_size(source.height(), source.width(), output_height,
                                                   output_width, rig.warp->cropp_output);
        const WarpCorrection correction{static_cast<float>(between(-8, 8)),
                                        static_cast<float>(between(-3, 3)) / 100.0F,
                                        static_cast<float>(between(-4, 4)) / 100.0F,
                                        0.0F,
                                        0.0F,
                                        static_cast<float>(between(-20, 20))};
        most = std::max(most, warps_until_size(rig, source, correction, target, output_height, output_width));
        if (output_height > 0 && output_width > 0 && rig.warp->cropp_output == 2) {
            EXPECT_EQ(rig.warp->height, output_height);
            EXPECT_EQ(rig.warp->width, output_width);
        } else if (rig.warp->cropp_output == 3 && kind == 0) {
            EXPECT_LE(rig.warp->height, output_height);
            EXPECT_LE(rig.warp->width, output_width);
        }
    }
    EXPECT_LE(most, 3);
}

/// A pair of grey frames with black wedges where `holds` is false.
template <class Holds>
Bitmap shaped(int width, int height, const Holds& holds) {
    Bitmap bitmap = Bitmap::create(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (holds(x, y)) {
                fill(bitmap.picture().part(x, y, 1, 1), Colour{90, 91, 92});
            }
        }
    }
    return bitmap;
}

TEST(CommonArea, IsTheWholeFrameWithoutWedges) {
    for (const auto& [width, height] : {std::pair{400, 301}, std::pair{1999, 1500}, std::pair{31, 17}}) {
        const Bitmap whole = shaped(width, height, [](int, int) { return true; });
        EXPECT_EQ(
            find_common_area({whole.picture(), whole.picture()}, {0, width - 1, 0, height - 1}, Colour{}),
            (PixelRectangle{0, width - 1, 0, height - 1}))
            << width << " x " << height;
    }
}

TEST(CommonArea, HoldsPictureInBothViewsAfterOppositeTurns) {
    // Wedges of a turn by 3 degrees, opposite in the two views.
    const auto turned = [](double slope) {
        return [slope](int x, int y) {
            const double dx = x - 200.0;
            const double dy = y - 150.0;
            return std::abs(dx - slope * dy) < 190.0 && std::abs(dy + slope * dx) < 140.0;
        };
    };
    const Bitmap left = shaped(400, 300, turned(0.05));
    const Bitmap right = shaped(400, 300, turned(-0.05));
    const PixelRectangle area =
        find_common_area({left.picture(), right.picture()}, {0, 399, 0, 299}, Colour{});
    EXPECT_GT(area.width() * area.height(), 340 * 240);
    for (const int x : {area.left, area.right}) {
        for (const int y : {area.bottom, area.top}) {
            EXPECT_NE(colour_at(left.picture(), x, y), Colour{}) << x << ", " << y;
            EXPECT_NE(colour_at(right.picture(), x, y), Colour{}) << x << ", " << y;
        }
    }
}

TEST(CropToRatio, CutsTheLongerSideInTheMiddle) {
    const PixelRectangle r{10, 109, 20, 69};  // 100 by 50
    EXPECT_EQ(crop_to_ratio(r, 1.0), (PixelRectangle{35, 84, 20, 69}));
    EXPECT_EQ(crop_to_ratio(r, 4.0), (PixelRectangle{10, 109, 32, 56}));
    EXPECT_EQ(crop_to_ratio(r, 0.0), r) << "no ratio, no cut";
    EXPECT_EQ(crop_to_ratio(r, NAN), r);
}

TEST(TargetRatio, TurnsWithThePictureInCrop5) {
    Rig rig;
    rig.warp->work_width = 400;
    rig.warp->work_height = 300;
    rig.warp->source_width = 600;
    rig.warp->source_height = 800;
    rig.warp->cropp_output = 4;
    EXPECT_DOUBLE_EQ(target_ratio(*rig.warp), 4.0 / 3.0);
    rig.warp->cropp_output = 5;
    EXPECT_DOUBLE_EQ(target_ratio(*rig.warp), 0.75);
}

struct CropCase {
    int crop, work_height, work_width;
    int height, width;  ///< expected; 0 is not looked at
};

class CropModes : public ::testing::TestWithParam<CropCase> {};

/// A shift of 20 and a height of 10, shared: each view loses 10 columns and 5 rows at opposite edges.
TEST_P(CropModes, KeepWhatTheyName) {
    const CropCase& c = GetParam();
    const Bitmap source = textured(200, 160);
    Rig rig;
    rig.warp->cropp_output = c.crop;
    rig.warp->work_height = c.work_height;
    rig.warp->work_width = c.work_width;
    rig.warp->source_height = 160;
    rig.warp->source_width = 200;
    WarpRequest request = rig.request(source, source);
    request.crop = 1;
    request.correction.shift = 20;
    request.correction.height = 10;
    ASSERT_TRUE(rig.run(request));
    EXPECT_EQ(rig.warp->height, c.height);
    EXPECT_EQ(rig.warp->width, c.width);
    EXPECT_EQ(rig.warp->frame_height, 160) << "the whole frame is remembered for the size step";
    EXPECT_EQ(rig.left_record.kept_width, c.width);
    const ConstPicture left = rig.warp->pair().left;
    const int x = rig.left_record.kept_x - 10;  // the left view shows source column x - 10
    const int y = rig.left_record.kept_y - 5;
    if (c.crop >= 2) {
        EXPECT_EQ(colour_at(left, 0, 0), colour_at(source.picture(), x, y));
        EXPECT_NEAR(rig.selection.result_right, (rig.left_record.kept_x + c.width - 1) / 199.0, 1e-6);
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, CropModes,
                         ::testing::Values(CropCase{0, 0, 0, 160, 200}, CropCase{2, 0, 0, 150, 180},
                                           CropCase{3, 0, 0, 150, 180}, CropCase{4, 100, 100, 150, 150},
                                           CropCase{5, 400, 200, 90, 180}, CropCase{2, 150, 179, 150, 179},
                                           CropCase{9, 0, 0, 150, 180}));

TEST(CropModes, Crop1BlanksTheSamePixelsInBothViewsAndWritesTheRectangle) {
    const std::filesystem::path before = std::filesystem::current_path();
    const std::filesystem::path folder = ::testing::TempDir() + "zemora_crop_1";
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    const Bitmap source = textured(200, 160);
    Rig rig;
    rig.warp->cropp_output = 1;
    WarpRequest request = rig.request(source, source);
    request.crop = 1;
    request.correction.shift = 20;
    ASSERT_TRUE(rig.run(request));
    std::filesystem::current_path(before);
    EXPECT_EQ(rig.warp->width, 200);
    for (const int x : {0, 9, 190, 199}) {
        EXPECT_EQ(colour_at(rig.warp->pair().left, x, 80), Colour{}) << x;
        EXPECT_EQ(colour_at(rig.warp->pair().right, x, 80), Colour{}) << x;
    }
    std::ifstream file(folder / "zemora_cropp.dat");
    int top = 0;
    int bottom = -1;
    int left = 0;
    int right = 0;
    file >> top >> bottom >> left >> right;
    EXPECT_EQ((std::array{top, bottom, left, right}), (std::array{159, 0, 10, 189}));
    std::filesystem::remove_all(folder);
}

TEST(CropModes, APairWithoutCommonPictureCannotBeMounted) {
    Bitmap left = Bitmap::create(100, 80);
    Bitmap right = textured(100, 80);
    Rig rig;
    WarpRequest request = rig.request(left, right);
    request.crop = 1;
    EXPECT_FALSE(rig.run(request));
}

TEST(FindRange, TellsTheRatioOnceAPair) {
    Rig rig;
    rig.warp->cropp_output = 2;
    rig.warp->work_width = 400;
    rig.warp->work_height = 300;
    SelectionBox box;
    box.mode = 1;
    box.right = box.top = 0.9F;
    ::testing::internal::CaptureStdout();
    for (int pair = 0; pair < 2; ++pair) {
        rig.voice.begin_report_section();
        for (int warp = 0; warp < 3; ++warp) {
            (void)find_range(*rig.warp, box, 1, 800, 1000);
        }
    }
    rig.console.flush();
    std::fflush(stdout);
    const std::string text = ::testing::internal::GetCapturedStdout();
    const std::size_t first = text.find("selection window");
    const std::size_t second = text.find("selection window", first + 1);
    EXPECT_NE(second, std::string::npos) << text;
    EXPECT_EQ(text.find("selection window", second + 1), std::string::npos) << text;
}

TEST(FindRange, WindowsAreSnappedOrBroughtToTheRatio) {
    Rig rig;
    rig.warp->cropp_output = 2;
    rig.warp->work_width = 400;
    rig.warp->work_height = 300;
    SelectionBox box;
    box.mode = 1;
    const auto select = [&box](int left, int right, int bottom, int top) {
        box.left = static_cast<float>(left) / 999.0F;
        box.right = static_cast<float>(right) / 999.0F;
        box.bottom = static_cast<float>(bottom) / 799.0F;
        box.top = static_cast<float>(top) / 799.0F;
    };
    select(100, 501, 50, 351);  // 402 by 302
    const PixelRectangle snapped = find_range(*rig.warp, box, 1, 800, 1000);
    EXPECT_EQ(snapped.width(), 400);
    EXPECT_EQ(snapped.height(), 300);
    EXPECT_EQ(snapped.left, 101);
    select(100, 599, 50, 351);  // too wide: cut to 4:3
    const PixelRectangle cut = find_range(*rig.warp, box, 1, 800, 1000);
    EXPECT_EQ(cut.height(), 302);
    EXPECT_EQ(cut.width(), 403);
    rig.warp->cropp_output = 3;
    EXPECT_EQ(find_range(*rig.warp, box, 1, 800, 1000), (PixelRectangle{100, 499, 50, 349}));
    rig.warp->cropp_output = 4;
    rig.warp->work_width = 300;
    EXPECT_EQ(find_range(*rig.warp, box, 0, 800, 1000).width(), 302) << "equal target sides give a square";
}

struct RescaleCase {
    const char* name;
    int source_height, source_width, output_height, output_width, crop;
    int height, width;  ///< As worked at; what cropping left of it.
    int final_height, final_width;
};

class RescaleToFinal : public ::testing::TestWithParam<RescaleCase> {};

TEST_P(RescaleToFinal, KeepsTheRatio) {
    const RescaleCase& c = GetParam();
    Rig rig;
    rig.warp->left = textured(c.width + 20, c.height + 20);
    rig.warp->right = textured(c.width + 20, c.height + 20);
    rig.warp->width = c.width;
    rig.warp->height = c.height;
    (void)rescale_to_final(*rig.warp, find_target_size(c.source_height, c.source_width, c.output_height,
                                                       c.output_width, c.crop));
    EXPECT_EQ(rig.warp->height, c.final_height);
    EXPECT_EQ(rig.warp->width, c.final_width);
    EXPECT_EQ(rig.warp->pair().left.width, c.final_width);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RescaleToFinal,
    ::testing::Values(RescaleCase{"height_given", 600, 800, 100, 0, 2, 500, 640, 100, 128},
                      RescaleCase{"width_given", 600, 800, 0, 100, 2, 400, 500, 80, 100},
                      RescaleCase{"both_given", 600, 800, 200, 333, 2, 500, 833, 200, 333},
                      RescaleCase{"inside_a_box", 1080, 1920, 200, 300, 3, 430, 750, 172, 300},
                      RescaleCase{"inside_a_narrow_box", 1080, 1920, 300, 200, 3, 290, 500, 116, 200},
                      RescaleCase{"small_input_cropped", 150, 200, 0, 0, 2, 480, 640, 144, 192},
                      RescaleCase{"small_portrait_cropped", 200, 150, 0, 0, 2, 640, 480, 192, 144}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace zemora
