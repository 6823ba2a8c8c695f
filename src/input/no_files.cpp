#include "input/no_files.h"

#include <array>
#include <utility>

#include "input/file_selection.h"
#include "platform/console.h"

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

namespace mode = setting::input_mode;

/// What the failure says behind the way of the input, for the modes `first` to `last`.
struct NoFilesRow {
    int first;
    int last;
    bool two_files;
    std::array<Line, 4> lines;
};
// clang-format off
constexpr std::array kRows{
    NoFilesRow{mode::single,        mode::single,           false, {Line::check_stereo_name}},
    NoFilesRow{mode::single,        mode::single,           true,  {Line::check_names}},
    NoFilesRow{mode::by_names,      mode::by_names_in_tree, false, {Line::image_type, Line::search_path, Line::check_marked_stereo_names}},
    NoFilesRow{mode::by_names,      mode::by_names_in_tree, true,  {Line::image_type, Line::check_names, Line::check_marked_names}},
    NoFilesRow{mode::consecutive,   mode::consecutive,      false, {Line::image_type, Line::search_path, Line::check_format, Line::blank}},
    NoFilesRow{mode::video_folders, mode::all_with_all,     true,  {Line::image_type, Line::search_path, Line::check_marked_names}},
    NoFilesRow{mode::view_folders,  mode::view_folders,     true,  {Line::image_type, Line::search_paths_of_views, Line::check_marked_names}},
    NoFilesRow{mode::from_list,     mode::from_list,        false, {Line::check_list, Line::blank}},
    NoFilesRow{mode::from_list,     mode::from_list,        true,  {Line::check_list}},
};
// clang-format on

std::string text_of(Line line, const CollectOptions& options, const MessageCatalogue& messages) {
    const std::string root = printable(options.path_of_images);
    switch (line) {
        case Line::none: return {};
        case Line::image_type:
            return messages.text<Msg::files_input_your_image_type>() + printable(options.image_type) + '\n';
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

}  // namespace

Failure no_suited_files(const CollectOptions& options, const MessageCatalogue& messages) {
    const int input_mode = options.input_mode;
    const int layout = options.stereo_image_input;
    std::string text = messages.text<Msg::files_input_no_suited_files>();
    for (const NoFilesRow& row : kRows) {
        if (input_mode < row.first || input_mode > row.last || takes_two_files(layout) != row.two_files) {
            continue;
        }
        text += messages.text<Msg::files_input_your_input_mode>() + std::to_string(input_mode) + '\n';
        text += messages.text<Msg::files_input_your_stereo_image_input>() + std::to_string(layout) + '\n';
        for (const Line line : row.lines) {
            text += text_of(line, options, messages);
        }
    }
    return Failure::of_run(std::move(text));
}

Failure too_many_pairs(long long pairs, const MessageCatalogue& messages) {
    return Failure::of_run(format_text(messages.either({"%lld pairs are too many for one run.\n",
                                                        "%lld Paare sind zu viele fuer einen Lauf.\n"}),
                                       pairs));
}

}  // namespace zemora
