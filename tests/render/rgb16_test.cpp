#include "render/rgb16.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <random>

#include "codec/library.h"
#include "numerics/rescale.h"
#include "render/deep_picture.h"
#include "render/extra_output.h"
#include "render/save_picture.h"
#include "tests/render/render_scene.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

namespace fs = std::filesystem;
using testing::Rig;
using testing::textured;

class DeepOutputs : public ::testing::Test {
protected:
    [[nodiscard]] std::string file(const std::string& name) const { return folder_ / name; }
    test::TestFolder folder_;
};

/// The file as the library reads it, unchanged.
Bitmap loaded(const std::string& path, FREE_IMAGE_FORMAT format) {
    return LibraryBitmap::owner(FreeImage_Load(format, path.c_str()));
}

/// A smooth picture in 16 bits and the same rounded to 8.
struct DeepSource {
    DeepSource(int width, int height)
        : deep(create_deep(width, height)), shallow(Bitmap::create(width, height)) {
        for (int y = 0; y < height; ++y) {
            auto* row = reinterpret_cast<FIRGB16*>(deep.bits() + y * deep.pitch());
            for (int x = 0; x < width; ++x) {
                const int blue = 9000 + 131 * x + 57 * y;
                const int green = 12000 + 211 * y;
                const int red = 50000 - 197 * x;
                row[x] = {static_cast<WORD>(red), static_cast<WORD>(green), static_cast<WORD>(blue)};
                std::uint8_t* pixel = shallow.picture().pixel(x, y);
                pixel[0] = static_cast<std::uint8_t>(blue >> 8);
                pixel[1] = static_cast<std::uint8_t>(green >> 8);
                pixel[2] = static_cast<std::uint8_t>(red >> 8);
            }
        }
    }
    Bitmap deep;
    Bitmap shallow;
};

/// Mean and largest difference of 16-bit channels against 256 times the bytes, in bytes.
struct DeepDifference {
    double mean = 0.0;
    double largest = 0.0;
    int odd_low_bytes = 0;  ///< Samples that 8 bits could not hold.
};
DeepDifference compare_deep(const Bitmap& deep, int first_column, ConstPicture bytes) {
    DeepDifference result;
    for (int y = 4; y < bytes.height - 4; ++y) {
        const auto* row = reinterpret_cast<const FIRGB16*>(deep.bits() + y * deep.pitch()) + first_column;
        for (int x = 4; x < bytes.width - 4; ++x) {
            const std::uint8_t* pixel = bytes.pixel(x, y);
            const double difference = row[x].green / 256.0 - 0.5 - pixel[1];
            result.mean += difference;
            result.largest = std::max(result.largest, std::abs(difference));
            result.odd_low_bytes += (row[x].green & 255) != 0 && (row[x].green & 255) != pixel[1] ? 1 : 0;
        }
    }
    result.mean /= (bytes.height - 8.0) * (bytes.width - 8.0);
    return result;
}

TEST_F(DeepOutputs, SixteenBitsFollowTheEightBitPictureAndAreDeeper) {
    const DeepSource source(160, 120);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(source.deep), file("deep.tif").c_str(), 0));
    ParameterSet set;
    set.output_format = 7;
    set.stereo_image_input = 2;
    Rig rig(set);
    WarpPlan plan = rig.plan(source.shallow, source.shallow);
    plan.crop.keeps_frame = false;
    plan.interpolation.kernel = 2;
    plan.tone.is_applied = true;
    plan.correction = testing::correction(3.0F, 0.01F, 0.02F, 0.01F, 0.01F, 6.0F);
    ASSERT_TRUE(rig.run(plan));
    rig.frame.left_right = 3;
    const SourceFiles sources{file("deep.tif"), file("deep.tif")};
    ASSERT_EQ(rig.write_stereo(file("s.tif"), sources).code, 0);
    const Bitmap read = loaded(file("s.tif"), FIF_TIFF);
    ASSERT_TRUE(read);
    ASSERT_EQ(FreeImage_GetImageType(LibraryBitmap::of(read)), FIT_RGB16);
    ASSERT_EQ(read.width(), 2 * (rig.warped.width + 6));
    for (const auto& [view, column] :
         {std::pair{rig.warped.pair().left, 3}, std::pair{rig.warped.pair().right, rig.warped.width + 9}}) {
        const DeepDifference difference = compare_deep(read, column, view);
        EXPECT_LT(std::abs(difference.mean), 0.05);
        EXPECT_LT(difference.largest, 1.6);
        EXPECT_GT(difference.odd_low_bytes, view.width * view.height / 2);
    }
}

TEST_F(DeepOutputs, WhatWasPaintedOverIsBackgroundInSixteenBitsToo) {
    const DeepSource source(120, 90);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(source.deep), file("deep.tif").c_str(), 0));
    const Bitmap painted = source.shallow.clone();
    fill(painted.picture().part(0, 0, 30, 90), {});  // the colour of background
    ParameterSet set;
    set.output_format = 7;
    set.stereo_image_input = 2;
    Rig rig(set);
    WarpPlan plan = rig.plan(painted, painted);
    plan.interpolation.kernel = 2;
    plan.correction = testing::correction(3.0F, 0.01F, 0.02F, 0.01F, 0.01F, 6.0F);
    ASSERT_TRUE(rig.run(plan));
    const SourceFiles sources{file("deep.tif"), file("deep.tif"), {painted.picture(), painted.picture()}};
    const DeepPair deep = *make_deep_pair(rig.warped, rig.deep_input(sources));
    ASSERT_TRUE(deep);
    int background = 0;
    int different = 0;
    const ConstPicture bytes = rig.warped.pair().left;
    for (int y = 0; y < bytes.height; ++y) {
        const auto* row = reinterpret_cast<const FIRGB16*>(deep.left.bits() + y * deep.left.pitch());
        for (int x = 0; x < bytes.width; ++x) {
            const bool empty = row[x].red == 0 && row[x].green == 0 && row[x].blue == 0;
            background += empty ? 1 : 0;
            different += empty != is_colour(bytes.pixel(x, y), {}) ? 1 : 0;
        }
    }
    EXPECT_GT(background, 20 * 80);
    EXPECT_EQ(different, 0);
}

TEST_F(DeepOutputs, AnEnlargedViewIsEnlargedInSixteenBitsToo) {
    const DeepSource source(80, 60);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(source.deep), file("deep.tif").c_str(), 0));
    const Bitmap large = Bitmap::create(150, 113);
    RescaleScratch scratch;
    (void)rescale(source.shallow.picture(), large.picture(), scratch, RescaleFilter::bicubic,
                  RescaleFit::stretch);
    ParameterSet set;
    set.output_format = 7;
    set.stereo_image_input = 2;
    Rig rig(set);
    WarpPlan plan = rig.plan(large, large);
    plan.interpolation.kernel = 2;
    ASSERT_TRUE(rig.run(plan));
    for (InputGeometry* record : {&rig.left_record, &rig.right_record}) {
        record->scaled_width = 150;
        record->scaled_height = 113;
    }
    const DeepPair deep = *make_deep_pair(rig.warped, rig.deep_input({file("deep.tif"), file("deep.tif")}));
    ASSERT_TRUE(deep);
    ASSERT_EQ(deep.left.width(), rig.warped.width);
    EXPECT_LT(compare_deep(deep.left, 0, rig.warped.pair().left).largest, 1.6);
    EXPECT_LT(compare_deep(deep.right, 0, rig.warped.pair().right).largest, 1.6);
}

TEST_F(DeepOutputs, SixteenBitsWithoutMarginsTellThatTheFloatingWasCut) {
    const DeepSource source(60, 50);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(source.deep), file("deep.tif").c_str(), 0));
    ParameterSet set;
    set.output_format = 7;
    set.stereo_image_input = 2;
    Rig rig(set);
    ASSERT_TRUE(rig.run(rig.plan(source.shallow, source.shallow)));
    rig.frame.floating = 6;
    ::testing::internal::CaptureStdout();
    const StoreResult result = rig.write_stereo(file("s.tif"), {file("deep.tif"), file("deep.tif")});
    std::fflush(stdout);
    EXPECT_NE(::testing::internal::GetCapturedStdout().find("FrameFloating was too large"),
              std::string::npos);
    ASSERT_EQ(result.code, 0);
    EXPECT_EQ(loaded(file("s.tif"), FIF_TIFF).width(), 120);
}

TEST_F(DeepOutputs, AnEightBitSourceStaysEightBits) {
    const Bitmap source = textured(60, 50);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(source), file("flat.tif").c_str(), 0));
    ParameterSet set;
    set.output_format = 7;
    Rig rig(set);
    WarpPlan plan = rig.plan(source, source);
    ASSERT_TRUE(rig.run(plan));
    const SourceFiles sources{file("flat.tif"), file("flat.tif")};
    ASSERT_EQ(rig.write_left_right(file("l.tif"), file("r.tif"), sources).code, 0);
    EXPECT_EQ(loaded(file("r.tif"), FIF_TIFF).bits_per_pixel(), 24);
}

TEST_F(DeepOutputs, OnlyTheViewWithADeepSourceHasSixteenBits) {
    const DeepSource source(60, 50);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(source.deep), file("deep.tif").c_str(), 0));
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(source.shallow), file("flat.tif").c_str(), 0));
    for (const bool inverse : {false, true}) {
        ParameterSet set;
        set.output_format = 7;
        set.stereo_image_input = 2;
        set.inverse_output = inverse ? 1 : 0;
        Rig rig(set);
        ASSERT_TRUE(rig.run(rig.plan(source.shallow, source.shallow)));
        rig.arrange();
        const SourceFiles sources{file("deep.tif"), file("flat.tif")};
        ASSERT_EQ(rig.write_left_right(file("l.tif"), file("r.tif"), sources).code, 0);
        EXPECT_EQ(loaded(file("l.tif"), FIF_TIFF).bits_per_pixel(), inverse ? 24 : 48);
        EXPECT_EQ(loaded(file("r.tif"), FIF_TIFF).bits_per_pixel(), inverse ? 48 : 24);
    }
}

TEST_F(DeepOutputs, SqueezedAndAnaglyphSourcesStayEightBits) {
    const DeepSource source(60, 50);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(source.deep), file("deep.tif").c_str(), 0));
    for (const int layout : {3, 4}) {
        ParameterSet set;
        set.output_format = 7;
        set.stereo_image_input = layout;
        Rig rig(set);
        ASSERT_TRUE(rig.run(rig.plan(source.shallow, source.shallow)));
        ASSERT_EQ(rig.write_stereo(file("s.tif"), {file("deep.tif"), file("deep.tif")}).code, 0);
        EXPECT_EQ(loaded(file("s.tif"), FIF_TIFF).bits_per_pixel(), 24) << layout;
    }
}

TEST_F(DeepOutputs, SixteenBitHalvesOfAStereoFileFindTheirView) {
    const DeepSource source(160, 60);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(source.deep), file("both.tif").c_str(), 0));
    for (const bool inverse : {false, true}) {
        ParameterSet set;
        set.output_format = 7;
        set.stereo_image_input = 1;
        set.inverse_output = inverse ? 1 : 0;
        Rig rig(set);
        Bitmap left = Bitmap::create(80, 60);
        Bitmap right = Bitmap::create(80, 60);
        copy(source.shallow.picture().part(0, 0, 80, 60), left.picture());
        copy(source.shallow.picture().part(80, 0, 80, 60), right.picture());
        ASSERT_TRUE(rig.run(rig.plan(left, right)));
        rig.arrange();
        ASSERT_EQ(rig.write_left_right(file("l.tif"), file("r.tif"), {file("both.tif"), ""}).code, 0);
        const Bitmap read = loaded(file(inverse ? "r.tif" : "l.tif"), FIF_TIFF);
        ASSERT_EQ(FreeImage_GetImageType(LibraryBitmap::of(read)), FIT_RGB16);
        EXPECT_EQ(reinterpret_cast<const FIRGB16*>(read.bits())[10].red, 50000 - 197 * 10) << inverse;
    }
}

/// A textured picture in 16 bits; its upper bytes are the 8-bit form.
DeepSource deep_texture(int width, int height) {
    DeepSource source(width, height);
    source.shallow = textured(width, height, 3);
    const Bitmap wide = widened(source.shallow.picture());
    copy_deep(deep_picture(wide), deep_picture(source.deep), 0, 0);
    return source;
}

/// Greatest difference of the upper bytes of a deep picture to the bytes of another; 256 for another size.
int reduced_difference(const Bitmap& deep, ConstPicture bytes) {
    if (!is_deep(deep) || deep.width() != bytes.width || deep.height() != bytes.height) {
        return 256;
    }
    int greatest = 0;
    for (int y = 0; y < bytes.height; ++y) {
        for (int x = 0; x < bytes.width; ++x) {
            const std::uint16_t* pixel = deep_picture(deep).pixel(x, y);
            for (int c = 0; c < kPixelBytes; ++c) {
                greatest = std::max(greatest, std::abs((pixel[2 - c] >> 8) - bytes.pixel(x, y)[c]));
            }
        }
    }
    return greatest;
}

struct DeepCase {
    const char* name;
    int interpolation;
    float scale = 1.0F;  ///< Output pixels per source pixel.
    float gamma = 1.0F;
    int crop = 2;
    int turn_left = 0, turn_right = 0;
    int inverse = 0;
    bool is_framed = false;
};

class SixteenBits : public DeepOutputs, public ::testing::WithParamInterface<DeepCase> {
protected:
    /// The pair of the case, finished.
    void mount(Rig& rig, const DeepSource& source) {
        const DeepCase& c = GetParam();
        rig.usual.crop.cropp_output = c.crop;
        rig.usual.background = {0, 30, 255};
        rig.parameters.inverse_output = c.inverse;
        rig.usual.scale = c.scale;
        WarpPlan plan = rig.plan(source.shallow, source.shallow);
        plan.frame.height = static_cast<int>(c.scale * static_cast<float>(source.shallow.height()));
        plan.frame.width = static_cast<int>(c.scale * static_cast<float>(source.shallow.width()));
        plan.crop.keeps_frame = false;
        plan.gamma = c.gamma;
        plan.interpolation = interpolation_for(c.interpolation, c.scale);
        plan.correction = testing::correction(2.0F, 0.01F, 0.02F, 0.01F, 0.01F, 4.0F);
        ASSERT_TRUE(rig.run(plan));
        if (c.is_framed) {
            FrameSettings& frame = rig.frame;
            frame = {11, 37, 9, 6, -4, 0, 0, 2, {200, 90, 40}};
            rig.done.texts.caption = resolve_text("Caption", {}, rig.voice);
        }
        rig.arrange();
    }
};

TEST_P(SixteenBits, ReducedToEightAreTheEightBitProducts) {
    const DeepCase& c = GetParam();
    const DeepSource source = deep_texture(203, 157);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(source.deep), file("deep.tif").c_str(), 0));
    const SourceFiles sources{
        file("deep.tif"), file("deep.tif"), {source.shallow.picture(), source.shallow.picture()}};
    for (const int format : {5, 7}) {
        ParameterSet set;
        set.output_format = format;
        set.stereo_image_input = 2;
        set.extra_output = 3;
        set.rot_mir_output_left = c.turn_left;
        set.rot_mir_output_right = c.turn_right;
        Rig rig(set);
        mount(rig, source);
        const std::string end = std::to_string(format) + ".tif";
        EXPECT_EQ(rig.write_left_right(file("l" + end), file("r" + end), sources).code, 0);
        EXPECT_EQ(rig.write_stereo(file("s" + end), sources).code, 0);
        EXPECT_EQ(rig.write_extra(file("e" + end), sources).code, 0);
    }
    for (const char* product : {"l", "r", "s", "e"}) {
        const Bitmap plain = loaded(file(std::string(product) + "5.tif"), FIF_TIFF);
        EXPECT_LE(reduced_difference(loaded(file(std::string(product) + "7.tif"), FIF_TIFF), plain.picture()),
                  1)
            << product;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SixteenBits,
    ::testing::Values(DeepCase{"nearest", 0}, DeepCase{"bilinear", 1}, DeepCase{"bicubic", 2},
                      DeepCase{"tent", 3}, DeepCase{"reduced", 4, 0.6F}, DeepCase{"much_reduced", 4, 0.3F},
                      DeepCase{"quarter", 4, 0.2F}, DeepCase{"linear_light", 2, 1.0F, 2.2F},
                      DeepCase{"reduced_linear_light", 4, 0.5F, 2.2F}, DeepCase{"blanked", 2, 1.0F, 1.0F, 1},
                      DeepCase{"whole_frame", 1, 1.0F, 1.0F, 0}, DeepCase{"turned", 2, 1.0F, 1.0F, 2, 1, 3},
                      DeepCase{"mirrored_and_exchanged", 2, 1.0F, 1.0F, 2, 0, 4, 1},
                      DeepCase{"framed", 2, 1.0F, 1.0F, 2, 0, 0, 0, true},
                      DeepCase{"framed_turned_exchanged", 4, 0.7F, 1.0F, 2, 3, 3, 1, true}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(DeepOutputs, DeepFilesArePackedWhereThatMakesThemSmaller) {
    const DeepSource smooth(300, 280);
    const Bitmap noise = create_deep(300, 280);
    std::mt19937 random(5);
    for (int y = 0; y < 280; ++y) {
        std::generate_n(deep_picture(noise).pixel(0, y), 900, [&random] { return random() & 0xFFFFU; });
    }
    constexpr std::uintmax_t kPlain = 300 * 280 * kDeepBytes;
    ParameterSet set;
    const auto size = [&](const Bitmap& picture) {
        EXPECT_EQ(save_deep_picture(picture, file("d.tif"), save_options(set)), "");
        EXPECT_TRUE(is_deep(loaded(file("d.tif"), FIF_TIFF)));
        return fs::file_size(file("d.tif"));
    };
    set.compress_bitmap = 1;
    EXPECT_LT(size(smooth.deep), kPlain / 2);
    EXPECT_NEAR(static_cast<double>(size(noise)), static_cast<double>(kPlain), kPlain / 100.0);
    set.compress_bitmap = 0;
    EXPECT_GE(size(smooth.deep), kPlain);
}

TEST_F(DeepOutputs, SixteenBitViewsFloatWithTheTrueView) {
    const DeepSource source(60, 50);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, LibraryBitmap::of(source.deep), file("deep.tif").c_str(), 0));
    for (const bool inverse : {false, true}) {
        ParameterSet set;
        set.output_format = 7;
        set.stereo_image_input = 2;
        set.inverse_output = inverse ? 1 : 0;
        Rig rig(set);
        ASSERT_TRUE(rig.run(rig.plan(source.shallow, source.shallow)));
        rig.arrange();
        rig.frame.left_right = 5;
        rig.frame.floating = 6;
        const SourceFiles sources{file("deep.tif"), file("deep.tif")};
        ASSERT_EQ(rig.write_left_right(file("l.tif"), file("r.tif"), sources).code, 0);
        const int share = inverse ? 3 : -3;
        for (const auto& [name, margin] : {std::pair{"l.tif", 5 + share}, std::pair{"r.tif", 5 - share}}) {
            const Bitmap read = loaded(file(name), FIF_TIFF);
            ASSERT_EQ(read.width(), 70);
            const auto* row = reinterpret_cast<const FIRGB16*>(read.bits());
            EXPECT_EQ(row[margin - 1].red, 0) << name << inverse;
            EXPECT_GT(row[margin].red, 0) << name << inverse;
        }
    }
}

}  // namespace
}  // namespace zemora
