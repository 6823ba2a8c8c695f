#include <gtest/gtest.h>

#include <filesystem>

#include "platform/child_process.h"
#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

using Names = std::set<std::string>;

/// One aligned pair through a run that stores the products asked for, without loss and without frame.
class Products : public testing::Test {
protected:
    Products() { save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp"); }
    [[nodiscard]] Outcome run(std::vector<std::string> settings) const {
        settings.insert(settings.begin(),
                        {"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=-1", "--LeftRightOutput=0",
                         "--StereoOutput=0", "--OutputFormat=3", "--AutoOutputContrast=0"});
        return workshop.run(settings);
    }
    [[nodiscard]] Bitmap product(const std::string& name) const { return workshop.load(name); }

    Workshop workshop;
};

TEST_F(Products, TheLeftViewIsRedAndTheRightCyan) {
    (void)run({"--AnaglyphOutput=2", "--AnaglyphType=2"});
    const Bitmap anaglyph = product("ca/foo_ca.bmp");
    const ConstPicture left = aligned_views().left.picture();
    const ConstPicture right = aligned_views().right.picture();
    ASSERT_EQ(anaglyph.width(), left.width);
    int differences = 0;
    for (int y = 0; y < left.height; ++y) {
        for (int x = 0; x < left.width; ++x) {
            const std::uint8_t* pixel = anaglyph.picture().pixel(x, y);
            differences += pixel[0] != right.pixel(x, y)[0] || pixel[1] != right.pixel(x, y)[1] ||
                           pixel[2] != left.pixel(x, y)[2];
        }
    }
    EXPECT_EQ(differences, 0);
}

TEST_F(Products, InverseOutputExchangesTheColours) {
    (void)run({"--AnaglyphOutput=2", "--AnaglyphType=2", "--InverseOutput=1"});
    const Bitmap anaglyph = product("ca/foo_ca.bmp");
    EXPECT_EQ(anaglyph.picture().pixel(200, 150)[2], aligned_views().right.picture().pixel(200, 150)[2]);
    EXPECT_EQ(anaglyph.picture().pixel(200, 150)[0], aligned_views().left.picture().pixel(200, 150)[0]);
}

TEST_F(Products, AViewWithoutTheOtherIsToldByTheColourFile) {
    const Outcome missing = run({"--AnaglyphOutput=2", "--AnaglyphType=8"});
    EXPECT_EQ(missing.exit_code, 1) << missing.text;
    EXPECT_TRUE(missing.tells("zemora_colors.txt")) << missing.text;
    EXPECT_FALSE(workshop.files().contains("ca/foo_ca.bmp"));
}

struct ExtraCase {
    int format;
    const char* name;
    int width;
    int height;
};

TEST_F(Products, ExtraFormatsLieInTheirFoldersInTheirSizes) {
    // Frame 10 above, 20 below, 5 at the sides, a line of 1: a cell is 412 by 332.
    for (const ExtraCase& c : {ExtraCase{1, "ce_lrq/foo_ce-lrq.bmp", 412, 332},
                               {2, "ce_ab/foo_ce-ab.bmp", 412, 664},
                               {3, "ce_abq/foo_ce-abq.bmp", 412, 332},
                               {4, "ce_oe/foo_ce-oe.bmp", 410, 330},
                               {6, "ce_lrl/foo_ce-lrl.bmp", 1236, 332},
                               {7, "ce_lrrl/foo_ce-lrrl.bmp", 824, 644}}) {
        const Outcome outcome = run({"--ExtraOutput=" + std::to_string(c.format), "--FrameTop=10",
                                     "--FrameBottom=20", "--FrameLeftRight=5", "--ThinBlackLine=1"});
        ASSERT_TRUE(workshop.files().contains(c.name)) << c.name << outcome.text;
        const Bitmap picture = product(c.name);
        EXPECT_EQ(picture.width(), c.width) << c.name;
        EXPECT_EQ(picture.height(), c.height) << c.name;
    }
}

TEST_F(Products, AMultiPictureFileIsMountedAgain) {
    (void)run({"--ExtraOutput=5", "--OutputFormat=1"});
    ASSERT_TRUE(workshop.files().contains("ce_mpo/foo_ce.mpo"));
    const Outcome outcome = workshop.run({"ce_mpo/foo_ce.mpo", "--OutputFormat=3", "--LeftRightOutput=2",
                                          "--EstimateGeometry=-1", "--AutoOutputContrast=0"});
    EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    for (const auto& [name, view] : {std::pair{"ce_mpo/cl/foo_ce_cl.bmp", &aligned_views().left},
                                     std::pair{"ce_mpo/cr/foo_ce_cr.bmp", &aligned_views().right}}) {
        const Bitmap back = product(name);
        EXPECT_LT(mean_difference(back.picture(), view->picture()), 2.0) << name;
    }
}

TEST_F(Products, ThumbnailsOfPicturesFromElsewhereShareNoName) {
    for (const char* folder : {"p", "q"}) {
        const std::string start = std::string(folder) + '/';
        save_pair(workshop, aligned_views(), start + "l/x.bmp", start + "r/x.bmp");
    }
    std::string list;
    for (const char* folder : {"p", "q"}) {
        const std::string start = '"' + workshop.path(folder);
        list += start + "/l/x.bmp\" " + start + "/r/x.bmp\"\n";
    }
    std::filesystem::create_directory(workshop.path("home"));
    workshop.write("home/zemora_files.txt", list);
    const Outcome outcome =
        workshop.run({"--PathofImages=" + workshop.path("home"), "--InputMode=10", "--StereoImageInput=2",
                      "--EstimateGeometry=-1", "--StereoOutput=2", "--LeftRightOutput=0", "--HtmlImages=4"});
    for (const char* name : {"home/ct/x.jpg", "home/ct/x-2.jpg", "home/ct/x-3.jpg", "home/ct/x-4.jpg"}) {
        EXPECT_TRUE(workshop.files().contains(name)) << name << '\n' << outcome.text;
    }
}

TEST_F(Products, ThumbnailsStandInTheirFolderAndInTheReport) {
    (void)run({"--StereoOutput=2", "--HtmlImages=4", "--ReportMode=1"});
    for (const char* name : {"ct/foo_l.jpg", "ct/foo_r.jpg"}) {
        const Bitmap thumb = product(name);
        EXPECT_TRUE(thumb.width() == 267 || thumb.height() == 178) << name;
    }
    EXPECT_NE(read_text(workshop.path("zemora_report.html")).find("<img src=\"ct/foo_l.jpg\""),
              std::string::npos);
}

TEST_F(Products, AStepWithoutSixteenBitsSavesEightAndSaysSo) {
    const Outcome outcome = run({"--LeftRightOutput=2", "--OutputFormat=7", "--SharpenIntensity=60"});
    EXPECT_TRUE(outcome.tells("8 bits are saved: sharpening")) << outcome.text;
    (void)run({"--LeftRightOutput=2", "--IdentOutputDir=sharp", "--SharpenIntensity=60"});
    EXPECT_EQ(
        greatest_difference(product("cl/foo_cl.tif").picture(), product("clsharp/foo_cl.bmp").picture()), 0);
    const Outcome extra = run({"--LeftRightOutput=2", "--OutputFormat=7", "--ExtraOutput=4"});
    EXPECT_TRUE(extra.tells("8 bits are saved: the extra format")) << extra.text;
}

int count_of(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST_F(Products, WarningsComeOnceAPairAndWaitOnceARun) {
    save_pair(workshop, aligned_views(), "bar_l.bmp", "bar_r.bmp");
    const auto mounted = [&](std::vector<std::string> settings) {
        settings.insert(settings.begin(),
                        {"--InputMode=1", "--StereoImageInput=2", "--ImageType=bmp", "--EstimateGeometry=-1",
                         "--LeftRightOutput=2", "--StereoOutput=2", "--FrameBottom=40", "--StopAtError=3"});
        return workshop.run(settings).text;
    };
    const std::string plain = mounted({});
    const std::string long_caption = mounted({"--CaptionText=" + std::string(200, 'W')});
    EXPECT_EQ(count_of(long_caption, "WWWW'"), 2) << long_caption;
    EXPECT_EQ(count_of(long_caption, "hit Enter"), count_of(plain, "hit Enter") + 1) << long_caption;
    const std::string anaglyphs = mounted({"--AnaglyphOutput=2", "--AnaglyphType=5", "--InverseOutput=1",
                                           "--RotMirOutputLeft=4", "--StopAtError=0"});
    EXPECT_EQ(count_of(anaglyphs, "turn the glasses"), 1) << anaglyphs;
    EXPECT_EQ(count_of(anaglyphs, "turned differently"), 1) << anaglyphs;
}

TEST_F(Products, WithoutAPrintProfileTheColoursStay) {
    const Outcome outcome = run({"--LeftRightOutput=2", "--OutputFormat=9", "--CMYK_Profile=gone.icc"});
    EXPECT_TRUE(outcome.tells("gone.icc")) << outcome.text;
    EXPECT_TRUE(outcome.tells("RGB is saved")) << outcome.text;
    EXPECT_EQ(greatest_difference(product("cl/foo_cl.tif").picture(), aligned_views().left.picture()), 0);
}

TEST_F(Products, SharpeningAndGhostReductionChangeWhatIsStored) {
    (void)run({"--LeftRightOutput=2", "--IdentOutputDir=plain"});
    (void)run({"--LeftRightOutput=2", "--IdentOutputDir=sharp", "--SharpenIntensity=60"});
    (void)run({"--LeftRightOutput=2", "--IdentOutputDir=ghost", "--AutoGhostBust=10"});
    const Bitmap plain = product("clplain/foo_cl.bmp");
    EXPECT_GT(mean_difference(plain.picture(), product("clsharp/foo_cl.bmp").picture()), 0.2);
    EXPECT_GT(mean_difference(plain.picture(), product("clghost/foo_cl.bmp").picture()), 2.0);
}

TEST_F(Products, EachViewThatCannotBeStoredIsToldOnALineOfItsOwn) {
    workshop.write("cl", "no folder");
    workshop.write("cr", "no folder");
    const Outcome outcome = run({"--LeftRightOutput=2", "--ReportMode=2"});
    for (const char* name : {"cl/foo_cl.bmp: ", "cr/foo_cr.bmp: "}) {
        EXPECT_TRUE(outcome.tells("\n   " + workshop.path(name))) << outcome.text;
    }
}

TEST(ProductTags, AllProductsCarryThePictureOfTheirSource) {
    if (find_program("exiftool").empty()) {
        GTEST_SKIP() << "no exiftool";
    }
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.jpg", "foo_r.jpg");
    for (const char* name : {"foo_l.jpg", "foo_r.jpg"}) {
        ASSERT_TRUE(run_child({"exiftool", "-q", "-overwrite_original", "-Exif:Model=Twin",
                               "-IPTC:Headline=A garden", "-DateTimeOriginal=2024:05:01 10:00:00",
                               "-Exif:Orientation=6", "-Exif:ColorSpace=1", "-n", workshop.path(name)})
                        .succeeded());
    }
    const Outcome outcome = workshop.run(
        {"foo_l.jpg", "foo_r.jpg", "--EstimateGeometry=-1", "--LeftRightOutput=2", "--StereoOutput=2",
         "--AnaglyphOutput=2", "--ExtraOutput=2", "--RotMirInputLeft=0", "--RotMirInputRight=0",
         "--MetaTransfer=2", "--ExifCopyright=(c) me", "--DotsPerInch_x=300", "--DotsPerInch_y=300",
         "--FrameBottom=60", "--CaptionText=__IPTC__"});
    ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    for (const char* name :
         {"cl/foo_cl.jpg", "cr/foo_cr.jpg", "cs/foo_cs.jpg", "ca/foo_ca.jpg", "ce_ab/foo_ce-ab.jpg"}) {
        const ChildResult tags = run_child({"exiftool", "-n", "-s", "-s", "-s", "-p",
                                            "$Model|$Headline|$Copyright|$XResolution|$Orientation|$Software|"
                                            "$FileModifyDate|$ProfileDescription",
                                            workshop.path(name)});
        const std::string text(tags.output.begin(), tags.output.end());
        // The sources lie, and were to stay so.
        EXPECT_EQ(text.find("Twin|A garden|(c) me|300|6|zemora 0.9i4: nearpoint="), 0U)
            << name << ": " << text;
        EXPECT_NE(text.find("|2024:05:01 10:00:00"), std::string::npos) << name << ": " << text;
        EXPECT_NE(text.find("sRGB"), std::string::npos) << name << ": " << text;
    }
}

TEST(CalibrationImage, IsAllThatAFrontEndGets) {
    Workshop workshop;
    const Outcome outcome = workshop.run({"--PathofImages=" + workshop.folder(), "/GI=1050"});
    EXPECT_EQ(outcome.exit_code, 1) << outcome.text;
    EXPECT_EQ(workshop.files(), Names{"tintrovela_print_050.tif"});
}

}  // namespace
}  // namespace zemora::test
