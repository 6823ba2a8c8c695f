// Pairs that are hard to measure: deep, without texture, with patterns that repeat, through bent lenses, of
// unusual shape. The yardstick is what the five terms of the model could at best leave of each pair.
//
// With ZEMORA_PLAIN_ESTIMATION set in the environment all pairs go through the plain rule of the estimation.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "tests/accuracy/mounted_scene.h"

namespace zemora::test {
namespace {

constexpr double kDegree = kRadiansPerDegree;

/// What the program has to do with a pair.
enum class Demand {
    mount,
    refuse_or_mount,  ///< Nothing tells its height for sure: no picture is right, a wrong one is not.
    /// Its height shows in few places, or in many at once: it may come out worse, but then that is told.
    mount_or_tell,
};

struct HardPair {
    const char* name;
    int width;
    int height;
    double near_permille;
    double far_permille;
    int objects;
    bool flat;
    double texture;
    SurfacePattern pattern;
    double barrel;
    Demand demand;
    double most_of_floor;  ///< The mean error may be this many times that of the best five terms
    double and_px;         ///< and so many output pixels.
};

struct Amount {
    const char* name;
    double factor;  ///< Of 1 % height, 1 % size, 1 degree rotation, 0.5 degree of both vergences.
};

/// What a failed test names its parameters by.
void PrintTo(const HardPair& pair, std::ostream* stream) {
    *stream << pair.name;
}
void PrintTo(const Amount& amount, std::ostream* stream) {
    *stream << amount.name;
}

constexpr std::uint32_t kSeed = 8;

SceneOptions options_of(const HardPair& pair, std::uint32_t seed) {
    SceneOptions options;
    options.width = pair.width;
    options.height = pair.height;
    options.seed = seed;
    options.objects = pair.objects;
    options.near_disparity = pair.near_permille / 1000.0;
    options.far_disparity = pair.far_permille / 1000.0;
    options.flat = pair.flat;
    options.texture = pair.texture;
    options.pattern = pair.pattern;
    options.barrel = pair.barrel;
    return options;
}

SceneErrors errors_of(double factor, int height) {
    SceneErrors errors;
    errors.height_px = 0.01 * factor * height;
    errors.size = 0.01 * factor;
    errors.rotation_rad = factor * kDegree;
    errors.vergence_v_rad = 0.5 * factor * kDegree;
    errors.vergence_h_rad = 0.5 * factor * kDegree;
    errors.brightness = 0.95;
    errors.noise = 2.0;
    return errors;
}

void show(const HardPair& pair, const char* variant, const MountedScene& m) {
    constexpr const char* kTold[] = {"good", "visible", "do not use", "unchecked"};
    std::printf("%-12s %-6s rounds %2d  status %2d  told %-10s  model %5.2f px", pair.name, variant,
                std::max(m.iterations, 0), static_cast<int>(m.status), kTold[static_cast<int>(m.told)],
                static_cast<double>(m.residual_rms_px));
    if (m.mounted) {
        std::printf("  |dy| mean %7.3f  median %7.3f  p95 %7.3f  floor mean %.3f  p95 %.3f px  places %4d",
                    m.mean_dy_px, m.seen_median_px, m.seen_p95_px, m.floor_mean_px, m.floor_p95_px,
                    m.seen_places);
    }
    std::printf("\n");
}

MountOptions chosen_rule() {
    MountOptions mount;
    mount.robust = std::getenv("ZEMORA_PLAIN_ESTIMATION") == nullptr ? 1 : 0;
    return mount;
}

/// An error that eyes would see must not be told as good. The verdict changes at a thousandth of the height;
/// its tiles are not those of the truth, so half as much again is allowed.
void expect_told(const MountedScene& mounted, int height) {
    constexpr double kVisible = 1.5 / 1000.0;
    if (mounted.seen_p95_px > kVisible * height) {
        EXPECT_TRUE(mounted.told != HeightVerdict::good || mounted.status != StatusCode::success);
    }
}

/// Mounts, shows and judges one pair.
void expect_good(const HardPair& pair, const char* variant, double factor, std::uint32_t seed) {
    const MountedScene mounted =
        mount_scene(options_of(pair, seed), errors_of(factor, pair.height), chosen_rule());
    show(pair, variant, mounted);
    if (pair.demand != Demand::mount && !is_written(mounted.status)) {
        return;
    }
    if (pair.demand == Demand::mount_or_tell) {
        expect_told(mounted, pair.height);
        return;
    }
    ASSERT_TRUE(mounted.mounted) << "status " << static_cast<int>(mounted.status);
    constexpr int kLeastPlaces = 400;  // of 1521: fewer say little about the picture
    ASSERT_GE(mounted.seen_places, kLeastPlaces);
    EXPECT_LE(mounted.mean_dy_px, pair.most_of_floor * mounted.floor_mean_px + pair.and_px);
}

// clang-format off
constexpr auto kNone = SurfacePattern::none;
constexpr auto kChequers = SurfacePattern::chequers;
constexpr auto kBars = SurfacePattern::bars;
constexpr auto kBricks = SurfacePattern::bricks;
constexpr Demand kMount = Demand::mount;
constexpr Demand kEither = Demand::refuse_or_mount;
constexpr Demand kTell = Demand::mount_or_tell;
constexpr HardPair kPairs[] = {
    // name        width height  near  far obj.  flat  text.  pattern  barrel  demand  floor  px
    {"deep_5",      2304, 1728,   -50,   0, 14, false, 1.00, kNone,     0.00, kMount,  1.25, 0.05},
    {"deep_10",     2304, 1728,  -100,   8, 14, false, 1.00, kNone,     0.00, kMount,  1.25, 0.05},
    {"deep_16",     2304, 1728,  -160,   0, 14, false, 1.00, kNone,     0.00, kMount,  1.25, 0.10},
    {"deep_16_far", 2304, 1728,  -160,   8, 30, false, 1.00, kNone,     0.00, kMount,  1.25, 0.10},
    {"flat",        2000, 1500,   -12,   8, 14, true,  1.00, kNone,     0.00, kTell,   1.25, 0.05},
    {"flat_crowd",  2000, 1500,   -50,   8, 60, true,  1.00, kNone,     0.00, kTell,   1.25, 0.05},
    {"chequers",    2000, 1500,   -12,   8, 14, false, 1.00, kChequers, 0.00, kMount,  1.25, 0.05},
    {"bars",        2000, 1500,   -12,   8, 14, false, 1.00, kBars,     0.00, kTell,   1.25, 0.05},
    {"bricks",      2000, 1500,   -12,   8, 14, false, 1.00, kBricks,   0.00, kMount,  1.25, 0.05},
    {"deep_chequer",2000, 1500,  -100,   0, 14, false, 1.00, kChequers, 0.00, kMount,  1.25, 0.05},
    {"deep_bricks", 2000, 1500,  -100,   0, 14, false, 1.00, kBricks,   0.00, kMount,  1.25, 0.05},
    {"barrel",      2304, 1728,   -12,   8, 14, false, 1.00, kNone,     0.05, kMount,  1.25, 0.05},
    {"deep_barrel", 2304, 1728,   -50,   0, 14, false, 1.00, kNone,     0.05, kMount,  1.25, 0.05},
    {"faint",       2000, 1500,   -12,   8, 14, false, 0.05, kNone,     0.00, kTell,   1.25, 0.05},
    {"strip",       3000,  400,   -12,   8, 14, false, 1.00, kNone,     0.00, kMount,  1.25, 0.05},
    {"small",        300,  200,   -12,   8, 14, false, 1.00, kNone,     0.00, kMount,  1.25, 0.05},
    {"portrait",    1200, 1600,   -12,   8, 14, false, 1.00, kNone,     0.00, kMount,  1.25, 0.05},
    // The height of a bare wall shows at its lower edge alone; bars do not show theirs at all.
    {"bare_wall",   2000, 1500,   -12,   8,  0, true,  1.00, kNone,     0.00, kEither, 1.25, 0.05},
    {"bare_chequer",2000, 1500,   -12,   8,  0, true,  1.00, kChequers, 0.00, kEither, 1.25, 0.05},
    {"bare_bars",   2000, 1500,   -12,   8,  0, true,  1.00, kBars,     0.00, kEither, 1.25, 0.05},
};
#ifdef ZEMORA_SMALL_PICTURES
constexpr Amount kAmounts[] = {{"plus", 1.0}};
constexpr std::uint32_t kOtherSeeds[] = {3};
#else
constexpr Amount kAmounts[] = {{"none", 0.0}, {"plus", 1.0}, {"minus", -1.0}};
constexpr std::uint32_t kOtherSeeds[] = {3, 5};
#endif
// clang-format on

TEST(FlatObjects, WithoutErrorsGetNextToNoCorrection) {
    const HardPair* flat =
        std::find_if(std::begin(kPairs), std::end(kPairs), [](const HardPair& p) { return p.flat; });
    const MountedScene mounted =
        mount_scene(options_of(*flat, kSeed), errors_of(0.0, flat->height), chosen_rule());
    show(*flat, "none", mounted);
    ASSERT_TRUE(mounted.mounted);
    EXPECT_NEAR(mounted.correction.size, 0.0, 5e-4);
    EXPECT_NEAR(mounted.correction.vergence_h_rad / kDegree, 0.0, 0.05);
    EXPECT_LT(mounted.mean_dy_px, 0.12);
}

class HardPairs : public testing::TestWithParam<std::tuple<HardPair, Amount>> {};

TEST_P(HardPairs, AreMountedAsWellAsTheModelCan) {
    const auto& [pair, amount] = GetParam();
    expect_good(pair, amount.name, amount.factor, kSeed);
}

INSTANTIATE_TEST_SUITE_P(Table, HardPairs,
                         testing::Combine(testing::ValuesIn(kPairs), testing::ValuesIn(kAmounts)),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) + "_" +
                                    std::get<1>(row.param).name;
                         });

/// Other arrangements of objects for the pairs that depend on them most.
class OtherHardPairs : public testing::TestWithParam<std::tuple<HardPair, std::uint32_t>> {};

TEST_P(OtherHardPairs, AreMountedAsWellAsTheModelCan) {
    const auto& [pair, seed] = GetParam();
    expect_good(pair, ("seed " + std::to_string(seed)).c_str(), 1.0, seed);
}

std::vector<HardPair> crowded_pairs() {
    std::vector<HardPair> pairs;
    std::copy_if(std::begin(kPairs), std::end(kPairs), std::back_inserter(pairs), [](const HardPair& pair) {
        return pair.objects > 0 && (pair.flat || pair.pattern != kNone || pair.near_permille <= -100.0);
    });
    return pairs;
}

INSTANTIATE_TEST_SUITE_P(Table, OtherHardPairs,
                         testing::Combine(testing::ValuesIn(crowded_pairs()), testing::ValuesIn(kOtherSeeds)),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) + "_" +
                                    std::to_string(std::get<1>(row.param));
                         });

/// Two pictures that show nothing in common.
class UnrelatedViews : public testing::TestWithParam<HardPair> {};

TEST_P(UnrelatedViews, AreRefused) {
    MountOptions mount = chosen_rule();
    mount.seed_of_right = kSeed + 1;
    const MountedScene mounted = mount_scene(options_of(GetParam(), kSeed), errors_of(0.0, 1), mount);
    show(GetParam(), "other", mounted);
    EXPECT_FALSE(is_written(mounted.status));
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Table, UnrelatedViews, testing::Values(
    HardPair{"textured",    2000, 1500,   -12,   8, 14, false, 1.00, kNone,     0.00, kEither, 1.25, 0.05},
    HardPair{"patterned",   2000, 1500,   -12,   8, 14, false, 1.00, kBricks,   0.00, kEither, 1.25, 0.05},
    HardPair{"bare_walls",  2000, 1500,   -12,   8,  0, false, 1.00, kNone,     0.00, kEither, 1.25, 0.05}),
    [](const auto& row) { return std::string(row.param.name); });
// clang-format on

}  // namespace
}  // namespace zemora::test
