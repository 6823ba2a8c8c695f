#include "input/passepartout.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/cpu.h"
#include "tests/input/framed_scan.h"
#include "tests/support/pictures.h"

namespace zemora {
namespace {

using test::colour_at;

/// The picture of one colour.
Bitmap flat(int width, int height, Colour colour) {
    Bitmap bitmap = Bitmap::create(width, height);
    fill(bitmap.picture(), colour);
    return bitmap;
}

int count_colour(ConstPicture picture, Colour colour) {
    int count = 0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            count += is_colour(picture.pixel(x, y), colour) ? 1 : 0;
        }
    }
    return count;
}

TEST(ColourProtection, MovesBlueAwayFromTheColourByOne) {
    struct Case {
        int blue, becomes;
    };
    for (const Case& c : {Case{0, 1}, Case{128, 129}, Case{129, 128}, Case{255, 254}}) {
        const auto blue = static_cast<std::uint8_t>(c.blue);
        const Bitmap picture = flat(3, 2, {blue, 7, 9});
        set_colour(picture.picture().pixel(1, 1), {blue, 7, 10});
        protect_from_colour(picture.picture(), {blue, 7, 9});
        EXPECT_EQ(colour_at(picture.picture(), 0, 0), (Colour{static_cast<std::uint8_t>(c.becomes), 7, 9}));
        EXPECT_EQ(colour_at(picture.picture(), 1, 1), (Colour{blue, 7, 10})) << "another colour stays";
    }
}

/// Pixels of two values in each channel, so that every kind of near miss comes up; the block is exactly
/// as long as the pixels.
std::vector<std::uint8_t> near_misses(int pixels, Colour colour, std::mt19937& random) {
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < pixels; ++i) {
        for (const std::uint8_t value : {colour.blue, colour.green, colour.red}) {
            bytes.push_back(random() % 4 == 0 ? static_cast<std::uint8_t>(value + 1) : value);
        }
    }
    return bytes;
}

TEST(ColourProtection, EveryInstructionSetDoesTheSame) {
    std::mt19937 random(3);
    for (const Colour colour : {Colour{}, Colour{129, 128, 129}, Colour{255, 0, 254}, Colour{9, 9, 9}}) {
        for (int pixels = 0; pixels < 200; ++pixels) {
            const std::vector<std::uint8_t> bytes = near_misses(pixels, colour, random);
            std::vector<std::uint8_t> plain = bytes;
            const std::uint8_t wanted[] = {colour.blue, colour.green, colour.red};
            passepartout_kernels::protect_row_portable(plain.data(), pixels, wanted);
            std::vector<std::uint8_t> fast = bytes;
            protect_from_colour({fast.data(), 3 * pixels, pixels, 1}, colour);
            ASSERT_EQ(fast, plain) << pixels;
        }
    }
}

TEST(PaintedFrame, UniformViewKeepsItsCentreOnly) {
    for (const bool measured : {false, true}) {
        for (const auto& [width, height] : {std::pair{9, 7}, std::pair{8, 6}, std::pair{2, 5}}) {
            const Colour colour{90, 80, 70};
            const Bitmap picture = flat(width, height, colour);
            const Colour paint = measured ? Colour{} : colour;
            paint_frame(picture.picture(), paint, measured, 0);
            EXPECT_EQ(count_colour(picture.picture(), paint), width * height - 1);
            EXPECT_EQ(colour_at(picture.picture(), width / 2, height / 2),
                      (Colour{static_cast<std::uint8_t>(measured ? 90 : 91), 80, 70}));
        }
    }
}

TEST(PaintedFrame, OnePixelAndOneRowAreNoTrouble) {
    for (const auto& [width, height] : {std::pair{1, 1}, std::pair{5, 1}, std::pair{1, 5}}) {
        const Bitmap picture = flat(width, height, {10, 20, 30});
        paint_frame(picture.picture(), {}, true, 10);
        EXPECT_EQ(count_colour(picture.picture(), {}), width * height - 1) << width << 'x' << height;
    }
}

struct PaintCase {
    const char* name;
    bool measured;
    std::array<Colour, 4> frame;
    double tilt_deg;
    double noise;
};

class PaintedScan : public testing::TestWithParam<PaintCase> {};

TEST_P(PaintedScan, NoFrameRemainsAndThePictureSurvives) {
    const PaintCase& c = GetParam();
    test::ScanPlan plan;
    plan.width = 500;
    plan.height = 400;
    plan.frame = c.frame;
    plan.tilt_deg = c.tilt_deg;
    plan.noise = c.noise;
    test::FramedScan scan = test::make_scan(plan);
    const Picture view = scan.view.picture();
    const Colour paint = c.measured ? Colour{} : c.frame[0];
    for (const auto& [x, y] : {std::pair{250, 200}, std::pair{251, 200}}) {
        set_colour(view.pixel(x, y), paint);  // inside the picture
    }
    paint_frame(view, paint, c.measured, 100);
    int frame_left = 0;
    int picture_lost = 0;
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            const bool painted = is_colour(view.pixel(x, y), paint);
            frame_left += scan.depth(x, y) < -2.0 && !painted ? 1 : 0;
            picture_lost += scan.depth(x, y) > 2.0 && painted ? 1 : 0;
        }
    }
    EXPECT_EQ(frame_left, 0);
    EXPECT_EQ(picture_lost, 0);
}

constexpr std::array<Colour, 4> all(Colour colour) {
    return {colour, colour, colour, colour};
}

INSTANTIATE_TEST_SUITE_P(Table, PaintedScan,
                         testing::Values(PaintCase{"black", false, all({}), 1.0, 6.0},
                                         PaintCase{"white", false, all({255, 255, 255}), -0.7, 6.0},
                                         PaintCase{"red", false, all({20, 20, 220}), 1.5, 4.0},
                                         PaintCase{"measured", true, all({30, 12, 25}), 1.0, 6.0},
                                         PaintCase{"measured blue", true, all({230, 40, 10}), -2.0, 4.0},
                                         PaintCase{"measured, four colours",
                                                   true,
                                                   {Colour{20, 20, 60}, Colour{60, 20, 20},
                                                    Colour{20, 60, 20}, Colour{10, 15, 10}},
                                                   0.5,
                                                   4.0}),
                         [](const auto& tested) { return std::to_string(tested.index); });

TEST(FrameMask, DrawnAndPaintedAgainGivesTheSamePicture) {
    const Bitmap picture = test::place_picture(40, 30);
    const Bitmap painted = picture.clone();
    fill(painted.picture().part(0, 0, 7, 30), {1, 2, 3});
    const Bitmap mask = Bitmap::create(40, 30);
    draw_mask(painted.picture(), {1, 2, 3}, mask.picture());
    EXPECT_EQ(colour_at(mask.picture(), 6, 29), (Colour{}));
    EXPECT_EQ(colour_at(mask.picture(), 7, 29), (Colour{255, 255, 255}));
    paint_by_mask(picture.picture(), mask.picture(), {1, 2, 3});
    for (int x = 0; x < 40; ++x) {
        EXPECT_EQ(colour_at(picture.picture(), x, 11), colour_at(painted.picture(), x, 11)) << x;
    }
}

}  // namespace
}  // namespace zemora
