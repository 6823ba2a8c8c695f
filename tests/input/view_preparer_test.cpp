#include <gtest/gtest.h>

#include <thread>

#include "tests/input/pair_rig.h"

namespace zemora {
namespace {

using test::colour_at;
using test::place_colour;
using test::place_picture;
using test::ReadResult;
using test::Rig;

const Colour kPasse{0, 0, 200};

TEST(StereoFile, OddWidthGivesTwoViewsOfTheSmallerHalf) {
    Rig rig;
    rig.save("s.bmp", place_picture(31, 20));
    const auto pair = rig.pair_of(1);
    ASSERT_EQ(rig.read(*pair), ReadResult::done) << pair->failure();
    ASSERT_EQ(pair->width(), 15);
    ASSERT_EQ(pair->height(), 20);
    EXPECT_EQ(colour_at(pair->full().left, 2, 3), place_colour(2, 3));
    EXPECT_EQ(colour_at(pair->full().right, 2, 3), place_colour(17, 3));
    EXPECT_EQ(pair->full().left.pitch, pair->full().right.pitch);
    pair->orders.exchanged = true;
    ASSERT_EQ(rig.read(*pair), ReadResult::done);
    EXPECT_EQ(colour_at(pair->full().left, 2, 3), place_colour(17, 3));
}

TEST(StereoFile, AnaglyphGivesRedToTheLeftAndGreenToTheRight) {
    Rig rig;
    rig.save("s.bmp", place_picture(20, 10));
    const auto pair = rig.pair_of(4);
    ASSERT_EQ(rig.read(*pair), ReadResult::done);
    const Colour place = place_colour(4, 5);
    EXPECT_EQ(colour_at(pair->full().left, 4, 5), (Colour{place.red, place.red, place.red}));
    EXPECT_EQ(colour_at(pair->full().right, 4, 5), (Colour{place.green, place.green, place.green}));
}

TEST(StereoFile, HalfWidthIsStretchedToTheWholeWidth) {
    Rig rig;
    Bitmap halves = Bitmap::create(40, 10);
    fill(halves.picture().part(20, 0, 20, 10), Colour{10, 20, 30});
    rig.save("s.bmp", halves);
    const auto pair = rig.pair_of(3);
    ASSERT_EQ(rig.read(*pair), ReadResult::done);
    EXPECT_EQ(pair->width(), 40);
    EXPECT_EQ(pair->height(), 10);
    EXPECT_EQ(colour_at(pair->full().left, 39, 5), (Colour{}));
    EXPECT_EQ(colour_at(pair->full().right, 0, 5), (Colour{10, 20, 30}));
}

TEST(StereoFile, OneColumnCannotBeSplit) {
    Rig rig;
    rig.save("s.bmp", place_picture(1, 10));
    const auto pair = rig.pair_of(1);
    EXPECT_EQ(rig.read(*pair), ReadResult::unreadable);
    EXPECT_NE(pair->failure().find("s.bmp"), std::string::npos) << pair->failure();
}

struct EqualCase {
    int cropp_input;
    int left_width, left_height, right_width, right_height;
    int width, height;                     ///< Common.
    int left_x, left_y, right_x, right_y;  ///< Frame offsets of the records.
};

class EqualSize : public testing::TestWithParam<EqualCase> {};

TEST_P(EqualSize, RecordsTellWhereEachViewWent) {
    const EqualCase& c = GetParam();
    Rig rig;
    rig.save("l.bmp", place_picture(c.left_width, c.left_height));
    rig.save("r.bmp", place_picture(c.right_width, c.right_height));
    rig.preparing.cropp_input = c.cropp_input;
    const auto pair = rig.pair_of(2);
    ASSERT_EQ(rig.read(*pair), ReadResult::done);
    ASSERT_EQ(pair->width(), c.width);
    ASSERT_EQ(pair->height(), c.height);
    const int offsets[2][2] = {{c.left_x, c.left_y}, {c.right_x, c.right_y}};
    const InputGeometry* records[] = {&pair->views.left_geometry, &pair->views.right_geometry};
    const ConstPicture views[] = {pair->full().left, pair->full().right};
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(records[i]->frame_x, offsets[i][0]) << i;
        EXPECT_EQ(records[i]->frame_y, offsets[i][1]) << i;
        EXPECT_EQ(records[i]->frame_width, c.width);
        EXPECT_EQ(records[i]->frame_height, c.height);
        if (c.cropp_input != 2) {  // unscaled: the pixel can be named
            const int x = c.width / 2;
            const int y = c.height / 2;
            EXPECT_EQ(colour_at(views[i], x, y), place_colour(x - offsets[i][0], y - offsets[i][1])) << i;
        }
        if (offsets[i][0] > 0) {
            EXPECT_EQ(colour_at(views[i], offsets[i][0] - 1, 0), kPasse) << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Table, EqualSize,
                         testing::Values(EqualCase{0, 80, 60, 69, 60, 80, 60, 0, 0, 5, 0},
                                         EqualCase{1, 80, 60, 69, 60, 69, 60, -5, 0, 0, 0},
                                         EqualCase{0, 80, 50, 70, 61, 80, 61, 0, 5, 5, 0},
                                         EqualCase{1, 80, 50, 70, 61, 70, 50, -5, 0, 0, -5},
                                         EqualCase{2, 80, 60, 40, 30, 80, 60, 0, 0, 0, 0},
                                         EqualCase{2, 40, 20, 80, 60, 80, 60, 0, 10, 0, 0},
                                         EqualCase{2, 80, 50, 70, 61, 80, 61, 0, 5, 5, 0},
                                         EqualCase{0, 30, 30, 30, 30, 30, 30, 0, 0, 0, 0}));

TEST(EqualSizeWarning, ComesAboveFifteenPercentOnly) {
    for (const auto& [height, warns] : {std::pair{74, false}, std::pair{73, true}}) {
        Rig rig;
        rig.save("l.bmp", place_picture(50, 100));
        rig.save("r.bmp", place_picture(50, height));
        const auto pair = rig.pair_of(2);
        ASSERT_EQ(rig.read(*pair), ReadResult::done);
        EXPECT_EQ(rig.told.find("very different image sizes") != std::string::npos, warns) << height;
    }
}

struct PercentCase {
    float start, size;
    int first, count;  ///< Columns kept of 80; 0 when the crop is refused.
    const char* told;
};

class PercentCrop : public testing::TestWithParam<PercentCase> {};

TEST_P(PercentCrop, KeepsTheRangeOrSaysWhyNot) {
    const PercentCase& c = GetParam();
    Rig rig;
    rig.save("l.bmp", place_picture(80, 40));
    rig.save("r.bmp", place_picture(80, 40));
    const auto pair = rig.pair_of(2);
    pair->orders.has_pre_selection = true;
    pair->orders.pre_selection.left_start_x = pair->orders.pre_selection.right_start_x = c.start;
    pair->orders.pre_selection.left_width = pair->orders.pre_selection.right_width = c.size;
    pair->orders.pre_selection.left_start_y = 25.0F;  // the bottom quarter of the left view goes
    pair->orders.pre_selection.left_height = 75.0F;
    pair->orders.pre_selection.right_height = 75.0F;
    ASSERT_EQ(rig.read(*pair), ReadResult::done);
    EXPECT_NE(rig.told.find(c.told), std::string::npos) << rig.told;
    if (c.count == 0) {
        EXPECT_EQ(pair->width(), 80);
        EXPECT_EQ(pair->views.left_geometry.crop_width, 80);
        return;
    }
    ASSERT_EQ(pair->width(), c.count);
    EXPECT_EQ(pair->height(), 30);
    EXPECT_EQ(pair->views.left_geometry.crop_x, c.first);
    EXPECT_EQ(pair->views.left_geometry.crop_y, 10);
    EXPECT_EQ(pair->views.left_geometry.crop_height, 30);
    EXPECT_EQ(colour_at(pair->full().left, 0, 0), place_colour(c.first, 10));
    EXPECT_EQ(colour_at(pair->full().right, 0, 0), place_colour(c.first, 0));
}

INSTANTIATE_TEST_SUITE_P(
    Table, PercentCrop,
    testing::Values(PercentCase{50.0F, 50.0F, 40, 40, ""}, PercentCase{50.05F, 50.0F, 0, 0, "sum must be"},
                    PercentCase{1e30F, 50.0F, 0, 0, "sum must be"}, PercentCase{-1e30F, 50.0F, 0, 40, ""},
                    PercentCase{0.0F, 100.0F, 0, 80, ""}, PercentCase{10.0F, 20.0F, 8, 16, ""},
                    PercentCase{0.0F, 0.9F, 0, 0, "value not used"}, PercentCase{99.0F, 1.0F, 79, 1, ""}));

TEST(TurnedInput, EachViewByItsOwnModeBeforeTheSizesAreMadeEqual) {
    Rig rig;
    rig.save("l.bmp", place_picture(40, 30));
    rig.save("r.bmp", place_picture(30, 40));
    const auto pair = rig.pair_of(2);
    pair->orders.rot_mir_left = 1;  // counter-clockwise
    pair->orders.rot_mir_right = 4;
    ASSERT_EQ(rig.read(*pair), ReadResult::done);
    ASSERT_EQ(pair->width(), 30);
    ASSERT_EQ(pair->height(), 40);
    EXPECT_EQ(colour_at(pair->full().left, 30 - 1 - 6, 9), place_colour(9, 6));
    EXPECT_EQ(colour_at(pair->full().right, 30 - 1 - 5, 7), place_colour(5, 7));
    EXPECT_EQ(pair->views.left_geometry.rot_mir, 1);
}

struct CopyCase {
    int width, height, copy_width, copy_height;
};

class AnalysisCopies : public testing::TestWithParam<CopyCase> {};

TEST_P(AnalysisCopies, HaveALongSideOf800) {
    const CopyCase& c = GetParam();
    Rig rig;
    rig.save("l.bmp", Bitmap::create(c.width, c.height));
    rig.save("r.bmp", Bitmap::create(c.width, c.height));
    const auto pair = rig.pair_of(2);
    ASSERT_EQ(rig.read(*pair), ReadResult::done);
    EXPECT_EQ(pair->views.reduced_width(), c.copy_width);
    EXPECT_EQ(pair->views.reduced_height(), c.copy_height);
}

INSTANTIATE_TEST_SUITE_P(Table, AnalysisCopies,
                         testing::Values(CopyCase{600, 800, 600, 800}, CopyCase{100, 50, 800, 400},
                                         CopyCase{1, 1, 800, 800}, CopyCase{1600, 1067, 800, 534},
                                         CopyCase{9000, 3, 800, 2}, CopyCase{2, 3000, 2, 800}));

TEST(InputPair, UnreadableFileIsNamedAndTheNextPairLoads) {
    Rig rig;
    rig.save("l.bmp", place_picture(20, 20));
    test::write_text(rig.folder / "r.bmp", "BMx");
    const auto pair = rig.pair_of(2);
    EXPECT_EQ(rig.read(*pair), ReadResult::unreadable);
    EXPECT_NE(pair->failure().find("r.bmp"), std::string::npos) << pair->failure();
    EXPECT_EQ(pair->problem.file, rig.folder / "r.bmp");
    EXPECT_FALSE(pair->problem.ends_run);
    rig.save("r.bmp", place_picture(20, 20));
    EXPECT_EQ(rig.read(*pair), ReadResult::done);
    pair->orders.exchanged = true;
    rig.save("r.bmp", place_picture(21, 20));
    EXPECT_EQ(rig.read(*pair), ReadResult::done);
    EXPECT_EQ(pair->views.left_geometry.crop_width, 21);
}

TEST(InputPair, ConverterGetsTheWholeNameAndGivesThePicture) {
    Rig rig;
    const test::TestFolder tools;
    // Copies its first argument behind eight bytes of disguise to what follows "/convert=".
    test::write_text(tools / "converter", "#!/bin/sh\ntail -c +9 \"$1\" > \"${2#/convert=}\"\n");
    std::filesystem::permissions(tools / "converter", std::filesystem::perms::owner_all);
    rig.reading.converter = tools / "converter";
    const auto bytes = test::encoded(place_picture(20, 10), FIF_BMP);
    const std::string disguised = "disguise" + std::string(bytes.begin(), bytes.end());
    const std::string name = rig.folder / "odd 'name' $(touch x);.xyz";
    test::write_text(name, disguised);
    const auto pair = rig.pair_of(2);
    ASSERT_EQ(rig.read(*pair, {name, name, {}}), ReadResult::converted) << pair->failure();
    EXPECT_EQ(colour_at(pair->full().right, 3, 4), place_colour(3, 4));
    EXPECT_EQ(rig.folder.files().size(), 1U);
    const Bitmap black = Bitmap::create(20, 10);
    fill(black.picture(), {});
    const auto black_bytes = test::encoded(black, FIF_BMP);
    test::write_text(rig.folder / "black.xyz",
                     "disguise" + std::string(black_bytes.begin(), black_bytes.end()));
    pair->orders.exchanged = true;
    (void)rig.read(*pair, {name, rig.folder / "black.xyz", {}});
    EXPECT_EQ(colour_at(pair->full().right, 3, 4), place_colour(3, 4)) << "the views are exchanged";
    EXPECT_NE(colour_at(pair->full().left, 3, 4), place_colour(3, 4));
}

TEST(InputPair, AConverterThatFailsIsNotToldAsMissing) {
    Rig rig;
    const test::TestFolder tools;
    test::write_text(tools / "converter", "#!/bin/sh\nexit 3\n");
    std::filesystem::permissions(tools / "converter", std::filesystem::perms::owner_all);
    test::write_text(rig.folder / "odd.xyz", "no picture");
    for (const auto& [converter, told] : {std::pair{tools / "converter", "the converter has failed"},
                                          std::pair{tools / "none", "there is no converter"}}) {
        rig.reading.converter = converter;
        const auto pair = rig.pair_of(2);
        EXPECT_EQ(rig.read(*pair, {rig.folder / "odd.xyz", rig.folder / "odd.xyz", {}}),
                  ReadResult::unreadable);
        EXPECT_NE(pair->failure().find(told), std::string::npos) << pair->failure();
    }
}

TEST(InputPair, IsReadAndPreparedWhileAnotherOneIsAtWork) {
    Rig rig;
    rig.save("l.bmp", place_picture(50, 100));
    rig.save("r.bmp", place_picture(50, 60));
    const auto first = rig.pair_of(2);
    ASSERT_EQ(rig.read(*first), ReadResult::done);
    const std::string told_at_once = rig.told;
    const auto second = rig.pair_of(2);
    KeptNotes kept(rig.messages, rig.parameters.verbose_mode);
    ReadResult result = ReadResult::unreadable;
    std::thread reader([&] {
        result = second->read({rig.folder / "l.bmp", rig.folder / "r.bmp", {}}, kept);
    });
    EXPECT_EQ(colour_at(first->full().left, 7, 9), place_colour(7, 9));
    reader.join();
    ASSERT_EQ(result, ReadResult::done);
    EXPECT_EQ(colour_at(second->full().left, 7, 9), place_colour(7, 9));
    testing::internal::CaptureStdout();
    kept.tell(rig.voice);
    rig.console.flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), told_at_once) << "notes that were kept";
    EXPECT_NE(told_at_once, "");
}

}  // namespace
}  // namespace zemora
