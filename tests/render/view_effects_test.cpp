#include "render/view_effects.h"

#include <gtest/gtest.h>
#include <omp.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/render/render_scene.h"

namespace zemora {
namespace {

using testing::noisy;
using testing::Rig;

/// The bytes of a picture, rows from the bottom without gaps.
std::vector<int> bytes_of(ConstPicture picture) {
    std::vector<int> bytes;
    for (int y = 0; y < picture.height; ++y) {
        bytes.insert(bytes.end(), picture.row(y), picture.row(y) + picture.width * kPixelBytes);
    }
    return bytes;
}

int q(double value) {
    return static_cast<int>(std::floor(value + 0.5));
}

struct Bytes {
    std::vector<int> left;
    std::vector<int> right;
};

/// Ghost reduction as it is defined, with exact fractions where a product may be a half.
Bytes plain_ghost_bust(Bytes pair, int percent) {
    const auto leak = [&](int level) { return q(static_cast<double>(percent * level) / 100.0); };
    int lowest = 0;
    for (std::size_t i = 0; i < pair.left.size(); ++i) {
        lowest = std::min({lowest, pair.right[i] - leak(pair.left[i]), pair.left[i] - leak(pair.right[i])});
    }
    const double s = 256.0 / (256.0 - lowest);
    const double o = (1.0 - s) * 256.0;
    for (std::size_t i = 0; i < pair.left.size(); ++i) {
        const int l = q(pair.left[i] * s + o);
        const int r = q(pair.right[i] * s + o);
        pair.left[i] = std::clamp(l - leak(r), 0, 255);
        pair.right[i] = std::clamp(r - leak(l), 0, 255);
    }
    return pair;
}

/// Blur, difference and dead zone one after the other, each pixel for itself.
std::vector<int> plain_sharpen(std::vector<int> view, int width, int height, int intensity, int rounds) {
    const auto at = [&](std::vector<int>& bytes, int x, int y, int channel) -> int& {
        return bytes[static_cast<std::size_t>((y * width + x) * 3 + channel)];
    };
    std::vector<int> blurred = view;
    for (int round = 0; round < rounds; ++round) {
        for (const bool along_rows : {true, false}) {
            std::vector<int> before = blurred;
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    const int place = along_rows ? x : y;
                    if (place == 0 || place == (along_rows ? width : height) - 1) {
                        continue;
                    }
                    const int dx = along_rows ? 1 : 0;
                    const int dy = 1 - dx;
                    for (int c = 0; c < 3; ++c) {
                        at(blurred, x, y, c) = (at(before, x - dx, y - dy, c) + 2 * at(before, x, y, c) +
                                                at(before, x + dx, y + dy, c) + 2) >>
                                               2;
                    }
                }
            }
        }
    }
    const std::vector<int> original = view;
    for (int y = 1; y < height - 1; ++y) {
        for (int x = 1; x < width - 1; ++x) {
            int sum = 0;
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    sum += at(view, x + dx, y + dy, 0) + at(view, x + dx, y + dy, 1) +
                           at(view, x + dx, y + dy, 2);
                }
            }
            for (int c = 0; c < 3 && sum >= 72; ++c) {
                const int v = at(view, x, y, c);
                const int k = intensity / 16;
                const int w = v < 16 ? 0 : v >= 32 ? intensity : k * v - 16 * k;
                const int index = (y * width + x) * 3 + c;
                const int stored = std::clamp(original[static_cast<std::size_t>(index)] -
                                                  blurred[static_cast<std::size_t>(index)] + 128,
                                              0, 255);
                at(view, x, y, c) = std::clamp(v + (stored - 128) * w / 50, 0, 255);
            }
        }
    }
    return view;
}

/// Dark and bright parts beside each other, where the dead zone and the ramp begin and end.
Bitmap dark_and_bright(int width, int height, unsigned seed) {
    Bitmap bitmap = noisy(width, height, seed);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = bitmap.picture().row(y);
        for (int i = 0; i < width * kPixelBytes; ++i) {
            const int part = (i / 24 + y / 5) % 4;
            row[i] = static_cast<std::uint8_t>(part == 0 ? row[i] % 5 : part == 1 ? row[i] % 40 : row[i]);
        }
    }
    return bitmap;
}

struct Size {
    int width;
    int height;
};

class ViewEffects : public ::testing::TestWithParam<Size> {
protected:
    /// Views in bitmaps that are larger than the picture.
    void SetUp() override {
        const auto [width, height] = GetParam();
        rig.warp->left = dark_and_bright(width + 3, height + 2, 5);
        rig.warp->right = dark_and_bright(width + 3, height + 2, 6);
        rig.warp->width = width;
        rig.warp->height = height;
        before = {bytes_of(rig.warp->pair().left), bytes_of(rig.warp->pair().right)};
    }
    void TearDown() override { omp_set_num_threads(omp_get_num_procs()); }
    Rig rig;
    Bytes before;
};

TEST_P(ViewEffects, GhostReductionIsTheDefinitionForAllThreads) {
    for (const int percent : {1, 10, 29, 50}) {
        for (const int threads : {1, 3}) {
            SetUp();
            omp_set_num_threads(threads);
            reduce_ghosts(rig.warp->views(), percent);
            const Bytes expected = plain_ghost_bust(before, percent);
            EXPECT_EQ(bytes_of(rig.warp->pair().left), expected.left) << percent << " %, " << threads;
            EXPECT_EQ(bytes_of(rig.warp->pair().right), expected.right) << percent << " %, " << threads;
        }
    }
}

/// The threads of the next parallel region.
std::vector<pid_t> workers(int count) {
    std::vector<pid_t> threads(static_cast<std::size_t>(count));
#pragma omp parallel for schedule(static, 1)
    for (int i = 0; i < count; ++i) {
        threads[static_cast<std::size_t>(i)] = gettid();
    }
    return threads;
}

TEST_P(ViewEffects, AStepOfTwoViewsEndsNoneOfTheThreads) {
    constexpr int kThreads = 6;
    omp_set_num_threads(kThreads);
    const std::vector<pid_t> before_step = workers(kThreads);
    ASSERT_TRUE(sharpen(rig.warp->views(), 30, 2));
    EXPECT_EQ(workers(kThreads), before_step);
}

TEST_P(ViewEffects, SharpeningIsTheDefinitionForAllThreads) {
    const auto [width, height] = GetParam();
    for (const int intensity : {15, 40, 100}) {
        for (const int threads : {1, 3}) {
            SetUp();
            omp_set_num_threads(threads);
            const int rounds = intensity / 30 + 1;
            ASSERT_TRUE(sharpen(rig.warp->views(), intensity, rounds));
            EXPECT_EQ(bytes_of(rig.warp->pair().left),
                      plain_sharpen(before.left, width, height, intensity, rounds))
                << intensity;
            EXPECT_EQ(bytes_of(rig.warp->pair().right),
                      plain_sharpen(before.right, width, height, intensity, rounds))
                << intensity;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, ViewEffects,
                         ::testing::Values(Size{1, 1}, Size{2, 9}, Size{9, 2}, Size{3, 3}, Size{67, 41}),
                         [](const auto& row) {
                             return std::to_string(row.param.width) + "x" + std::to_string(row.param.height);
                         });

TEST(GhostReduction, BlackBehindWhiteIsLiftedJustEnough) {
    Rig rig;
    rig.warp->left = Bitmap::create(2, 1);
    rig.warp->right = Bitmap::create(2, 1);
    rig.warp->width = 2;
    rig.warp->height = 1;
    fill(rig.warp->left.picture(), {});
    fill(rig.warp->right.picture(), {255, 255, 255});
    reduce_ghosts(rig.warp->views(), 20);
    EXPECT_EQ(testing::colour_at(rig.warp->pair().left, 0, 0), Colour{}) << "ends at black";
    EXPECT_GT(testing::colour_at(rig.warp->pair().right, 1, 0).green, 240);
}

}  // namespace
}  // namespace zemora
