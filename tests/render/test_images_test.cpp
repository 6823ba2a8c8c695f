#include "render/test_images.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

#include "codec/library.h"
#include "tests/support/pictures.h"
#include "tests/support/speech.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using test::colour_at;

struct Speaker : test::Speech {
    Speaker() { parameters.stop_at_error = -1; }
};

Bitmap stored(const std::string& file) {
    Bitmap bitmap = LibraryBitmap::owner(FreeImage_Load(FIF_TIFF, file.c_str(), 0));
    EXPECT_TRUE(bitmap) << file;
    return bitmap;
}

/// What a table of formulas says about one band; `g` is the share of green.
struct BandRow {
    double (*cyan)(double t);
    double (*red)(double t);
    int square_cyan, square_red;
};
const std::array<BandRow, 14> kRows = {{
    {[](double t) { return t; }, [](double) { return 0.5; }, 0, 255},
    {[](double t) { return t; }, [](double) { return 0.0; }, 0, 255},
    {[](double t) { return 0.5 - t; }, [](double) { return 1.0; }, 128, 0},
    {[](double t) { return 0.75 - t; }, [](double) { return 1.0; }, 192, 0},
    {[](double t) { return 1.0 - t; }, [](double) { return 0.5; }, 255, 0},
    {[](double t) { return 1.0 - t; }, [](double) { return 0.75; }, 255, 0},
    {[](double t) { return 1.0 - t; }, [](double) { return 1.0; }, 255, 0},
    {[](double) { return 0.5; }, [](double t) { return t; }, 255, 0},
    {[](double) { return 0.0; }, [](double t) { return t; }, 255, 0},
    {[](double) { return 1.0; }, [](double t) { return 0.5 - t; }, 0, 128},
    {[](double) { return 1.0; }, [](double t) { return 0.75 - t; }, 0, 192},
    {[](double) { return 0.5; }, [](double t) { return 1.0 - t; }, 0, 255},
    {[](double) { return 0.75; }, [](double t) { return 1.0 - t; }, 0, 255},
    {[](double) { return 1.0; }, [](double t) { return 1.0 - t; }, 0, 255},
}};

Colour mixed(double cyan, double red, double g) {
    const auto channel = [](double level) {
        return static_cast<std::uint8_t>(std::clamp(static_cast<int>(level), 0, 255));
    };
    return {channel(cyan), channel(cyan * g), channel(red)};
}

class CalibrationImage : public ::testing::TestWithParam<int> {};

TEST_P(CalibrationImage, HasRampsAndSquaresByTheTableAndLabelsOnWhite) {
    const int percent = GetParam();
    constexpr int kUnit = 36;
    constexpr int kColumns = 50 * kUnit;
    Speaker speaker;
    const test::TestFolder folder;
    std::string profiled;
    ASSERT_TRUE(write_anaglyph_test_image(1803, folder.path(), percent, speaker.voice,
                                          [&](const std::string& file) { profiled = file; }));
    const std::string file = folder / format_text("tintrovela_print_%03d.tif", percent);
    EXPECT_EQ(profiled, file);
    const Bitmap bitmap = stored(file);
    const ConstPicture picture = bitmap.picture();
    ASSERT_EQ(picture.width, kColumns + 52);
    ASSERT_EQ(picture.height, 28 * kUnit + 52);
    const double g = percent / 100.0;
    for (int y = 0; y < 28 * kUnit; ++y) {
        const BandRow& band = kRows[static_cast<std::size_t>(y / (2 * kUnit))];
        const int row = y % (2 * kUnit);
        for (int c = 0; c < kColumns; ++c) {
            const double t = (c + 50) * 0.5 / kColumns;
            const int in_square = c - (2 * kUnit - 18);
            const bool square = row >= 18 && row < 18 + kUnit && in_square >= 0 &&
                                in_square % (2 * kUnit) < kUnit && in_square / (2 * kUnit) < 24;
            const Colour expected = square ? mixed(band.square_cyan, band.square_red, g)
                                           : mixed(255 * band.cyan(t), 255 * band.red(t), g);
            ASSERT_EQ(colour_at(picture, 50 + c, 2 + y), expected) << "row " << y << ", column " << c;
        }
    }
    EXPECT_EQ(colour_at(picture, 49, 500), Colour{}) << "a black edge round the ramps";
    EXPECT_EQ(colour_at(picture, 47, 2), (Colour{255, 255, 255}));
    EXPECT_EQ(colour_at(picture, 1000, picture.height - 48), (Colour{255, 255, 255}));
    EXPECT_EQ(colour_at(picture, 1000, picture.height - 49), Colour{});
}

INSTANTIATE_TEST_SUITE_P(GreenPercents, CalibrationImage, ::testing::Values(0, 50, 100));

int dark_pixels(ConstPicture picture) {
    int count = 0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            count += picture.pixel(x, y)[1] < 128 ? 1 : 0;
        }
    }
    return count;
}

TEST(CalibrationImageLabels, StandAboveTheSquaresAndBesideTheBands) {
    Speaker speaker;
    const test::TestFolder folder;
    ASSERT_TRUE(write_anaglyph_test_image(1800, folder.path(), 7, speaker.voice, [](const std::string&) {}));
    const Bitmap bitmap = stored(folder / "tintrovela_print_007.tif");
    const Picture picture = bitmap.picture();
    const int label_row = picture.height - 48;
    for (int i = 1; i <= 24; ++i) {
        EXPECT_GT(dark_pixels(picture.part(50 + 72 * i - 24, label_row, 48, 48)), 60) << i;
        EXPECT_EQ(dark_pixels(picture.part(50 + 72 * i + 30, label_row, 12, 48)), 0) << "behind " << i;
    }
    for (int band = 0; band < 14; ++band) {
        EXPECT_GT(dark_pixels(picture.part(0, 2 + 72 * band + 18, 48, 36)), 60) << band;
        EXPECT_EQ(dark_pixels(picture.part(0, 2 + 72 * band, 48, 10)), 0) << "below " << band;
    }
    EXPECT_LT(dark_pixels(picture.part(0, 20, 48, 36)), dark_pixels(picture.part(0, 72 * 12 + 20, 48, 36)))
        << "the lowest band is 1, not 13";
}

TEST(CalibrationImageFailure, NoRoomAndNoFolderGiveOne) {
    Speaker speaker;
    const test::TestFolder folder;
    const AddProfile none = [](const std::string&) { FAIL() << "there is no file"; };
    EXPECT_FALSE(write_anaglyph_test_image(49, folder.path(), 50, speaker.voice, none));
    EXPECT_FALSE(write_anaglyph_test_image(1800, folder / "none", 50, speaker.voice, none));
    EXPECT_TRUE(folder.files().empty());
}

/// The image of 640 by 480 for each view, as it is stored.
class AlignmentImage : public ::testing::Test {
protected:
    void write(bool is_mirrored) {
        ASSERT_TRUE(write_alignment_image({kWidth, kHeight, folder_.path(), is_mirrored}, speaker_.voice));
        bitmap_ = stored(folder_ / "zemora_alignment.tif");
        ASSERT_EQ(bitmap_.width(), 2 * kWidth);
        ASSERT_EQ(bitmap_.height(), kHeight);
    }
    [[nodiscard]] Picture left() const { return bitmap_.picture().part(0, 0, kWidth, kHeight); }
    [[nodiscard]] Picture right() const { return bitmap_.picture().part(kWidth, 0, kWidth, kHeight); }

    static constexpr int kWidth = 640;
    static constexpr int kHeight = 480;
    Speaker speaker_;
    test::TestFolder folder_;
    Bitmap bitmap_;
};

int plain_band(int y) {
    return static_cast<int>(std::floor((0.25 * 480 + 240 - (10 * y - 320)) / (0.95 * 480 - 48) + 9 + 0.5));
}

TEST_F(AlignmentImage, BandsAreAsBrightAsTheGhostThatTheyCancel) {
    write(false);
    constexpr int kLine = 320 - 640 / 30 / 2;  // column of the line in the left view
    std::set<int> bands;
    for (int y = 14; y < 466; ++y) {
        const int number = plain_band(y);
        const int band = number >= 0 && number < 10 ? number : 0;
        const int ground = std::max(0, static_cast<int>(std::floor(number * 255 * 0.03 + 0.5)));
        const auto ghost = [band](int level) {
            return static_cast<int>(std::floor(3 * level * band / 100.0 + 0.5));
        };
        bands.insert(number);
        for (int x = 450; std::pow(x - 320.0, 2) + std::pow(y - 240.0, 2) < 0.99 * std::pow(0.475 * 480, 2);
             ++x) {
            ASSERT_EQ(colour_at(left(), x, y).green, ground - ghost(ground)) << x << ' ' << y;
            ASSERT_EQ(colour_at(left(), x, y), colour_at(right(), x, y)) << x << ' ' << y;
        }
        if (y >= 96 && y < 192) {
            ASSERT_EQ(colour_at(left(), kLine, y).red, 255 - ghost(ground)) << y;
            ASSERT_EQ(colour_at(right(), kLine, y).red, std::max(0, ground - ghost(255))) << y;
        }
    }
    EXPECT_EQ(*bands.begin(), -1);
    EXPECT_EQ(*bands.rbegin(), 10);
}

TEST_F(AlignmentImage, LinesAreApartByAThirtiethOfTheWidth) {
    write(false);
    const int y = 150;
    std::array<int, 2> columns{};
    for (int x = 280; x < 360; ++x) {
        columns[0] = colour_at(left(), x, y).red > 200 ? x : columns[0];
        columns[1] = colour_at(right(), x, y).red > 200 ? x : columns[1];
    }
    EXPECT_EQ(columns[1] - columns[0], 640 / 30);
    EXPECT_EQ(colour_at(left(), columns[0], 96 - 1), colour_at(right(), columns[0], 96 - 1))
        << "below the lines";
    EXPECT_GT(colour_at(left(), columns[0], 96).red, 200);
    EXPECT_GT(colour_at(left(), columns[0], 191).red, 200);
}

TEST_F(AlignmentImage, FrameRingAndMarksAreAlikeInBothViews) {
    write(false);
    constexpr Colour kRed{0, 0, 255};
    constexpr Colour kWhite{255, 255, 255};
    for (const Picture& half : {left(), right()}) {
        EXPECT_EQ(colour_at(half, 0, 100), kRed);
        EXPECT_EQ(colour_at(half, 639, 479), kRed);
        EXPECT_EQ(colour_at(half, 638, 478), Colour{});
        EXPECT_EQ(colour_at(half, 320 - 228, 240), kWhite) << "the ring";
        EXPECT_EQ(colour_at(half, 24, 240), kWhite) << "a mark";
        EXPECT_EQ(colour_at(half, 23, 240), Colour{});
        EXPECT_EQ(colour_at(half, 615, 240 - 96), kWhite);
        EXPECT_EQ(colour_at(half, 616, 240 - 96), Colour{});
    }
}

TEST_F(AlignmentImage, TheRightViewIsMirroredForAMirror) {
    write(false);
    const Bitmap plain = bitmap_.clone();
    write(true);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const ConstPicture before = plain.picture();
            ASSERT_EQ(colour_at(left(), x, y), colour_at(before, x, y)) << x << ' ' << y;
            ASSERT_EQ(colour_at(right(), x, y), colour_at(before, 2 * kWidth - 1 - x, y)) << x << ' ' << y;
        }
    }
}

TEST(AlignmentImageSizes, OddOnesAreDrawnAndNoneIsRefused) {
    for (const auto& [width, height, result] :
         {std::array{1, 1, 0}, std::array{3, 50, 0}, std::array{50, 51, 0}, std::array{301, 90, 0},
          std::array{90, 700, 0}, std::array{0, 100, 1}, std::array{100, 0, 1}}) {
        Speaker speaker;
        const test::TestFolder folder;
        EXPECT_EQ(write_alignment_image({width, height, folder.path()}, speaker.voice).has_value(),
                  result == 0)
            << width << " by " << height;
        EXPECT_EQ(folder.files().size(), result == 0 ? 1U : 0U);
    }
}

}  // namespace
}  // namespace zemora
