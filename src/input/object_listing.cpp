#include "input/object_listing.h"

#include <algorithm>
#include <utility>

#include "config/html_text.h"
#include "input/pair_adder.h"
#include "platform/console.h"
#include "platform/paths.h"

namespace zemora {

namespace {

std::string padded(std::string text, int width) {
    text.append(static_cast<std::size_t>(std::max(width - character_count(text), 0)), ' ');
    return text;
}

std::string object_line(const CollectOptions& options, const ImageList& list, int object,
                        int left_name_width) {
    const auto shown = [&](const std::string& file) {
        return printable(relative_to(file, options.path_of_images));
    };
    const std::string number = format_text("%4d ", object + 1);
    if (!list.two_files) {
        return number + shown(list.stereo(object));
    }
    std::string left = shown(list.left(object));
    std::string right = shown(list.right(object));
    if (options.input_mode == setting::input_mode::alternating && object % 2 != 0) {
        std::swap(left, right);
    }
    return number + padded(std::move(left), left_name_width) + " <---> " + right;
}

}  // namespace

void tell_objects(const CollectOptions& options, Notes& notes, const ImageList& list, int left_name_width) {
    if (notes.verbose() <= 1) {
        return;
    }
    notes.tell_everywhere(notes.messages().text<Msg::files_input_file_list_heading>() +
                          notes.messages().text<Msg::files_input_file_list_rule>());
    const int step =
        options.interlaced_mode == setting::interlaced_mode::progressive ? 1 : 2;  // a frame has two fields
    for (int object = 0; object < list.count(); object += step) {
        const std::string line = object_line(options, list, object, left_name_width);
        notes.print_and_report(line + '\n');
        notes.report_html("<span style=\"font-family:'Lucida Console', monospace\">" + html_text(line) +
                          "</span><br>\n");
    }
    notes.wait(Severity::information);
}

void tell_object_count(Notes& notes, const ImageList& list) {
    if (notes.verbose() > 0) {
        notes.tell_everywhere('\n' + notes.messages().text<Msg::files_input_objects_found>(list.count()) +
                              "\n\n");
    }
}

}  // namespace zemora
