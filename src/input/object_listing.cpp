#include "input/object_listing.h"

#include <algorithm>
#include <utility>

#include "input/pair_adder.h"
#include "platform/paths.h"

namespace zemora {

namespace {

std::string padded(std::string text, int width) {
    text.append(static_cast<std::size_t>(std::max(width - character_count(text), 0)), ' ');
    return text;
}

std::string object_line(const ParameterSet& parameters, const ImageList& list, int object,
                        int left_name_width) {
    const auto shown = [&](const std::string& file) {
        return printable(relative_to(file, parameters.path_of_images));
    };
    const std::string number = format_text("%4d ", object + 1);
    if (!list.two_files) {
        return number + shown(list.stereo(object));
    }
    std::string left = shown(list.left(object));
    std::string right = shown(list.right(object));
    if (parameters.input_mode == setting::input_mode::alternating && object % 2 != 0) {
        std::swap(left, right);
    }
    return number + padded(std::move(left), left_name_width) + " <---> " + right;
}

}  // namespace

void tell_objects(const ParameterSet& parameters, Voice& voice, const ImageList& list, int left_name_width) {
    if (voice.verbose() <= 1) {
        return;
    }
    voice.tell_everywhere(voice.messages().text<Msg::files_input_file_list_heading>() +
                          voice.messages().text<Msg::files_input_file_list_rule>());
    const int step = parameters.interlaced_mode == 0 ? 1 : 2;  // a frame has two fields
    for (int object = 0; object < list.count(); object += step) {
        const std::string line = object_line(parameters, list, object, left_name_width);
        voice.print_and_report(line + '\n');
        voice.report_html("<span style=\"font-family:'Lucida Console', monospace\">" + html_text(line) +
                          "</span><br>\n");
    }
    voice.wait(Severity::information);
}

void tell_object_count(Voice& voice, const ImageList& list) {
    if (voice.verbose() > 0) {
        voice.tell_everywhere('\n' + voice.messages().text<Msg::files_input_objects_found>(list.count()) +
                              "\n\n");
    }
}

}  // namespace zemora
