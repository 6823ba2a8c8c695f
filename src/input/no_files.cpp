#include "input/no_files.h"

#include <array>

#include "input/file_selection.h"
#include "platform/process_end.h"

namespace zemora {

namespace {

enum class Line {
    none,
    image_type,
    search_path,
    search_paths_of_views,
    check_stereo_name,
    check_names,
    check_marked_stereo_names,
    check_marked_names,
    check_format,
    check_list,
    blank,
};

/// What is told behind the way of the input, for the modes `first` to `last`.
struct NoFilesRow {
    int first;
    int last;
    bool two_files;
    std::array<Line, 4> lines;
};
// clang-format off
constexpr std::array kRows{
    NoFilesRow{0,  0,  false, {Line::check_stereo_name}},
    NoFilesRow{0,  0,  true,  {Line::check_names}},
    NoFilesRow{1,  2,  false, {Line::image_type, Line::search_path, Line::check_marked_stereo_names}},
    NoFilesRow{1,  2,  true,  {Line::image_type, Line::check_names, Line::check_marked_names}},
    NoFilesRow{4,  4,  false, {Line::image_type, Line::search_path, Line::check_format, Line::blank}},
    NoFilesRow{3,  8,  true,  {Line::image_type, Line::search_path, Line::check_marked_names}},
    NoFilesRow{9,  9,  true,  {Line::image_type, Line::search_paths_of_views, Line::check_marked_names}},
    NoFilesRow{10, 10, false, {Line::check_list, Line::blank}},
    NoFilesRow{10, 10, true,  {Line::check_list}},
};
// clang-format on

std::string text_of(Line line, const ParameterSet& parameters, const MessageCatalogue& messages) {
    const std::string root = printable(parameters.path_of_images);
    switch (line) {
        case Line::none: return {};
        case Line::image_type:
            return messages.text<Msg::files_input_your_image_type>() + printable(parameters.image_type) +
                   '\n';
        case Line::search_path: return messages.text<Msg::files_input_search_path>() + root + '\n';
        case Line::search_paths_of_views:
            return messages.text<Msg::files_input_search_paths>() + root + "/l, " + root + "/r\n";
        case Line::check_stereo_name: return messages.text<Msg::files_input_check_stereo_file_name>();
        case Line::check_names: return messages.text<Msg::files_input_check_file_name_settings>();
        case Line::check_marked_stereo_names: return messages.text<Msg::files_input_check_path_and_s_names>();
        case Line::check_marked_names: return messages.text<Msg::files_input_check_path_and_l_r_names>();
        case Line::check_format: return messages.text<Msg::files_input_check_path_and_format>();
        case Line::check_list: return messages.text<Msg::files_input_check_names_in_list>();
        case Line::blank: return "\n";
    }
    return {};
}

[[noreturn]] void end_run(Voice& voice) {
    voice.wait(Severity::error);
    end_process(kExitFailure);
}

}  // namespace

void end_without_files(const ParameterSet& parameters, Voice& voice) {
    const int mode = parameters.input_mode;
    const int layout = parameters.stereo_image_input;
    voice.say<Msg::files_input_no_suited_files>();
    for (const NoFilesRow& row : kRows) {
        if (mode < row.first || mode > row.last || takes_two_files(layout) != row.two_files) {
            continue;
        }
        voice.print(voice.messages().text<Msg::files_input_your_input_mode>() + std::to_string(mode) + '\n');
        voice.print(voice.messages().text<Msg::files_input_your_stereo_image_input>() +
                    std::to_string(layout) + '\n');
        for (const Line line : row.lines) {
            voice.print(text_of(line, parameters, voice.messages()));
        }
    }
    end_run(voice);
}

void end_with_too_many_pairs(Voice& voice, long long pairs) {
    voice.print(format_text(voice.messages().either({"%lld pairs are too many for one run.\n",
                                                     "%lld Paare sind zu viele fuer einen Lauf.\n"}),
                            pairs));
    end_run(voice);
}

}  // namespace zemora
