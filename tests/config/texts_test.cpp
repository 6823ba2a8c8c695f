#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "config/help_text.h"
#include "config/messages.h"
#include "config/parameter_table.h"
#include "tests/config/config_rig.h"

namespace zemora {
namespace {

std::string source_file(const std::string& name) {
    std::ifstream file(std::filesystem::path(__FILE__).parent_path() / "../.." / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(MadeTexts, InTheSourceTreeAreThoseOfTheTable) {
    const char* advice = "run zemora_texts on the source directory";
    EXPECT_EQ(source_file("resource/zemora.ini"), sample_parameter_file(Language::english)) << advice;
    EXPECT_EQ(source_file("resource/zemora_de.ini"), sample_parameter_file(Language::german)) << advice;
    EXPECT_EQ(source_file("doc/zemora.1"), manual_page(Language::english)) << advice;
    EXPECT_EQ(source_file("doc/zemora.de.1"), manual_page(Language::german)) << advice;
}

TEST(MadeTexts, SampleFileReadsBackAsTheDefaultsWithoutAWord) {
    for (const Language language : {Language::english, Language::german}) {
        const testing::ReadBack back = testing::read_content(sample_parameter_file(language));
        EXPECT_EQ(back.told, "");
        EXPECT_FALSE(back.parameters.given.contains("RotMirInputLeft")) << "left to the Exif of the files";
        ParameterSet expected;
        expected.language = static_cast<int>(language);  // each file speaks its own
        for (const ParameterRow& row : kParameterRows) {
            EXPECT_EQ(value_text(row, back.parameters), value_text(row, expected)) << row.key;
        }
    }
}

TEST(MadeTexts, HelpNamesEveryOptionInBothSpellings) {
    const std::string help = help_text(Language::german);
    for (const ParameterRow& row : kParameterRows) {
        const std::string line = "/" + std::string(row.option) + "  --" + std::string(row.key) + "=";
        EXPECT_EQ(testing::count_of(help, line), row.option.empty() ? 0 : 1) << row.key;
    }
}

TEST(ParameterTable, PathsTakeBackslashesAsSeparatorsAndTextsDoNot) {
    ParameterSet set;
    set.left_file_name = R"(l\x\foo_l.jpg)";
    set.path_of_output = R"(D:\out)";
    set.image_text = R"(a\b)";
    use_slashes_in_paths(set);
    EXPECT_EQ(set.path_of_images, "./");
    EXPECT_EQ(set.left_file_name, "l/x/foo_l.jpg");
    EXPECT_EQ(set.image_text, R"(a\b)");
    ASSERT_NE(find_path_with_drive(set), nullptr);
    EXPECT_EQ(find_path_with_drive(set)->key, "PathofOutput");
    EXPECT_EQ(find_path_with_drive(default_parameters()), nullptr)
        << "the default converter counts as a drive";
}

std::string line_ends_around(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of('\n'), text.size());
    const std::size_t last = text.find_last_not_of('\n');
    return std::to_string(first) + "/" +
           std::to_string(last == std::string_view::npos ? 0 : text.size() - last);
}

TEST(Messages, BothLanguagesBeginAndEndAlike) {
    for (const MessageRow& row : kMessageTable) {
        const std::string_view english = row.english;
        const std::string_view german = row.german;
        EXPECT_EQ(line_ends_around(english), line_ends_around(german)) << english;
        EXPECT_EQ(english.back() == ' ', german.back() == ' ') << english;
        EXPECT_EQ(english.find_first_not_of(' '), german.find_first_not_of(' ')) << english;
        EXPECT_TRUE(std::all_of(german.begin(), german.end(), [](char c) { return c > 0; })) << german;
    }
}

TEST(Messages, LabelsOfOneColumnAreEquallyWideInEachLanguage) {
    const std::vector<std::vector<Msg>> columns = {
        {Msg::stereo_analyse_error_of_height, Msg::stereo_analyse_error_of_size,
         Msg::stereo_analyse_error_of_rotation, Msg::stereo_analyse_error_of_vergence_v,
         Msg::stereo_analyse_error_of_vergence_h, Msg::stereo_analyse_input_near_point_disparity,
         Msg::stereo_analyse_input_far_point_disparity},
        {Msg::stereo_analyse_used_for_height, Msg::stereo_analyse_used_for_size,
         Msg::stereo_analyse_used_for_rotation, Msg::stereo_analyse_used_for_vergence,
         Msg::stereo_analyse_used_for_window},
        {Msg::stereo_analyse_far_point_disparity, Msg::stereo_analyse_near_point_disparity,
         Msg::stereo_analyse_absolute_deviation, Msg::stereo_analyse_relative_image_deviation,
         Msg::stereo_analyse_label_blank, Msg::stereo_analyse_curtain_left,
         Msg::stereo_analyse_curtain_right},
        {Msg::stereo_analyse_output_width, Msg::stereo_analyse_output_height,
         Msg::stereo_analyse_output_width_to_height},
        {Msg::main_sequence_error_of_height, Msg::main_sequence_error_of_size,
         Msg::main_sequence_error_of_rotation, Msg::main_sequence_error_of_vergence_v,
         Msg::main_sequence_error_of_vergence_h},
    };
    for (const Language language : {Language::english, Language::german}) {
        const MessageCatalogue messages(language);
        for (const auto& column : columns) {
            for (const Msg label : column) {
                EXPECT_EQ(std::string(messages.raw(label)).size(),
                          std::string(messages.raw(column[0])).size())
                    << messages.raw(label);
            }
        }
    }
}

TEST(Messages, UnknownNumberTellsItselfAndGoesOn) {
    EXPECT_EQ(MessageCatalogue(Language::german).find(MessageModule::main, 7),
              "Message wurde nicht gefunden, bitte Fehler Nr. 7 melden.\n");
    EXPECT_EQ(MessageCatalogue(Language::english).find(MessageModule::main, 242),
              "The file %s cannot be opened.\n");
}

TEST(Messages, FillTheirPlaceholders) {
    const MessageCatalogue messages(Language::german);
    EXPECT_EQ(messages.text<Msg::parameters_line_too_long>(12),
              "Die Eingabezeile Nr. 12 ueberschreitet das Maximum von 256 Zeichen!\n");
    EXPECT_EQ(messages.text<Msg::video_previewer_zoom_needed>(2.25),
              "Benoetigte Skalierung, um schwarze Raender zu vermeiden =  2.2% Zoom.\n\n");
}

}  // namespace
}  // namespace zemora
