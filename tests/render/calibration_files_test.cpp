#include "render/calibration_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "render/color_management.h"
#include "tests/render/render_scene.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using testing::Rig;

constexpr const char* kMonitorName = "tintrovela_monitor.txt";
constexpr const char* kPrintName = "tintrovela_print.txt";
constexpr const char* kColourName = "zemora_colors.txt";
constexpr const char* kPrintText =
    "Tintrovela Version 0.2\n81\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n13\n14\n";

/// A folder of calibration files and what is told about them.
class CalibrationFiles : public ::testing::Test {
protected:
    void SetUp() override {
        rig_.parameters.path_of_images = folder_.path();
        rig_.parameters.verbose_mode = 2;
    }

    void write(const char* name, const std::string& text) const { test::write_text(folder_ / name, text); }
    template <class Read>
    auto told(Read read) {
        ::testing::internal::CaptureStdout();
        auto values = read(folder_.path(), rig_.voice);
        rig_.console.flush();
        text_ = ::testing::internal::GetCapturedStdout();
        return values;
    }
    /// The colour file of the settings.
    [[nodiscard]] Result<ColorManagement> read_colours() const {
        return read_colour_file(colour_file(rig_.parameters).value_or(ColourFile()), rig_.messages);
    }

    test::TestFolder folder_;
    Rig rig_;
    std::string text_;
};

TEST_F(CalibrationFiles, MonitorValuesAreReadAndListed) {
    write(kMonitorName,
          "\xEF\xBB\xBF"
          "0.25\r\n +0.5 \r\n-1e-1\r\n.125");
    const MonitorCalibration values = told(read_monitor_calibration);
    EXPECT_EQ(values.white_red, 0.25F);
    EXPECT_EQ(values.white_cyan, 0.5F);
    EXPECT_EQ(values.black_red, -0.1F);
    EXPECT_EQ(values.black_cyan, 0.125F);
    EXPECT_EQ(text_,
              "AnaglyphType = 6\nUsing values from file tintrovela_monitor.txt:\n"
              "white_red = 0.25\nwhite_cya = 0.5\nblack_red = -0.1\nblack_cya = 0.125\n");
    rig_.parameters.verbose_mode = 1;
    (void)told(read_monitor_calibration);
    EXPECT_EQ(text_, "");
}

TEST_F(CalibrationFiles, DamagedMonitorFileGivesStandardValues) {
    struct Row {
        const char* text;
        const char* told;
    };
    for (const Row& row : {Row{"", "line 1 "}, Row{"1\n2\n3\n", "line 4 "}, Row{"1\n2,5\n3\n4\n", "line 2 "},
                           Row{"1\n2\nnan\n4\n", "line 3 "}, Row{"1e99\n2\n3\n4\n", "line 1 "},
                           Row{"1\n\n2\n3\n4\n", "line 2 "}, Row{"inf\n2\n3\n4\n", "line 1 "}}) {
        write(kMonitorName, row.text);
        const MonitorCalibration values = told(read_monitor_calibration);
        EXPECT_EQ(values.white_red, 0.0F) << row.text;
        EXPECT_THAT(text_, HasSubstr(row.told)) << row.text;
        EXPECT_THAT(text_, Not(HasSubstr("Using values")));
    }
}

TEST_F(CalibrationFiles, MissingFileOrFolderGivesStandardValues) {
    const std::string missing = " couldn't be found.\nStandard values are used (all values zero).\n";
    EXPECT_EQ(told(read_monitor_calibration).black_cyan, 0.0F);
    EXPECT_EQ(text_, folder_ / kMonitorName + missing);
    std::filesystem::create_directory(folder_ / kPrintName);
    EXPECT_EQ(told(read_print_calibration).green_percent, 100);
    EXPECT_EQ(text_, folder_ / kPrintName + missing);
}

TEST_F(CalibrationFiles, PrintValuesStandOnTheirLines) {
    write(kPrintName, kPrintText);
    const PrintCalibration p = told(read_print_calibration);
    EXPECT_EQ(p.green_percent, 81);
    const float in_file_order[] = {p.white_red,
                                   p.black_cyan,
                                   p.shape_red,
                                   p.white_cyan,
                                   p.black_red,
                                   p.shape_cyan,
                                   p.gamma_white_red_red,
                                   p.gamma_white_red_cyan,
                                   p.gamma_black_red_red,
                                   p.gamma_black_red_cyan,
                                   p.gamma_white_cyan_cyan,
                                   p.gamma_white_cyan_red,
                                   p.gamma_black_cyan_cyan,
                                   p.gamma_black_cyan_red};
    for (int i = 0; i < 14; ++i) {
        EXPECT_EQ(in_file_order[i], static_cast<float>(i + 1)) << "line " << i + 3;
    }
    EXPECT_THAT(text_, HasSubstr("AnaglyphType = 7\nUsing values from file tintrovela_print.txt:\n"
                                 "GreenValue        = 81\nwhite_red         = 1\nblack_red         = 5\n"
                                 "shape_red         = 3\nwhite_cya         = 4\nblack_cya         = 2\n"
                                 "shape_cya         = 6\ngamma_whiteredred = 7\n"));
}

TEST_F(CalibrationFiles, PrintFileOfAnotherVersionOrDamagedAsksForANewOne) {
    const std::string text = kPrintText;
    struct Row {
        std::string text;
        const char* told;
    };
    for (const Row& row :
         {Row{"", "doesn't match to this program version!\n"},
          Row{"Tintrovela Version 0.3" + text.substr(22), "doesn't match to this program version!\n"},
          Row{"Tintrovela Version 0.2 " + text.substr(22), "doesn't match to this program version!\n"},
          Row{text.substr(0, text.size() - 3), "line 16 "}, Row{text.substr(0, 23) + "81.5\n", "line 2 "}}) {
        write(kPrintName, row.text);
        const PrintCalibration values = told(read_print_calibration);
        EXPECT_EQ(values.green_percent, 100) << row.text;
        EXPECT_EQ(values.white_red, 0.0F) << row.text;
        EXPECT_EQ(values.gamma_white_red_red, 1.0F) << row.text;
        EXPECT_THAT(text_, HasSubstr(row.told)) << row.text;
        EXPECT_THAT(text_, HasSubstr("create a new tintrovela_print.txt.\n")) << row.text;
    }
}

constexpr const char* kMatrices =
    "% left\n1 2 3\n\n4 5 6\n7 8 9\n   \n%right\n.1 .2 .3 % red\n-0.5 .5 .6\n.7 .8 .9\n";

TEST_F(CalibrationFiles, ColourFileIsReadByItsDataLines) {
    rig_.parameters.anaglyph_type = 8;
    rig_.parameters.ext_color_management = 2;  // the anaglyph wants exponents all the same
    write(kColourName, std::string(kMatrices) + "2.2 2.3 2.4\r\n0 0.5 0.6");
    const ColorManagement colours = *read_colours();
    EXPECT_EQ(colours.left[0][2], 3.0F);
    EXPECT_EQ(colours.left[2][0], 7.0F);
    EXPECT_EQ(colours.right[1][0], -0.5F);
    EXPECT_EQ(colours.right[2][2], 0.9F);
    EXPECT_EQ(colours.gamma_in, (std::array<float, 3>{2.2F, 2.3F, 2.4F}));
    EXPECT_EQ(colours.gamma_out, (std::array<float, 3>{0.0F, 0.5F, 0.6F}));
    EXPECT_TRUE(colours.field_in[0].empty());
}

TEST_F(CalibrationFiles, ColourTablesAreReadByColumn) {
    rig_.parameters.ext_color_management = 2;
    std::string text = kMatrices;
    for (int i = 0; i < 2 * ColorManagement::kFieldLevels; ++i) {
        text += std::to_string(i) + ' ' + std::to_string(i + 10000) + "  " + std::to_string(i + 20000) + '\n';
    }
    write(kColourName, text);
    const ColorManagement colours = *read_colours();
    EXPECT_EQ(colours.field_in[1][4095], 14095);
    EXPECT_EQ(colours.field_out[0][0], 4096);
    EXPECT_EQ(colours.field_out[2][4095], 28191);
}

TEST_F(CalibrationFiles, ColourFileIsOnlyReadWhereItIsUsed) {
    EXPECT_FALSE(colour_file(rig_.parameters)) << "the file is not there";
    EXPECT_TRUE(read_colour_change(rig_.parameters, rig_.messages));
}

TEST_F(CalibrationFiles, FaultyColourFileEndsTheRunWithItsFirstFault) {
    struct Row {
        int type, management;
        std::string text;
        const char* told;
    };
    const std::string good = kMatrices;
    std::string fields = good;
    for (int i = 0; i < 5000; ++i) {
        fields += i == 4500 ? "1 -1 2\n" : "1 1 1\n";
    }
    const std::vector<Row> rows = {
        {8, 0, "% nothing else\n%\n", "left  red->red = -1 "},
        {9, 0, "1 1 1\n-0.6 1 1\n1 -0.7 1\n", "left  red->grn = -0.6 "},
        {5, 1, "1 1 1\n1 1 1\n1 1 1\n1 nan 1\n1 1 1\n1 1 1\n", "right grn->red = -1 "},
        {5, 1, "1 1 1\n1 1 1\n1 1 1\n1 1 1\n1 1 1\n1 1 0,5\n", "right blu->blu = -1 "},
        {8, 0, good + "1 1\n1 1 1\n", "Gamma-Exponent ungueltig: gamma_blu = -1 "},
        {8, 0, good + "1 1 1\n1 -0.2 1\n", "Inverser Gamma-Exponent ungueltig: gamma_grn = -0.2 "},
        {8, 0, good + "1 1 1\n", "Inverser Gamma-Exponent ungueltig: gamma_red = -1 "},
        {5, 2, good + "1 1 1\n", "Element Nr.1 der 1.Gamma-Bewertungsfunktion ungueltig"},
        {5, 2, fields, "Element Nr.404 der 2.Gamma-Bewertungsfunktion ungueltig"},
    };
    for (const Row& row : rows) {
        rig_.parameters.anaglyph_type = row.type;
        rig_.parameters.ext_color_management = row.management;
        write(kColourName, row.text);
        const auto colours = read_colours();
        ASSERT_FALSE(colours) << row.told;
        EXPECT_TRUE(colours.failure().ends_run && colours.failure().note.waits);
        EXPECT_THAT(
            colours.failure().note.text,
            ::testing::AllOf(HasSubstr("Error with the external Color Management File: zemora_colors.txt"),
                             HasSubstr(row.told)))
            << row.told;
    }
    std::filesystem::remove(folder_ / kColourName);
    EXPECT_THAT(read_colours().failure().note.text, HasSubstr("zemora_colors.txt cannot be opened."));
}

}  // namespace
}  // namespace zemora
