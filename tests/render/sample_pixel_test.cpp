#include "render/sample_pixel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "tests/render/render_scene.h"

namespace zemora {
namespace {

constexpr Colour kBackground{9, 8, 7};

Sampler sampler_of(int kernel, int radius = 1, float gamma = 1.0F) {
    return Sampler(kernel_of(kernel), radius, gamma, kBackground);
}

TEST(SamplePixel, ConstantPictureStaysConstantAtEveryFraction) {
    Bitmap bitmap = Bitmap::create(12, 12);
    fill(bitmap.picture(), Colour{200, 100, 50});
    struct Row {
        int kernel, radius;
        float gamma;
        int tolerance;
    };
    // The four truncated bicubic weights need not sum to 128: a few steps of 1/256.
    for (const Row& row : {Row{0, 1, 1.0F, 0}, Row{1, 1, 1.0F, 0}, Row{2, 1, 1.0F, 900}, Row{3, 1, 1.0F, 0},
                           Row{3, 2, 1.0F, 0}, Row{3, 3, 1.0F, 0}, Row{1, 1, 2.2F, 1}, Row{3, 2, 0.5F, 1}}) {
        const Sampler sampler = sampler_of(row.kernel, row.radius, row.gamma);
        for (int fraction = 0; fraction < 128; ++fraction) {
            const Sample sample = sample_pixel(sampler, bitmap.picture(), 640 + fraction, 767 - fraction);
            ASSERT_EQ(sample.empty, 0);
            ASSERT_NEAR(sample.value[0], 200 * 256, row.tolerance) << "kernel " << row.kernel;
            ASSERT_NEAR(sample.value[2], 50 * 256, row.tolerance) << "fraction " << fraction;
        }
    }
}

TEST(SamplePixel, BicubicWeightsFollowTheConvolutionAndRingAtAnEdge) {
    const auto& half = bicubic_weights()[64];
    EXPECT_EQ(half, (std::array<std::int16_t, 4>{-16, 80, 80, -16}));
    EXPECT_EQ(bicubic_weights()[0], (std::array<std::int16_t, 4>{0, 128, 0, 0}));
    Bitmap step = Bitmap::create(8, 4);
    fill(step.picture(), Colour{100, 100, 100});
    fill(step.picture().part(4, 0, 4, 4), Colour{200, 200, 200});
    const Sampler sampler = sampler_of(2);
    const int before = sample_pixel(sampler, step.picture(), 2 * 128 + 64, 128).value[0];
    const int middle = sample_pixel(sampler, step.picture(), 3 * 128 + 64, 128).value[0];
    EXPECT_NEAR(before, (100.0 - 100.0 * 16 / 128) * 256, 2);
    EXPECT_NEAR(middle, 150 * 256, 2);
}

struct FlagCase {
    const char* name;
    int kernel, x, y, empty;
};

class SampleFlags : public ::testing::TestWithParam<FlagCase> {};

TEST_P(SampleFlags, TellWhereThereIsNoPicture) {
    Bitmap bitmap = testing::textured(10, 8);
    fill(bitmap.picture().part(5, 0, 2, 8), kBackground);
    const FlagCase& c = GetParam();
    EXPECT_EQ(sample_pixel(sampler_of(c.kernel), bitmap.picture(), c.x, c.y).empty, c.empty);
}

INSTANTIATE_TEST_SUITE_P(Rules, SampleFlags,
                         ::testing::Values(FlagCase{"bilinear_just_outside", 1, -1, 128, 0},
                                           FlagCase{"bilinear_reach", 1, -191, 128, 0},
                                           FlagCase{"bilinear_beyond", 1, -192, 128, 1},
                                           FlagCase{"bicubic_half_outside", 2, -64, 128, 0},
                                           FlagCase{"bicubic_beyond", 2, -65, 128, 1},
                                           FlagCase{"tent_beyond_top", 3, 128, 8 * 128 - 64, 1},
                                           FlagCase{"nearest_background", 0, 5 * 128 + 10, 128, 1},
                                           FlagCase{"nearest_outside_is_an_edge_pixel", 0, -5000, 128, 0},
                                           FlagCase{"bicubic_background", 2, 5 * 128 - 64, 128, 1},
                                           FlagCase{"bicubic_beside_background", 2, 5 * 128 - 65, 128, 0}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(SamplePixel, BackgroundNeighboursLeaveNoFringe) {
    Bitmap bitmap = Bitmap::create(10, 10);
    fill(bitmap.picture(), Colour{120, 130, 140});
    fill(bitmap.picture().part(5, 0, 5, 10), kBackground);
    for (const int kernel : {1, 3}) {
        const Sample sample = sample_pixel(sampler_of(kernel), bitmap.picture(), 4 * 128 + 60, 4 * 128 + 33);
        EXPECT_EQ(sample.value[0], 120 * 256) << "kernel " << kernel;
        EXPECT_EQ(sample.value[2], 140 * 256) << "kernel " << kernel;
    }
}

TEST(SamplePixel, PictureThatLooksLikeBackgroundMovesByOneStep) {
    // Two colours whose mean is the background colour.
    Bitmap bitmap = Bitmap::create(8, 8);
    fill(bitmap.picture(), Colour{9, 8, 6});
    fill(bitmap.picture().part(4, 0, 4, 8), Colour{9, 8, 8});
    const Sample sample = sample_pixel(sampler_of(3), bitmap.picture(), 3 * 128 + 66, 3 * 128);
    EXPECT_EQ(sample.value[0], 10 * 256);
}

TEST(SamplePixel, GammaBlendsInLinearLight) {
    Bitmap bitmap = Bitmap::create(4, 4);
    fill(bitmap.picture(), Colour{50, 50, 50});
    fill(bitmap.picture().part(2, 0, 2, 4), Colour{200, 200, 200});
    const double wanted = std::pow((std::pow(50.0, 2.0) + std::pow(200.0, 2.0)) / 2.0, 0.5) * 256.0;
    EXPECT_NEAR(sample_pixel(sampler_of(1, 1, 2.0F), bitmap.picture(), 192, 128).value[1], wanted, 1.0);
    EXPECT_EQ(sample_pixel(sampler_of(1, 1, 0.0F), bitmap.picture(), 192, 128).value[1], 125 * 256);
    EXPECT_EQ(sample_pixel(sampler_of(1, 1, 1.005F), bitmap.picture(), 192, 128).value[1], 125 * 256);
}

}  // namespace
}  // namespace zemora
