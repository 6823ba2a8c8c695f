#include "config/options.h"

#include <gtest/gtest.h>

#include "tests/config/config_rig.h"

namespace zemora {
namespace {

CommandLine read(const std::vector<std::string>& arguments) {
    return read_command_line(arguments,
                             [](const std::string& path) { return path == "/ab=c.jpg" || path == "-x.jpg"; });
}

struct Applied {
    ParameterSet parameters;
    std::string told;
    Language language = Language::english;
};

Applied apply(const std::vector<std::string>& arguments) {
    Applied applied;
    Console console;
    MessageCatalogue messages(Language::english);
    Voice voice(console, messages, applied.parameters);
    ::testing::internal::CaptureStdout();
    apply_options(read(arguments), applied.parameters, voice);
    console.flush();
    applied.told = ::testing::internal::GetCapturedStdout();
    applied.language = messages.language();
    return applied;
}

TEST(CommandLine, SettingsMayStandAnywhereInBothSpellings) {
    const CommandLine line = read({"/OH=1080", "l.jpg", "--outputWIDTH=1920", "r.jpg", "/VM:2"});
    EXPECT_EQ(line.error, CallError::none);
    EXPECT_EQ(line.positional, (std::vector<std::string>{"l.jpg", "r.jpg"}));
    ASSERT_EQ(line.settings.size(), 3U);
    EXPECT_EQ(line.settings[0].row->key, "OutputHeight");
    EXPECT_EQ(line.settings[1].row->key, "OutputWidth");
    EXPECT_EQ(line.settings[2].value, "2");
}

TEST(CommandLine, PathsThatBeginWithASlashArePositional) {
    const std::vector<std::string> paths = {"/home/a/l.jpg", "/ab=c.jpg", "/h/a.jpg", "/a", "-x.jpg"};
    const CommandLine line = read(paths);
    EXPECT_EQ(line.error, CallError::none);
    EXPECT_EQ(line.positional, paths);
}

TEST(CommandLine, TwoDashesEndTheOptions) {
    const CommandLine line = read({"--", "--OutputHeight=3", "/OH=3", "--help"});
    EXPECT_EQ(line.positional.size(), 3U);
    EXPECT_TRUE(line.settings.empty());
    EXPECT_FALSE(line.wants_help);
}

TEST(CommandLine, ShortSpellingsAskForHelpOnlyWhenAlone) {
    for (const char* alone : {"/h", "/?", "-h", "-H", "-?", "-help", "--Help"}) {
        EXPECT_TRUE(read({alone}).wants_help) << alone;
        EXPECT_EQ(read({alone}).error, CallError::none) << alone;
    }
    EXPECT_FALSE(read({"a.ini", "/h"}).wants_help);
    EXPECT_TRUE(read({"a.ini", "--help"}).wants_help);
    EXPECT_TRUE(read({"--version"}).wants_version);
}

struct WrongCase {
    const char* name;
    std::string argument;
    std::string told;
};

class WrongOptions : public ::testing::TestWithParam<WrongCase> {};

TEST_P(WrongOptions, NameTheNearest) {
    const CommandLine line = read({"l.jpg", GetParam().argument, "/QQ=1"});
    ASSERT_NE(line.error, CallError::none);
    EXPECT_EQ(call_error_text(line, MessageCatalogue(Language::english)), GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(
    CommandLine, WrongOptions,
    ::testing::Values(
        WrongCase{"code_in_lower_case", "/vm=2",
                  "Unknown option: /vm=2, perhaps meant: /VM= (VerboseMode)\n"},
        WrongCase{"code_same_letter", "/J9=2", "Unknown option: /J9=2, perhaps meant: /JQ= (JPG_Quality)\n"},
        WrongCase{"name_misspelt", "--OutputHight=2",
                  "Unknown option: --OutputHight=2, perhaps meant: --OutputHeight=\n"},
        WrongCase{"name_begun", "--Stamp=2", "Unknown option: --Stamp=2, perhaps meant: --StampFiles=\n"},
        WrongCase{"derived_field", "--WorkWidth=2",
                  "Unknown option: --WorkWidth=2. zemora --help shows all options.\n"},
        WrongCase{"nothing_near", "--banana", "Unknown option: --banana. zemora --help shows all options.\n"},
        WrongCase{"help_misspelt", "--hlep", "Unknown option: --hlep, perhaps meant: --help\n"},
        WrongCase{"version_begun", "--ver",
                  "Unknown option: --ver, perhaps meant: --version, --VerticalAx=, --VerboseMode=\n"},
        WrongCase{"one_dash", "-OutputHeight=3",
                  "Unknown option: -OutputHeight=3, perhaps meant: --OutputHeight=\n"},
        WrongCase{"letters", "--OutputHeight=abc",
                  "--OutputHeight=abc: OutputHeight takes a whole number from 0 to 16384.\n"},
        WrongCase{"empty",
                  "--outputheight=", "--outputheight=: OutputHeight takes a whole number from 0 to 16384.\n"},
        WrongCase{"fraction", "--OutputHeight=1.9",
                  "--OutputHeight=1.9: OutputHeight takes a whole number from 0 to 16384.\n"},
        WrongCase{
            "comma", "--GammaCorrection=1,2",
            "--GammaCorrection=1,2: GammaCorrection takes a number from 0 to 10, with a decimal point.\n"},
        WrongCase{"above", "--OutputHeight=99999999999",
                  "--OutputHeight=99999999999: OutputHeight takes a whole number from 0 to 16384.\n"},
        WrongCase{
            "below", "--UseHeight=-1000.5",
            "--UseHeight=-1000.5: UseHeight takes a number from -1000 to 1000, with a decimal point.\n"},
        WrongCase{"value_missing", "--OutputHeight",
                  "Option without value: --OutputHeight, please write: --OutputHeight=\n"}),
    [](const auto& suite) { return suite.param.name; });

TEST(Options, AreToldWithTheKeyPaddedByDots) {
    const Applied applied =
        apply({"/OH=1080", "--GammaRed=0.75", "/AF=23.976", "--SynchronizeDeshake=0", "--CaptionText=a=b c"});
    EXPECT_EQ(applied.told,
              "Parameter overwritten with option: OutputHeight...... = 1080\n"
              "Parameter overwritten with option: GammaRed.......... = 0.75\n"
              "Parameter overwritten with option: VideoFramerate.... = 23.976\n"
              "Parameter overwritten with option: SynchronizeDeshake = 0\n"
              "Parameter overwritten with option: CaptionText....... = a=b c\n");
    EXPECT_EQ(applied.parameters.video_framerate, 23.976);
    EXPECT_EQ(applied.parameters.caption_text, "a=b c");
}

TEST(Options, OneCodeSetsTwoFieldsAndANameOnlyItsOwn) {
    const ParameterSet both = apply({"/RO=2", "/FL=1"}).parameters;
    EXPECT_EQ(both.rename_orphans, 2);
    EXPECT_EQ(both.rename_refused, 2);
    EXPECT_EQ(both.frame_left_right, 1);
    EXPECT_EQ(both.first_line_index, 1);
    EXPECT_EQ(apply({"--FrameLeftRight=1"}).parameters.first_line_index, 0);
}

TEST(CommandLine, NamedNumbersAreTakenInEveryUsualSpelling) {
    for (const char* good : {"--OutputHeight=+0720", "--UseHeight=-.5", "--UseHeight=1e2", "--UseHeight=3.",
                             "--GraphicalInterface=123456", "--CaptionText=1,2", "--UseHeight= 5"}) {
        EXPECT_EQ(read({good}).error, CallError::none) << good;
    }
    for (const char* bad :
         {"--OutputHeight=1e2", "--UseHeight=1e", "--UseHeight=5-", "--UseHeight=1-2", "--UseHeight=--2",
          "--UseHeight=inf", "--UseHeight=nan", "--OutputHeight=12 34", "--OutputHeight=-"}) {
        EXPECT_EQ(read({bad}).error, CallError::no_number) << bad;
    }
}

TEST(Options, OfCodesHaveNoLimitsAndLeaveNumbersAloneWithoutOne) {
    const ParameterSet set = apply({"/OH=99999", "/IR=1", "/OW=wide", "/GA=", "/OH=5x"}).parameters;
    EXPECT_EQ(set.output_height, 5) << "the last setting counts, read up to the first letter";
    EXPECT_EQ(set.iterative_min, 1);
    EXPECT_EQ(set.output_width, 0);
    EXPECT_EQ(set.gamma_correction, 1.0F);
    EXPECT_EQ(apply({"/OH=99999"}).parameters.output_height, 99999);
}

TEST(Options, LanguageActsAtOnce) {
    const Applied applied = apply({"/OH=1", "/LG=0", "/OW=2"});
    EXPECT_EQ(applied.language, Language::german);
    EXPECT_EQ(testing::count_of(applied.told, "Parameter overwritten with option: OutputHeight"), 1);
    EXPECT_EQ(testing::count_of(applied.told, "Parameter ueberschrieben mit Option: OutputWidth"), 1);
}

TEST(Options, EarlySettingsAreTheLastOfTheLine) {
    const EarlySettings early = early_settings(read({"/SE=3", "/LG=0", "--StopAtError=-1"}));
    EXPECT_EQ(early.stop_at_error, -1);
    EXPECT_EQ(early.language, Language::german);
    EXPECT_FALSE(early_settings(read({"/SE=x"})).stop_at_error.has_value());
}

}  // namespace
}  // namespace zemora
