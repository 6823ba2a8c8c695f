// What counts as a cut between the frames of a film.

#include "video/scene_cuts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace zemora {
namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 180;

struct View {
    int scene = 0;
    double x = 0.0;  ///< Pan, pixels.
    double light = 1.0;
    double offset = 0.0;
};

/// A number of 0 to 1 that belongs to a place of a scene.
double noise_at(int scene, int column, int row) {
    std::uint32_t hash = static_cast<std::uint32_t>(scene * 7919 + column * 374761393 + row * 668265263);
    hash = (hash ^ (hash >> 13)) * 1274126177U;
    return static_cast<double>((hash ^ (hash >> 16)) & 0xffffU) / 65535.0;
}

/// Shapes of about 15 pixels, of one mean brightness in all scenes.
FrameSketch sketch(const View& view) {
    constexpr double kCell = 15.0;
    std::vector<std::uint8_t> luma(static_cast<std::size_t>(kWidth) * kHeight);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const double u = (x + view.x) / kCell;
            const double v = y / kCell;
            const int column = static_cast<int>(std::floor(u));
            const int row = static_cast<int>(std::floor(v));
            const double fu = u - column;
            const double fv = v - row;
            const auto corner = [&](int i, int j) { return noise_at(view.scene, column + i, row + j); };
            const double value =
                40.0 + 170.0 * ((1.0 - fv) * ((1.0 - fu) * corner(0, 0) + fu * corner(1, 0)) +
                                fv * ((1.0 - fu) * corner(0, 1) + fu * corner(1, 1)));
            luma[static_cast<std::size_t>(y * kWidth + x)] =
                static_cast<std::uint8_t>(std::clamp(value * view.light + view.offset, 0.0, 255.0));
        }
    }
    return sketch_of_luma({luma.data(), kWidth, 1, 8, kWidth, kHeight});
}

TEST(SceneCuts, MotionAndLightAreNoCutsAndAnotherSceneIsOne) {
    const FrameSketch still = sketch({});
    EXPECT_FALSE(is_cut_between(still, still));
    EXPECT_FALSE(is_cut_between(still, sketch({0, 20.0}))) << "a fast pan";
    EXPECT_FALSE(is_cut_between(still, sketch({0, 0.0, 0.5, 40.0}))) << "less light";
    EXPECT_FALSE(is_cut_between(still, sketch({0, 3.0, 1.0, 60.0}))) << "a flash";
    EXPECT_TRUE(is_cut_between(still, sketch({1})));
    EXPECT_TRUE(is_cut_between(sketch({2}), sketch({3})));
    EXPECT_TRUE(is_cut_between(sketch({0, 0.0, 0.0}), still)) << "out of the black";
    EXPECT_FALSE(is_cut_between(sketch({0, 0.0, 0.0}), sketch({0, 0.0, 0.0}))) << "black stays black";
}

TEST(SceneCuts, AreFoundInOrderOverGapsAndNotBehindAFlash) {
    SceneCuts cuts;
    for (int frame = 0; frame < 30; ++frame) {
        const int scene = frame < 10 ? 0 : (frame < 20 ? 1 : 2);
        const bool shows_other = frame == 5;  // one frame of something else
        cuts.add(frame, sketch({shows_other ? 3 : scene, 1.0 * frame}));
    }
    EXPECT_EQ(cuts.starts(), (std::vector<int>{10, 20}));

    SceneCuts jumps;
    for (const int frame : {0, 8, 16, 24}) {
        jumps.add(frame, sketch({frame < 10 ? 0 : 1, 0.5 * frame}));
    }
    EXPECT_EQ(jumps.starts(), (std::vector<int>{16})) << "the first frame that is known to be behind the cut";
}

}  // namespace
}  // namespace zemora
