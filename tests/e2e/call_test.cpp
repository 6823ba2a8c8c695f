#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

using Arguments = std::vector<std::string>;

struct CallCase {
    const char* name;
    const char* locale;
    Arguments arguments;
    int exit_code;
    std::vector<const char*> told;
};

class Calls : public testing::TestWithParam<CallCase> {};

TEST_P(Calls, EndWithTheirCodeAndWords) {
    const CallCase& c = GetParam();
    Workshop workshop;
    workshop.settings
        .clear();  // with the default setting the program waits for Enter: the input is at its end
    workshop.environment = {std::string("LC_ALL=") + c.locale};
    const Outcome outcome = workshop.run(c.arguments);
    EXPECT_EQ(outcome.exit_code, c.exit_code) << outcome.text;
    for (const char* told : c.told) {
        EXPECT_TRUE(outcome.tells(told)) << told << " is missing in:\n" << outcome.text;
    }
    EXPECT_TRUE(workshop.files().empty() ||
                workshop.files() == (std::set<std::string>{"zemora_report.html", "zemora_report.txt"}));
}

/// A pair of files that the settings name, and not the words of the call.
constexpr const char* kMissingPair = "--InputMode=0";

INSTANTIATE_TEST_SUITE_P(
    Table, Calls,
    testing::Values(
        CallCase{"help",
                 "C",
                 {"--help"},
                 0,
                 {"5.) Zemora <left imagefile> <right imagefile>", "--version", "OutputHeight", "/OH"}},
        CallCase{"help_german", "de_DE.UTF-8", {"/h"}, 0, {"Die folgenden Aufrufe", "OutputHeight"}},
        CallCase{"version", "C", {"--version"}, 0, {"0.9"}},
        CallCase{"four_files",
                 "C",
                 {"a.jpg", "b.jpg", "c.ini", "d.jpg"},
                 1,
                 {"The following calls", "\nYour call: ", "c.ini d.jpg", "Please hit Enter"}},
        CallCase{"three_files_german",
                 "de_DE",
                 {"a.jpg", "b.jpg", "c.jpg"},
                 1,
                 {"Die folgenden Aufrufe", "\nIhr Aufruf: "}},
        CallCase{"unknown_option",
                 "C",
                 {"a.jpg", "b.jpg", "--OutputHeigth=3"},
                 1,
                 {"--OutputHeigth", "OutputHeight"}},
        CallCase{"unknown_code", "C", {"a.jpg", "b.jpg", "/ZZ=3"}, 1, {"/ZZ=3"}},
        CallCase{"no_value", "C", {"a.jpg", "b.jpg", "--OutputHeight"}, 1, {"OutputHeight"}},
        CallCase{"drive", "C", {"--PathofImages=D:\\pictures"}, 1, {"PathofImages", "D:"}},
        CallCase{"no_number", "C", {"--OutputHeight=abc"}, 1, {"--OutputHeight=abc", "from 0 to 16384"}},
        CallCase{"drive_letter", "C", {"C:\\x\\a_l.jpg", "/SE=0"}, 1, {"C:/x/a_l.jpg: a drive letter"}},
        CallCase{"dash", "C", {"-x.jpg"}, 1, {"Unknown option: -x.jpg"}},
        CallCase{"word_of_nothing_german",
                 "de_DE.UTF-8",
                 {"hilfe"},
                 1,
                 {"Die folgenden Aufrufe",
                  "hilfe: eine solche Datei oder ein solches Verzeichnis gibt es nicht."}},
        CallCase{"missing_partner", "C", {"a_l.jpg", "a_r.jpg"}, 1, {"a_l.jpg: there is no such file"}},
        CallCase{"empty_word", "C", {""}, 1, {"\"\": there is no such file"}},
        CallCase{"device_for_a_picture", "C", {"/dev/null"}, 1, {"/dev/null: this is no file."}},
        CallCase{"missing_parameter_file", "C", {"my.ini"}, 1, {"my.ini: there is no such file"}},
        CallCase{"no_pictures",
                 "C",
                 {},
                 1,
                 {"zemora.ini could not be found", "cannot find suited image files", "(\"_l\" and \"_r\")"}},
        CallCase{"no_pictures_german",
                 "de_AT.UTF-8",
                 {"/IM=4"},
                 1,
                 {"kann keine geeigneten Bilddateien finden", "tif;tga;bmp;jpg;mpo"}},
        CallCase{"no_folder",
                 "C",
                 {"--PathofImages=none/here"},
                 1,
                 {"none/here/zemora_report.txt", "cannot be opened"}},
        CallCase{"language_of_the_call_counts",
                 "de_DE",
                 {kMissingPair, "--LeftFileName=a.jpg", "--RightFileName=b.jpg", "--Language=1"},
                 1,
                 {"a.jpg \"doesn't exist or cannot be read", "cannot find any images to mount"}},
        CallCase{"missing_german",
                 "de_DE",
                 {"/LG=0", kMissingPair, "--LeftFileName=a.jpg", "--RightFileName=b.jpg"},
                 1,
                 {"a.jpg \"existiert nicht oder kann nicht gelesen werden", "a.jpg: No such file"}},
        CallCase{"list_of_nothing",
                 "C",
                 {kMissingPair, "--LeftFileName=a.jpg", "--RightFileName=b.jpg", "--WriteDataBase=1"},
                 1,
                 {"cannot find any images to mount"}},
        CallCase{
            "two_folders_of_other_names", "C", {"/usr", "/tmp"}, 1, {"side by side and be called l and r"}},
        CallCase{"video",
                 "C",
                 {kMissingPair, "--LeftFileName=a.avi", "--RightFileName=b.avi"},
                 1,
                 {"a.avi \"doesn't exist"}},
        CallCase{"settings_that_contradict",
                 "C",
                 {kMissingPair, "--LeftFileName=a.avi", "--RightFileName=b.avi", "--OutputWidth=1920"},
                 1,
                 {"always height AND width must be given", "Please check OutputWidth and OutputHeight."}},
        CallCase{"codec_dialog_without_terminal",
                 "C",
                 {kMissingPair, "--LeftFileName=a.avi", "--RightFileName=b.avi", "--VideoOutput=2",
                  "--VideoCodec=????"},
                 1,
                 {"Unable to open codec dialog\nPlease hit Enter"}},
        CallCase{"listing_of_settled_values",
                 "C",
                 {kMissingPair, "--LeftFileName=a.avi", "--RightFileName=b.avi", "/VM=2", "/LR=0"},
                 1,
                 {"\nHtmlImages           =      4\n", "\nStereoOutput         =      0\n"}},
        CallCase{"no_suffix",
                 "C",
                 {kMissingPair, "--LeftFileName=left", "--RightFileName=right"},
                 1,
                 {"left \"doesn't exist"}}),
    [](const auto& row) { return std::string(row.param.name); });

struct IniCase {
    const char* name;
    const char* content;
    int exit_code;
    std::vector<const char*> told;
};

class ParameterFiles : public testing::TestWithParam<IniCase> {};

TEST_P(ParameterFiles, FaultsAreToldWithTheirLine) {
    const IniCase& c = GetParam();
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    workshop.write("zemora.ini", c.content);
    const Outcome outcome =
        workshop.run({"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=-1", "--LeftRightOutput=0"});
    EXPECT_EQ(outcome.exit_code, c.exit_code) << outcome.text;
    for (const char* told : c.told) {
        EXPECT_TRUE(outcome.tells(told)) << told << " is missing in:\n" << outcome.text;
    }
    EXPECT_EQ(workshop.files().count("cs/foo_cs.bmp"), c.exit_code == 0 ? 1U : 0U);
}

const std::string kLongLine = "VerboseMode = 1\n" + std::string(600, 'x') + "\n";

INSTANTIATE_TEST_SUITE_P(
    Table, ParameterFiles,
    testing::Values(
        IniCase{"good", "VerboseMode = 1\nOutputHeight = 280 % small\n", 0, {"processed images: 1/1"}},
        IniCase{"outside_limits",
                "% comment\nOutputHeight = 99999\n",
                1,
                {"OutputHeight = 99999 outside limits", "Please hit Enter"}},
        IniCase{"no_value", "% comment\nOutputHeight =\n", 1, {"in line: ", "2"}},
        IniCase{"long_line", kLongLine.c_str(), 1, {"2 exceeds"}},
        IniCase{"faulty_line", "OutputHeight: 300\n", 0, {"Error in parameterfile", "OutputHeight: 300"}},
        IniCase{"other_version", "ZemoraVersion = 1.0\n", 1, {"doesn't suit"}},
        IniCase{"binary", "\x7f\x45LF\x02\x01\x01", 0, {"processed images: 1/1"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ParameterFiles, UnreadableFileStopsTheRunWithItsReason) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    std::filesystem::create_directory(workshop.path("zemora.ini"));
    const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp"});
    EXPECT_EQ(outcome.exit_code, 1) << outcome.text;
    EXPECT_TRUE(outcome.tells("The parameter file zemora.ini cannot be read: Is a directory"))
        << outcome.text;
}

TEST(ParameterFiles, NamedFileRulesAndItsFolderIsTheRoot) {
    Workshop workshop;
    std::filesystem::create_directory(workshop.path("setup"));
    workshop.write(
        "setup/my.ini",
        "InputMode = 0\nPathofImages = ..\\pictures\nLeftFileName = foo_l.bmp\nRightFileName = foo_r.bmp\n"
        "EstimateGeometry = -1\nLeftRightOutput = 0\n");
    save_pair(workshop, aligned_views(), "pictures/foo_l.bmp", "pictures/foo_r.bmp");
    const Outcome outcome = workshop.run({"setup/my.ini"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_EQ(workshop.files().count("pictures/cs/foo_cs.bmp"), 1U) << outcome.text;
}

TEST(Reports, TellThePairInTextAndEscapedHtml) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "a&b_l.bmp", "a&b_r.bmp");
    ASSERT_EQ(workshop.run({"a&b_l.bmp", "a&b_r.bmp", "--ReportMode=1", "--StereoOutput=0"}).exit_code, 0);
    const std::string text = read_text(workshop.path("zemora_report.txt"));
    const std::string html = read_text(workshop.path("zemora_report.html"));
    for (const char* told : {"a&b_l.bmp", "Mean error of height        = ", "processed images: 1/1"}) {
        EXPECT_NE(text.find(told), std::string::npos) << text;
    }
    EXPECT_NE(html.find("a&amp;b_l.bmp"), std::string::npos) << html;
    EXPECT_EQ(html.find("a&b"), std::string::npos);
    EXPECT_NE(html.find("</div></body></html>\n"), std::string::npos);
}

struct LayoutCase {
    std::vector<const char*> files;
    const char* told;
    const char* product;
};

class FolderCalls : public testing::TestWithParam<LayoutCase> {};

TEST_P(FolderCalls, TakeTheLayoutThatTheFilesShow) {
    const LayoutCase& c = GetParam();
    Workshop workshop;
    bool is_left = true;
    for (const std::string file : c.files) {
        if (file.ends_with("wide.bmp")) {
            const ConstPicture left = aligned_views().left.picture();
            const ConstPicture right = aligned_views().right.picture();
            const Bitmap wide = Bitmap::create(2 * left.width, left.height);
            for (int y = 0; y < left.height; ++y) {
                std::copy_n(left.row(y), left.width * kPixelBytes, wide.picture().row(y));
                std::copy_n(right.row(y), left.width * kPixelBytes, wide.picture().pixel(left.width, y));
            }
            workshop.save(file, wide.picture());
        } else {
            workshop.save(file, (is_left ? aligned_views().left : aligned_views().right).picture());
        }
        is_left = !is_left;
    }
    const Outcome outcome = workshop.run({"pictures", "--EstimateGeometry=-1"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells(c.told)) << outcome.text;
    EXPECT_FALSE(outcome.tells("could not be found")) << outcome.text;
    EXPECT_EQ(workshop.files().count(c.product), 1U) << outcome.text;
}

INSTANTIATE_TEST_SUITE_P(
    Table, FolderCalls,
    testing::Values(
        LayoutCase{{"pictures/a_l.bmp", "pictures/a_r.bmp", "pictures/b_l.bmp"},
                   "The names end in _l and _r",
                   "pictures/cs/a_cs.bmp"},
        LayoutCase{{"pictures/l/a.bmp", "pictures/r/a.bmp"}, "The folders l and r", "pictures/cs/a_cs.bmp"},
        LayoutCase{{"pictures/1.bmp", "pictures/2.bmp"}, "in turn (L-R-L-R)", "pictures/cs/1-2_cs.bmp"},
        LayoutCase{{"pictures/1wide.bmp"}, "at least twice as wide", "pictures/cl/1wide_cl.bmp"}));

TEST(EmptyFolder, HasNoLayout) {
    Workshop workshop;
    std::filesystem::create_directory(workshop.path("empty"));
    const Outcome outcome = workshop.run({"empty"});
    EXPECT_EQ(outcome.exit_code, 1) << outcome.text;
    EXPECT_FALSE(outcome.tells("L-R-L-R")) << outcome.text;
}

TEST(ExitCodes, TellScriptsWhetherEveryObjectWasMounted) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "a_l.bmp", "a_r.bmp");
    workshop.write("b_l.bmp", "no picture");
    workshop.write("b_r.bmp", "no picture");
    const std::vector<std::string> all{"--InputMode=1", "--EstimateGeometry=-1", "--LeftRightOutput=0"};
    const auto code = [&](std::vector<std::string> more) {
        more.insert(more.end(), all.begin(), all.end());
        return workshop.run(more).exit_code;
    };
    EXPECT_EQ(code({}), 0);
    EXPECT_EQ(code({"--ExitStatus=1"}), 3);
    EXPECT_EQ(workshop.run({"a_l.bmp", "a_r.bmp", "/ES=1", "--EstimateGeometry=-1"}).exit_code, 0);
}

TEST(Console, StepsOfAPipeAreWholeLinesWithoutControlCharacters) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp"});
    for (const char c : {'\r', '\a', '\x1b', '\b'}) {
        EXPECT_EQ(outcome.text.find(c), std::string::npos);
    }
    EXPECT_TRUE(outcome.tells("100.0 %\n"));
}

}  // namespace
}  // namespace zemora::test
