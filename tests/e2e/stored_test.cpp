#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>

#include "input/stored_record.h"
#include "platform/child_process.h"
#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

using Names = std::set<std::string>;

/// A tag of a file as exiftool prints it.
std::string tag_of(const Workshop& workshop, const std::string& name, const std::string& tag) {
    const ChildResult result = run_child({"exiftool", "-s", "-s", "-s", "-n", tag, workshop.path(name)});
    std::string text(result.output.begin(), result.output.end());
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

bool has_exiftool() {
    return !find_program("exiftool").empty();
}

TEST(GivenGeometry, KeysWithTheTruthAlignThePair) {
    Workshop workshop;
    save_pair(workshop, misaligned_views(), "foo_l.bmp", "foo_r.bmp");
    const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=0", "--UseHeight=8",
                                          "--UseSize=1", "--UseRotation=0.6", "--UseVergence_V=0.3"});
    ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    EXPECT_LT(median_vertical_error(workshop.load("cl/foo_cl.bmp").picture(),
                                    workshop.load("cr/foo_cr.bmp").picture(), 10),
              0.3);
}

class StoredRecord : public testing::TestWithParam<std::tuple<const char*, int>> {};

TEST_P(StoredRecord, GivesTheSamePictureAgain) {
    if (!has_exiftool()) {
        GTEST_SKIP() << "no exiftool";
    }
    const auto& [suffix, sign] = GetParam();
    const std::string left = std::string("foo_l") + suffix;
    const std::string right = std::string("foo_r") + suffix;
    Workshop workshop;
    save_pair(workshop, misaligned_views(), left, right);
    const auto mode = [sign = sign](int value) {
        return "--EstimateGeometry=" + std::to_string(sign * value);
    };
    Outcome outcome =
        workshop.run({left, right, mode(3), "--OutputFormat=3", "--StereoOutput=0", "--PathofOutput=first"});
    ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    const std::string tag = std::string(suffix) == ".jpg" ? "-comment" : "-IPTC:SpecialInstructions";
    EXPECT_EQ(tag_of(workshop, left, tag).rfind("Zemora_OK_V1.0 ", 0), 0U);
    EXPECT_EQ(tag_of(workshop, right, tag).empty(), sign < 0);
    outcome =
        workshop.run({left, right, mode(4), "--OutputFormat=3", "--StereoOutput=0", "--PathofOutput=second"});
    ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    EXPECT_FALSE(outcome.tells("iterative")) << "measured again: " << outcome.text;
    const Bitmap first = workshop.load("first/cl/foo_cl.bmp");
    const Bitmap second = workshop.load("second/cl/foo_cl.bmp");
    EXPECT_NEAR(first.width(), second.width(), 2);
    EXPECT_NEAR(first.height(), second.height(), 2);
    EXPECT_LT(median_vertical_error(second.picture(), workshop.load("second/cr/foo_cr.bmp").picture(), 10),
              0.4);
}

INSTANTIATE_TEST_SUITE_P(Table, StoredRecord,
                         testing::Combine(testing::Values(".jpg", ".tif"), testing::Values(1, -1)));

struct FallbackCase {
    const char* name;
    const char* suffix;
    const char* left_comment;
    const char* right_comment;
    const char* told;
};

class RecordFallback : public testing::TestWithParam<FallbackCase> {};

TEST_P(RecordFallback, PairIsMeasuredWhereNoRecordCounts) {
    if (!has_exiftool()) {
        GTEST_SKIP() << "no exiftool";
    }
    const FallbackCase& c = GetParam();
    Workshop workshop;
    const std::string left = std::string("foo_l") + c.suffix;
    const std::string right = std::string("foo_r") + c.suffix;
    save_pair(workshop, aligned_views(), left, right);
    for (const auto& [name, comment] : {std::pair{left, c.left_comment}, std::pair{right, c.right_comment}}) {
        if (comment[0] != '\0') {
            ASSERT_TRUE(run_child({"exiftool", "-q", "-overwrite_original",
                                   std::string("-comment=") + comment, workshop.path(name)})
                            .succeeded());
        }
    }
    const Outcome outcome = workshop.run({left, right, "--EstimateGeometry=4", "--StereoOutput=0"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_TRUE(outcome.tells(c.told)) << outcome.text;
    EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    EXPECT_TRUE(outcome.tells("iterative")) << outcome.text;
}

INSTANTIATE_TEST_SUITE_P(
    Table, RecordFallback,
    testing::Values(FallbackCase{"none", ".jpg", "", "", "values from image are not valid"},
                    FallbackCase{"foreign", ".jpg", "My holidays", "My holidays",
                                 "values from image are not valid"},
                    FallbackCase{"cut_off", ".jpg", "Zemora_OK_V1.0 0.0 0.0", "Zemora_OK_V1.0 0.0 0.0",
                                 "values from image are not valid"},
                    FallbackCase{"bmp", ".bmp", "", "", "Wrong image type"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(RecordOfAnotherCrop, IsToldAndAppliedWithoutItsSelection) {
    if (!has_exiftool()) {
        GTEST_SKIP() << "no exiftool";
    }
    StoredCorrectionRecord record = empty_record();
    record[kRecordHeight] = 1.5;
    record[kRecordRatio] = 1.33;
    record[kRecordLeftWidth] = record[kRecordLeftHeight] = 100.0;
    record[kRecordRightWidth] = record[kRecordRightHeight] = 100.0;
    record[kRecordSelectionLeft] = record[kRecordSelectionBottom] = 0.3;
    record[kRecordSelectionRight] = record[kRecordSelectionTop] = 0.8;
    record[kRecordCroppOutput] = 2;
    for (const bool same_crop : {true, false}) {
        Workshop workshop;
        save_pair(workshop, aligned_views(), "foo_l.jpg", "foo_r.jpg");
        for (const char* name : {"foo_l.jpg", "foo_r.jpg"}) {
            ASSERT_TRUE(run_child({"exiftool", "-q", "-overwrite_original", "-comment=" + record_text(record),
                                   workshop.path(name)})
                            .succeeded());
        }
        const Outcome outcome =
            workshop.run({"foo_l.jpg", "foo_r.jpg", "--EstimateGeometry=4", "--StereoOutput=0", "--OutputWidth=900",
                          "--OutputHeight=500", same_crop ? "--CroppOutput=2" : "--CroppOutput=3"});
        EXPECT_TRUE(outcome.tells("were read successfully from the image. Extract:\nHeight =  1.50, Size =  0.00"))
            << outcome.text;
        EXPECT_NE(outcome.tells("Selection information stored in image will be ignored!"), same_crop) << outcome.text;
        EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    }
}

TEST(Metadata, TagsProfileAndTimesGoWithThePicture) {
    if (!has_exiftool()) {
        GTEST_SKIP() << "no exiftool";
    }
    Workshop workshop;
    workshop.environment = {"TZ=UTC"};
    save_pair(workshop, aligned_views(), "foo_l.jpg", "foo_r.jpg");
    for (const char* name : {"foo_l.jpg", "foo_r.jpg"}) {
        ASSERT_TRUE(
            run_child({"exiftool", "-q", "-overwrite_original", "-DateTimeOriginal=2001:09:09 01:46:41",
                       "-Make=Tester", "-Orientation=Horizontal (normal)", "-EXIF:ColorSpace=sRGB",
                       workshop.path(name)})
                .succeeded());
    }
    const Outcome outcome =
        workshop.run({"foo_l.jpg", "foo_r.jpg", "--MetaTransfer=2", "--ExifCopyright=me & \"you\" 100%",
                      "--DotsPerInch_x=240", "--EstimateGeometry=-1"});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_FALSE(outcome.tells("No success")) << outcome.text;
    for (const char* name : {"cl/foo_cl.jpg", "cr/foo_cr.jpg", "cs/foo_cs.jpg"}) {
        EXPECT_EQ(tag_of(workshop, name, "-Make"), "Tester") << name;
        EXPECT_EQ(tag_of(workshop, name, "-DateTimeOriginal"), "2001:09:09 01:46:41") << name;
        EXPECT_EQ(tag_of(workshop, name, "-Copyright"), "me & \"you\" 100%") << name;
        EXPECT_EQ(tag_of(workshop, name, "-EXIF:XResolution"), "240") << name;
        EXPECT_FALSE(tag_of(workshop, name, "-ICC_Profile:ProfileDescription").empty()) << name;
        int near_point = 0;
        int far_point = 0;
        int deviation = 0;
        EXPECT_EQ(std::sscanf(tag_of(workshop, name, "-Software").c_str(),
                              "zemora 0.9i4: nearpoint= %d, farpoint= %d, deviation= %d", &near_point,
                              &far_point, &deviation),
                  3);
        EXPECT_NEAR(far_point - near_point, deviation, 1);
        struct stat status = {};
        stat(workshop.path(name).c_str(), &status);
        EXPECT_EQ(status.st_mtime, 1'000'000'001) << name;
    }
}

TEST(Metadata, OrientationOfTheFileTurnsTheView) {
    if (!has_exiftool()) {
        GTEST_SKIP() << "no exiftool";
    }
    Workshop workshop;
    workshop.settings.push_back("--MetaTransfer=1");
    save_pair(workshop, aligned_views(), "foo_l.jpg", "foo_r.jpg");
    for (const char* name : {"foo_l.jpg", "foo_r.jpg"}) {
        ASSERT_TRUE(
            run_child({"exiftool", "-q", "-n", "-overwrite_original", "-Orientation=3", workshop.path(name)})
                .succeeded());
    }
    const Outcome outcome =
        workshop.run({"foo_l.jpg", "foo_r.jpg", "--RotMirInputLeft=-1", "--RotMirInputRight=-1",
                      "--EstimateGeometry=-1", "--AutoOutputContrast=0"});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("rotated 180 degrees")) << outcome.text;
    const Bitmap left = workshop.load("cl/foo_cl.jpg");
    Bitmap turned = Bitmap::create(400, 300);
    for (int y = 0; y < 300; ++y) {
        for (int x = 0; x < 400; ++x) {
            std::copy_n(aligned_views().left.picture().pixel(399 - x, 299 - y), kPixelBytes,
                        turned.picture().pixel(x, y));
        }
    }
    EXPECT_LT(mean_difference(left.picture(), turned.picture()), 3.0);
    EXPECT_EQ(tag_of(workshop, "cl/foo_cl.jpg", "-Orientation"), "1");
}

TEST(Metadata, MissingExiftoolIsToldOnceAndThePairIsMounted) {
    for (const char* need : {"--EstimateGeometry=3", "--MetaTransfer=1", "--ImageText=-__IPTC__"}) {
        Workshop workshop;
        workshop.environment = {"PATH=/nowhere"};
        save_pair(workshop, aligned_views(), "foo_l.jpg", "foo_r.jpg");
        const Outcome outcome = workshop.run({"foo_l.jpg", "foo_r.jpg", "--EstimateGeometry=1", need});
        EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
        const std::string warning = "exiftool.exe couldn't be found";
        const auto first = outcome.text.find(warning);
        ASSERT_NE(first, std::string::npos) << need << '\n' << outcome.text;
        EXPECT_EQ(outcome.text.find(warning, first + 1), std::string::npos) << outcome.text;
        EXPECT_EQ(workshop.files(),
                  (Names{"cl/foo_cl.jpg", "cr/foo_cr.jpg", "cs/foo_cs.jpg", "foo_l.jpg", "foo_r.jpg"}));
    }
}

}  // namespace
}  // namespace zemora::test
