#include <gtest/gtest.h>

#include <sstream>

#include "codec/library.h"
#include "tests/e2e/workshop.h"
#include "tests/support/pictures.h"

namespace zemora::test {
namespace {

using Names = std::set<std::string>;
using Arguments = std::vector<std::string>;

Arguments joined(Arguments first, const Arguments& more) {
    first.insert(first.end(), more.begin(), more.end());
    return first;
}

TEST(Mounting, MisalignedPairComesOutAlignedInAllProducts) {
    Workshop workshop;
    save_pair(workshop, misaligned_views(), "foo_l.bmp", "foo_r.bmp");
    const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp"});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    ASSERT_EQ(workshop.files(),
              (Names{"cl/foo_cl.bmp", "cr/foo_cr.bmp", "cs/foo_cs.bmp", "foo_l.bmp", "foo_r.bmp"}));
    const Bitmap left = workshop.load("cl/foo_cl.bmp");
    const Bitmap right = workshop.load("cr/foo_cr.bmp");
    const Bitmap both = workshop.load("cs/foo_cs.bmp");
    EXPECT_GT(left.width(), 820);
    EXPECT_GT(left.height(), 640);
    constexpr int kReach = 14;
    EXPECT_GT(
        median_vertical_error(misaligned_views().left.picture(), misaligned_views().right.picture(), kReach),
        4.0);
    EXPECT_LT(median_vertical_error(left.picture(), right.picture(), kReach), 0.3);
    ASSERT_EQ(both.width(), 2 * left.width());
    EXPECT_EQ(greatest_difference(both.picture().part(0, 0, left.width(), left.height()), left.picture()), 0);
    EXPECT_EQ(greatest_difference(both.picture().part(left.width(), 0, left.width(), left.height()),
                                  right.picture()),
              0);
}

/// A pair without errors, neither measured nor toned: its pixels arrive as they are.
struct PlainRun {
    Workshop workshop;
    Arguments arguments{"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=-1", "--AutoOutputContrast=0"};
    const Bitmap& left = aligned_views().left;
    const Bitmap& right = aligned_views().right;

    PlainRun() { save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp"); }
    void run(const Arguments& more) {
        const Outcome outcome = workshop.run(joined(arguments, more));
        ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
        ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    }
};

TEST(PlainPair, ViewsStayAsTheyAreWithoutMeasuring) {
    PlainRun plain;
    plain.run({});
    EXPECT_EQ(greatest_difference(plain.workshop.load("cl/foo_cl.bmp").picture(), plain.left.picture()), 0);
    EXPECT_EQ(greatest_difference(plain.workshop.load("cr/foo_cr.bmp").picture(), plain.right.picture()), 0);
}

TEST(PlainPair, InverseOutputExchangesTheViews) {
    PlainRun plain;
    plain.run({"--InverseOutput=1"});
    EXPECT_EQ(greatest_difference(plain.workshop.load("cl/foo_cl.bmp").picture(), plain.right.picture()), 0);
    const Bitmap both = plain.workshop.load("cs/foo_cs.bmp");
    EXPECT_EQ(greatest_difference(both.picture().part(400, 0, 400, 300), plain.left.picture()), 0);
}

TEST(PlainPair, StereoFileIsSplitAndNamedByItsBase) {
    Workshop workshop;
    Bitmap both = Bitmap::create(801, 300);
    copy(aligned_views().left.picture(), both.picture().part(0, 0, 400, 300));
    copy(aligned_views().right.picture(), both.picture().part(400, 0, 400, 300));
    workshop.save("foo_s.bmp", both.picture());
    const Outcome outcome = workshop.run({"foo_s.bmp", "--EstimateGeometry=-1", "--AutoOutputContrast=0"});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    ASSERT_EQ(workshop.files(), (Names{"cl/foo_cl.bmp", "cr/foo_cr.bmp", "cs/foo_cs.bmp", "foo_s.bmp"}))
        << outcome.text;
    EXPECT_EQ(greatest_difference(workshop.load("cr/foo_cr.bmp").picture(), aligned_views().right.picture()),
              0);
}

TEST(PlainPair, TurnedOutputsAreTurned) {
    PlainRun plain;
    plain.run({"--RotMirOutputLeft=1", "--RotMirOutputRight=7"});
    const Bitmap left = plain.workshop.load("cl/foo_cl.bmp");
    const Bitmap right = plain.workshop.load("cr/foo_cr.bmp");
    ASSERT_EQ(left.width(), 300);
    ASSERT_EQ(left.height(), 400);
    for (const auto& [x, y] : {std::pair{0, 0}, std::pair{399, 0}, std::pair{17, 230}}) {
        EXPECT_EQ(colour_at(left.picture(), 299 - y, x), colour_at(plain.left.picture(), x, y));
        EXPECT_EQ(colour_at(right.picture(), 299 - y, 399 - x), colour_at(plain.right.picture(), x, y));
    }
}

struct FrameCase {
    const char* name;
    Arguments settings;
    int width, height;       ///< Of a single view.
    int left_x, right_x, y;  ///< Where the pictures stand on their canvases, rows from the bottom.
    int both_width, both_left_x, both_right_x;
};

class Frames : public testing::TestWithParam<FrameCase> {};

constexpr Colour kFrame{30, 20, 250};

TEST_P(Frames, PicturesStandWhereTheSettingsPutThem) {
    const FrameCase& c = GetParam();
    PlainRun plain;
    plain.run(joined({"--FrameColorRed=250", "--FrameColorGreen=20", "--FrameColorBlue=30"}, c.settings));
    const Bitmap left = plain.workshop.load("cl/foo_cl.bmp");
    const Bitmap right = plain.workshop.load("cr/foo_cr.bmp");
    const Bitmap both = plain.workshop.load("cs/foo_cs.bmp");
    ASSERT_EQ(left.width(), c.width);
    ASSERT_EQ(left.height(), c.height);
    ASSERT_EQ(both.width(), c.both_width);
    const auto part = [&](const Bitmap& canvas, int x) { return canvas.picture().part(x, c.y, 400, 300); };
    EXPECT_EQ(greatest_difference(part(left, c.left_x), plain.left.picture()), 0);
    EXPECT_EQ(greatest_difference(part(right, c.right_x), plain.right.picture()), 0);
    EXPECT_EQ(greatest_difference(part(both, c.both_left_x), plain.left.picture()), 0);
    EXPECT_EQ(greatest_difference(part(both, c.both_right_x), plain.right.picture()), 0);
    for (const auto& [x, y] : {std::pair{0, 0}, std::pair{c.width - 1, c.height - 1}}) {
        EXPECT_EQ(colour_at(left.picture(), x, y), kFrame);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, Frames,
    testing::Values(
        FrameCase{"margins",
                  {"--FrameTop=10", "--FrameBottom=20", "--FrameLeftRight=15"},
                  430,
                  330,
                  15,
                  15,
                  20,
                  860,
                  15,
                  445},
        FrameCase{"central",
                  {"--FrameTop=10", "--FrameBottom=20", "--FrameLeftRight=15", "--FrameCentral=-12"},
                  430,
                  330,
                  15,
                  15,
                  20,
                  848,
                  15,
                  433},
        FrameCase{"line",
                  {"--FrameTop=10", "--FrameBottom=20", "--FrameLeftRight=15", "--ThinBlackLine=3"},
                  436,
                  336,
                  18,
                  18,
                  23,
                  872,
                  18,
                  454},
        FrameCase{"floating",
                  {"--FrameTop=4", "--FrameBottom=4", "--FrameLeftRight=15", "--FrameFloating=10"},
                  430,
                  308,
                  10,
                  20,
                  4,
                  860,
                  10,
                  450},
        FrameCase{"fill", {"--FillHeight=345", "--FillWidth=451"}, 451, 345, 25, 25, 23, 902, 25, 476}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Frames, ThinLineIsBlackRoundThePicture) {
    PlainRun plain;
    plain.run({"--FrameColorRed=250", "--FrameLeftRight=15", "--ThinBlackLine=3"});
    const Bitmap left = plain.workshop.load("cl/foo_cl.bmp");
    for (const int x : {14, 421}) {
        EXPECT_EQ(colour_at(left.picture(), x, 150).red, 250) << x;
    }
    for (const int x : {15, 17, 418, 420}) {
        EXPECT_EQ(colour_at(left.picture(), x, 150), Colour{}) << x;
    }
}

TEST(Frames, CurtainsBlackenTheOuterEdgesOnly) {
    PlainRun plain;
    plain.run({"--AutoFrameFloating=5", "--EstimateWindow=4", "--FloatingTarget=60", "--WinOffReference=1"});
    const Bitmap left = plain.workshop.load("cl/foo_cl.bmp");
    const Bitmap right = plain.workshop.load("cr/foo_cr.bmp");
    int curtain = 0;
    while (curtain < 400 && colour_at(left.picture(), curtain, 150) == Colour{}) {
        ++curtain;
    }
    EXPECT_GT(curtain, 3);
    EXPECT_LT(curtain, 60);
    EXPECT_EQ(greatest_difference(left.picture().part(curtain, 0, 400 - curtain, 300),
                                  plain.left.picture().part(curtain, 0, 400 - curtain, 300)),
              0);
    EXPECT_EQ(colour_at(right.picture(), 399, 5), Colour{});
    EXPECT_EQ(colour_at(right.picture(), 0, 5), colour_at(plain.right.picture(), 0, 5));
}

struct FormatCase {
    int output_format;
    const char* suffix;
    int bits;
    int tolerance;  ///< Levels.
};

class OutputFormats : public testing::TestWithParam<FormatCase> {};

TEST_P(OutputFormats, AreWrittenWithTheirSuffixDepthAndPixels) {
    const FormatCase& c = GetParam();
    PlainRun plain;
    plain.run({"--OutputFormat=" + std::to_string(c.output_format)});
    for (const auto& [name, view] :
         {std::pair<std::string, const Bitmap*>{"cl/foo_cl", &plain.left}, {"cr/foo_cr", &plain.right}}) {
        const std::string file = plain.workshop.path(name + c.suffix);
        const Bitmap raw =
            LibraryBitmap::owner(FreeImage_Load(FreeImage_GetFileType(file.c_str()), file.c_str(),
                                                c.bits == 32 && c.output_format == 8 ? TIFF_CMYK : 0));
        ASSERT_TRUE(raw) << file;
        EXPECT_EQ(raw.bits_per_pixel(), c.bits);
        EXPECT_LE(greatest_difference(plain.workshop.load(name + c.suffix).picture(), view->picture()),
                  c.tolerance);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, OutputFormats,
                         testing::Values(FormatCase{1, ".jpg", 24, 20}, FormatCase{2, ".tga", 24, 0},
                                         FormatCase{3, ".bmp", 24, 0}, FormatCase{4, ".png", 24, 0},
                                         FormatCase{5, ".tif", 24, 0}, FormatCase{6, ".tif", 32, 0},
                                         FormatCase{7, ".tif", 24, 0},  // the source has 8 bits
                                         FormatCase{8, ".tif", 32, 3}),
                         [](const auto& row) { return "format_" + std::to_string(row.param.output_format); });

TEST(OutputFormats, SixteenBitsComeFromASixteenBitSource) {
    Workshop workshop;
    for (const auto& [name, view] :
         {std::pair<std::string, const Bitmap*>{"foo_l.png", &aligned_views().left},
          {"foo_r.png", &aligned_views().right}}) {
        const Bitmap deep = LibraryBitmap::owner(FreeImage_ConvertToRGB16(LibraryBitmap::of(*view)));
        const auto bytes = encoded(deep, FIF_PNG);
        workshop.write(name, {bytes.begin(), bytes.end()});
    }
    const Outcome outcome = workshop.run(
        {"foo_l.png", "foo_r.png", "--EstimateGeometry=-1", "--AutoOutputContrast=0", "--OutputFormat=7"});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    const std::string file = workshop.path("cl/foo_cl.tif");
    EXPECT_EQ(LibraryBitmap::owner(FreeImage_Load(FIF_TIFF, file.c_str(), 0)).bits_per_pixel(), 48);
    EXPECT_LE(greatest_difference(workshop.load("cl/foo_cl.tif").picture(), aligned_views().left.picture()),
              1);
}

TEST(OutputFormats, EachViewKeepsItsOwnSuffix) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.tga", "foo_r.png");
    ASSERT_EQ(workshop.run({"foo_l.tga", "foo_r.png", "--EstimateGeometry=-1"}).exit_code, 0);
    EXPECT_EQ(workshop.files(),
              (Names{"cl/foo_cl.tga", "cr/foo_cr.png", "cs/foo_cs.tga", "foo_l.tga", "foo_r.png"}));
}

TEST(OutputFormats, TypesThatAreNotWrittenBecomeBmp) {
    Workshop workshop;
    for (const auto& [name, view] :
         {std::pair<std::string, const Bitmap*>{"foo_l.gif", &aligned_views().left},
          {"foo_r.gif", &aligned_views().right}}) {
        const Bitmap palette =
            LibraryBitmap::owner(FreeImage_ColorQuantize(LibraryBitmap::of(*view), FIQ_WUQUANT));
        const auto bytes = encoded(palette, FIF_GIF);
        workshop.write(name, {bytes.begin(), bytes.end()});
    }
    const Outcome outcome =
        workshop.run({"foo_l.gif", "foo_r.gif", "--EstimateGeometry=-1", "--StereoOutput=0"});
    EXPECT_TRUE(outcome.tells("'.gif' cannot be written")) << outcome.text;
    EXPECT_EQ(workshop.files(), (Names{"cl/foo_cl.bmp", "cr/foo_cr.bmp", "foo_l.gif", "foo_r.gif"}));
}

struct SizeCase {
    const char* name;
    Arguments settings;
    int width, height;  ///< 0 for any below the input's.
    double ratio;       ///< Width to height; 0 for any.
};

class Sizes : public testing::TestWithParam<SizeCase> {};

TEST_P(Sizes, AreThoseAskedFor) {
    const SizeCase& c = GetParam();
    Workshop workshop;
    save_pair(workshop, misaligned_views(), "foo_l.bmp", "foo_r.bmp");
    const Outcome outcome = workshop.run(joined({"foo_l.bmp", "foo_r.bmp", "--StereoOutput=0"}, c.settings));
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    const Bitmap left = workshop.load("cl/foo_cl.bmp");
    const Bitmap right = workshop.load("cr/foo_cr.bmp");
    ASSERT_EQ(left.width(), right.width());
    ASSERT_EQ(left.height(), right.height());
    if (c.width > 0) {
        EXPECT_EQ(left.width(), c.width) << outcome.text;
    }
    if (c.height > 0) {
        EXPECT_EQ(left.height(), c.height) << outcome.text;
    }
    if (c.ratio > 0.0) {
        EXPECT_NEAR(left.width(), c.ratio * left.height(), 1.0 + c.ratio);
    }
    EXPECT_LT(median_vertical_error(left.picture(), right.picture(), 10), 0.4);
}

INSTANTIATE_TEST_SUITE_P(
    Table, Sizes,
    testing::Values(
        SizeCase{"whole_frame", {"--CroppOutput=0"}, 900, 700, 0.0},
        SizeCase{"blanked_frame", {"--CroppOutput=1"}, 900, 700, 0.0},
        SizeCase{"whole_frame_by_height", {"--CroppOutput=0", "--OutputHeight=350"}, 450, 350, 0.0},
        SizeCase{"whole_frame_small", {"--CroppOutput=0", "--OutputHeight=210"}, 270, 210, 0.0},
        SizeCase{"common_area_both",
                 {"--CroppOutput=2", "--OutputHeight=500", "--OutputWidth=600"},
                 600,
                 500,
                 0.0},
        SizeCase{"common_area_height", {"--CroppOutput=2", "--OutputHeight=500"}, 0, 500, 0.0},
        SizeCase{"common_area_width", {"--CroppOutput=2", "--OutputWidth=640"}, 640, 0, 0.0},
        SizeCase{
            "enlarged", {"--CroppOutput=2", "--OutputHeight=1080", "--OutputWidth=1300"}, 1300, 1080, 0.0},
        SizeCase{"ratio", {"--CroppOutput=4", "--OutputHeight=900", "--OutputWidth=1600"}, 0, 0, 16.0 / 9.0},
        SizeCase{"square", {"--CroppOutput=4", "--OutputHeight=900", "--OutputWidth=900"}, 0, 0, 1.0},
        SizeCase{"turned_ratio",
                 {"--CroppOutput=5", "--OutputHeight=1600", "--OutputWidth=900"},
                 0,
                 0,
                 16.0 / 9.0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Sizes, FittedSizeHoldsOneSideAndKeepsTheOtherWithin) {
    Workshop workshop;
    save_pair(workshop, misaligned_views(), "foo_l.bmp", "foo_r.bmp");
    const Outcome outcome = workshop.run(
        {"foo_l.bmp", "foo_r.bmp", "--CroppOutput=3", "--OutputHeight=500", "--OutputWidth=600"});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    const Bitmap left = workshop.load("cl/foo_cl.bmp");
    EXPECT_TRUE(left.width() == 600 || left.height() == 500) << left.width() << 'x' << left.height();
    EXPECT_LE(left.width(), 600);
    EXPECT_LE(left.height(), 500);
}

/// A pair without errors that is shifted by so many columns.
void save_shifted(const Workshop& workshop, int shift_px) {
    const Views& views = aligned_views();
    const int width = views.left.width() - 10;
    const int height = views.left.height();
    workshop.save("foo_l.bmp", views.left.picture().part(0, 0, width, height));
    workshop.save("foo_r.bmp", views.right.picture().part(shift_px, 0, width, height));
}

TEST(Sizes, AFrameThatIsNotCroppedIsNeitherEnlargedNorCut) {
    for (const char* crop : {"--CroppOutput=0", "--CroppOutput=1"}) {
        for (const int shift_px : {1, 6}) {
            Workshop workshop;
            save_shifted(workshop, shift_px);
            const auto mounted = [&](Arguments settings) {
                const Outcome outcome = workshop.run(
                    joined({"foo_l.bmp", "foo_r.bmp", "--StereoOutput=0", crop}, std::move(settings)));
                EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
                return workshop.load("cl/foo_cl.bmp");
            };
            const Bitmap whole = mounted({});
            ASSERT_EQ(whole.width(), 390);
            for (const Arguments& size : {Arguments{"--OutputHeight=300"}, Arguments{"--OutputWidth=390"},
                                          Arguments{"--OutputHeight=300", "--OutputWidth=390"}}) {
                EXPECT_EQ(greatest_difference(mounted(size).picture(), whole.picture()), 0)
                    << crop << ' ' << shift_px << ' ' << size.back();
            }
            EXPECT_EQ(mounted({"--OutputHeight=200"}).width(), 260) << crop << ' ' << shift_px;
            EXPECT_EQ(mounted({"--OutputWidth=585"}).height(), 450) << crop << ' ' << shift_px;
        }
    }
}

TEST(AutomaticFrames, NarrowThePicturesInTheCanvasAndFollowTheTrueView) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    const auto mounted = [&](const char* frame, const char* inverse, const char* view) {
        (void)workshop.run({"foo_l.bmp", "foo_r.bmp", "--StereoOutput=0", "--FloatingTarget=0",
                            "--CroppOutput=0", "--OutputHeight=300", "--FrameColorGreen=200", frame,
                            inverse});
        return workshop.load(view);
    };
    const char* left = "cl/foo_cl.bmp";
    const char* right = "cr/foo_cr.bmp";
    const int width = aligned_views().left.width();
    EXPECT_GT(mounted("--AutoFrameFloating=1", "--InverseOutput=0", left).width(), width);
    const Bitmap seen_left = mounted("--AutoFrameFloating=2", "--InverseOutput=0", left);
    const Bitmap seen_right = workshop.load(right);
    EXPECT_EQ(seen_left.width(), width);
    EXPECT_EQ(colour_at(seen_left.picture(), 0, 150), (Colour{0, 200, 0})) << "moved to the right";
    EXPECT_EQ(colour_at(seen_right.picture(), width - 1, 150), (Colour{0, 200, 0}));
    const Bitmap exchanged = mounted("--AutoFrameFloating=2", "--InverseOutput=1", left);
    EXPECT_EQ(greatest_difference(exchanged.picture(), seen_right.picture()), 0);
    EXPECT_EQ(greatest_difference(workshop.load(right).picture(), seen_left.picture()), 0);
}

/// The far point of these views is the same part of the width in every size, and so are the frames against
/// it.
TEST(AutomaticFrames, OfOutputsReducedAtTheEndAreInTheirPixels) {
    for (const char* size : {"--OutputHeight=150", "--OutputWidth=200"}) {
        for (const char* frame : {"--AutoFrameFloating=1", "--AutoFrameFloating=2"}) {
            Workshop workshop;
            save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
            const auto width = [&](const char* given) {
                (void)workshop.run({"foo_l.bmp", "foo_r.bmp", "--StereoOutput=0", "--FloatingTarget=0",
                                    "--CroppOutput=0", frame, given});
                return workshop.load("cl/foo_cl.bmp").width();
            };
            EXPECT_NEAR(width(size), width("--OutputHeight=300") / 2.0, 2.0) << size << frame;
        }
    }
}

TEST(Sizes, BlankedFrameIsBlankInBothViewsAlike) {
    Workshop workshop;
    save_pair(workshop, misaligned_views(), "foo_l.bmp", "foo_r.bmp");
    ASSERT_EQ(workshop
                  .run({"foo_l.bmp", "foo_r.bmp", "--CroppOutput=1", "--PasseColorRed=1",
                        "--PasseColorGreen=254", "--AutoOutputContrast=0"})
                  .exit_code,
              0);
    std::istringstream area(read_text(workshop.path("zemora_cropp.dat")));
    int top = 0;
    int bottom = 0;
    int first = 0;
    int last = 0;
    ASSERT_TRUE(area >> top >> bottom >> first >> last);
    EXPECT_GT(top - bottom, 640);
    EXPECT_GT(last - first, 820);
    const Bitmap left = workshop.load("cl/foo_cl.bmp");
    const Bitmap right = workshop.load("cr/foo_cr.bmp");
    const Colour passe{0, 254, 1};
    const int row = (top + bottom) / 2;
    EXPECT_FALSE(colour_at(left.picture(), first + 1, row) == passe);
    int blank = 0;
    int unlike = 0;
    for (int y = 0; y < left.height(); ++y) {
        for (int x = 0; x < left.width(); ++x) {
            const bool in_left = colour_at(left.picture(), x, y) == passe;
            blank += in_left;
            unlike += in_left != (colour_at(right.picture(), x, y) == passe);
        }
    }
    EXPECT_GT(blank, 1000);
    EXPECT_EQ(unlike, 0);
}

struct NameCase {
    const char* name;
    const char* left;
    const char* right;
    Arguments settings;
    Names products;
};

class OutputFiles : public testing::TestWithParam<NameCase> {};

TEST_P(OutputFiles, LieInTheirFoldersUnderTheirNames) {
    const NameCase& c = GetParam();
    Workshop workshop;
    save_pair(workshop, aligned_views(), c.left, c.right);
    const Outcome outcome = workshop.run(joined({c.left, c.right, "--EstimateGeometry=-1"}, c.settings));
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    Names expected = c.products;
    expected.insert(c.left);
    expected.insert(c.right);
    EXPECT_EQ(workshop.files(), expected) << outcome.text;
}

INSTANTIATE_TEST_SUITE_P(
    Table, OutputFiles,
    testing::Values(
        NameCase{"combined", "a.bmp", "b.bmp", {}, {"cl/a-b_cl.bmp", "cr/a-b_cr.bmp", "cs/a-b_cs.bmp"}},
        NameCase{"view_folders", "l/x.bmp", "r/x.bmp", {}, {"cl/x_cl.bmp", "cr/x_cr.bmp", "cs/x_cs.bmp"}},
        NameCase{
            "upper_case", "foo_L.bmp", "foo_R.bmp", {}, {"cl/foo_cl.bmp", "cr/foo_cr.bmp", "cs/foo_cs.bmp"}},
        NameCase{"corrected_again",
                 "foo_cl.bmp",
                 "foo_cr.bmp",
                 {},
                 {"cl/foo_cl.bmp", "cr/foo_cr.bmp", "cs/foo_cs.bmp"}},
        NameCase{"beside",
                 "foo_l.bmp",
                 "foo_r.bmp",
                 {"--LeftRightOutput=1", "--StereoOutput=1"},
                 {"foo_cl.bmp", "foo_cr.bmp", "foo_cs.bmp"}},
        NameCase{"eyes",
                 "foo_l.bmp",
                 "foo_r.bmp",
                 {"--LeftRightOutput=3"},
                 {"foo_OS.bmp", "foo_OD.bmp", "cs/foo_cs.bmp"}},
        NameCase{"ident",
                 "foo_l.bmp",
                 "foo_r.bmp",
                 {"--IdentOutputDir=_x"},
                 {"cl_x/foo_cl.bmp", "cr_x/foo_cr.bmp", "cs_x/foo_cs.bmp"}},
        NameCase{"escaping_ident",
                 "foo_l.bmp",
                 "foo_r.bmp",
                 {"--IdentOutputDir=/../../x", "--StereoOutput=0"},
                 {"cl_.._.._x/foo_cl.bmp", "cr_.._.._x/foo_cr.bmp"}},
        NameCase{"output_folder",
                 "foo_l.bmp",
                 "foo_r.bmp",
                 {"--PathofOutput=out\\deep"},
                 {"out/deep/cl/foo_cl.bmp", "out/deep/cr/foo_cr.bmp", "out/deep/cs/foo_cs.bmp"}},
        NameCase{"over_the_limit",
                 "foo_l.bmp",
                 "foo_r.bmp",
                 {"--DeviationThresh=0", "--LeftRightOutput=0"},
                 {"cs/zz_foo_cs.bmp"}},
        NameCase{"stereo_only", "foo_l.bmp", "foo_r.bmp", {"--LeftRightOutput=0"}, {"cs/foo_cs.bmp"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(OutputFiles, StampTellsTheDeviationInPerMille) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    const Outcome outcome = workshop.run(
        {"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=-1", "--StampFiles=1", "--LeftRightOutput=0"});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    const auto files = workshop.files();
    const std::string name = *files.begin();
    ASSERT_EQ(name.size(), std::string("cs/foo_025_cs.bmp").size()) << name;
    EXPECT_NEAR(std::stoi(name.substr(7, 3)), 25, 5) << name;  // the scene reaches from -15 to 10 per mille
}

}  // namespace
}  // namespace zemora::test
