#include "input/list_file.h"

#include <algorithm>
#include <span>
#include <vector>

#include "input/list_scan.h"
#include "platform/console.h"
#include "platform/move_file.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

std::string write_text(const std::string& path, const std::string& text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());  // NOLINT: text as bytes
    return write_file_whole(path, std::span(bytes, text.size()));
}

/// The lines that say something, without the blanks behind them.
std::vector<std::string_view> lines_of(std::string_view text) {
    std::vector<std::string_view> lines;
    for_each_line(text, [&](std::string_view raw, std::size_t) {
        const std::size_t last = raw.find_last_not_of(" \t");
        if (last != std::string_view::npos) {
            lines.push_back(raw.substr(0, last + 1));
        }
    });
    return lines;
}

std::string cannot_be_opened(Notes& notes, const std::string& path) {
    return "\nzemora: " + printable(path) + notes.messages().text<Msg::main_check_path_of_images>();
}

}  // namespace

std::string list_path_of(const std::string& root, const std::string& name) {
    return target_of_link(join_path(root, name));
}

ListedNames::ListedNames(const CollectOptions& options, Notes& notes)
    : options_(options),
      notes_(notes),
      wanted_(options.write_data_base > setting::write_data_base::untouched &&
              options.input_mode != setting::input_mode::from_list),
      old_list_(wanted_ ? identity_of(list_path_of(options.path_of_images, options.list_of_images))
                        : std::nullopt) {}

void ListedNames::add_stereo(const std::string& file) {
    add(file, {});
}

void ListedNames::add_pair(const std::string& left, const std::string& right) {
    add(left, right);
}

void ListedNames::add(const std::string& left, const std::string& right) {
    if (!wanted_) {
        return;
    }
    is_picture_ = is_picture_ || (old_list_ && (identity_of(left) == old_list_ ||
                                                (!right.empty() && identity_of(right) == old_list_)));
    const auto line = names_line(options_.path_of_images, left, right);
    if (!line) {
        notes_.print(
            format_text(notes_.messages().either(
                            {"%s %s: such a name cannot stand in ListofImages and is left out there.\n",
                             "%s %s: ein solcher Name kann nicht in ListofImages stehen und fehlt dort.\n"}),
                        printable(left).c_str(), printable(right).c_str()));
        return;
    }
    if (lines_.empty()) {
        first_left_ = left;
        first_right_ = right;
    }
    lines_ += *line + '\n';
}

Result<void> ListedNames::store() {
    if (!wanted_ || lines_.empty()) {
        return {};
    }
    const std::string path = list_path_of(options_.path_of_images, options_.list_of_images);
    std::string reason;
    if (is_picture_) {
        return no_list(path,
                       notes_.messages().either({"it is one of the pictures", "sie ist eines der Bilder"}));
    }
    if (!make_folders(folder_of(path), reason)) {
        return no_list(path, reason);
    }
    std::optional<std::string> old;
    if (identity_of(path)) {
        old = read_list(path, reason);
        if (!old) {
            return no_list(path, reason);
        }
    }
    const bool is_text = old && old->find('\0') == std::string::npos;
    if (is_text && options_.input_mode == setting::input_mode::single) {
        const bool ends_a_line = old->empty() || old->back() == '\n';
        return holds_named_object(*old) ? Result<void>()
                                        : write(path, *old + (ends_a_line ? "" : "\n") + lines_);
    }
    // Results, and what the user has put out, added or put into another order, would be lost.
    if (old && (options_.write_data_base == setting::write_data_base::list_only ||
                lines_of(*old) != lines_of(lines_))) {
        if (auto kept = keep_old_list(path, *old); !kept) {
            return kept;
        }
    }
    return write(path, lines_);
}

bool ListedNames::holds_named_object(const std::string& old_text) const {
    return find_object(old_text, options_.path_of_images, {first_left_, first_right_}).has_value();
}

Result<void> ListedNames::keep_old_list(const std::string& path, const std::string& old_text) const {
    if (old_text.empty()) {
        return {};
    }
    constexpr int kMostSavedLists = 999'999;
    for (int number = 1; number <= kMostSavedLists; ++number) {
        const std::string name = format_text("%s_%03d.txt", path.c_str(), number);
        const MoveOutcome kept = keep_under_other_name(path, name);
        if (kept.result == MoveResult::failed) {
            return no_list(name, kept.reason);
        }
        if (kept.is_done()) {
            notes_.print(format_text(notes_.messages().either({"The old list was saved as %s\n",
                                                               "Die alte Liste wurde gesichert als %s\n"}),
                                     printable(name).c_str()));
            return {};
        }
    }
    return no_list(path, notes_.messages().either({"too many saved lists", "zu viele gesicherte Listen"}));
}

Result<void> ListedNames::write(const std::string& path, const std::string& text) const {
    if (const std::string reason = write_text(path, text); !reason.empty()) {
        return no_list(path, reason);
    }
    return {};
}

Failure ListedNames::no_list(const std::string& path, const std::string& reason) const {
    return Failure::of_run(notes_.messages().text<Msg::files_input_file_cannot_be_opened>(printable(path)) +
                           "   " + reason + '\n');
}

void update_database_line(const std::string& root, Notes& notes, const std::string& list_path,
                          const std::string& left, const std::string& right, const ListResult& result) {
    if (!names_line(root, left, right)) {
        return;  // left out when the list was made, and reported then
    }
    std::string reason;
    auto text = read_list(list_path, reason);
    if (!text) {
        notes.print(cannot_be_opened(notes, list_path) + "   " + reason + '\n');
        return;
    }
    const auto place = find_object(*text, root, {left, right});
    if (!place) {
        const auto lines = std::count(text->begin(), text->end(), '\n');
        notes.print(format_text(notes.messages().either({"Zemora Error: %s %d, database not readable",
                                                         "Zemora Fehler: %s %d, Datenbank nicht lesbar"}),
                                "zemora", static_cast<int>(lines)) +
                    ": " + printable(list_path) + '\n');
        notes.wait(Severity::error);
        return;
    }
    const StoredCorrectionRecord* values = place->is_reversed ? result.reversed_values : result.values;
    const std::string written = ' ' + result.status + (values != nullptr ? values_text(*values) : "");
    text->replace(place->names_end, place->end - place->names_end, written);
    if (reason = write_text(list_path, *text); !reason.empty()) {
        notes.print(cannot_be_opened(notes, list_path + "_new") + "   " + reason + '\n');
    }
}

}  // namespace zemora
