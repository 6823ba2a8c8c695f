#include "render/anaglyph.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "codec/library.h"
#include "render/dome.h"
#include "render/font_search.h"
#include "tests/render/anaglyph_twin.h"
#include "tests/render/render_scene.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using testing::colour_at;
using testing::count_differences;
using ::testing::HasSubstr;
using testing::Rig;
using testing::textured;

constexpr int kWidth = 60;
constexpr int kHeight = 40;
constexpr Colour kFrame = {10, 200, 90};

class Anaglyphs : public ::testing::Test {
protected:
    /// A pair with a coloured frame.
    std::unique_ptr<Rig> rig(ParameterSet set) const {
        set.path_of_images = folder_.path();
        auto made = std::make_unique<Rig>(set);
        made->warped.left = textured(kWidth, kHeight, 1);
        made->warped.right = textured(kWidth, kHeight, 2);
        made->warped.width = kWidth;
        made->warped.height = kHeight;
        made->frame.colour = kFrame;
        return made;
    }
    [[nodiscard]] std::string file(const std::string& name) const { return folder_ / name; }

    test::TestFolder folder_;
};

Bitmap composed(Rig& rig) {
    return *compose_anaglyph(rig.finished(), rig.frame, anaglyph_options(rig.parameters), rig.voice);
}

Result<StoreResult> written(Rig& rig, const std::string& file) {
    return write_anaglyph(rig.finished(), rig.frame, file, anaglyph_options(rig.parameters), rig.voice);
}

ParameterSet full_colours() {
    ParameterSet set;
    set.anaglyph_type = 2;
    return set;
}

TEST_F(Anaglyphs, StandOnTheFrameWithoutThinLine) {
    auto pair = rig(full_colours());
    pair->frame.top = 3;
    pair->frame.bottom = 5;
    pair->frame.left_right = 7;
    pair->frame.thin_line = 2;
    const Bitmap canvas = composed(*pair);
    ASSERT_EQ(canvas.width(), kWidth + 14);
    ASSERT_EQ(canvas.height(), kHeight + 8);
    EXPECT_EQ(pair->frame.thin_line, 2);
    EXPECT_EQ(colour_at(canvas.picture(), 6, 5), kFrame);
    EXPECT_EQ(colour_at(canvas.picture(), 7, 4), kFrame);
    EXPECT_EQ(colour_at(canvas.picture(), 7 + kWidth, 5 + kHeight - 1), kFrame);
    const Colour left = colour_at(pair->warped.pair().left, 0, 0);
    const Colour right = colour_at(pair->warped.pair().right, 0, 0);
    EXPECT_EQ(colour_at(canvas.picture(), 7, 5), (Colour{right.blue, right.green, left.red}));
}

TEST_F(Anaglyphs, FloatingPartsShowOneViewOnlyAndTheFrameKeepsItsColour) {
    for (const int type : {0, 5, 6}) {
        ParameterSet set;
        set.anaglyph_type = type;
        auto pair = rig(set);
        pair->frame.left_right = 15;
        pair->frame.floating = 20;
        ::testing::internal::CaptureStdout();
        const Bitmap canvas = composed(*pair);
        ::testing::internal::GetCapturedStdout();
        EXPECT_EQ(colour_at(canvas.picture(), 4, 20), kFrame) << type;
        EXPECT_EQ(colour_at(canvas.picture(), kWidth + 25, 20), kFrame) << type;
        const Colour first = colour_at(canvas.picture(), 5, 20);
        const Colour last = colour_at(canvas.picture(), kWidth + 24, 20);
        EXPECT_GT(first.red, 20) << "the left view alone, type " << type;
        EXPECT_EQ(first.green, 0) << type;
        EXPECT_EQ(last.red, 0) << "the right view alone, type " << type;
        EXPECT_GT(last.green, 20) << type;
    }
}

TEST_F(Anaglyphs, FilledCanvasHasTheSizeAskedFor) {
    auto pair = rig(full_colours());
    pair->parameters.verbose_mode = 2;
    pair->frame.fill_height = kHeight - 1;
    pair->frame.fill_width = kWidth + 5;
    ::testing::internal::CaptureStdout();
    const Bitmap canvas = composed(*pair);
    pair->console.flush();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "Warning: Value of FillHeight is too low and will be ignored!\n");
    ASSERT_EQ(canvas.width(), kWidth + 5);
    ASSERT_EQ(canvas.height(), kHeight);
    EXPECT_EQ(colour_at(canvas.picture(), 1, 0), kFrame);
    EXPECT_EQ(colour_at(canvas.picture(), 2, 0).red, colour_at(pair->warped.pair().left, 0, 0).red);
    EXPECT_EQ(colour_at(canvas.picture(), kWidth + 2, 0), kFrame);
}

TEST_F(Anaglyphs, TextsStandOnTheFrameAndBehindThePicture) {
    constexpr int kBottom = 40;
    auto pair = rig(full_colours());
    pair->frame.bottom = kBottom;
    const Bitmap silent = composed(*pair);
    pair->done.texts.caption.text = "Below";
    pair->done.texts.caption.size = -12.0F;
    pair->done.texts.caption.font_path = default_font();
    const Bitmap canvas = composed(*pair);
    EXPECT_GT(count_differences(silent.picture(kWidth, kBottom), canvas.picture(kWidth, kBottom)), 20);
    EXPECT_EQ(count_differences(silent.picture().part(0, kBottom, kWidth, kHeight),
                                canvas.picture().part(0, kBottom, kWidth, kHeight)),
              0);
}

TEST_F(Anaglyphs, TheDefaultsMixByLeastSquares) {
    auto pair = rig({});
    const Bitmap canvas = composed(*pair);
    const testing::AnaglyphTwin twin(AnaglyphSettings{});
    const auto rgb = [](Colour c) { return testing::Rgb{double(c.red), double(c.green), double(c.blue)}; };
    for (int x = 0; x < kWidth; ++x) {
        EXPECT_EQ(colour_at(canvas.picture(), x, 11),
                  twin.mix(rgb(colour_at(pair->warped.pair().left, x, 11)),
                           rgb(colour_at(pair->warped.pair().right, x, 11))));
    }
}

TEST_F(Anaglyphs, ColourFileIsReadAnewForEachPicture) {
    ParameterSet set;
    set.anaglyph_type = 8;
    const auto write_file = [this](const std::string& red) {
        test::write_text(file("zemora_colors.txt"),
                         red + "0 0 0\n0 0 0\n0 0 0\n0 1 0\n0 0 1\n1 1 1\n1 1 1\n");
    };
    write_file("0 0 0\n");
    auto pair = rig(set);
    for (const char* red : {"1 0 0\n", "0 1 0\n"}) {
        write_file(red);
        const Bitmap canvas = composed(*pair);
        const Colour left = colour_at(pair->warped.pair().left, 9, 9);
        const Colour right = colour_at(pair->warped.pair().right, 9, 9);
        EXPECT_EQ(colour_at(canvas.picture(), 9, 9),
                  (Colour{right.blue, right.green, red[0] == '1' ? left.red : left.green}));
    }
}

TEST_F(Anaglyphs, FilesHaveTheFormOfTheOutputFormat) {
    struct Row {
        const char* name;
        int format, bits;
        FREE_IMAGE_COLOR_TYPE type;
    };
    for (const Row& row :
         {Row{"a.tif", 5, 24, FIC_RGB}, Row{"b.tif", 6, 32, FIC_RGB}, Row{"c.tif", 7, 24, FIC_RGB},
          Row{"d.tif", 8, 32, FIC_CMYK}, Row{"e.png", 6, 24, FIC_RGB}}) {
        ParameterSet set = full_colours();
        set.output_format = row.format;
        auto pair = rig(set);
        const StoreResult result = *written(*pair, file(row.name));
        ASSERT_EQ(result.code, 0) << result.reason;
        const bool is_png = std::string(row.name) == "e.png";
        const Bitmap read = LibraryBitmap::owner(
            FreeImage_Load(is_png ? FIF_PNG : FIF_TIFF, file(row.name).c_str(), TIFF_CMYK));
        ASSERT_TRUE(read) << row.name;
        EXPECT_EQ(read.bits_per_pixel(), row.bits) << row.name;
        EXPECT_EQ(FreeImage_GetColorType(LibraryBitmap::of(read)), row.type) << row.name;
    }
    const StoreResult failed = *written(*rig(full_colours()), file("no/such/folder.png"));
    EXPECT_EQ(failed.code, 2);
    EXPECT_THAT(failed.reason, HasSubstr("no/such/folder.png"));
}

TEST_F(Anaglyphs, UnstablePrintCalibrationEndsTheRun) {
    ParameterSet set;
    set.anaglyph_type = 7;
    auto pair = rig(set);
    test::write_text(file("tintrovela_print.txt"),
                     "Tintrovela Version 0.2\n100\n-2.1712\n-1.1368\n3.548\n3.0176\n1.9008\n-2.2744\n"
                     "1\n1\n1\n1\n1\n1\n1\n1\n");
    fill(pair->warped.left.picture(), {185, 185, 185});
    fill(pair->warped.right.picture(), {35, 35, 35});
    const auto result = written(*pair, file("a.png"));
    ASSERT_FALSE(result);
    EXPECT_TRUE(result.failure().ends_run && result.failure().note.waits);
    EXPECT_EQ(result.failure().note.severity, Severity::must_be_seen);
    EXPECT_EQ(result.failure().note.text,
              "Calibration values not stable!\n"
              "Please send the 14 calibration values of the test image to the makers of Zemora.\n");
    EXPECT_FALSE(std::filesystem::exists(file("a.png")));
}

TEST_F(Anaglyphs, DomeIsSavedWithThreeCopiesRoundTheZenith) {
    ParameterSet set = full_colours();
    set.planetarium_output = 1;
    auto pair = rig(set);
    const StoreResult result = *written(*pair, file("dome.tif"));
    ASSERT_EQ(result.code, 0) << result.reason;
    const Bitmap dome = LibraryBitmap::owner(FreeImage_Load(FIF_TIFF, file("dome.tif").c_str(), 0));
    ASSERT_TRUE(dome);
    ASSERT_EQ(dome.width(), 3000);
    ASSERT_EQ(dome.height(), 3000);
    ASSERT_EQ(dome.bits_per_pixel(), 32);
    const Bitmap canvas = composed(*pair);
    const auto dome_colour = [&](double radius, double angle) {
        const auto at = [](double unit) {
            return static_cast<int>(std::lround((unit + 1.0) * 1500.0 - 0.5));
        };
        const std::uint8_t* pixel = dome.bits() + at(radius * std::sin(angle)) * dome.pitch() +
                                    static_cast<std::ptrdiff_t>(4) * at(radius * std::cos(angle));
        const Colour colour{pixel[0], pixel[1], pixel[2]};
        EXPECT_EQ(pixel[3], colour == Colour{} ? 0 : 255);
        return colour;
    };
    for (int copy = 0; copy < 3; ++copy) {
        for (const auto& [column, row] : {std::pair{5, 3}, {30, 20}, {55, 39}}) {
            const double angle = column * 1.9896753472735356 / (kWidth - 1) + copy * 2.0943951023931953;
            EXPECT_EQ(dome_colour(0.95 - 0.75 * row / (kHeight - 1), angle),
                      colour_at(canvas.picture(), column, row))
                << copy << ": " << column << ", " << row;
        }
        EXPECT_EQ(dome_colour(0.5, 2.04 + copy * 2.0943951023931953), Colour{}) << "between the copies";
    }
    EXPECT_EQ(dome_colour(0.1, 1.0), Colour{});
    EXPECT_EQ(dome_colour(0.99, 1.0), Colour{});
}

}  // namespace
}  // namespace zemora
