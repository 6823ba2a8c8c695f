#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "tests/accuracy/mounted_scene.h"

namespace zemora::test {
namespace {

constexpr double kDegree = kRadiansPerDegree;

/// Misalignment in the units of the promise: per cent of the height, per cent, degrees.
struct Misalignment {
    const char* name;
    double height_percent;
    double size_percent;
    double rotation_deg;
    double vergence_v_deg;
    double vergence_h_deg;
};

struct Format {
    const char* name;
    int width;
    int height;
};

SceneErrors errors_of(const Misalignment& m, int height) {
    SceneErrors errors;
    errors.height_px = m.height_percent / 100.0 * height;
    errors.size = m.size_percent / 100.0;
    errors.rotation_rad = m.rotation_deg * kDegree;
    errors.vergence_v_rad = m.vergence_v_deg * kDegree;
    errors.vergence_h_rad = m.vergence_h_deg * kDegree;
    errors.brightness = 0.95;
    errors.noise = 2.0;
    return errors;
}

SceneOptions options_of(const Format& format) {
    SceneOptions options;
    options.width = format.width;
    options.height = format.height;
    options.seed = 8;
    return options;
}

/// What pictures of 4 megapixels may keep; larger ones in proportion to their side.
double allowed(double at_four_megapixels, const Format& format) {
    return at_four_megapixels *
           std::max(1.0, std::sqrt(format.width * static_cast<double>(format.height) / 4.0e6));
}

void show(const char* name, const Format& format, const MountedScene& m) {
    std::printf(
        "%-6s %-12s height %8.2f px  size %6.3f %%  rotation %6.3f  V %6.3f  H %6.3f deg  rounds %2d  "
        "|dy| median %.3f  p95 %.3f  model %.2f px\n",
        format.name, name, m.correction.height_px, 100.0 * m.correction.size,
        m.correction.rotation_rad / kDegree, m.correction.vergence_v_rad / kDegree,
        m.correction.vergence_h_rad / kDegree, m.iterations, m.median_dy_px, m.p95_dy_px,
        static_cast<double>(m.residual_rms_px));
}

/// Within 2 % of the truth, or the absolute amount.
void expect_near_truth(const char* what, double measured, double truth, double absolute) {
    EXPECT_NEAR(measured, truth, std::max(0.02 * std::fabs(truth), absolute)) << what;
}

// clang-format off
constexpr Misalignment kOrdinary[] = {
    {"height",     1.0,  0.0,  0.0,  0.0,  0.0},
    {"size",       0.0,  1.0,  0.0,  0.0,  0.0},
    {"rotation",   0.0,  0.0,  1.0,  0.0,  0.0},
    {"vergence_v", 0.0,  0.0,  0.0,  0.5,  0.0},
    {"vergence_h", 0.0,  0.0,  0.0,  0.0,  0.5},
    {"all",        1.0,  1.0,  1.0,  0.5,  0.5},
    {"all_minus", -1.0, -1.0, -1.0, -0.5, -0.5},
};
#ifdef ZEMORA_SMALL_PICTURES
constexpr Format kFormats[] = {{"1MP", 1152, 864}, {"4MP", 2304, 1728}};
#else
constexpr Format kFormats[] = {{"1MP", 1152, 864}, {"4MP", 2304, 1728}, {"12MP", 4000, 3000}, {"24MP", 6000, 4000}};
#endif
// clang-format on

class Accuracy : public testing::TestWithParam<std::tuple<Format, Misalignment>> {};

TEST_P(Accuracy, OrdinaryErrorsAreMeasuredAndRemoved) {
    const auto& [format, misalignment] = GetParam();
    const SceneErrors errors = errors_of(misalignment, format.height);
    const MountedScene mounted = mount_scene(options_of(format), errors);
    ASSERT_TRUE(mounted.mounted);
    show(misalignment.name, format, mounted);
    EXPECT_LT(mounted.median_dy_px, allowed(0.2, format));
    EXPECT_LT(mounted.p95_dy_px, allowed(0.4, format));
    constexpr double kAngle = 0.02 * kDegree;
    expect_near_truth("height", mounted.correction.height_px, errors.height_px, allowed(0.4, format));
    expect_near_truth("size", mounted.correction.size, errors.size, kAngle);
    expect_near_truth("rotation", mounted.correction.rotation_rad, errors.rotation_rad, kAngle);
    expect_near_truth("vergence V", mounted.correction.vergence_v_rad, errors.vergence_v_rad, kAngle);
    expect_near_truth("vergence H", mounted.correction.vergence_h_rad, errors.vergence_h_rad, kAngle);
}

INSTANTIATE_TEST_SUITE_P(Table, Accuracy,
                         testing::Combine(testing::ValuesIn(kFormats), testing::ValuesIn(kOrdinary)),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) + "_" +
                                    std::get<1>(row.param).name;
                         });

/// Other arrangements of objects: near ones that cover much pull at the measured values, while the
/// error that remains stays as small.
class OtherScenes : public testing::TestWithParam<std::uint32_t> {};

TEST_P(OtherScenes, KeepTheRemainingErrorSmall) {
    constexpr Misalignment kAll{"all", 1.0, 1.0, 1.0, 0.5, 0.5};
    for (const Format& format : {kFormats[0], kFormats[1]}) {
        SceneOptions options = options_of(format);
        options.seed = GetParam();
        const MountedScene mounted = mount_scene(options, errors_of(kAll, format.height));
        ASSERT_TRUE(mounted.mounted);
        show("all", format, mounted);
        EXPECT_LT(mounted.median_dy_px, 0.2);
        EXPECT_LT(mounted.p95_dy_px, 0.4);
        EXPECT_NEAR(mounted.correction.vergence_h_rad / kDegree, 0.5, 0.05);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, OtherScenes, testing::Values(1U, 2U, 3U, 7U, 9U));

TEST(FlatSubject, IsMountedWhereverItStands) {
    const Format format{"4MP", 2304, 1728};
    for (const double disparity : {-0.0122, 0.0087}) {
        SceneOptions options = options_of(format);
        options.objects = 0;
        options.near_disparity = disparity / 0.6 * 0.9;  // the ground lies flat too
        options.far_disparity = disparity;
        const MountedScene mounted = mount_scene(options, errors_of(kOrdinary[5], format.height));
        ASSERT_TRUE(mounted.mounted) << disparity;
        show("flat", format, mounted);
        EXPECT_LT(mounted.median_dy_px, 0.2);
    }
}

class LargeErrors : public testing::TestWithParam<Misalignment> {};

TEST_P(LargeErrors, ConvergeWithinTenRounds) {
    const Format format{"4MP", 2304, 1728};
    const MountedScene mounted = mount_scene(options_of(format), errors_of(GetParam(), format.height));
    ASSERT_TRUE(mounted.mounted);
    show(GetParam().name, format, mounted);
    EXPECT_LE(mounted.iterations, 10);
    EXPECT_LT(mounted.median_dy_px, 1.0);
}

INSTANTIATE_TEST_SUITE_P(Table, LargeErrors,
                         testing::Values(Misalignment{"large", 2.0, 3.0, 2.0, 1.0, 1.0},
                                         Misalignment{"large_minus", -2.0, -3.0, -2.0, -1.0, -1.0}),
                         [](const auto& row) { return std::string(row.param.name); });

class ShareOfTheViews : public testing::TestWithParam<int> {};

TEST_P(ShareOfTheViews, AlignedPairStaysAsItIs) {
    const Format format{"4MP", 2304, 1728};
    MountOptions mount;
    mount.apply_left_right = GetParam();
    const MountedScene mounted =
        mount_scene(options_of(format), errors_of({"none", 0, 0, 0, 0, 0}, format.height), mount);
    ASSERT_TRUE(mounted.mounted);
    show("none", format, mounted);
    EXPECT_LT(mounted.p95_dy_px, 0.3);
    EXPECT_NEAR(mounted.correction.height_px, 0.0, 0.2);
    EXPECT_NEAR(mounted.correction.size, 0.0, 2.0e-4);
    EXPECT_NEAR(mounted.correction.rotation_rad / kDegree, 0.0, 0.01);
    EXPECT_NEAR(mounted.correction.vergence_v_rad / kDegree, 0.0, 0.02);
    EXPECT_NEAR(mounted.correction.vergence_h_rad / kDegree, 0.0, 0.02);
}

TEST_P(ShareOfTheViews, MisalignedPairIsAlignedWhicheverViewMoves) {
    const Format format{"4MP", 2304, 1728};
    MountOptions mount;
    mount.apply_left_right = GetParam();
    for (const Misalignment& misalignment : {kOrdinary[5], kOrdinary[6]}) {
        SceneErrors errors = errors_of(misalignment, format.height);
        errors.share = GetParam();
        const MountedScene mounted = mount_scene(options_of(format), errors, mount);
        ASSERT_TRUE(mounted.mounted);
        show(misalignment.name, format, mounted);
        EXPECT_LT(mounted.median_dy_px, 0.2);
        EXPECT_LT(mounted.p95_dy_px, 0.4);
    }
}

INSTANTIATE_TEST_SUITE_P(Sides, ShareOfTheViews, testing::Values(-1, 0, 1));

}  // namespace
}  // namespace zemora::test
