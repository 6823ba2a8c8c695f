#include "config/parameter_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "config/parameter_table.h"
#include "tests/config/config_rig.h"

namespace zemora {
namespace {

using testing::count_of;
using testing::read_content;
using testing::read_path;
using testing::ReadBack;
using testing::TemporaryFile;

using namespace std::string_literals;

struct NumberCase {
    const char* name;
    std::string content;
    int output_height;
    double gamma;
};

class NumberLines : public ::testing::TestWithParam<NumberCase> {};

TEST_P(NumberLines, GiveTheValue) {
    const ReadBack back = read_content(GetParam().content);
    EXPECT_EQ(back.parameters.output_height, GetParam().output_height);
    EXPECT_FLOAT_EQ(back.parameters.gamma_correction, static_cast<float>(GetParam().gamma));
}

INSTANTIATE_TEST_SUITE_P(
    ParameterFile, NumberLines,
    ::testing::Values(
        NumberCase{"plain", "OutputHeight=1080\nGammaCorrection=2.2\n", 1080, 2.2},
        NumberCase{"blanks_in_key", "  Output Height  =  1080\n Gamma Correction=2.2\n", 1080, 2.2},
        NumberCase{"comments", "OutputHeight = 7 % not 8\nGammaCorrection=3%\n", 7, 3.0},
        NumberCase{"comment_line_passed_over", "% OutputHeight = 9\nOutputHeight = 8\n", 8, 1.0},
        NumberCase{"first_line_counts", "OutputHeight=5\nOutputHeight=6\n", 5, 1.0},
        NumberCase{"key_in_other_case", "outputheight=5\n", 0, 1.0},
        NumberCase{"prefix_of_the_value", "OutputHeight=12abc\nGammaCorrection=1.5,7\n", 12, 1.5},
        NumberCase{"letters_leave_the_default", "OutputHeight=abc\nGammaCorrection=nan\n", 0, 1.0},
        NumberCase{"signs", "OutputHeight=+12\nGammaCorrection=+1e-1\n", 12, 0.1},
        NumberCase{"too_small_for_a_real", "GammaCorrection=1e-999\n", 0, 0.0},
        NumberCase{"lower_limits", "OutputHeight=0\nGammaCorrection=0\n", 0, 0.0},
        NumberCase{"upper_limits", "OutputHeight=16384\nGammaCorrection=10\n", 16384, 10.0},
        NumberCase{"windows_line_ends", "OutputHeight=12\r\nGammaCorrection=2\r\n", 12, 2.0},
        NumberCase{"byte_order_mark_and_tabs", "\xEF\xBB\xBFOutputHeight\t=\t12\n", 12, 1.0},
        NumberCase{"last_line_without_end", "GammaCorrection=2\nOutputHeight=12", 12, 2.0},
        NumberCase{"headings_passed_over", "[Output]\nsome words\nOutputHeight=12\n", 12, 1.0}),
    [](const auto& suite) { return suite.param.name; });

struct TextCase {
    const char* name;
    std::string line;
    std::string caption;
};

class TextLines : public ::testing::TestWithParam<TextCase> {};

TEST_P(TextLines, GiveTheText) {
    EXPECT_EQ(read_content(GetParam().line + "\n").parameters.caption_text, GetParam().caption);
}

INSTANTIATE_TEST_SUITE_P(
    ParameterFile, TextLines,
    ::testing::Values(
        TextCase{"trimmed", "CaptionText  =   two words   % comment", "two words"},
        TextCase{"semicolon_belongs_to_it", "CaptionText=a;", "a;"},
        TextCase{"second_equality_sign", "CaptionText=a=b", "a=b"}, TextCase{"empty", "CaptionText=", ""},
        TextCase{"percent_before_the_sign", "CaptionText % a = b", "b"},
        TextCase{"blank_before_the_key", " CaptionText=a", "Caption"},
        TextCase{"no_equality_sign", "CaptionText of my pictures", "Caption"},
        TextCase{"backslashes_stay", R"(CaptionText=a\b)", R"(a\b)"},
        TextCase{"utf8", "CaptionText=\xC3\xA9t\xC3\xA9", "\xC3\xA9t\xC3\xA9"},
        TextCase{"windows_1252", "CaptionText=\x80 M\xFCller", "\xE2\x82\xAC M\xC3\xBCller"},
        TextCase{"cut_off_utf8", "CaptionText=a\xC3", "a\xC3\x83"},
        TextCase{"surrogate_is_no_utf8", "CaptionText=\xED\xA0\xBF", "\xC3\xAD\xC2\xA0\xC2\xBF"},
        TextCase{"longest_line", "CaptionText=" + std::string(498, 'x'), std::string(498, 'x')}),
    [](const auto& suite) { return suite.param.name; });

TEST(ParameterFile, EmptyFileNotesEveryNotedKeyAndKeepsTheDefaults) {
    const ReadBack back = read_content("");
    int noted = 0;
    for (const ParameterRow& row : kParameterRows) {
        noted += row.missing == MissingKey::noted && !acts_when_not_set(row) ? 1 : 0;
        EXPECT_EQ(value_text(row, back.parameters), value_text(row, default_parameters())) << row.key;
    }
    EXPECT_TRUE(back.result.found);
    EXPECT_TRUE(back.result.default_used);
    EXPECT_EQ(count_of(back.told, " not found in parameterfile!\n"), noted);
    EXPECT_NE(back.told.find(
                  "GammaRed not found in parameterfile!\nDefault value will be used: GammaRed = 0.8\n\n"),
              std::string::npos);
    EXPECT_EQ(back.told.find("MatrixOutput"), std::string::npos) << "a silent key was noted";
    EXPECT_EQ(count_of(back.told, std::string(kWaitingLine)), 0);
}

TEST(ParameterFile, NotesStandInReadingOrder) {
    const std::string told = read_content("").told;
    std::size_t before = 0;
    for (const char* key : {"Language", "StopAtError", "VerboseMode", "PreSettings", "Passepartout",
                            "ExtraOutput", "MakeAV", "ThinBlackLine", "PasseOutput", "AutoFrameOffset",
                            "StartforAnalyse", "ExifCopyright", "DoPostZemora"}) {
        const std::size_t at = told.find(key + " not found"s);
        ASSERT_NE(at, std::string::npos) << key;
        EXPECT_GE(at, before) << key;
        before = at;
    }
}

TEST(ParameterFile, WaitsOnceForUsedDefaultsWhenWarningsStop) {
    EXPECT_EQ(count_of(read_content("StopAtError=2\n").told, std::string(kWaitingLine)), 1);
    EXPECT_EQ(
        count_of(read_content("StopAtError=2\n", Language::english, {0, {}}).told, std::string(kWaitingLine)),
        0);
}

TEST(ParameterFile, LongerKeyBeforeTheShorterOneIsToldAsFaulty) {
    const std::string faulty =
        "Error in parameterfile\nline: DeshakeFilterXUse=0\nsearched for: DeshakeFilterX\n";
    const ReadBack wrong = read_content("StopAtError=0\nDeshakeFilterXUse=0\nDeshakeFilterX=3\n");
    EXPECT_EQ(count_of(wrong.told, faulty), 1);
    EXPECT_EQ(count_of(wrong.told, std::string(kWaitingLine)), 0);
    EXPECT_FLOAT_EQ(wrong.parameters.deshake_filter_x, 3.0F);
    EXPECT_EQ(wrong.parameters.deshake_filter_x_use, 0);
    const ReadBack right = read_content("DeshakeFilterX=3\nDeshakeFilterXUse=0\n");
    EXPECT_EQ(count_of(right.told, "searched for"), 0);
    EXPECT_FLOAT_EQ(right.parameters.deshake_filter_x, 3.0F);
}

TEST(ParameterFile, FaultyLineWaitsWhenErrorsStop) {
    const ReadBack back = read_content("StopAtError=1\nOutputHeight: 5\n");
    EXPECT_NE(
        back.told.find("line: OutputHeight: 5\nsearched for: OutputHeight\n" + std::string(kWaitingLine)),
        std::string::npos);
}

TEST(ParameterFile, FaultyLineDoesNotWaitWhileTheWaitingLevelIsSearched) {
    const ReadBack back = read_content("StopAtErrors=3\nStopAtError=0\n");
    EXPECT_EQ(count_of(back.told, "searched for: StopAtError\n"), 1);
    EXPECT_EQ(count_of(back.told, std::string(kWaitingLine)), 0);
}

TEST(ParameterFile, LanguageOfTheFileHoldsForAllLaterNotes) {
    const ReadBack german = read_content("OutputHeight=1\nLanguage=0\n");
    EXPECT_EQ(german.language_after, Language::german);
    EXPECT_NE(german.told.find("OutputWidth in der Parameterdatei nicht gefunden!"), std::string::npos);
    EXPECT_EQ(german.told.find("not found"), std::string::npos);
    const ReadBack english = read_content("Language=1\n", Language::german);
    EXPECT_EQ(english.told.find("nicht gefunden"), std::string::npos);
    const ReadBack early = read_content("Language=1\n", Language::german, {{}, Language::german});
    EXPECT_EQ(early.told.find("not found"), std::string::npos)
        << "the option /LG must rule while the file is read";
    EXPECT_EQ(early.parameters.language, 1);
}

struct BatchCase {
    const char* name;
    std::string content;
    std::string batch;
};

class Batches : public ::testing::TestWithParam<BatchCase> {};

TEST_P(Batches, ReachToTheNextPercentSign) {
    EXPECT_EQ(post_run_batch(read_content(GetParam().content).parameters), GetParam().batch);
}

INSTANTIATE_TEST_SUITE_P(
    ParameterFile, Batches,
    ::testing::Values(
        BatchCase{"lines", "DoPostZemora = % c\necho 1\necho 2\n%\nCaptionText=a\n", "echo 1\necho 2\n"},
        BatchCase{"starts_on_the_line", "DoPostZemora = echo 1 % c\necho 2%x\n", "echo 1\necho 2"},
        BatchCase{"end_of_file", "DoPostZemora =\necho 1", "echo 1\n"}, BatchCase{"missing", "", ""},
        BatchCase{"blank", "DoPostZemora = %\n \n%\n", ""},
        BatchCase{"default_in_other_blanks",
                  "DoPostZemora=%\nREM  Insert your batch commands here.\n"
                  "REM Hier Batch kommandos eintragen.\n%\n",
                  ""}),
    [](const auto& suite) { return suite.param.name; });

TEST(ParameterFile, MissingFileLeavesTheDefaultsAndTheLanguageOfTheUser) {
    const ReadBack usual = read_path("/nowhere/zemora.ini", Language::german);
    EXPECT_FALSE(usual.result.found);
    EXPECT_EQ(usual.parameters.language, 0);
    EXPECT_EQ(
        usual.told,
        "Die gewuenschte Inidatei /nowhere/zemora.ini wurde nicht gefunden. Alle Parameter default.\n\n");
    const ReadBack other = read_path("/nowhere/other.ini");
    EXPECT_EQ(count_of(other.told, std::string(kWaitingLine)), 1) << "another name than the usual one waits";
    EXPECT_EQ(count_of(read_path("", Language::english, {0, {}}).told, std::string(kWaitingLine)), 0);
}

TEST(ParameterFile, EveryVersionOfTheSeriesPasses) {
    EXPECT_TRUE(read_content("ZemoraVersion = 0.9i99 beta\n").result.found);
}

struct FatalCase {
    const char* name;
    std::string content;
    std::string told;  ///< Followed by the waiting line.
};

class FatalFiles : public ::testing::TestWithParam<FatalCase> {};

TEST_P(FatalFiles, EndTheRunWithTheirMessage) {
    const TemporaryFile file("StopAtError=0\n" + GetParam().content);
    const ReadBack back = read_path(file.path());
    EXPECT_TRUE(back.stopped);
    EXPECT_TRUE(back.told.ends_with(GetParam().told + std::string(kWaitingLine) + "\n")) << back.told;
}

INSTANTIATE_TEST_SUITE_P(
    ParameterFile, FatalFiles,
    ::testing::Values(
        FatalCase{"long_line", "% " + std::string(509, 'x') + "\n",
                  "Error in the parameterfile:\nInput line no. 2 exceeds maximum of 256 characters!\n"},
        FatalCase{"no_value", "\nOutputHeight = % 5\n", "Error in the parameterfile:\n  in line: 3\n"},
        FatalCase{"no_equality_sign", "OutputHeight\n",
                  "  in line: 2\n        no equality sign found in line!\n"},
        FatalCase{"integer_too_large", "OutputHeight=16385\n",
                  "Error in the parameterfile:\n Input value OutputHeight = 16385 outside limits!\n"
                  " 0 < value < 16384\n"},
        FatalCase{"integer_too_small", "IterativeMin=2\n",
                  " Input value IterativeMin = 2 outside limits!\n 3 < value < 20\n"},
        FatalCase{"integer_beyond_32_bits", "OutputHeight=99999999999\n",
                  " Input value OutputHeight = 2147483647 outside limits!\n 0 < value < 16384\n"},
        FatalCase{"real_outside", "PreVergenceV=-7.6\n",
                  " Input value PreVergenceV = -7.600000 outside limits!\n -7.500000 < value < 7.500000\n"},
        FatalCase{
            "other_version", "ZemoraVersion=0.8\n",
            "The ini-file doesn't suit to the program version!\nProgram version: 0.9i4, ini-file: 0.8\n"}),
    [](const auto& suite) { return suite.param.name; });

}  // namespace
}  // namespace zemora
