#include "render/output_writer.h"

#include <FreeImage.h>
#include <gtest/gtest.h>
#include <lcms2.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>

#include "input/picture_file.h"
#include "numerics/rescale.h"
#include "render/cmyk.h"
#include "render/deep_picture.h"
#include "render/extra_output.h"
#include "render/rgb16.h"
#include "render/save_picture.h"
#include "tests/render/render_scene.h"

namespace zemora {
namespace {

namespace fs = std::filesystem;
using testing::colour_at;
using testing::count_differences;
using testing::Rig;
using testing::textured;

/// A folder of its own for each test, removed at the end.
class Outputs : public ::testing::Test {
protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        folder_ = fs::path(::testing::TempDir()) / (std::string("zemora_out_") + info->name());
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    [[nodiscard]] std::string file(const std::string& name) const { return (folder_ / name).string(); }
    [[nodiscard]] int count_files() const {
        return static_cast<int>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator{}));
    }

    fs::path folder_;
};

Rig& hold_pair(Rig& rig, int width, int height) {
    rig.warp->left = textured(width, height, 1);
    rig.warp->right = textured(width, height, 2);
    rig.warp->width = width;
    rig.warp->height = height;
    return rig;
}

/// The file as the library reads it, unchanged.
Bitmap loaded(const std::string& path, FREE_IMAGE_FORMAT format, int flags = 0) {
    return Bitmap(FreeImage_Load(format, path.c_str(), flags));
}

TEST_F(Outputs, EveryFormatIsWrittenAndReadBack) {
    struct Row {
        const char* name;
        int compress;
        bool lossless;
    };
    for (const Row& row :
         {Row{"a.png", 1, true}, Row{"b.png", 0, true}, Row{"c.bmp", 1, true}, Row{"d.BMP", 0, true},
          Row{"e.tif", 1, true}, Row{"f.tiff", 0, true}, Row{"g.tga", 1, true}, Row{"h.jpg", 1, false}}) {
        ParameterSet set;
        set.compress_bitmap = row.compress;
        set.jpg_quality = 98;
        set.stereo_output = 1;
        Rig rig(set);
        hold_pair(rig, 61, 43);
        const StoreResult result = write_stereo(*rig.warp, file(row.name), {});
        ASSERT_EQ(result.code, 0) << result.reason;
        const LoadedPicture read = load_picture(file(row.name));
        ASSERT_EQ(read.status, LoadStatus::done) << row.name << ": " << read.reason;
        ASSERT_EQ(read.bitmap.width(), 122) << row.name;
        ASSERT_EQ(read.bitmap.bits_per_pixel(), 24) << row.name;
        const Colour pixel = colour_at(read.bitmap.picture(), 61 + 20, 11);
        const Colour wanted = colour_at(rig.warp->pair().right, 20, 11);
        EXPECT_NEAR(pixel.green, wanted.green, row.lossless ? 0 : 16) << row.name;
        if (row.lossless) {
            EXPECT_EQ(count_differences(rig.warp->pair().left, read.bitmap.picture().part(0, 0, 61, 43)), 0)
                << row.name;
        }
    }
    EXPECT_LT(fs::file_size(file("a.png")), fs::file_size(file("b.png")));
}

TEST_F(Outputs, LeftAndRightAreSeparateFilesWithResolution) {
    ParameterSet set;
    set.dots_per_inch_x = 300;
    set.dots_per_inch_y = 150;
    Rig rig(set);
    hold_pair(rig, 50, 30);
    rig.warp->frame.left_right = 4;
    rig.warp->frame.colour = {1, 2, 3};
    ASSERT_EQ(write_left_right(*rig.warp, file("x_l.png"), file("x_r.png"), {}).code, 0);
    const Bitmap left = loaded(file("x_l.png"), FIF_PNG);
    const Bitmap right = loaded(file("x_r.png"), FIF_PNG);
    ASSERT_TRUE(left && right);
    EXPECT_EQ(left.width(), 58);
    EXPECT_EQ(colour_at(left.picture(), 3, 0), (Colour{1, 2, 3}));
    EXPECT_EQ(colour_at(left.picture(), 4, 0), colour_at(rig.warp->pair().left, 0, 0));
    EXPECT_EQ(colour_at(right.picture(), 53, 29), colour_at(rig.warp->pair().right, 49, 29));
    EXPECT_EQ(FreeImage_GetDotsPerMeterX(left.handle()), 11811U);
    EXPECT_EQ(FreeImage_GetDotsPerMeterY(left.handle()), 5906U);
}

TEST_F(Outputs, WithoutStereoOutputNothingIsWritten) {
    ParameterSet set;
    set.stereo_output = 0;
    Rig rig(set);
    hold_pair(rig, 50, 30);
    EXPECT_EQ(write_stereo(*rig.warp, file("s.png"), {}).code, 0);
    EXPECT_EQ(count_files(), 0);
}

TEST_F(Outputs, FailuresNameTheFileAndLeaveNothing) {
    Rig rig;
    hold_pair(rig, 50, 30);
    const std::string missing = file("no/such/folder_l.jpg");
    const StoreResult result = write_left_right(*rig.warp, missing, file("good_r.jpg"), {});
    EXPECT_EQ(result.code, 2);
    EXPECT_NE(result.reason.find(missing), std::string::npos) << result.reason;
    EXPECT_TRUE(fs::exists(file("good_r.jpg"))) << "the other view is written";
    const StoreResult unknown = write_stereo(*rig.warp, file("s.xyz"), {});
    EXPECT_EQ(unknown.code, 2);
    EXPECT_NE(unknown.reason.find("s.xyz"), std::string::npos);
    EXPECT_EQ(write_stereo(*rig.warp, "/dev/full", {}).code, 2);
    EXPECT_EQ(count_files(), 1);
}

TEST(InksOf, TakesBlackOut) {
    EXPECT_EQ(inks_of({0, 0, 0}), (Inks{0, 0, 0, 255}));
    EXPECT_EQ(inks_of({255, 255, 255}), (Inks{0, 0, 0, 0}));
    EXPECT_EQ(inks_of({0, 0, 255}), (Inks{0, 255, 255, 0}));
    // Blue 51, green 102, red 204: black 0.2, cyan 0, magenta 0.5, yellow 0.75.
    EXPECT_EQ(inks_of({51, 102, 204}), (Inks{0, 128, 191, 51}));
}

TEST_F(Outputs, TiffFormsHaveTheirColourType) {
    struct Row {
        int format, bits;
        FREE_IMAGE_COLOR_TYPE type;
    };
    for (const Row& row : {Row{5, 24, FIC_RGB}, Row{6, 32, FIC_RGB}, Row{8, 32, FIC_CMYK}}) {
        ParameterSet set;
        set.output_format = row.format;
        Rig rig(set);
        hold_pair(rig, 40, 30);
        const std::string path = file(std::to_string(row.format).append(".tif"));
        ASSERT_EQ(write_stereo(*rig.warp, path, {}).code, 0);
        const Bitmap read = loaded(path, FIF_TIFF, TIFF_CMYK);
        ASSERT_TRUE(read);
        EXPECT_EQ(read.bits_per_pixel(), row.bits) << row.format;
        EXPECT_EQ(FreeImage_GetColorType(read.handle()), row.type) << row.format;
        if (row.format == 8) {
            const Inks wanted = inks_of(colour_at(rig.warp->pair().left, 7, 9));
            const std::uint8_t* pixel = read.bits() + 9 * read.pitch() + 7 * 4;
            EXPECT_EQ((Inks{pixel[0], pixel[1], pixel[2], pixel[3]}), wanted);
        }
    }
}

/// Writes a small CMYK output profile that turns lightness into black ink.
void write_cmyk_profile(const std::string& path) {
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsStage* table = cmsStageAllocCLut16bit(nullptr, 9, 3, 4, nullptr);
    cmsStageSampleCLut16bit(
        table,
        [](const cmsUInt16Number in[], cmsUInt16Number out[], void*) -> cmsInt32Number {
            out[0] = out[1] = out[2] = 0;
            out[3] = static_cast<cmsUInt16Number>(65535 - in[0]);
            return TRUE;
        },
        nullptr, 0);
    cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 3, 4);
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    EXPECT_TRUE(cmsWriteTag(profile, cmsSigBToA0Tag, pipeline));
    cmsPipelineFree(pipeline);
    EXPECT_TRUE(cmsSaveProfileToFile(profile, path.c_str()));
    cmsCloseProfile(profile);
}

TEST_F(Outputs, CmykByProfileGoesThroughTheProfile) {
    write_cmyk_profile(file("print.icc"));
    ParameterSet set;
    set.output_format = 9;
    set.cmyk_profile = file("print.icc");
    Rig rig(set);
    hold_pair(rig, 40, 30);
    fill(rig.warp->left.picture(), Colour{255, 255, 255});
    fill(rig.warp->right.picture(), Colour{0, 0, 0});
    const StoreResult result = write_stereo(*rig.warp, file("p.tif"), {});
    ASSERT_EQ(result.code, 0) << result.reason;
    const Bitmap read = loaded(file("p.tif"), FIF_TIFF, TIFF_CMYK);
    ASSERT_TRUE(read);
    ASSERT_EQ(FreeImage_GetColorType(read.handle()), FIC_CMYK);
    EXPECT_LT(read.bits()[3], 6) << "white takes no ink";
    EXPECT_GT(read.bits()[50 * 4 + 3], 249) << "black takes full black ink";
}

TEST_F(Outputs, AMissingProfileIsTold) {
    ParameterSet set;
    set.output_format = 9;
    set.cmyk_profile = file("none.icc");
    Rig rig(set);
    hold_pair(rig, 40, 30);
    const StoreResult result = write_stereo(*rig.warp, file("p.tif"), {});
    EXPECT_EQ(result.code, 2);
    EXPECT_NE(result.reason.find("none.icc"), std::string::npos) << result.reason;
    EXPECT_EQ(count_files(), 0);
}

/// A smooth picture in 16 bits and the same rounded to 8.
struct DeepSource {
    DeepSource(int width, int height)
        : deep(FreeImage_AllocateT(FIT_RGB16, width, height)), shallow(Bitmap::create(width, height)) {
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

TEST_F(Outputs, SixteenBitsFollowTheEightBitPictureAndAreDeeper) {
    const DeepSource source(160, 120);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, source.deep.handle(), file("deep.tif").c_str(), 0));
    ParameterSet set;
    set.output_format = 7;
    set.stereo_image_input = 2;
    Rig rig(set);
    WarpRequest request = rig.request(source.shallow, source.shallow);
    request.crop = 1;
    request.interpolation = 2;
    request.use_tone = true;
    request.correction = {3.0F, 0.01F, 0.02F, 0.01F, 0.01F, 6.0F};
    ASSERT_EQ(rig.run(request), WarpStatus::done);
    rig.warp->frame.left_right = 3;
    const SourceFiles sources{file("deep.tif"), file("deep.tif")};
    ASSERT_EQ(write_stereo(*rig.warp, file("s.tif"), sources).code, 0);
    const Bitmap read = loaded(file("s.tif"), FIF_TIFF);
    ASSERT_TRUE(read);
    ASSERT_EQ(FreeImage_GetImageType(read.handle()), FIT_RGB16);
    ASSERT_EQ(read.width(), 2 * (rig.warp->width + 6));
    for (const auto& [view, column] :
         {std::pair{rig.warp->pair().left, 3}, std::pair{rig.warp->pair().right, rig.warp->width + 9}}) {
        const DeepDifference difference = compare_deep(read, column, view);
        EXPECT_LT(std::abs(difference.mean), 0.05);
        EXPECT_LT(difference.largest, 1.6);
        EXPECT_GT(difference.odd_low_bytes, view.width * view.height / 2);
    }
}

TEST_F(Outputs, WhatWasPaintedOverIsBackgroundInSixteenBitsToo) {
    const DeepSource source(120, 90);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, source.deep.handle(), file("deep.tif").c_str(), 0));
    const Bitmap painted = source.shallow.clone();
    fill(painted.picture().part(0, 0, 30, 90), {});  // the colour of background
    ParameterSet set;
    set.output_format = 7;
    set.stereo_image_input = 2;
    Rig rig(set);
    WarpRequest request = rig.request(painted, painted);
    request.interpolation = 2;
    request.correction = {3.0F, 0.01F, 0.02F, 0.01F, 0.01F, 6.0F};
    ASSERT_EQ(rig.run(request), WarpStatus::done);
    const SourceFiles sources{file("deep.tif"), file("deep.tif"), {painted.picture(), painted.picture()}};
    const DeepPair deep = make_deep_pair(*rig.warp, sources);
    ASSERT_TRUE(deep);
    int background = 0;
    int different = 0;
    const ConstPicture bytes = rig.warp->pair().left;
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

TEST_F(Outputs, AnEnlargedViewIsEnlargedInSixteenBitsToo) {
    const DeepSource source(80, 60);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, source.deep.handle(), file("deep.tif").c_str(), 0));
    const Bitmap large = Bitmap::create(150, 113);
    RescaleScratch scratch;
    (void)rescale(source.shallow.picture(), large.picture(), scratch, RescaleFilter::bicubic,
                  RescaleFit::stretch);
    ParameterSet set;
    set.output_format = 7;
    set.stereo_image_input = 2;
    Rig rig(set);
    WarpRequest request = rig.request(large, large);
    request.interpolation = 2;
    ASSERT_EQ(rig.run(request), WarpStatus::done);
    for (ViewGeometry* record : {&rig.warp->left_record, &rig.warp->right_record}) {
        record->scaled_width = 150;
        record->scaled_height = 113;
    }
    const DeepPair deep = make_deep_pair(*rig.warp, {file("deep.tif"), file("deep.tif")});
    ASSERT_TRUE(deep);
    ASSERT_EQ(deep.left.width(), rig.warp->width);
    EXPECT_LT(compare_deep(deep.left, 0, rig.warp->pair().left).largest, 1.6);
    EXPECT_LT(compare_deep(deep.right, 0, rig.warp->pair().right).largest, 1.6);
}

TEST_F(Outputs, SixteenBitsWithoutMarginsTellThatTheFloatingWasCut) {
    const DeepSource source(60, 50);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, source.deep.handle(), file("deep.tif").c_str(), 0));
    ParameterSet set;
    set.output_format = 7;
    set.stereo_image_input = 2;
    Rig rig(set);
    ASSERT_EQ(rig.run(rig.request(source.shallow, source.shallow)), WarpStatus::done);
    rig.warp->frame.floating = 6;
    ::testing::internal::CaptureStdout();
    const StoreResult result = write_stereo(*rig.warp, file("s.tif"), {file("deep.tif"), file("deep.tif")});
    std::fflush(stdout);
    EXPECT_NE(::testing::internal::GetCapturedStdout().find("FrameFloating was too large"),
              std::string::npos);
    ASSERT_EQ(result.code, 0);
    EXPECT_EQ(loaded(file("s.tif"), FIF_TIFF).width(), 120);
}

TEST_F(Outputs, AnEightBitSourceStaysEightBits) {
    const Bitmap source = textured(60, 50);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, source.handle(), file("flat.tif").c_str(), 0));
    ParameterSet set;
    set.output_format = 7;
    Rig rig(set);
    WarpRequest request = rig.request(source, source);
    ASSERT_EQ(rig.run(request), WarpStatus::done);
    const SourceFiles sources{file("flat.tif"), file("flat.tif")};
    ASSERT_EQ(write_left_right(*rig.warp, file("l.tif"), file("r.tif"), sources).code, 0);
    EXPECT_EQ(loaded(file("r.tif"), FIF_TIFF).bits_per_pixel(), 24);
}

TEST_F(Outputs, OnlyTheViewWithADeepSourceHasSixteenBits) {
    const DeepSource source(60, 50);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, source.deep.handle(), file("deep.tif").c_str(), 0));
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, source.shallow.handle(), file("flat.tif").c_str(), 0));
    for (const bool inverse : {false, true}) {
        ParameterSet set;
        set.output_format = 7;
        set.stereo_image_input = 2;
        set.inverse_output = inverse ? 1 : 0;
        Rig rig(set);
        ASSERT_EQ(rig.run(rig.request(source.shallow, source.shallow)), WarpStatus::done);
        const SourceFiles sources{file("deep.tif"), file("flat.tif")};
        ASSERT_EQ(write_left_right(*rig.warp, file("l.tif"), file("r.tif"), sources).code, 0);
        EXPECT_EQ(loaded(file("l.tif"), FIF_TIFF).bits_per_pixel(), inverse ? 24 : 48);
        EXPECT_EQ(loaded(file("r.tif"), FIF_TIFF).bits_per_pixel(), inverse ? 48 : 24);
    }
}

TEST_F(Outputs, SqueezedAndAnaglyphSourcesStayEightBits) {
    const DeepSource source(60, 50);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, source.deep.handle(), file("deep.tif").c_str(), 0));
    for (const int layout : {3, 4}) {
        ParameterSet set;
        set.output_format = 7;
        set.stereo_image_input = layout;
        Rig rig(set);
        ASSERT_EQ(rig.run(rig.request(source.shallow, source.shallow)), WarpStatus::done);
        ASSERT_EQ(write_stereo(*rig.warp, file("s.tif"), {file("deep.tif"), file("deep.tif")}).code, 0);
        EXPECT_EQ(loaded(file("s.tif"), FIF_TIFF).bits_per_pixel(), 24) << layout;
    }
}

TEST_F(Outputs, SixteenBitHalvesOfAStereoFileFindTheirView) {
    const DeepSource source(160, 60);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, source.deep.handle(), file("both.tif").c_str(), 0));
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
        ASSERT_EQ(rig.run(rig.request(left, right)), WarpStatus::done);
        ASSERT_EQ(write_left_right(*rig.warp, file("l.tif"), file("r.tif"), {file("both.tif"), ""}).code, 0);
        const Bitmap read = loaded(file(inverse ? "r.tif" : "l.tif"), FIF_TIFF);
        ASSERT_EQ(FreeImage_GetImageType(read.handle()), FIT_RGB16);
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

class SixteenBits : public Outputs, public ::testing::WithParamInterface<DeepCase> {
protected:
    /// The pair of the case, finished.
    void mount(Rig& rig, const DeepSource& source) {
        const DeepCase& c = GetParam();
        rig.warp->interpolation_mode = c.interpolation;
        rig.warp->cropp_output = c.crop;
        rig.warp->passe_colour = {0, 30, 255};
        rig.warp->inverse_output = c.inverse;
        rig.warp->total_scale = c.scale;
        WarpRequest request = rig.request(source.shallow, source.shallow);
        request.frame_height = static_cast<int>(c.scale * static_cast<float>(source.shallow.height()));
        request.frame_width = static_cast<int>(c.scale * static_cast<float>(source.shallow.width()));
        request.crop = 1;
        request.gamma = c.gamma;
        request.interpolation = choose_interpolation(*rig.warp, c.scale);
        request.correction = {2.0F, 0.01F, 0.02F, 0.01F, 0.01F, 4.0F};
        ASSERT_EQ(rig.run(request), WarpStatus::done);
        if (c.is_framed) {
            FrameSettings& frame = rig.warp->frame;
            frame = {11, 37, 9, 6, -4, 0, 0, 2, {200, 90, 40}};
            rig.warp->texts.caption = resolve_text("Caption", {}, *rig.warp);
        }
        turn_outputs(*rig.warp);
        swap_outputs(*rig.warp);
    }
};

TEST_P(SixteenBits, ReducedToEightAreTheEightBitProducts) {
    const DeepCase& c = GetParam();
    const DeepSource source = deep_texture(203, 157);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, source.deep.handle(), file("deep.tif").c_str(), 0));
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
        EXPECT_EQ(write_left_right(*rig.warp, file("l" + end), file("r" + end), sources).code, 0);
        EXPECT_EQ(write_stereo(*rig.warp, file("s" + end), sources).code, 0);
        EXPECT_EQ(write_extra(*rig.warp, file("e" + end), sources).code, 0);
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

TEST_F(Outputs, DeepFilesArePackedWhereThatMakesThemSmaller) {
    const DeepSource smooth(300, 280);
    const Bitmap noise = create_deep(300, 280);
    std::mt19937 random(5);
    for (int y = 0; y < 280; ++y) {
        std::generate_n(deep_picture(noise).pixel(0, y), 900, [&random] { return random() & 0xFFFFU; });
    }
    constexpr std::uintmax_t kPlain = 300 * 280 * kDeepBytes;
    ParameterSet set;
    const auto size = [&](const Bitmap& picture) {
        EXPECT_EQ(save_deep_picture(picture, file("d.tif"), SaveOptions(set)), "");
        EXPECT_TRUE(is_deep(loaded(file("d.tif"), FIF_TIFF)));
        return fs::file_size(file("d.tif"));
    };
    set.compress_bitmap = 1;
    EXPECT_LT(size(smooth.deep), kPlain / 2);
    EXPECT_NEAR(static_cast<double>(size(noise)), static_cast<double>(kPlain), kPlain / 100.0);
    set.compress_bitmap = 0;
    EXPECT_GE(size(smooth.deep), kPlain);
}

TEST_F(Outputs, SixteenBitViewsFloatWithTheTrueView) {
    const DeepSource source(60, 50);
    ASSERT_TRUE(FreeImage_Save(FIF_TIFF, source.deep.handle(), file("deep.tif").c_str(), 0));
    for (const bool inverse : {false, true}) {
        ParameterSet set;
        set.output_format = 7;
        set.stereo_image_input = 2;
        set.inverse_output = inverse ? 1 : 0;
        Rig rig(set);
        ASSERT_EQ(rig.run(rig.request(source.shallow, source.shallow)), WarpStatus::done);
        swap_outputs(*rig.warp);
        rig.warp->frame.left_right = 5;
        rig.warp->frame.floating = 6;
        const SourceFiles sources{file("deep.tif"), file("deep.tif")};
        ASSERT_EQ(write_left_right(*rig.warp, file("l.tif"), file("r.tif"), sources).code, 0);
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

struct TurnCase {
    int mode;
    int column, row;  ///< where pixel column 2, row 1 of a 50 by 30 picture goes
};

class TurnedOutputs : public ::testing::TestWithParam<TurnCase> {};

TEST_P(TurnedOutputs, MoveThePixelsAsNamed) {
    const TurnCase& c = GetParam();
    ParameterSet set;
    set.rot_mir_output_left = set.rot_mir_output_right = c.mode;
    Rig rig(set);
    hold_pair(rig, 51, 31);
    rig.warp->width = 50;
    rig.warp->height = 30;
    const Colour marked = colour_at(rig.warp->pair().right, 2, 1);
    turn_outputs(*rig.warp);
    EXPECT_EQ(rig.warp->width, c.mode % 2 == 1 ? 30 : 50);
    EXPECT_EQ(rig.warp->height, c.mode % 2 == 1 ? 50 : 30);
    EXPECT_EQ(colour_at(rig.warp->pair().right, c.column, c.row), marked);
}

INSTANTIATE_TEST_SUITE_P(Modes, TurnedOutputs,
                         ::testing::Values(TurnCase{0, 2, 1}, TurnCase{1, 28, 2}, TurnCase{2, 47, 28},
                                           TurnCase{3, 1, 47}, TurnCase{4, 47, 1}, TurnCase{5, 1, 2},
                                           TurnCase{6, 2, 28}, TurnCase{7, 28, 47}));

}  // namespace
}  // namespace zemora
