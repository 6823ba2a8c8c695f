#include "driver/invocation.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <utility>

#include "driver/failure.h"
#include "driver/settings_input.h"
#include "input/file_selection.h"
#include "platform/directory_walk.h"
#include "platform/paths.h"
#include "platform/process_end.h"

namespace zemora {

namespace {

bool names_parameter_file(const std::string& argument) {
    const std::string name = bare_name_of(argument);
    return !is_directory(argument) &&
           (name.find(".ini") != std::string::npos || name.find(".INI") != std::string::npos);
}

std::string clean_argument(const std::string& argument) {
    std::string path = with_slashes(argument);
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

std::string beside(const std::string& picture) {
    const std::string folder = folder_of(picture);
    return folder.empty() ? "zemora.ini" : join_path(folder, "zemora.ini");
}

Invocation with_file(InvocationForm form, std::vector<std::string> arguments, std::string file, bool named) {
    return {form, std::move(arguments), std::move(file), named};
}

/// Two folders of one parent, called l and r.
bool are_view_folders(const std::string& left, const std::string& right) {
    const std::string here = working_directory();
    const std::string a = join_path(here, left);
    const std::string b = join_path(here, right);
    return folder_of(a) == folder_of(b) && lower_case(bare_name_of(a)) == "l" &&
           lower_case(bare_name_of(b)) == "r";
}

std::optional<Invocation> classify_two(const std::vector<std::string>& arguments) {
    const std::string& first = arguments[0];
    const std::string& second = arguments[1];
    if (is_directory(first) && is_directory(second)) {
        if (!are_view_folders(first, second)) {
            return std::nullopt;
        }
        return with_file(InvocationForm::two_folders, arguments, "", false);
    }
    if (names_parameter_file(second)) {
        return with_file(InvocationForm::stereo_file_and_parameters, arguments, second, true);
    }
    return with_file(InvocationForm::pair, arguments, beside(first), false);
}

/// A name of the command line: absolute when the file is seen from the working directory or has a
/// folder; a bare name that is not there is looked for in the image folder.
std::string named_file(const std::string& argument) {
    const std::string absolute = join_path(working_directory(), argument);
    return argument.find('/') != std::string::npos || file_exists(absolute) ? absolute : argument;
}

/// The image folder for a picture given by an absolute name: its own, or the one above the folder of
/// its view.
void take_image_folder(const std::string& picture, char view, ParameterSet& parameters) {
    if (!is_absolute(picture)) {
        return;
    }
    std::string folder = folder_of(picture);
    if (lower_case(bare_name_of(folder)) == std::string(1, view)) {
        folder = folder_of(folder);
    }
    parameters.path_of_images = folder;
}

/// What a line tells of a layout that nobody was asked about.
const char* layout_text(LayoutSign sign, const MessageCatalogue& messages) {
    switch (sign) {
        case LayoutSign::marked_pairs:
            return messages.either(
                {"The names end in _l and _r: left and right views are mounted as pairs.\n",
                 "Die Namen enden auf _l und _r: linke und rechte Ansichten werden paarweise "
                 "montiert.\n"});
        case LayoutSign::view_folders:
            return messages.either({"The folders l and r hold the left and the right views.\n",
                                    "Die Ordner l und r enthalten die linken und die rechten Ansichten.\n"});
        case LayoutSign::stereo_names:
            return messages.either({"The names end in _s: each file holds both views.\n",
                                    "Die Namen enden auf _s: jede Datei enthaelt beide Ansichten.\n"});
        case LayoutSign::multi_pictures:
            return messages.either({"All files are multi-picture files: each holds both views.\n",
                                    "Alle Dateien sind Mehrbilddateien: jede enthaelt beide Ansichten.\n"});
        case LayoutSign::no_pictures: return "";
        case LayoutSign::wide_pictures:
            return messages.either(
                {"The first picture is at least twice as wide as high: each file is taken for both "
                 "views side by side.\n",
                 "Das erste Bild ist mindestens doppelt so breit wie hoch: jede Datei gilt als "
                 "beide Ansichten nebeneinander.\n"});
        case LayoutSign::single_views: break;
    }
    return messages.either({"The files are taken for left and right views in turn (L-R-L-R).\n",
                            "Die Dateien gelten abwechselnd als linke und rechte Ansichten (L-R-L-R).\n"});
}

/// The answer to form 7's question: 1 stereo files, 2 left and right files.
int ask_for_layout(Voice& voice) {
    for (;;) {
        voice.say<Msg::main_whole_directory_will_be_processed>();
        voice.say<Msg::main_question_stereo_images_answer_1>();
        voice.say<Msg::main_question_mono_images_answer_2>();
        voice.console().flush();
        const auto line = voice.console().read_line();
        if (!line) {
            voice.print("\n");
            end_run(kExitFailure);
        }
        const std::size_t start = std::min(line->find_first_not_of(" \t"), line->size());
        int answer = 0;
        std::from_chars(line->data() + start, line->data() + line->size(), answer);
        if (answer == 1 || answer == 2) {
            return answer;
        }
    }
}

std::string absolute_name(const std::string& argument) {
    return join_path(working_directory(), argument);
}

}  // namespace

std::optional<Invocation> classify_call(const std::vector<std::string>& positional) {
    std::vector<std::string> arguments;
    arguments.reserve(positional.size());
    for (const std::string& argument : positional) {
        arguments.push_back(clean_argument(argument));
    }
    switch (arguments.size()) {
        case 0: return with_file(InvocationForm::defaults, arguments, "zemora.ini", false);
        case 1:
            if (is_directory(arguments[0])) {
                return with_file(InvocationForm::folder, arguments, "", false);
            }
            if (names_parameter_file(arguments[0])) {
                return with_file(InvocationForm::parameter_file, arguments, arguments[0], true);
            }
            return with_file(InvocationForm::stereo_file, arguments, beside(arguments[0]), false);
        case 2: return classify_two(arguments);
        case 3:
            if (names_parameter_file(arguments[2])) {
                return with_file(InvocationForm::pair_and_parameters, arguments, arguments[2], true);
            }
            return std::nullopt;
        default: return std::nullopt;
    }
}

void announce_call(const Invocation& invocation, Voice& voice) {
    const MessageCatalogue& messages = voice.messages();
    const std::string file = printable(invocation.parameter_file);
    const auto argument = [&](std::size_t i) { return printable(invocation.arguments[i]); };
    switch (invocation.form) {
        case InvocationForm::defaults:
        case InvocationForm::parameter_file:
            voice.print(messages.text<Msg::main_start_with_parameterfile>(file));
            break;
        case InvocationForm::folder:
        case InvocationForm::two_folders:
            voice.print(messages.text<Msg::main_start_with_path_of_images>(argument(0)));
            break;
        case InvocationForm::stereo_file:
        case InvocationForm::stereo_file_and_parameters:
            voice.print(messages.text<Msg::main_start_with_stereo_imagefile>(argument(0)));
            voice.print(messages.text<Msg::main_and_with_parameterfile>(file));
            break;
        case InvocationForm::pair:
        case InvocationForm::pair_and_parameters:
            voice.print(messages.text<Msg::main_start_with_left_imagefile>(argument(0)));
            voice.print(messages.text<Msg::main_and_with_right_imagefile>(argument(1)));
            voice.print(messages.text<Msg::main_and_with_parameterfile>(file));
            break;
    }
    voice.say<Msg::main_separator>();
    voice.say<Msg::main_uses_exiftool>();
}

FolderLayout choose_layout(const Invocation& invocation, const ParameterSet& parameters, Voice& voice) {
    CollectOptions options = collect_options(parameters);
    options.path_of_images = absolute_name(invocation.arguments[0]);
    const FolderLayout found = find_folder_layout(options);
    if (!found.is_certain() && voice.console().can_ask()) {
        return {found.sign, ask_for_layout(voice), setting::input_mode::consecutive};
    }
    voice.print(layout_text(found.sign, voice.messages()));
    return found;
}

void force_values(const Invocation& invocation, ParameterSet& parameters, const FolderLayout& layout) {
    namespace mode = setting::input_mode;
    namespace views = setting::stereo_image_input;
    const auto& arguments = invocation.arguments;
    const int told = parameters.stereo_image_input;  // a photo with a depth mask is not seen at its name
    switch (invocation.form) {
        case InvocationForm::stereo_file:
        case InvocationForm::stereo_file_and_parameters:
            parameters.input_mode = mode::single;
            parameters.stereo_image_input =
                holds_depth_mask(told) && !takes_two_files(told) ? told : views::side_by_side;
            parameters.stereo_file_name = named_file(arguments[0]);
            take_image_folder(parameters.stereo_file_name, 's', parameters);
            break;
        case InvocationForm::pair:
        case InvocationForm::pair_and_parameters:
            parameters.input_mode = mode::single;
            parameters.stereo_image_input =
                holds_depth_mask(told) && takes_two_files(told) ? told : views::two_files;
            parameters.left_file_name = named_file(arguments[0]);
            parameters.right_file_name = named_file(arguments[1]);
            take_image_folder(parameters.left_file_name, 'l', parameters);
            break;
        case InvocationForm::folder:
            parameters.stereo_image_input = layout.stereo_image_input;
            parameters.input_mode = layout.input_mode;
            if (layout.input_mode == mode::by_names && parameters.include_subdirs != 0) {
                parameters.input_mode = mode::by_names_in_tree;
            }
            if (layout.stereo_image_input == views::side_by_side) {
                parameters.stereo_output = 0;
                parameters.extra_output = setting::extra_output::multi_picture;
            }
            parameters.path_of_images = join_path(working_directory(), arguments[0]);
            break;
        case InvocationForm::two_folders:
            parameters.stereo_image_input = views::two_files;
            parameters.input_mode = mode::view_folders;
            parameters.path_of_images = folder_of(join_path(working_directory(), arguments[0]));
            break;
        default: break;
    }
}

const std::string* find_word_with_drive(const Invocation& invocation) {
    const auto word = std::find_if(invocation.arguments.begin(), invocation.arguments.end(), has_drive);
    return word == invocation.arguments.end() ? nullptr : &*word;
}

const std::string* find_missing_parameter_file(const Invocation& invocation) {
    const bool is_missing =
        invocation.parameter_file_named && !identity_of(absolute_name(invocation.parameter_file));
    return is_missing ? &invocation.parameter_file : nullptr;
}

const std::string* find_missing_picture(const Invocation& invocation, const ParameterSet& parameters) {
    std::size_t pictures = 0;
    switch (invocation.form) {
        case InvocationForm::stereo_file:
        case InvocationForm::stereo_file_and_parameters: pictures = 1; break;
        case InvocationForm::pair:
        case InvocationForm::pair_and_parameters: pictures = 2; break;
        default: break;
    }
    NameFinder finder;
    for (std::size_t i = 0; i < pictures; ++i) {
        const std::string& word = invocation.arguments[i];
        const FoundName found = finder.find(join_path(parameters.path_of_images, named_file(word)));
        const bool is_file = found.is_there() && std::filesystem::is_regular_file(found.path);
        if (!is_file && found.match != NameMatch::several) {
            return &word;
        }
    }
    return nullptr;
}

void end_with_usage(Voice& voice, const std::vector<std::string>& whole_call, const std::string& reason,
                    bool waits) {
    voice.print("\n");
    for (const Msg line :
         {Msg::main_usage_heading, Msg::main_usage_rule, Msg::main_usage_form_1, Msg::main_usage_form_2,
          Msg::main_usage_form_3, Msg::main_usage_form_4, Msg::main_usage_form_5, Msg::main_usage_form_6,
          Msg::main_usage_suffix_hint, Msg::main_separator}) {
        voice.print(voice.messages().raw(line));
    }
    std::string call;
    for (const std::string& word : whole_call) {
        call += (call.empty() ? "" : " ") + printable(word);
    }
    voice.print(voice.messages().either({"Your call: ", "Ihr Aufruf: "}) + call + '\n');
    if (std::count_if(whole_call.begin(), whole_call.end(), is_directory) > 1) {
        voice.print(
            voice.messages().either({"Two folders must stand side by side and be called l and r.\n",
                                     "Zwei Ordner muessen nebeneinander liegen und l und r heissen.\n"}));
    }
    voice.print(reason);
    if (waits) {
        voice.console().wait_for_enter();
    }
    end_run(kExitFailure);
}

}  // namespace zemora
