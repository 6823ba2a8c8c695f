#include "analysis/correlation.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <random>

#include "analysis/phases.h"
#include "tests/analysis/texture_pair.h"

namespace zemora {
namespace {

using testing::for_each_instruction_set;

/// The definition, pixel by pixel.
void plain_correlate(const ToneView& first, const ToneView& second, const OverlapRule& rule,
                     const TileSearch& s, ErrorSurface& surface) {
    surface.reshape(s);
    const auto is_passe = [&](const std::uint8_t* p) {
        return p[0] == rule.passe_colour.blue && p[1] == rule.passe_colour.green &&
               p[2] == rule.passe_colour.red;
    };
    const bool upward = s.y > first.picture.height / 2;
    const bool rightward = s.x > first.picture.width / 2;
    for (int i = 0; i < surface.rows(); ++i) {
        for (int j = 0; j < surface.columns(); ++j) {
            std::int64_t sum = 0;
            int count = 0;
            for (int r = 0; r < s.tile_rows; r += s.step_y) {
                for (int c = 0; c < s.tile_columns; c += s.step_x) {
                    const int y = upward ? s.y + r : s.y + s.tile_rows - 1 - r;
                    const int x = rightward ? s.x + c : s.x + s.tile_columns - 1 - c;
                    const int y2 = y + s.shift_y + (i - surface.centre_row()) * s.step_y;
                    const int x2 = x + s.shift_x + (j - surface.centre_column()) * s.step_x;
                    if (x2 < 0 || y2 < 0 || x2 >= second.picture.width || y2 >= second.picture.height ||
                        is_passe(first.picture.pixel(x, y)) || is_passe(second.picture.pixel(x2, y2))) {
                        continue;
                    }
                    ++count;
                    for (int ch = 0; ch < kPixelBytes; ++ch) {
                        const int d = first.mapped[first.picture.pixel(x, y)[ch]] -
                                      second.mapped[second.picture.pixel(x2, y2)[ch]];
                        sum += d * d;
                    }
                }
            }
            const double half = s.search_columns / 2.0;
            const double t = j * s.step_x - half;
            const double n = std::floor(count * (half > 0 ? 2.0 - t * t / (half * half) : 2.0) + 0.5);
            const double least = s.search_rows == 0 ? 0.0
                                                    : rule.least_share * (s.tile_rows / s.step_y) *
                                                          (s.tile_columns / s.step_x);
            if (n > 0.0 && n >= least) {
                surface.set(i, j, static_cast<float>(static_cast<double>(sum) / n));
            }
        }
    }
}

struct Shape {
    const char* name;
    TileSearch search;
    int excluded_percent;  ///< Of single pixels of the passepartout colour.
    bool wedges;           ///< Black wedges as a warp leaves them.
};

void PrintTo(const Shape& shape, std::ostream* out) {
    *out << shape.name;
}

class CorrelationTwin : public ::testing::TestWithParam<Shape> {};

/// Noise with single black pixels and black wedges.
Bitmap noise_picture(int width, int height, int seed, const Shape& shape) {
    Bitmap bitmap = Bitmap::create(width, height);
    std::mt19937 random(static_cast<unsigned>(seed));
    const Picture picture = bitmap.picture();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool black = static_cast<int>(random() % 100) < shape.excluded_percent ||
                               (shape.wedges && (x < y / 3 || y > height - x / 4 - 3));
            for (int c = 0; c < kPixelBytes; ++c) {
                picture.pixel(x, y)[c] = static_cast<std::uint8_t>(black ? 0 : random() % 256);
            }
        }
    }
    return bitmap;
}

TEST_P(CorrelationTwin, EqualsTheDefinitionWithEveryInstructionSet) {
    const Shape& shape = GetParam();
    const Bitmap a = noise_picture(131, 97, 1, shape);
    const Bitmap b = noise_picture(131, 97, 2, shape);
    ToneTables darker = ToneTables::identity();
    for (auto& entry : darker.plane[0]) {
        entry = static_cast<std::uint16_t>(entry * 0.7 + 900);
    }
    const ToneView first(a.picture(), ToneTables::identity());
    const ToneView second(b.picture(), darker);
    for (const double share : {0.75, 0.5}) {
        const OverlapRule rule{{0, 0, 0}, share};
        ErrorSurface expected;
        plain_correlate(first, second, rule, shape.search, expected);
        for_each_instruction_set([&] {
            Correlator correlator;
            ErrorSurface surface;
            for (int repeat = 0; repeat < 2; ++repeat) {  // the work area is used again
                correlator.correlate(first, second, rule, shape.search, surface);
                EXPECT_EQ(surface.errors(), expected.errors());
            }
        });
    }
}

// Tiles on both sides of the middle sample from different edges. Columns of the search that fill a
// register exactly, by one less and by one more; rows below and above a block.
INSTANTIATE_TEST_SUITE_P(
    Shapes, CorrelationTwin,
    ::testing::Values(Shape{"plain", {20, 15, 31, 37, 20, 24, 1, 1, 0, 0}, 0, false},
                      Shape{"right_upper", {80, 60, 30, 41, 9, 15, 1, 1, -3, 2}, 0, false},
                      Shape{"stepped", {11, 60, 31, 40, 26, 48, 2, 3, 4, -2}, 0, false},
                      Shape{"stepped_right", {71, 20, 31, 40, 27, 47, 2, 3, -4, 5}, 0, false},
                      Shape{"one_line", {40, 30, 51, 51, 0, 304, 1, 1, 0, 0}, 3, false},
                      Shape{"one_pixel", {64, 50, 1, 1, 6, 7, 1, 1, 0, 0}, 0, false},
                      Shape{"few_rows", {50, 50, 17, 9, 2, 95, 1, 1, 0, 0}, 0, true},
                      Shape{"outside", {0, 0, 30, 30, 40, 60, 1, 1, -25, -20}, 0, false},
                      Shape{"wedges", {10, 40, 45, 60, 21, 30, 1, 1, 3, 1}, 0, true},
                      Shape{"wedges_stepped", {10, 40, 45, 60, 21, 30, 2, 3, 3, 1}, 1, true},
                      Shape{"half_excluded", {30, 30, 33, 35, 18, 18, 1, 1, 0, 0}, 50, false},
                      Shape{"all_excluded", {30, 30, 33, 35, 18, 18, 1, 1, 0, 0}, 100, false},
                      Shape{"several_strips", {3, 2, 92, 125, 12, 10, 1, 1, 0, 0}, 1, true}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(Correlation, LargestDifferencesOfALargeTileDoNotOverflow) {
    const Bitmap dark = Bitmap::create(300, 300);
    const Bitmap bright = Bitmap::create(300, 300);
    fill(dark.picture(), {1, 0, 0});
    fill(bright.picture(), {255, 255, 255});
    const TileSearch search{40, 40, 220, 220, 4, 4, 1, 1, 0, 0};
    for_each_instruction_set([&] {
        Correlator correlator;
        ErrorSurface surface;
        correlator.correlate(ToneView(dark.picture(), ToneTables::identity()),
                             ToneView(bright.picture(), ToneTables::identity()), {{0, 0, 0}, 0.75}, search,
                             surface);
        EXPECT_FLOAT_EQ(surface.at(2, 2), (254.0F * 254.0F + 2 * 255.0F * 255.0F) / 2.0F);
    });
}

TEST(Correlation, MatchNearTheCentreIsTwiceAsCheapAsAtTheEnds) {
    const Bitmap grey = Bitmap::create(120, 90);
    const Bitmap brighter = Bitmap::create(120, 90);
    fill(grey.picture(), {50, 50, 50});
    fill(brighter.picture(), {60, 60, 60});
    Correlator correlator;
    ErrorSurface surface;
    correlator.correlate(ToneView(grey.picture(), ToneTables::identity()),
                         ToneView(brighter.picture(), ToneTables::identity()), {{0, 0, 0}, 0.75},
                         {40, 30, 20, 20, 10, 20, 1, 1, 0, 0}, surface);
    EXPECT_FLOAT_EQ(surface.at(5, 0), 300.0F);
    EXPECT_FLOAT_EQ(surface.at(5, 10), 150.0F);
    EXPECT_FLOAT_EQ(surface.at(0, 10), 150.0F);
    EXPECT_FLOAT_EQ(surface.at(5, 20), 300.0F);
}

TEST(TileContrast, IsTheVarianceAlongRowsOfTheMappedGrey) {
    const Bitmap bitmap = Bitmap::create(40, 40);
    const Picture picture = bitmap.picture();
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 40; ++x) {
            const auto value = static_cast<std::uint8_t>(x < 20 ? 4 * y : (x % 2 != 0 ? 90 : 30));
            std::fill(picture.pixel(x, y), picture.pixel(x, y) + kPixelBytes, value);
        }
    }
    const ToneView view(picture, ToneTables::identity());
    EXPECT_EQ(tile_contrast(view, 10, 10, 3, 3, 50), 0.0F) << "a gradient up the tile is no contrast";
    EXPECT_FLOAT_EQ(tile_contrast(view, 10, 10, 25, 3, 50), 9.0F) << "greys of 3 and 9";
    EXPECT_FLOAT_EQ(tile_contrast(view, 10, 10, 34, 3, 50), 9.0F) << "the part inside counts";
    EXPECT_EQ(tile_contrast(view, 10, 10, 36, 3, 50), -1.0F) << "less than half inside";
    EXPECT_EQ(tile_contrast(view, 10, 10, 100, 3, 50), -1.0F);
    ToneTables halved = ToneTables::identity();
    for (auto& entry : halved.plane[0]) {
        entry /= 2;
    }
    EXPECT_FLOAT_EQ(tile_contrast(ToneView(picture, halved), 10, 10, 25, 3, 50), 2.25F)
        << "tables are applied";
}

}  // namespace
}  // namespace zemora
