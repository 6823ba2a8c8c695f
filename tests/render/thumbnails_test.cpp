#include "render/thumbnails.h"

#include <gtest/gtest.h>

#include "input/picture_file.h"
#include "tests/render/render_scene.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using testing::colour_at;
using testing::Rig;

constexpr Colour kGreen{0x40, 0xFF, 0x40};

struct ThumbCase {
    int width, height;
    int left, bottom;  ///< Bars beside and below the view.
    int thumb_width, thumb_height;
};

class Thumbs : public ::testing::TestWithParam<ThumbCase> {};

TEST_P(Thumbs, HoldTheWholeViewBetweenGreenBars) {
    const ThumbCase& c = GetParam();
    Rig rig;
    rig.warped.left = Bitmap::create(c.width + 2, c.height + 1);
    rig.warped.right = Bitmap::create(c.width + 2, c.height + 1);
    rig.warped.width = c.width;
    rig.warped.height = c.height;
    fill(rig.warped.left.picture(), kGreen);
    fill(rig.warped.left.picture(c.width, c.height), {10, 20, 200});
    fill(rig.warped.right.picture(), {200, 20, 10});
    const Thumbnails plain = *make_thumbnails(rig.warped.pair());
    const Thumbnails thumbs = *with_bars(plain);
    const ConstPicture left = thumbs.left.picture();
    ASSERT_EQ(left.width, 267);
    ASSERT_EQ(left.height, 178);
    for (int y = 0; y < 178; ++y) {
        for (int x = 0; x < 267; ++x) {
            const bool in_view =
                x >= c.left && x < c.left + c.thumb_width && y >= c.bottom && y < c.bottom + c.thumb_height;
            ASSERT_EQ(colour_at(left, x, y), (in_view ? Colour{10, 20, 200} : kGreen)) << x << ' ' << y;
        }
    }
    EXPECT_EQ(colour_at(thumbs.right.picture(), 133, 89), (Colour{200, 20, 10}));
    const test::TestFolder folder;
    EXPECT_EQ(save_thumbnails(plain, folder / "l.jpg", folder / "r.jpg"), "");
    const LoadedPicture stored = load_picture(folder / "l.jpg");
    EXPECT_EQ(stored.bitmap.width(), c.thumb_width);
    EXPECT_EQ(stored.bitmap.height(), c.thumb_height);
}

INSTANTIATE_TEST_SUITE_P(Shapes, Thumbs,
                         ::testing::Values(ThumbCase{800, 450, 0, 14, 267, 150},
                                           ThumbCase{400, 600, 74, 0, 119, 178},
                                           ThumbCase{534, 356, 0, 0, 267, 178},
                                           ThumbCase{100, 50, 0, 22, 267, 134}));

TEST(Thumbnail, AFolderThatIsNotThereIsNamed) {
    Rig rig;
    rig.warped.left = testing::textured(30, 20);
    rig.warped.right = testing::textured(30, 20);
    rig.warped.width = 30;
    rig.warped.height = 20;
    const test::TestFolder folder;
    const std::string reason =
        save_thumbnails(*make_thumbnails(rig.warped.pair()), folder / "no/l.jpg", folder / "r.jpg");
    EXPECT_NE(reason.find("no/l.jpg"), std::string::npos);
    EXPECT_EQ(folder.files(), std::set<std::string>{"r.jpg"}) << "the other one is stored";
}

}  // namespace
}  // namespace zemora
