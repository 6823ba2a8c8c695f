#include <FreeImage.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "numerics/turn.h"
#include "platform/child_process.h"
#include "tests/e2e/workshop.h"
#include "tests/input/generated_mpo.h"
#include "tests/support/raw_picture.h"

namespace zemora::test {
namespace {

using Names = std::set<std::string>;

TEST(InputForms, AMultiPictureFileIsMountedAndNothingElseIsLeft) {
    Workshop workshop;
    const GeneratedMpo mpo = make_mpo({}, misaligned_views().left, misaligned_views().right);
    workshop.write("foo.mpo", {mpo.bytes.begin(), mpo.bytes.end()});
    const Outcome outcome = workshop.run({"foo.mpo", "--StereoImageInput=1"});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    ASSERT_EQ(workshop.files(), (Names{"cl/foo_cl.jpg", "cr/foo_cr.jpg", "cs/foo_cs.jpg", "foo.mpo"}));
    const Bitmap left = workshop.load("cl/foo_cl.jpg");
    const Bitmap right = workshop.load("cr/foo_cr.jpg");
    EXPECT_LT(median_vertical_error(left.picture(), right.picture(), 14), 0.3);
}

TEST(InputForms, ABrokenMultiPictureFileIsSkippedWithItsName) {
    Workshop workshop;
    const GeneratedMpo mpo = make_mpo({}, aligned_views().left, aligned_views().right);
    workshop.write("foo.mpo", {mpo.left.begin(), mpo.left.end()});
    const Outcome outcome = workshop.run({"foo.mpo", "--StereoImageInput=1"});
    EXPECT_TRUE(outcome.tells("jpg-header of second image couldn't be found")) << outcome.text;
    EXPECT_TRUE(outcome.tells("foo.mpo: the second picture is not found")) << outcome.text;
    EXPECT_EQ(workshop.files(), Names{"foo.mpo"});
}

/// Paints a frame of blue over the borders of a view, tilted by four pixels along its width.
Bitmap framed(const Bitmap& view, Colour frame) {
    Bitmap result = view.clone();
    const Picture picture = result.picture();
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const int lean_x = 4 * y / picture.height;
            const int lean_y = 4 * x / picture.width;
            const int inside = std::min({x - 30 - lean_x, picture.width - 40 + lean_x - x, y - 25 - lean_y,
                                         picture.height - 35 + lean_y - y});
            if (inside < 0) {
                std::uint8_t* pixel = picture.pixel(x, y);
                pixel[0] = frame.blue;
                pixel[1] = frame.green;
                pixel[2] = frame.red;
            }
        }
    }
    return result;
}

/// Share of the pixels near a colour.
double share_of(ConstPicture picture, Colour colour) {
    int count = 0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const std::uint8_t* p = picture.pixel(x, y);
            count +=
                std::abs(p[0] - colour.blue) + std::abs(p[1] - colour.green) + std::abs(p[2] - colour.red) <
                        40
                    ? 1
                    : 0;
        }
    }
    return static_cast<double>(count) / picture.height / picture.width;
}

TEST(InputForms, FramesOfAllKindsAreGoneFromTheMountedPair) {
    constexpr Colour kFrame{160, 0, 0};
    const Bitmap left = framed(misaligned_views().left, kFrame);
    const Bitmap right = framed(misaligned_views().right, kFrame);
    for (const char* mode :
         {"--Passepartout=1", "--Passepartout=2", "--Passepartout=3", "--Passepartout=4"}) {
        Workshop workshop;
        workshop.save("foo_l.bmp", left.picture());
        workshop.save("foo_r.bmp", right.picture());
        const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp", mode, "--PasseColorBlue=160"});
        ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
        const Bitmap mounted = workshop.load("cl/foo_cl.bmp");
        EXPECT_GT(mounted.width(), 760) << mode;
        EXPECT_GT(mounted.height(), 580) << mode;
        EXPECT_LT(share_of(mounted.picture(), kFrame), 0.0005) << mode;
        EXPECT_LT(median_vertical_error(mounted.picture(), workshop.load("cr/foo_cr.bmp").picture(), 14), 0.4)
            << mode;
    }
}

struct SuffixRow {
    const char* suffix;
    const char* product;
};

class InputSuffixes : public testing::TestWithParam<SuffixRow> {};

TEST_P(InputSuffixes, AreKeptOrReplacedByTheUsualOne) {
    Workshop workshop;
    const std::string suffix = GetParam().suffix;
    const bool is_jpeg = std::string(GetParam().product) == ".jpg";
    for (const auto& [name, view] :
         {std::pair{"foo_l", &aligned_views().left}, std::pair{"foo_r", &aligned_views().right}}) {
        const FileBytes bytes = encoded(*view, is_jpeg ? FIF_JPEG : FIF_PPMRAW);
        workshop.write(name + suffix, {bytes.begin(), bytes.end()});
    }
    const Outcome outcome = workshop.run({"foo_l" + suffix, "foo_r" + suffix, "--EstimateGeometry=-1",
                                          "--LeftRightOutput=0", "--MetaTransfer=1"});
    const std::string product = std::string("cs/foo_cs") + GetParam().product;
    ASSERT_TRUE(workshop.files().contains(product)) << outcome.text;
    EXPECT_EQ(workshop.load(product).width(), 800);
    EXPECT_EQ(outcome.tells("EXIF operation"), is_jpeg && !find_program("exiftool").empty()) << outcome.text;
}

INSTANTIATE_TEST_SUITE_P(Table, InputSuffixes,
                         testing::Values(SuffixRow{".jps", ".jpg"}, SuffixRow{".JFIF", ".jpg"},
                                         SuffixRow{".jpe", ".jpg"}, SuffixRow{".pgm", ".pgm"}));

TEST(InputForms, TwoPicturesInOneFileAreFoundUnderAnyName) {
    const GeneratedMpo mpo = make_mpo({}, aligned_views().left, aligned_views().right);
    GeneratedMpo preview = mpo;  // of the same build, but the second picture is no view
    const FileBytes views{2, 0, 2, 0};
    const auto second =
        std::find_end(preview.bytes.begin(), preview.bytes.begin() + 1000, views.begin(), views.end());
    ASSERT_NE(second, preview.bytes.begin() + 1000);
    *second = 1;
    for (const auto& [name, file, told, width] : {std::tuple{"foo.jpg", &mpo, true, 800},
                                                  {"foo.Mpo", &mpo, false, 800},
                                                  {"foo.jpg", &preview, false, 400}}) {
        Workshop workshop;
        workshop.write(name, {file->bytes.begin(), file->bytes.end()});
        const Outcome outcome = workshop.run({name, "--EstimateGeometry=-1", "--LeftRightOutput=0"});
        EXPECT_EQ(outcome.tells("holds two pictures"), told) << outcome.text;
        EXPECT_EQ(workshop.load("cs/foo_cs.jpg").width(), width) << outcome.text;
    }
    Workshop workshop;
    workshop.write("foo.jpg", {mpo.bytes.begin(), mpo.bytes.end()});
    const Outcome outcome = workshop.run({workshop.folder(), "--EstimateGeometry=-1"});
    EXPECT_TRUE(outcome.tells("multi-picture files: each holds both views")) << outcome.text;
    EXPECT_EQ(workshop.load("cl/foo_cl.jpg").width(), 400) << outcome.text;
}

struct LyingRow {
    const char* name;
    const char* left_tag;
    const char* right_tag;
    std::vector<std::string> settings;
    bool turned;
    const char* product_tag;  ///< Of the right view.
    bool told;
    const char* left_product_tag = nullptr;  ///< Where it is another one.
};

class LyingViews : public testing::TestWithParam<LyingRow> {};

TEST_P(LyingViews, AreTurnedUnlessTheUserSaysOtherwise) {
    if (find_program("exiftool").empty()) {
        GTEST_SKIP() << "no exiftool";
    }
    Workshop workshop;
    for (const auto& [name, view, tag] :
         {std::tuple{"foo_l.jpg", &aligned_views().left, GetParam().left_tag},
          std::tuple{"foo_r.jpg", &aligned_views().right, GetParam().right_tag}}) {
        constexpr int kToTheLeft = 1;
        Bitmap lying = Bitmap::create(view->height(), view->width());
        turn_pixels({view->picture().bits, view->picture().pitch}, view->width(), view->height(), kPixelBytes,
                    kToTheLeft, {lying.bits(), lying.pitch()});
        workshop.save(name, lying.picture());
        ASSERT_TRUE(run_child({"exiftool", "-q", "-n", "-overwrite_original", "-Exif:Model=Twin",
                               std::string("-Exif:Orientation=") + tag, workshop.path(name)})
                        .succeeded());
    }
    std::vector<std::string> call{"foo_l.jpg", "foo_r.jpg", "--EstimateGeometry=-1", "--LeftRightOutput=2",
                                  "--MetaTransfer=1"};
    call.insert(call.end(), GetParam().settings.begin(), GetParam().settings.end());
    const Outcome outcome = workshop.run(call);
    const Bitmap product = workshop.load("cr/foo_cr.jpg");
    EXPECT_EQ(product.width(), GetParam().turned ? 400 : 300) << outcome.text;
    EXPECT_EQ(outcome.tells("not upright"), GetParam().told) << outcome.text;
    const auto tag_of = [&workshop](const char* name) {
        const ChildResult tags =
            run_child({"exiftool", "-n", "-s", "-s", "-s", "-Orientation", workshop.path(name)});
        return std::string(tags.output.begin(), tags.output.end()).substr(0, 1);
    };
    const LyingRow& row = GetParam();
    EXPECT_EQ(tag_of("cr/foo_cr.jpg"), row.product_tag);
    if (row.left_product_tag != nullptr) {
        EXPECT_EQ(tag_of("cl/foo_cl.jpg"), row.left_product_tag);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, LyingViews,
    testing::Values(
        LyingRow{"unset", "6", "6", {}, true, "1", true},
        LyingRow{"unset_and_upright", "1", "1", {}, false, "1", false},
        LyingRow{"unset_and_one_untold", "", "6", {}, false, "6", false},
        LyingRow{"unset_and_right_untold", "6", "", {}, false, "", false, "6"},
        LyingRow{"zero", "6", "6", {"--RotMirInputLeft=0", "/RR=0"}, false, "6", false},
        LyingRow{"from_file", "6", "6", {"--RotMirInputLeft=-1", "--RotMirInputRight=-1"}, true, "1", false},
        LyingRow{"turned_after_all",
                 "6",
                 "6",
                 {"--RotMirInputLeft=0", "--RotMirOutputLeft=3", "--RotMirOutputRight=3"},
                 true,
                 "1",
                 false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(LyingRaw, IsTurnedOnceWhateverIsSet) {
    for (const std::vector<std::string>& settings :
         {std::vector<std::string>{}, {"--RotMirInputLeft=-1", "--RotMirInputRight=-1"}}) {
        Workshop workshop;
        for (const auto& [name, view] : {std::pair{"foo_l.dng", &aligned_views().left},
                                         std::pair{"foo_r.dng", &aligned_views().right}}) {
            const ConstPicture upright = view->picture();
            const auto file = raw_picture(300, 400, 6, [&upright](unsigned x, unsigned y) {
                return 257 * upright.pixel(399 - static_cast<int>(y), 299 - static_cast<int>(x))[1];
            });
            workshop.write(name, {file.begin(), file.end()});
        }
        std::vector<std::string> call{"foo_l.dng", "foo_r.dng", "--EstimateGeometry=-1",
                                      "--LeftRightOutput=2", "--OutputFormat=7"};
        call.insert(call.end(), settings.begin(), settings.end());
        const Outcome outcome = workshop.run(call);
        EXPECT_EQ(workshop.load("cl/foo_cl.tif").width(), 400) << outcome.text;
        EXPECT_TRUE(outcome.tells("8 bits are saved")) << outcome.text;
    }
}

}  // namespace
}  // namespace zemora::test
