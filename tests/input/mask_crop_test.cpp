#include "input/mask_crop.h"

#include <gtest/gtest.h>

#include "tests/input/pair_rig.h"

namespace zemora {
namespace {

using test::colour_at;
using test::place_colour;
using test::place_picture;
using test::Rig;

struct WindowCase {
    const char* name;
    MaskFrame mask;
    MaskWindow window;  ///< In views of 41 by 31 pixels.
};

class MaskWindows : public testing::TestWithParam<WindowCase> {};

TEST_P(MaskWindows, ShowTheSameAndLieInBothViews) {
    const WindowCase& c = GetParam();
    const MaskWindow w = find_mask_window(c.mask, 41, 31);
    EXPECT_EQ(w, c.window) << c.name << ": " << w.left_x << ' ' << w.left_y << ' ' << w.right_x << ' '
                           << w.right_y << ' ' << w.width << ' ' << w.height;
    EXPECT_GE(std::min({w.left_x, w.left_y, w.right_x, w.right_y}), 0);
    EXPECT_LE(std::max(w.left_x, w.right_x) + w.width, 41);
    EXPECT_LE(std::max(w.left_y, w.right_y) + w.height, 31);
}

INSTANTIATE_TEST_SUITE_P(
    Table, MaskWindows,
    testing::Values(
        WindowCase{"whole", {}, {0, 0, 0, 0, 41, 31}},
        WindowCase{"quarter from the top", {0.1F, 0.6F, 0.2F, 0.5F, 0, 0}, {4, 15, 4, 15, 21, 10}},
        WindowCase{"shifted", {0.1F, 0.6F, 0.2F, 0.5F, 3, 2}, {4, 15, 7, 17, 21, 10}},
        WindowCase{"beyond the left", {0.1F, 0.6F, 0.2F, 0.5F, -7, 0}, {7, 15, 0, 15, 18, 10}},
        WindowCase{"beyond the right", {0.5F, 1.0F, 0.2F, 0.5F, 5, 0}, {20, 15, 25, 15, 16, 10}},
        WindowCase{"above the top", {0.0F, 1.0F, 0.0F, 0.5F, 0, 4}, {0, 15, 0, 19, 41, 12}},
        WindowCase{"below the bottom", {0.0F, 1.0F, 0.5F, 1.0F, 0, -4}, {0, 4, 0, 0, 41, 12}},
        WindowCase{"nothing in common", {0.0F, 0.1F, 0.0F, 1.0F, -30, 0}, {0, 0, 0, 0, 41, 31}},
        WindowCase{"out of all bounds", {-4.0F, 9.0F, -1.0F, 2.0F, 2000000000, 0}, {0, 0, 0, 0, 41, 31}}),
    [](const auto& tested) { return std::to_string(tested.index); });

TEST(MaskCrop, KeepsBothWindowsAndTheAnalysisCopiesOfThem) {
    Rig rig;
    rig.save("l.bmp", place_picture(41, 31));
    rig.save("r.bmp", place_picture(41, 31));
    const auto pair = rig.pair_of(2);
    ASSERT_EQ(rig.read(*pair), test::ReadResult::done);
    pair->preparer.crop_by_mask(pair->views, {0.1F, 0.6F, 0.2F, 0.5F, 3, 2}, pair->orders);
    ASSERT_EQ(pair->width(), 21);
    ASSERT_EQ(pair->height(), 10);
    EXPECT_EQ(colour_at(pair->full().left, 1, 9), place_colour(5, 24));
    EXPECT_EQ(colour_at(pair->full().right, 1, 9), place_colour(8, 26));
    EXPECT_EQ(pair->views.reduced_width(), 800);
    EXPECT_EQ(pair->views.reduced_height(), 381);
}

TEST(MaskThumbs, ShowTheViewsCentredWithTheMaskLines) {
    Rig rig;
    const Bitmap left = Bitmap::create(200, 50);
    const Bitmap right = Bitmap::create(200, 50);
    fill(right.picture(), {250, 250, 250});
    const StereoPicture views{left.picture(), right.picture()};
    constexpr Colour kGround{64, 64, 255};
    constexpr Colour kLine{0, 255, 255};
    for (const bool drawn : {false, true}) {
        ASSERT_TRUE(write_mask_thumbs(
            views, rig.folder.path(),
            drawn ? std::optional(MaskFrame{0.25F, 0.75F, 0.0F, 0.5F, 20, 0}) : std::nullopt, rig.voice));
        EXPECT_EQ(rig.folder.files(), (std::set<std::string>{"zemora_thumb_l.bmp", "zemora_thumb_r.bmp"}));
        const LoadedPicture l = load_picture(rig.folder / "zemora_thumb_l.bmp");
        const LoadedPicture r = load_picture(rig.folder / "zemora_thumb_r.bmp");
        ASSERT_EQ(l.bitmap.width(), 267);
        ASSERT_EQ(l.bitmap.height(), 178);
        // 267 by 67 pixels of picture, 55 rows of ground below it.
        EXPECT_EQ(colour_at(l.bitmap.picture(), 100, 54), kGround);
        EXPECT_EQ(colour_at(l.bitmap.picture(), 100, 60), (Colour{}));
        EXPECT_EQ(colour_at(r.bitmap.picture(), 100, 60), (Colour{250, 250, 250}));
        EXPECT_EQ(colour_at(r.bitmap.picture(), 100, 122), kGround);
        EXPECT_EQ(colour_at(l.bitmap.picture(), 67, 60) == kLine, drawn);
        EXPECT_EQ(colour_at(r.bitmap.picture(), 67 + 27, 60) == kLine, drawn);
        EXPECT_EQ(colour_at(l.bitmap.picture(), 10, 55 + 66) == kLine, drawn) << "the top";
        EXPECT_EQ(colour_at(l.bitmap.picture(), 10, 55 + 66 - 33) == kLine, drawn) << "half way down";
    }
}

TEST(MaskThumbs, SlimAndTinyViewsFit) {
    Rig rig;
    for (const auto& [width, height] : {std::pair{1, 1}, std::pair{5000, 1}, std::pair{3, 700}}) {
        const Bitmap view = Bitmap::create(width, height);
        ASSERT_TRUE(
            write_mask_thumbs({view.picture(), view.picture()}, rig.folder.path(), MaskFrame{}, rig.voice));
        EXPECT_EQ(load_picture(rig.folder / "zemora_thumb_r.bmp").status, LoadStatus::done);
    }
}

}  // namespace
}  // namespace zemora
