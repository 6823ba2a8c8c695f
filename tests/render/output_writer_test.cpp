#include "render/output_writer.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "codec/library.h"
#include "input/picture_file.h"
#include "render/cmyk.h"
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
    rig.warped.left = textured(width, height, 1);
    rig.warped.right = textured(width, height, 2);
    rig.warped.width = width;
    rig.warped.height = height;
    return rig;
}

/// The file as the library reads it, unchanged.
Bitmap loaded(const std::string& path, FREE_IMAGE_FORMAT format, int flags = 0) {
    return LibraryBitmap::owner(FreeImage_Load(format, path.c_str(), flags));
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
        const StoreResult result = rig.write_stereo(file(row.name), {});
        ASSERT_EQ(result.code, 0) << result.reason;
        const LoadedPicture read = load_picture(file(row.name));
        ASSERT_EQ(read.status, LoadStatus::done) << row.name << ": " << read.reason;
        ASSERT_EQ(read.bitmap.width(), 122) << row.name;
        ASSERT_EQ(read.bitmap.bits_per_pixel(), 24) << row.name;
        const Colour pixel = colour_at(read.bitmap.picture(), 61 + 20, 11);
        const Colour wanted = colour_at(rig.warped.pair().right, 20, 11);
        EXPECT_NEAR(pixel.green, wanted.green, row.lossless ? 0 : 16) << row.name;
        if (row.lossless) {
            EXPECT_EQ(count_differences(rig.warped.pair().left, read.bitmap.picture().part(0, 0, 61, 43)), 0)
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
    rig.frame.left_right = 4;
    rig.frame.colour = {1, 2, 3};
    ASSERT_EQ(rig.write_left_right(file("x_l.png"), file("x_r.png"), {}).code, 0);
    const Bitmap left = loaded(file("x_l.png"), FIF_PNG);
    const Bitmap right = loaded(file("x_r.png"), FIF_PNG);
    ASSERT_TRUE(left && right);
    EXPECT_EQ(left.width(), 58);
    EXPECT_EQ(colour_at(left.picture(), 3, 0), (Colour{1, 2, 3}));
    EXPECT_EQ(colour_at(left.picture(), 4, 0), colour_at(rig.warped.pair().left, 0, 0));
    EXPECT_EQ(colour_at(right.picture(), 53, 29), colour_at(rig.warped.pair().right, 49, 29));
    EXPECT_EQ(FreeImage_GetDotsPerMeterX(LibraryBitmap::of(left)), 11811U);
    EXPECT_EQ(FreeImage_GetDotsPerMeterY(LibraryBitmap::of(left)), 5906U);
}

TEST_F(Outputs, FailuresNameTheFileAndLeaveNothing) {
    Rig rig;
    hold_pair(rig, 50, 30);
    const std::string missing = file("no/such/folder_l.jpg");
    const StoreResult result = rig.write_left_right(missing, file("good_r.jpg"), {});
    EXPECT_EQ(result.code, 2);
    EXPECT_NE(result.reason.find(missing), std::string::npos) << result.reason;
    EXPECT_TRUE(fs::exists(file("good_r.jpg"))) << "the other view is written";
    const StoreResult unknown = rig.write_stereo(file("s.xyz"), {});
    EXPECT_EQ(unknown.code, 2);
    EXPECT_NE(unknown.reason.find("s.xyz"), std::string::npos);
    EXPECT_EQ(rig.write_stereo("/dev/full", {}).code, 2);
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
        ASSERT_EQ(rig.write_stereo(path, {}).code, 0);
        const Bitmap read = loaded(path, FIF_TIFF, TIFF_CMYK);
        ASSERT_TRUE(read);
        EXPECT_EQ(read.bits_per_pixel(), row.bits) << row.format;
        EXPECT_EQ(FreeImage_GetColorType(LibraryBitmap::of(read)), row.type) << row.format;
        if (row.format == 8) {
            const Inks wanted = inks_of(colour_at(rig.warped.pair().left, 7, 9));
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
    fill(rig.warped.left.picture(), Colour{255, 255, 255});
    fill(rig.warped.right.picture(), Colour{0, 0, 0});
    const StoreResult result = rig.write_stereo(file("p.tif"), {});
    ASSERT_EQ(result.code, 0) << result.reason;
    const Bitmap read = loaded(file("p.tif"), FIF_TIFF, TIFF_CMYK);
    ASSERT_TRUE(read);
    ASSERT_EQ(FreeImage_GetColorType(LibraryBitmap::of(read)), FIC_CMYK);
    EXPECT_LT(read.bits()[3], 6) << "white takes no ink";
    EXPECT_GT(read.bits()[50 * 4 + 3], 249) << "black takes full black ink";
}

TEST_F(Outputs, AMissingProfileIsTold) {
    ParameterSet set;
    set.output_format = 9;
    set.cmyk_profile = file("none.icc");
    Rig rig(set);
    hold_pair(rig, 40, 30);
    const StoreResult result = rig.write_stereo(file("p.tif"), {});
    EXPECT_EQ(result.code, 2);
    EXPECT_NE(result.reason.find("none.icc"), std::string::npos) << result.reason;
    EXPECT_EQ(count_files(), 0);
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
    rig.warped.width = 50;
    rig.warped.height = 30;
    const Colour marked = colour_at(rig.warped.pair().right, 2, 1);
    rig.arrange();
    EXPECT_EQ(rig.warped.width, c.mode % 2 == 1 ? 30 : 50);
    EXPECT_EQ(rig.warped.height, c.mode % 2 == 1 ? 50 : 30);
    EXPECT_EQ(colour_at(rig.warped.pair().right, c.column, c.row), marked);
}

INSTANTIATE_TEST_SUITE_P(Modes, TurnedOutputs,
                         ::testing::Values(TurnCase{0, 2, 1}, TurnCase{1, 28, 2}, TurnCase{2, 47, 28},
                                           TurnCase{3, 1, 47}, TurnCase{4, 47, 1}, TurnCase{5, 1, 2},
                                           TurnCase{6, 2, 28}, TurnCase{7, 28, 47}));

}  // namespace
}  // namespace zemora
