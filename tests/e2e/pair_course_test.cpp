#include <gtest/gtest.h>

#include <algorithm>

#include "platform/child_process.h"
#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

int count_of(const std::string& text, const std::string& part) {
    int count = 0;
    for (auto place = text.find(part); place != std::string::npos; place = text.find(part, place + 1)) {
        ++count;
    }
    return count;
}

std::string content_of(const Workshop& workshop, const std::string& name) {
    const ChildResult result = run_child({"cat", workshop.path(name)});
    return {result.output.begin(), result.output.end()};
}

bool has_exiftool() {
    return !find_program("exiftool").empty();
}

constexpr const char* kFailedMount = "cannot be mounted";

/// A pair of one view twice: its disparity in the output is the one that the settings give it.
void save_twins(const Workshop& workshop) {
    workshop.save("foo_l.bmp", aligned_views().left.picture());
    workshop.save("foo_r.bmp", aligned_views().left.picture());
}

TEST(GivenGeometry, WindowOffsetInPixelsIsOneOfTheOutputAtEverySize) {
    for (const int width : {400, 600}) {
        Workshop workshop;
        save_twins(workshop);
        const Outcome outcome = workshop.run(
            {"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=0", "--WindowOffset=20", "--WinOffReference=0",
             "--CroppOutput=0", "--AutoOutputContrast=0", "--OutputWidth=" + std::to_string(width)});
        ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
        const Bitmap left = workshop.load("cl/foo_cl.bmp");
        const Bitmap right = workshop.load("cr/foo_cr.bmp");
        ASSERT_EQ(left.width(), width);
        const int inner = width - 120;
        EXPECT_LT(mean_difference(left.picture().part(40, 20, inner, 200),
                                  right.picture().part(60, 20, inner, 200)),
                  1.0)
            << width;
    }
}

TEST(PoorFit, IsToldMarkedAndLeavesNoRecord) {
    Workshop workshop;
    save_pair(workshop, misaligned_views(), "foo_l.jpg", "foo_r.jpg");
    const std::string before = content_of(workshop, "foo_l.jpg");
    const auto mount = [&](const char* rounds) {
        return workshop.run({"foo_l.jpg", "foo_r.jpg", "--EstimateGeometry=3", "--WriteDataBase=2",
                             "--ReportMode=1", "--OutputWidth=600", rounds});
    };
    const Outcome poor = mount("--IterativeWarp=0");
    EXPECT_TRUE(poor.tells("processed images: 1/1")) << poor.text;
    EXPECT_EQ(workshop.load("cl/foo_cl.jpg").width(), 600);
    for (const std::string& text :
         {poor.text, content_of(workshop, "zemora_report.txt"), content_of(workshop, "zemora_report.html")}) {
        EXPECT_NE(text.find("Images will be written under reverse!"), std::string::npos) << text;
        EXPECT_NE(text.find("To enhance the result, please try to enlarge the parameter IterativeWarp!"),
                  std::string::npos);
    }
    EXPECT_NE(content_of(workshop, "zemora_files.txt").find("\"foo_r.jpg\" IM\n"), std::string::npos);
    EXPECT_EQ(content_of(workshop, "foo_l.jpg"), before) << "a record of a bad fit";
    const Outcome good = mount("--IterativeWarp=10");
    EXPECT_FALSE(good.tells("under reverse")) << good.text;
    EXPECT_NE(content_of(workshop, "zemora_files.txt").find("\"foo_r.jpg\" OK "), std::string::npos);
}

TEST(PoorFit, VergenceBeyondItsLimitIsInTheReportsOnce) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    workshop.write("zemora_files.txt",
                   "\"foo_l.bmp\"   \"foo_r.bmp\" OK 0 0 0 0 0 100 100 0 0 100 100 0 0 0 8 0 1.3"
                   " 0 0.03 0 0 0 0 0 0 0 0 0 0 0 0 0 0 1 3\n");
    const Outcome outcome = workshop.run({"--PathofImages=" + workshop.folder(), "--InputMode=10",
                                          "--EstimateGeometry=2", "--OutputWidth=600", "--ReportMode=1"});
    EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    for (const std::string& text : {outcome.text, content_of(workshop, "zemora_report.txt"),
                                    content_of(workshop, "zemora_report.html")}) {
        EXPECT_EQ(count_of(text, "Fatal error, vertical image vergence is too different."), 1) << text;
    }
}

TEST(GivenGeometry, AutomaticFrameLeavesTheToneAlone) {
    const auto mounted = [](const char* frame, const char* contrast) {
        Workshop workshop;
        save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
        const Outcome outcome = workshop.run(
            {"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=0", "--FloatingTarget=99", frame, contrast});
        EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
        return workshop.load("cl/foo_cl.bmp");
    };
    const Bitmap plain = mounted("--AutoFrameFloating=0", "--AutoOutputContrast=4");
    const Bitmap framed = mounted("--AutoFrameFloating=1", "--AutoOutputContrast=4");
    const Bitmap untoned = mounted("--AutoFrameFloating=0", "--AutoOutputContrast=0");
    EXPECT_EQ(greatest_difference(plain.picture(), framed.picture()), 0);
    EXPECT_GT(greatest_difference(plain.picture(), untoned.picture()), 0) << "the tone has an effect here";
}

TEST(WithoutProducts, RecordIsTheSameAsWithThem) {
    if (!has_exiftool()) {
        GTEST_SKIP() << "no exiftool";
    }
    const auto record = [](std::vector<std::string> settings) {
        Workshop workshop;
        save_pair(workshop, aligned_views(), "foo_l.jpg", "foo_r.jpg");
        settings.insert(settings.begin(),
                        {"foo_l.jpg", "foo_r.jpg", "--EstimateGeometry=3", "--WindowOffset=40"});
        const Outcome outcome = workshop.run(settings);
        EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
        const ChildResult tag = run_child({"exiftool", "-s3", "-comment", workshop.path("foo_l.jpg")});
        return std::string(tag.output.begin(), tag.output.end());
    };
    const std::string with_products = record({});
    EXPECT_EQ(with_products.rfind("Zemora_OK", 0), 0U);
    EXPECT_EQ(record({"--LeftRightOutput=0", "--StereoOutput=0", "--AnaglyphOutput=0"}), with_products);
}

TEST(Reports, ShowTheStoredViewsByRelativeEncodedAddresses) {
    struct Row {
        const char* setting;
        const char* tag;
    };
    for (const Row& row :
         {Row{"--HtmlImages=1",
              "<img src=\"cl/a%20%231_cl.jpg\" alt=\"left thumb\" width=267>&nbsp;&nbsp;"
              "<img src=\"cr/a%20%231_cr.jpg\" alt=\"right thumb\" width=267></p>"},
          Row{"--HtmlImages=2", "<img src=\"cs/a%20%231_cs.jpg\" alt=\"anaglyph-preview\" width=560></p>"}}) {
        Workshop workshop;
        save_pair(workshop, aligned_views(), "a #1_l.jpg", "a #1_r.jpg");
        const Outcome outcome = workshop.run(
            {"a #1_l.jpg", "a #1_r.jpg", "--EstimateGeometry=-1", "--ReportMode=1", row.setting});
        ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
        EXPECT_NE(content_of(workshop, "zemora_report.html").find(row.tag), std::string::npos) << row.setting;
    }
}

TEST(FailedStore, IsNotToldAsAFailedMount) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    workshop.write("cl", "no folder");
    const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=-1"});
    EXPECT_TRUE(outcome.tells("cannot be created")) << outcome.text;
    EXPECT_FALSE(outcome.tells(kFailedMount)) << outcome.text;
}

TEST(FailedMount, IsToldAndWaitedForOnce) {
    Workshop workshop;
    Bitmap grey = Bitmap::create(400, 300);
    fill(grey.picture(), Colour{90, 90, 90});
    workshop.save("foo_l.bmp", grey.picture());
    workshop.save("foo_r.bmp", grey.picture());
    const Outcome outcome =
        workshop.run({"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=-1", "--StopAtError=3"});
    EXPECT_EQ(count_of(outcome.text, kFailedMount), 1) << outcome.text;
    const std::string behind =
        outcome.text.substr(std::min(outcome.text.find(kFailedMount), outcome.text.size()));
    EXPECT_EQ(count_of(behind, "Please hit Enter"), 2)
        << "the failure and the end of the run: " << outcome.text;
}

TEST(Metadata, ExiftoolServesSettingsThatDoNotAskForATransfer) {
    if (!has_exiftool()) {
        GTEST_SKIP() << "no exiftool";
    }
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.jpg", "foo_r.jpg");
    for (const char* name : {"foo_l.jpg", "foo_r.jpg"}) {
        ASSERT_TRUE(
            run_child({"exiftool", "-q", "-n", "-overwrite_original", "-Orientation=3", workshop.path(name)})
                .succeeded());
    }
    const Outcome outcome =
        workshop.run({"foo_l.jpg", "foo_r.jpg", "--RotMirInputLeft=-1", "--RotMirInputRight=-1",
                      "--EstimateGeometry=-1", "--DotsPerInch_y=123", "--MetaTransfer=0"});
    EXPECT_TRUE(outcome.tells("Left image according to EXIF:Orientation rotated 180 degrees"))
        << outcome.text;
    const ChildResult tag =
        run_child({"exiftool", "-s3", "-EXIF:YResolution", workshop.path("cr/foo_cr.jpg")});
    EXPECT_EQ(std::string(tag.output.begin(), tag.output.end()), "123\n");
}

TEST(PhotoshopTiff, IsReadLikeAnyOtherAndOnlyItsPairIsSkippedWhenItCannotBe) {
    if (!has_exiftool()) {
        GTEST_SKIP() << "no exiftool";
    }
    Workshop workshop;
    for (const std::string base : {"bad", "good"}) {
        save_pair(workshop, aligned_views(), base + "_l.tif", base + "_r.tif");
        ASSERT_TRUE(run_child({"exiftool", "-q", "-overwrite_original", "-Exif:Software=Adobe Photoshop CS5",
                               workshop.path(base + "_r.tif")})
                        .succeeded());
    }
    std::string damaged = read_text(workshop.path("bad_r.tif"));
    const std::string compressed{"\x03\x01\x03\0\x01\0\0\0", 8};  // the compression, and that there is none
    const std::size_t place = damaged.find(compressed);
    ASSERT_NE(place, std::string::npos);
    damaged[place + 8] = 77;
    workshop.write("bad_r.tif", damaged);
    const Outcome outcome = workshop.run({"--PathofImages=" + workshop.folder(), "--InputMode=4",
                                          "--StereoImageInput=2", "--EstimateGeometry=-1"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_TRUE(outcome.tells("Error during reading " + workshop.path("bad_r.tif"))) << outcome.text;
    EXPECT_FALSE(outcome.tells("Error during reading " + workshop.path("good_r.tif"))) << outcome.text;
    EXPECT_TRUE(workshop.files().contains("cs/good_cs.tif")) << outcome.text;
}

}  // namespace
}  // namespace zemora::test
