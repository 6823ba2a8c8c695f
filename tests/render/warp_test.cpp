#include "render/warp.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstdio>

#include "platform/cpu.h"
#include "render/warp_plan.h"
#include "tests/render/render_scene.h"

namespace zemora {
namespace {

using testing::colour_at;
using testing::count_differences;
using testing::noisy;
using testing::Rig;
using testing::textured;

constexpr Colour kMagenta{255, 0, 255};

ParameterSet with_magenta_background() {
    ParameterSet set;
    set.passe_color_red = 255;
    set.passe_color_blue = 255;
    return set;
}

TEST(WarpStill, WithoutCorrectionReturnsTheSourceInEveryKernel) {
    const Bitmap left = textured(61, 37, 1);
    const Bitmap right = textured(61, 37, 2);
    for (int kernel = 0; kernel <= 2; ++kernel) {
        Rig rig;
        WarpRequest request = rig.request(left, right);
        request.interpolation = kernel;
        ASSERT_TRUE(rig.run(request));
        EXPECT_EQ(count_differences(rig.warp->pair().left, left.picture()), 0) << "kernel " << kernel;
        EXPECT_EQ(count_differences(rig.warp->pair().right, right.picture()), 0) << "kernel " << kernel;
    }
}

TEST(WarpStill, KeepsBlackAndBackgroundApart) {
    Bitmap source = textured(20, 20);
    fill(source.picture().part(2, 2, 3, 3), Colour{0, 0, 0});
    fill(source.picture().part(10, 10, 5, 5), kMagenta);
    Rig rig(with_magenta_background());
    ASSERT_TRUE(rig.run(rig.request(source, source)));
    EXPECT_EQ(colour_at(rig.warp->pair().left, 3, 3), (Colour{1, 0, 0}));
    EXPECT_EQ(colour_at(rig.warp->pair().left, 12, 12), kMagenta);
    EXPECT_EQ(colour_at(rig.warp->pair().left, 16, 12), colour_at(source.picture(), 16, 12));
}

TEST(WarpStill, RoundedBytesNeverBecomeTheBackgroundColour) {
    Bitmap source = Bitmap::create(40, 40);
    const Colour nearly{255, 0, 254};
    fill(source.picture(), nearly);
    for (int y = 0; y < 40; ++y) {
        source.picture().pixel(20, y)[1] = 1;
    }
    Rig rig(with_magenta_background());
    WarpRequest request = rig.request(source, source);
    ToneTables tables = ToneTables::identity();
    tables.plane[0][254] = 255 * 256 - 100;  // rounds to 255
    request.tone_left = request.tone_right = &tables;
    request.tone_mode_left = request.tone_mode_right = 1;
    request.use_tone = true;
    ASSERT_TRUE(rig.run(request));
    EXPECT_EQ(colour_at(rig.warp->pair().left, 5, 5), (Colour{254, 0, 255}));
}

TEST(WarpStill, OutputWarpsKeepBilinearSamplesFromTheBackgroundWithoutTables) {
    ParameterSet set;
    set.passe_color_red = set.passe_color_green = set.passe_color_blue = 100;
    Bitmap source = Bitmap::create(40, 40);
    fill(source.picture(), Colour{100, 100, 101});
    for (int x = 1; x < 40; x += 2) {
        fill(source.picture().part(x, 0, 1, 40), Colour{101, 101, 100});
    }
    for (const bool output : {false, true}) {
        Rig rig(set);
        rig.warp->apply_left_right = 1;
        WarpRequest request = rig.request(source, source);
        request.correction.shift = 0.5F;  // 100.5 in every channel
        request.use_tone = output;
        ASSERT_TRUE(rig.run(request));
        const Colour expected = output ? Colour{102, 101, 101} : Colour{101, 101, 101};
        EXPECT_EQ(colour_at(rig.warp->pair().right, 20, 20), expected) << output;
    }
}

TEST(WarpStill, AnUnknownKernelIsToldOnceAndReadAsBilinear) {
    const Bitmap source = textured(30, 20);
    Rig rig;
    WarpRequest request = rig.request(source, source);
    request.interpolation = 17;
    ::testing::internal::CaptureStdout();
    const bool done = rig.run(request);
    std::fflush(stdout);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "image_interpol_discret: Interpolation_Mode = 17 ist nicht implementiert!\n");
    ASSERT_TRUE(done);
    EXPECT_EQ(count_differences(rig.warp->pair().left, source.picture()), 0);
}

/// Where a correction takes the content: output pixel at `row`, `column` shows the source at an offset.
struct SignCase {
    const char* name;
    WarpCorrection correction;
    int apply;                                    ///< ApplyLeftRight
    int column, row;                              ///< output position from the centre, pixels
    double left_dx, left_dy, right_dx, right_dy;  ///< expected source offset, pixels
};

class WarpSigns : public ::testing::TestWithParam<SignCase> {};

TEST_P(WarpSigns, ContentMovesAsTold) {
    const SignCase& c = GetParam();
    Rig rig;
    rig.warp->apply_left_right = c.apply;
    constexpr int kHeight = 480;
    constexpr int kWidth = 640;
    const FixedCorrection fixed = fixed_correction(*rig.warp, c.correction, 1.0, kWidth);
    const PairTransform pair = make_transforms(*rig.warp, fixed, kHeight, kWidth);
    const auto offset = [&c](const ViewTransform& view) {
        const Position p = view.map(kWidth / 2 + c.column, kHeight / 2 + c.row);
        return std::pair{static_cast<double>(p.x) / 128.0 - kWidth / 2 - c.column,
                         static_cast<double>(p.y) / 128.0 - kHeight / 2 - c.row};
    };
    constexpr double kClose = 0.06;
    EXPECT_NEAR(offset(pair[0]).first, c.left_dx, kClose);
    EXPECT_NEAR(offset(pair[0]).second, c.left_dy, kClose);
    EXPECT_NEAR(offset(pair[1]).first, c.right_dx, kClose);
    EXPECT_NEAR(offset(pair[1]).second, c.right_dy, kClose);
}

WarpCorrection correction(float height, float size, float rotation, float vergence_v, float vergence_h,
                          float shift) {
    return {height, size, rotation, vergence_v, vergence_h, shift};
}

// Vergence V displaces by x * k * sin / 256 with k = 128 x / (width / 2); vergence H by
// sin * (y^2 * 2 / height - height / 6).
INSTANTIATE_TEST_SUITE_P(
    Terms, WarpSigns,
    ::testing::Values(
        SignCase{"height_both", correction(4, 0, 0, 0, 0, 0), 0, 10, 20, 0, -2, 0, 2},
        SignCase{"height_right", correction(4, 0, 0, 0, 0, 0), 1, 10, 20, 0, 0, 0, 4},
        SignCase{"height_left", correction(4, 0, 0, 0, 0, 0), -1, 10, 20, 0, -4, 0, 0},
        SignCase{"shift_both", correction(0, 0, 0, 0, 0, 6), 0, 10, 20, -3, 0, 3, 0},
        SignCase{"size_both", correction(0, 0.02F, 0, 0, 0, 0), 0, 100, -50, -1, 0.5, 1, -0.5},
        SignCase{"size_right", correction(0, 0.02F, 0, 0, 0, 0), 1, 100, -50, 0, 0, 2, -1},
        SignCase{"rotation_both", correction(0, 0, 0.02F, 0, 0, 0), 0, 100, 50, 0.5, -1, -0.5, 1},
        SignCase{"rotation_left", correction(0, 0, 0.02F, 0, 0, 0), -1, 100, 50, 1, -2, 0, 0},
        SignCase{"vergence_v_both", correction(0, 0, 0, 0.02F, 0, 0), 0, 160, 100, -0.8, -0.5, 0.8, 0.5},
        SignCase{"vergence_v_right", correction(0, 0, 0, 0.02F, 0, 0), 1, -160, 100, 0, 0, 1.6, -1},
        SignCase{"vergence_h_both", correction(0, 0, 0, 0, 0.02F, 0), 0, 30, 0, 0, 0.8, 0, -0.8},
        SignCase{"vergence_h_right", correction(0, 0, 0, 0, 0.02F, 0), 1, 30, 200, 0, 0, 0, 1.73}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(WarpStill, HeightAndShiftMoveTheContentOfTheRightViewDownAndLeft) {
    const Bitmap source = textured(64, 48);
    Rig rig;
    rig.warp->apply_left_right = 1;
    WarpRequest request = rig.request(source, source);
    request.correction.height = 3;
    request.correction.shift = 5;
    ASSERT_TRUE(rig.run(request));
    const StereoPicture pair = rig.warp->pair();
    EXPECT_EQ(colour_at(pair.right, 10, 10), colour_at(source.picture(), 15, 13));
    EXPECT_EQ(colour_at(pair.right, 62, 10), Colour{}) << "nothing comes from beyond the source";
    EXPECT_EQ(count_differences(pair.left, source.picture()), 0) << "the left view stays";
}

struct LimitCase {
    const char* name;
    WarpCorrection correction;
    bool is_warped;
};

class WarpLimits : public ::testing::TestWithParam<LimitCase> {};

TEST_P(WarpLimits, SizeAndRotationEndTheCallAndVergencesAreIgnored) {
    const Bitmap source = textured(40, 30);
    Rig rig;
    WarpRequest request = rig.request(source, source);
    request.correction = GetParam().correction;
    ASSERT_EQ(rig.run(request), GetParam().is_warped);
    if (GetParam().is_warped) {
        EXPECT_EQ(rig.right_record.vergence_v_16384, 0);
        EXPECT_EQ(rig.right_record.vergence_h_32768, 0);
    } else {
        EXPECT_FALSE(rig.warp->left) << "no memory is taken for a pair that cannot be mounted";
    }
}

const float kSineLimit = std::asin(0.125F);

INSTANTIATE_TEST_SUITE_P(
    Limits, WarpLimits,
    ::testing::Values(LimitCase{"size_at_limit", correction(0, 0.125F, 0, 0, 0, 0), true},
                      LimitCase{"size_beyond", correction(0, -0.1251F, 0, 0, 0, 0), false},
                      LimitCase{"size_beyond_all", correction(0, -1e30F, 0, 0, 0, 0), false},
                      LimitCase{"rotation_at_limit", correction(0, 0, kSineLimit, 0, 0, 0), true},
                      LimitCase{"rotation_beyond", correction(0, 0, kSineLimit + 1e-4F, 0, 0, 0), false},
                      LimitCase{"vergence_v_beyond", correction(0, 0, 0, -0.2F, 0, 0), true},
                      LimitCase{"vergence_h_beyond", correction(0, 0, 0, 0, 0.1F, 0), true},
                      LimitCase{"not_a_number", correction(NAN, NAN, NAN, NAN, NAN, NAN), true}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(WarpStill, FramesAboveTheLargestSideAreRefusedBeforeAnyAllocation) {
    const Bitmap source = textured(40, 30);
    Rig rig;
    WarpRequest request = rig.request(source, source);
    request.frame_height = kLargestSide + 1;
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(rig.run(request));
    rig.console.flush();
    const std::string said = ::testing::internal::GetCapturedStdout();
    EXPECT_NE(said.find("Please reduce OutputHeight by [pixel]: 2"), std::string::npos) << said;
    EXPECT_FALSE(rig.warp->left);
}

TEST(WarpStill, ScalesTheSourceToTheFrame) {
    Bitmap source = Bitmap::create(100, 60);
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 100; ++x) {
            std::uint8_t* pixel = source.picture().pixel(x, y);
            pixel[0] = static_cast<std::uint8_t>(2 * x + 20);
            pixel[1] = static_cast<std::uint8_t>(3 * y + 20);
            pixel[2] = 77;
        }
    }
    Rig rig;
    rig.warp->total_scale = 2.0F;
    WarpRequest request = rig.request(source, source);
    request.frame_height = 120;
    request.frame_width = 200;
    ASSERT_TRUE(rig.run(request));
    const Colour pixel = colour_at(rig.warp->pair().right, 120, 41);
    EXPECT_EQ(pixel.blue, 2 * 60 + 20);
    EXPECT_NEAR(pixel.green, 3 * 20.5 + 20, 0.6);
    EXPECT_EQ(rig.right_record.height, 120);
}

TEST(ChooseInterpolation, AutomaticModesGoByTheScale) {
    Rig rig;
    struct Row {
        int mode;
        float scale;
        int kernel, radius;
    };
    for (const Row& row : {Row{4, 0.2F, 3, 3}, Row{4, 0.3F, 3, 2}, Row{5, 0.6F, 3, 1}, Row{4, 0.7F, 2, 1},
                           Row{1, 0.1F, 1, 3}, Row{2, 1.0F, 2, 1}}) {
        rig.warp->interpolation_mode = row.mode;
        EXPECT_EQ(choose_interpolation(*rig.warp, row.scale), row.kernel) << row.scale;
        EXPECT_EQ(rig.warp->filter_radius, row.radius) << row.scale;
    }
}

/// Checksum-free comparison: everything of the pair, byte by byte.
bool same_pair(const Rig& a, const Rig& b) {
    return count_differences(a.warp->pair().left, b.warp->pair().left) == 0 &&
           count_differences(a.warp->pair().right, b.warp->pair().right) == 0;
}

struct PathCase {
    int width, height, kernel;
    float scale;
    bool tone;
};

class WarpPaths : public ::testing::TestWithParam<PathCase> {};

/// Every instruction set and thread count gives the bytes of one thread of portable code.
TEST_P(WarpPaths, AgreeForInstructionSetsAndThreads) {
    const PathCase& c = GetParam();
    Bitmap left = noisy(c.width, c.height, 3);
    const Bitmap right = noisy(c.width, c.height, 4);
    fill(left.picture().part(c.width / 3, c.height / 4, c.width / 3, c.height / 5), Colour{});
    ToneTables tables = ToneTables::identity();
    for (std::size_t i = 0; i < 256; ++i) {
        tables.plane[1][i] = static_cast<std::uint16_t>(std::min<std::size_t>(65535, i * 270));
        tables.plane[2][i] = static_cast<std::uint16_t>(i * 200);
    }
    const auto warped = [&](InstructionSet set, int threads, Rig& rig) {
        limit_instruction_set(set);
        omp_set_num_threads(threads);
        rig.warp->total_scale = c.scale;
        rig.warp->filter_radius = 2;
        WarpRequest request = rig.request(left, right);
        request.frame_width = static_cast<int>(static_cast<float>(c.width) * c.scale);
        request.frame_height = static_cast<int>(static_cast<float>(c.height) * c.scale);
        request.interpolation = c.kernel;
        request.correction = correction(2.3F, 0.011F, 0.013F, 0.02F, -0.009F, 3.7F);
        request.use_tone = c.tone;
        request.tone_left = request.tone_right = &tables;
        request.tone_mode_left = request.tone_mode_right = 3;
        EXPECT_TRUE(rig.run(request));
    };
    Rig plain;
    warped(InstructionSet::portable, 1, plain);
    for (const InstructionSet set :
         {InstructionSet::portable, InstructionSet::avx2, InstructionSet::avx512}) {
        for (const int threads : {2, 8}) {
            Rig rig;
            warped(set, threads, rig);
            EXPECT_TRUE(same_pair(plain, rig)) << "set " << static_cast<int>(set) << ", threads " << threads;
        }
    }
    limit_instruction_set(InstructionSet::avx512);
    omp_set_num_threads(omp_get_num_procs());
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, WarpPaths,
    ::testing::Values(PathCase{301, 97, 1, 1.0F, false}, PathCase{301, 97, 2, 1.0F, true},
                      PathCase{640, 50, 2, 1.37F, false}, PathCase{523, 61, 1, 0.71F, true},
                      PathCase{33, 5, 2, 1.0F, false}, PathCase{300, 200, 3, 0.3F, false},
                      PathCase{300, 90, 0, 1.1F, true}, PathCase{2, 300, 2, 1.0F, false}));

}  // namespace
}  // namespace zemora
