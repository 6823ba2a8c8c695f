// Stand-ins for the programs of a person: shell scripts that note how they were called and answer by plan.

#include <FreeImage.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "codec/bitmap_forms.h"
#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

using Names = std::set<std::string>;

constexpr const char* kPost = "zemora_image_postview";
constexpr const char* kPre = "zemora_image_preview";
constexpr const char* kColours = "zemora_anamatrix";

/// A post viewer's answer that changes nothing.
constexpr const char* kAsItStands = "0 0 0 0 1 1 0 0 0 0 0 0 0 1 0 0 1";

/// A copy of the program with a folder "32" of its own.
class Viewers : public testing::Test {
protected:
    Viewers() {
        std::filesystem::create_directory(home_ / "32");
        std::filesystem::copy_file(ZEMORA_EXECUTABLE, home_ / "zemora");
        std::filesystem::copy(std::filesystem::path(ZEMORA_EXECUTABLE).parent_path() / "resource",
                              home_ / "resource");
        workshop.program = home_ / "zemora";
        workshop.settings.insert(workshop.settings.end(),
                                 {"--EstimateGeometry=-1", "--AutoOutputContrast=0"});
        save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    }

    /// The viewer of that name, whose n-th call does the n-th of `steps`, shell commands with "$1" as the
    /// folder.
    void plan(const std::string& viewer, const std::vector<std::string>& steps) {
        std::string script =
            "#!/bin/sh\nhere=${0%/*}\nn=$(($(cat \"$here/count\" 2>/dev/null || echo 0) + 1))\n"
            "echo $n > \"$here/count\"\nprintf '%s\\n' \"$@\" > \"$here/call$n\"\n"
            "cp \"$1\"/zemora_p?.bmp \"$here\" 2>/dev/null\ncase $n in\n";
        for (std::size_t i = 0; i < steps.size(); ++i) {
            script += std::to_string(i + 1) + ") " + steps[i] + ";;\n";
        }
        write_text(home_ / "32/" + viewer, script + "esac\nexit 1\n");
        std::filesystem::permissions(home_ / "32/" + viewer, std::filesystem::perms::owner_all);
    }
    static std::string answer(const std::string& text, int exit_code = 0) {
        return "echo '" + text + "' > \"$1/zemora_shift.txt\"; exit " + std::to_string(exit_code);
    }
    static std::string preview_answer(const std::string& text) {
        return "echo '" + text + "' > \"$1/zemora_image_preview.txt\"; exit 0";
    }
    [[nodiscard]] Outcome mount(std::vector<std::string> settings = {"--PostViewerActive=1"}) {
        settings.insert(settings.begin(), {"foo_l.bmp", "foo_r.bmp"});
        return workshop.run(settings);
    }
    [[nodiscard]] int calls() const {
        return std::filesystem::exists(home_ / "32/count") ? std::stoi(read_text(home_ / "32/count")) : 0;
    }
    /// The arguments of the n-th call behind the folder, one a line.
    [[nodiscard]] std::string arguments(int call) const {
        const std::string text = read_text(home_ / "32/call" + std::to_string(call));
        EXPECT_EQ(text.substr(0, text.find('\n')), workshop.folder());
        return text.substr(text.find('\n') + 1);
    }
    [[nodiscard]] Bitmap shown(const std::string& name) const {
        Workshop none;
        std::filesystem::copy_file(home_ / "32/" + name, none.path(name));
        return none.load(name);
    }

    TestFolder home_;
    Workshop workshop;
};

/// Whether any file of the names begins so.
bool has_name(const Names& names, const std::string& start) {
    const auto place = names.lower_bound(start);
    return place != names.end() && place->rfind(start, 0) == 0;
}

TEST_F(Viewers, PostViewerGetsTheMountedPairAndItsNumbers) {
    save_pair(workshop, misaligned_views(), "foo_l.bmp", "foo_r.bmp");
    plan(kPost, {answer(kAsItStands)});
    const Outcome outcome = mount({"--PostViewerActive=1", "--EstimateGeometry=1", "--MaxViewerSize=600"});
    EXPECT_TRUE(outcome.tells("Instructions for zemora_image_postview:\n----")) << outcome.text;
    ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    const Bitmap left = shown("zemora_pl.bmp");
    const Bitmap right = shown("zemora_pr.bmp");
    EXPECT_GT(left.width(), 540);
    EXPECT_LE(left.width(), 600);
    EXPECT_LT(median_vertical_error(left.picture(), right.picture(), 6), 0.3);
    const std::string numbers = arguments(1);
    EXPECT_EQ(
        numbers.rfind("foo_l.bmp\nfoo_r.bmp\n2\n0\n0\n1.500000\n0.666667\n0.000000\n0.000000\n1.000000\n"
                      "1.000000\n0.000000\n0.000000\n0.000000\n32.0",
                      0),
        0U)
        << numbers;
    EXPECT_FALSE(workshop.files().contains("zemora_shift.txt"));
}

struct AnswerCase {
    const char* name;
    std::vector<const char*> settings;
    const char* text;
    int width, height;
    bool is_swapped;
    int source_x, source_y;  ///< Of the output's lower left pixel, where its scale is 1; else -1.
};

class Answers : public Viewers, public testing::WithParamInterface<AnswerCase> {};

TEST_P(Answers, ShapeThePair) {
    const AnswerCase& c = GetParam();
    plan(kPost, {answer(c.text)});
    std::vector<std::string> settings{"--PostViewerActive=1"};
    settings.insert(settings.end(), c.settings.begin(), c.settings.end());
    const Outcome outcome = mount(settings);
    ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    const Bitmap left = workshop.load("cl/foo_cl.bmp");
    EXPECT_EQ(left.width(), c.width);
    EXPECT_EQ(left.height(), c.height);
    if (c.source_x >= 0 && left.width() == c.width && left.height() == c.height) {
        const Views& views = aligned_views();
        const Bitmap& source = c.is_swapped ? views.right : views.left;
        EXPECT_LT(
            mean_difference(left.picture(), source.picture().part(c.source_x, c.source_y, c.width, c.height)),
            3.0);
    }
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Table, Answers, testing::Values(
    AnswerCase{"nothing_chosen", {}, kAsItStands, 400, 300, false, 0, 0},
    AnswerCase{"selection", {"--CroppOutput=0"}, "1 0 0.1 0.2 0.5 0.4 0 0 0 0 0 0 0 1 0 0 1", 200, 120, false, 40, 120},
    AnswerCase{"output_swapped", {}, "0 0 0 0 1 1 0 0 0 0 0 0 0 1 1 0 1", 400, 300, true, 0, 0},
    AnswerCase{"ratio_cut", {"--CroppOutput=4", "--OutputWidth=400", "--OutputHeight=300"}, "1 0 0.1 0.1 0.8 0.8 0 0 0 0 0 0 0 1 0 1 1", 240, 240, false, -1, -1},
    AnswerCase{"ratio_in_a_size", {"--CroppOutput=2", "--OutputWidth=400", "--OutputHeight=300"}, "1 0 0.1 0.1 0.6 0.8 0 0 0 0 0 0 0 1 0 1 1", 300, 300, false, -1, -1},
    AnswerCase{"selection_in_a_size", {"--CroppOutput=2", "--OutputWidth=600", "--OutputHeight=400"}, "1 0 0.2 0.3 0.6 0.5333 0 0 0 0 0 0 0 1 0 0 1", 600, 400, false, -1, -1},
    AnswerCase{"wide_in_a_target", {"--CroppOutput=3", "--OutputWidth=400", "--OutputHeight=300"}, "1 0 0.2 0.3 0.6 0.4 0 0 0 0 0 0 0 1 0 0 1", 400, 200, false, -1, -1},
    AnswerCase{"cut_to_a_size", {"--CroppOutput=3", "--OutputWidth=600", "--OutputHeight=400"}, "1 0 0.2 0.3 0.6 0.5333 0 0 0 0 0 0 0 1 0 0 1", 600, 400, false, -1, -1}),
    [](const auto& test) { return std::string(test.param.name); });
// clang-format on

TEST_F(Viewers, ShapeReachesThePictureAndTheNextCall) {
    plan(kPost, {answer("0 0 0 0 1 1 0 0.05 0.1 0 0.3 0 0.05 1.01 0 0 1", 97), answer(kAsItStands)});
    const Outcome outcome = mount({"--PostViewerActive=1", "--CroppOutput=0"});
    EXPECT_NE(arguments(2).find("\n0.050000\n32.0"), std::string::npos) << "the floating window";
    EXPECT_NE(arguments(2).find("\n0.100000\n0.000000\n-0.300000\n0.000000\n0.050000\n1.010000\n1\n"),
              std::string::npos)
        << arguments(2);
    std::vector<std::string> pictures;
    for (const std::string& name : workshop.files()) {
        if (name.rfind("cl/", 0) == 0) {
            pictures.push_back(name);
        }
    }
    ASSERT_EQ(pictures.size(), 2U) << outcome.text;
    // Stored within a second, the later one has a number behind its time.
    std::sort(pictures.begin(), pictures.end(), [](const auto& a, const auto& b) {
        return a.size() == b.size() ? a < b : a.size() < b.size();
    });
    const Bitmap shaped = workshop.load(pictures[0]);
    const Bitmap plain = workshop.load(pictures[1]);
    EXPECT_GT(mean_difference(shaped.picture(), plain.picture()), 3.0);
    EXPECT_LT(mean_difference(aligned_views().left.picture(), plain.picture()), 3.0);
}

struct ExitCase {
    const char* name;
    std::vector<std::string> steps;
    int calls;
    const char* told;
    const char* product;  ///< Start of a name; empty for none.
    const char* moved;
};

class Exits : public Viewers, public testing::WithParamInterface<ExitCase> {};

TEST_P(Exits, OfThePostViewerDecide) {
    const ExitCase& c = GetParam();
    plan(kPost, c.steps);
    const Outcome outcome = mount({"--PostViewerActive=2", "--ReportMode=1"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_TRUE(outcome.tells(c.told)) << outcome.text;
    const auto reports = [&](const char* file) {
        return read_text(workshop.path(file)).find(c.told) != std::string::npos;
    };
    EXPECT_EQ(reports("zemora_report.txt"), reports("zemora_report.html")) << c.told;
    EXPECT_EQ(calls(), c.calls);
    const Names files = workshop.files();
    EXPECT_EQ(has_name(files, "cl/"), *c.product != '\0') << outcome.text;
    EXPECT_TRUE(has_name(files, c.product));
    EXPECT_TRUE(has_name(files, c.moved));
    EXPECT_FALSE(files.contains("zemora_shift.txt"));
    EXPECT_FALSE(outcome.tells("cannot be mounted")) << outcome.text;
}

constexpr const char* kFailed = "No success to call zemora_image_postview.exe!";
const std::string kGood = std::string("echo '") + kAsItStands + "' > \"$1/zemora_shift.txt\"; exit ";

// clang-format off
INSTANTIATE_TEST_SUITE_P(Table, Exits, testing::Values(
    ExitCase{"repeat", {kGood + "97", kGood + "97", kGood + "0"}, 3, "same input image is repeated", "cl/foo_2", ""},
    ExitCase{"abandon", {"exit 98"}, 1, "Abandoned by user", "", "foo_l.bmp"},
    ExitCase{"abandon_and_move", {"exit 99"}, 1, "Abandoned by user", "", "lq/foo_l.bmp"},
    ExitCase{"abandoned_repeat", {kGood + "97", "exit 98"}, 2, "Abandoned by user", "cl/foo_2", ""},
    ExitCase{"exchanged_and_moved", {"exit 100", "exit 99"}, 2, "Abandoned by user", "", "lq/foo_l.bmp"},
    ExitCase{"late", {"(sleep 2; " + kGood + "0) >/dev/null & exit 0"}, 1, "images: 1/1", "cl/foo_cl.bmp", ""},
    ExitCase{"written_in_pieces", {"(echo '0 0 0 0 1 1' > \"$1/zemora_shift.txt\"; sleep 1; " + kGood + "0) >/dev/null & exit 0"}, 1, "images: 1/1", "cl/foo_cl.bmp", ""},
    ExitCase{"garbage", {"echo 'not a number' > \"$1/zemora_shift.txt\"; exit 0"}, 1, "zemora_shift.txt holds no answer", "", ""},
    ExitCase{"no_answer", {"exit 0"}, 1, kFailed, "", ""},
    ExitCase{"crash", {"kill -9 $$"}, 1, kFailed, "", "foo_l.bmp"},
    ExitCase{"other_code", {kGood + "3"}, 1, kFailed, "", "foo_l.bmp"}),
    [](const auto& test) { return std::string(test.param.name); });
// clang-format on

TEST_F(Viewers, AListGivesThePicturesOfTheViewerAgain) {
    save_pair(workshop, misaligned_views(), "foo_l.bmp", "foo_r.bmp");
    for (const std::vector<std::string>& sizes :
         {std::vector<std::string>{"--CroppOutput=3"},
          {"--CroppOutput=2", "--OutputWidth=500", "--OutputHeight=400"}}) {
        std::filesystem::remove(home_ / "32/count");
        plan(kPost, {answer("1 0.0123 0.11 0.23 0.5 0.4 0.01 0 0.05 0 0.03 0 0 1.01 0 0 1")});
        std::vector<std::string> settings{"--PostViewerActive=1", "--EstimateGeometry=1",
                                          "--WriteDataBase=2"};
        settings.insert(settings.end(), sizes.begin(), sizes.end());
        ASSERT_TRUE(mount(settings).tells("images: 1/1"));
        const std::string seen = read_text(workshop.path("cl/foo_cl.bmp"));
        settings = {"--InputMode=10", "--EstimateGeometry=2"};
        settings.insert(settings.end(), sizes.begin(), sizes.end());
        ASSERT_TRUE(workshop.run(settings).tells("images: 1/1"));
        EXPECT_EQ(read_text(workshop.path("cl/foo_cl.bmp")), seen) << sizes[0];
        std::filesystem::remove(workshop.path("zemora_files.txt"));
    }
}

TEST_F(Viewers, SwapStartsThePairOverWithItsViewsExchanged) {
    plan(kPost, {"exit 100", kGood + "0", "exit 100", kGood + "0"});
    EXPECT_TRUE(mount().tells("processed images: 1/1"));
    EXPECT_EQ(arguments(2).rfind("foo_r.bmp\nfoo_l.bmp\n", 0), 0U);
    const ConstPicture right = aligned_views().right.picture();
    EXPECT_LT(mean_difference(workshop.load("cl/foo-foo_cl.bmp").picture(), right), 3.0);
    Bitmap both = Bitmap::create(800, 300);
    copy(aligned_views().left.picture(), both.picture().part(0, 0, 400, 300));
    copy(right, both.picture().part(400, 0, 400, 300));
    workshop.save("halves_s.bmp", both.picture());
    EXPECT_TRUE(workshop.run({"halves_s.bmp", "--PostViewerActive=1"}).tells("processed images: 1/1"));
    EXPECT_LT(mean_difference(workshop.load("cl/halves_cl.bmp").picture(), right), 3.0);
}

TEST_F(Viewers, SwapOfAPhotoWithDepthExchangesTheRenderedViews) {
    const Bitmap mask = Bitmap::create(400, 300);
    for (int x = 0; x < 400; ++x) {
        const auto grey = static_cast<std::uint8_t>(x / 2);
        fill(mask.picture().part(x, 0, 1, 300), {grey, grey, grey});
    }
    workshop.save("a_rgb.bmp", aligned_views().left.picture());
    workshop.save("a_d.bmp", mask.picture());
    plan(kPost, {kGood + "0", "exit 100", kGood + "0"});
    const std::vector<std::string> call{"a_rgb.bmp",
                                        "a_d.bmp",
                                        "--PostViewerActive=1",
                                        "--StereoImageInput=5",
                                        "--DeviationTarget=40",
                                        "--CroppOutput=0",
                                        "--WindowOffset=0"};
    EXPECT_TRUE(workshop.run(call).tells("processed images: 1/1"));
    const Bitmap left = workshop.load("cl/a_cl.bmp");
    const Bitmap right = workshop.load("cr/a_cr.bmp");
    EXPECT_GT(mean_difference(left.picture(), right.picture()), 1.0);
    const Outcome swapped = workshop.run(call);
    EXPECT_TRUE(swapped.tells("processed images: 1/1"));
    EXPECT_EQ(greatest_difference(workshop.load("cl/a_cl.bmp").picture(), right.picture()), 0)
        << swapped.text;
    EXPECT_EQ(greatest_difference(workshop.load("cr/a_cr.bmp").picture(), left.picture()), 0);
}

TEST_F(Viewers, ExchangeFilesReplaceLinksAndNotTheirTargets) {
    workshop.write("mine", "mine");
    for (const char* name : {"zemora_pl.bmp", "zemora_pr.bmp", "zemora_pl.bmp.tmp"}) {
        std::filesystem::create_symlink("mine", workshop.path(name));
    }
    plan(kPost, {answer(kAsItStands)});
    std::filesystem::create_directory(workshop.path("folder"));
    std::filesystem::create_directory_symlink("folder", workshop.path("zemora_shift.txt"));
    EXPECT_TRUE(mount().tells("processed images: 1/1"));
    EXPECT_EQ(read_text(workshop.path("mine")), "mine");
    EXPECT_FALSE(std::filesystem::is_symlink(workshop.path("zemora_pl.bmp")));
    EXPECT_GT(workshop.load("zemora_pl.bmp").width(), 700);
}

TEST_F(Viewers, AGraphicalInterfaceGetsPreviewsOfTheFinishedViews) {
    EXPECT_TRUE(mount({"/GI=1", "--OutputFormat=3", "--CroppOutput=0"}).tells("processed images: 1/1"));
    const Workshop copies;
    for (const std::string side : {"l", "r"}) {
        const std::string name = "zemora_thumb_" + side + ".bmp";
        ASSERT_TRUE(std::filesystem::exists(home_ / name));
        std::filesystem::copy_file(home_ / name, copies.path(name));
        const Bitmap thumb = copies.load(name);
        ASSERT_EQ(thumb.width(), 267);
        ASSERT_EQ(thumb.height(), 178);
        const std::uint8_t* bar = thumb.picture().pixel(0, 90);  // beside a picture of 237 columns
        EXPECT_EQ((std::array<int, 3>{bar[0], bar[1], bar[2]}), (std::array{0x40, 0xFF, 0x40}));
        const Bitmap& view = side == "l" ? aligned_views().left : aligned_views().right;
        const Bitmap small = scaled_bicubic(view, 237, 178);
        EXPECT_LT(mean_difference(thumb.picture().part(15, 0, 237, 178), small.picture()), 6.0) << side;
    }
}

TEST_F(Viewers, MissingOrUselessProgramsAreTold) {
    EXPECT_TRUE(mount().tells("zemora_image_postview.exe missing"));
    EXPECT_TRUE(workshop.files().contains("cl/foo_cl.bmp")) << "and the pair goes on without it";
    write_text(home_ / "32/zemora_image_postview.exe", "no program");
    EXPECT_TRUE(mount().tells(kFailed));
}

TEST_F(Viewers, PreviewerGivesPartAndOrderOfTheViews) {
    plan(kPre, {preview_answer("x 0 1 0 0 0 1 0 50 0 100 0 50 0 100 0")});
    const Outcome outcome = mount({"--PreViewerActive=1", "--VerboseMode=2", "--RotMirInputRight=2",
                                   "--EstimateGeometry=0", "--CroppOutput=0"});
    EXPECT_TRUE(outcome.tells("Instructions for Zemora Image Previewer:\n---")) << outcome.text;
    EXPECT_TRUE(outcome.tells("Zemora Image PreViewer:\nRotation left:       0.0 degree\n")) << outcome.text;
    EXPECT_TRUE(outcome.tells("RightImageHeight:  100.0 percent\n")) << outcome.text;
    EXPECT_EQ(arguments(1), "foo_l.bmp\nfoo_r.bmp\n209920075\n1000\n1000\n1000\n1000\n100\n2053\n");
    const Bitmap left = workshop.load("cl/foo_cl.bmp");
    ASSERT_EQ(left.width(), 200);
    const Bitmap right = workshop.load("cr/foo_cr.bmp");
    EXPECT_LT(mean_difference(right.picture(), aligned_views().left.picture().part(0, 0, 200, 300)), 3.0)
        << "the left file, unturned, is the right view";
}

TEST_F(Viewers, ExitsOfThePreviewerDecide) {
    plan(kPre, {"exit 98", "exit 99", "kill -9 $$", preview_answer("x 0 0 0 0 0 1 0 0 0 100 0 50 0 100 0")});
    EXPECT_TRUE(mount({"--PreViewerActive=1"}).tells("Abandoned by user"));
    EXPECT_FALSE(has_name(workshop.files(), "c"));
    EXPECT_TRUE(mount({"--PreViewerActive=1"}).tells("Abandoned by user"));
    EXPECT_TRUE(workshop.files().contains("rq/foo_r.bmp"));
    for (int i = 0; i < 2; ++i) {
        save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
        EXPECT_TRUE(mount({"--PreViewerActive=1"}).tells("No success to call zemora_image_preview.exe!"));
        EXPECT_EQ(workshop.load("cl/foo_cl.bmp").width(), 400) << "the pair goes on as it is";
    }
}

TEST_F(Viewers, StoredValuesSwitchThePreviewerOff) {
    plan(kPre, {"exit 98", "exit 98"});
    EXPECT_TRUE(mount({"--WriteDataBase=2", "--EstimateGeometry=1"}).tells("images: 1/1"));
    const Outcome outcome =
        workshop.run({"--InputMode=10", "--EstimateGeometry=-5", "--PreViewerActive=1", "--VerboseMode=2"});
    EXPECT_TRUE(outcome.tells("the image previewer doesn't make sense")) << outcome.text;
    EXPECT_EQ(calls(), 0);
}

TEST_F(Viewers, ColourScriptWritesTheFileOfTheAnaglyph) {
    workshop.write("zemora_colors.txt", "1 0 0\n0 0 0\n0 0 0\n0 0 0\n0 1 0\n0 0 1\n1 1 1\n1 1 1\n");
    const std::vector<std::string> settings{"--AnaglyphOutput=1", "--AnaglyphType=8"};
    EXPECT_TRUE(mount(settings).tells("zemora_anamatrix is missing"));
    const Bitmap before = workshop.load("foo_ca.bmp");
    plan(kColours, {"sed '1s/.*/0 0 1/' \"$2\" > \"$2.new\"; mv \"$2.new\" \"$2\"; exit 7"});
    EXPECT_TRUE(mount(settings).tells("Instructions for zemora_anamatrix:"));
    EXPECT_GT(mean_difference(before.picture(), workshop.load("foo_ca.bmp").picture()), 3.0);
    EXPECT_EQ(read_text(home_ / "32/call1"), "1\n" + workshop.path("zemora_colors.txt") + '\n');
    EXPECT_EQ(shown("currentpreview_cs.jpg").width(), 800);
}

TEST_F(Viewers, ColourScriptStartsFromTheExampleWhenItsFileIsMissing) {
    plan(kColours, {"sed -i '4s/.*/0 0 1/' \"$2\""});
    const Outcome outcome = mount({"--AnaglyphOutput=1", "--AnaglyphType=8"});
    EXPECT_TRUE(outcome.tells("starts from the example")) << outcome.text;
    EXPECT_TRUE(outcome.tells("images: 1/1")) << outcome.text;
    EXPECT_TRUE(workshop.files().contains("foo_ca.bmp"));
    EXPECT_NE(read_text(workshop.path("zemora_colors.txt")).find("\n0 0 1\n"), std::string::npos);
}

}  // namespace
}  // namespace zemora::test
