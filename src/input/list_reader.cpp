// The objects of `InputMode` 10, from the lines of the list and their marks.

#include "config/text_lines.h"
#include "input/file_selection.h"
#include "input/list_file.h"
#include "input/list_scan.h"
#include "input/pair_adder.h"
#include "platform/console.h"
#include "platform/directory_walk.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr int kWholeLine = 1 + kRecordFields;  // items: status and values

class ListReader {
public:
    ListReader(const CollectOptions& options, Notes& notes, ImageList& list)
        : options_(options),
          notes_(notes),
          list_(list),
          adder_(options, notes, list),
          applies_(options.applies_stored_values) {}

    [[nodiscard]] Result<ListedObjects> read();

private:
    [[nodiscard]] Result<void> read_line(std::string_view raw);
    [[nodiscard]] bool complete_names(ListLine& line, std::string_view raw);
    [[nodiscard]] bool is_taken(ListLine& line, std::string_view raw);
    void tell_second_try(const ListLine& line) const;
    void tell_done(const ListLine& line) const;
    void object_to(std::string_view raw, const char* line_case) const;
    void note_mounted(const ListLine& line);
    void add(ListLine& line);
    [[nodiscard]] std::string as_on_disk(const std::string& name);

    const CollectOptions& options_;
    Notes& notes_;
    ImageList& list_;
    PairAdder adder_;
    NameFinder finder_;
    bool applies_;
    int line_number_ = 0;
    int named_ = 0;
};

Result<ListedObjects> ListReader::read() {
    const std::string path = list_path_of(options_.path_of_images, options_.list_of_images);
    std::string reason;
    const auto text = read_list(path, reason);
    if (!text) {
        Failure failure =
            Failure::of_run(notes_.messages().text<Msg::files_input_file_cannot_be_opened>(printable(path)) +
                            "   " + reason + '\n');
        failure.note.severity = Severity::warning;
        return failure;
    }
    Result<void> outcome;
    for_each_line(*text, [&](std::string_view raw, std::size_t) {
        ++line_number_;
        if (outcome && raw.size() >= kShortestListLine &&
            raw.find_first_not_of(" \t") != std::string_view::npos) {
            outcome = read_line(raw);
        }
    });
    if (!outcome) {
        return outcome.failure();
    }
    return ListedObjects{named_, adder_.left_name_width()};
}

Result<void> ListReader::read_line(std::string_view raw) {
    const MessageCatalogue& messages = notes_.messages();
    if (raw.size() > kLongestListLine) {
        object_to(raw, messages.either({"the line is too long", "die Zeile ist zu lang"}));
        return {};
    }
    ListLine line;
    const LineFault fault = parse_list_line(raw, list_.two_files, line);
    if (fault == LineFault::wrong_quotes) {
        const std::string path = list_path_of(options_.path_of_images, options_.list_of_images);
        return Failure::of_run(messages.text<Msg::files_input_list_line_wrong_settings>(line_number_) +
                               "   " + printable(path) + '\n');
    }
    if (fault == LineFault::no_name) {
        object_to(raw, "7!");
        return {};
    }
    if (!list_.two_files && is_dropped_with_hint(options_, notes_, bare_name_of(line.left))) {
        return {};
    }
    ++named_;
    if (!is_taken(line, raw)) {
        note_mounted(line);
    } else if (complete_names(line, raw)) {
        add(line);
    }
    return {};
}

/// The pictures of an object that is passed over are there, also when its own files have moved.
void ListReader::note_mounted(const ListLine& line) {
    if (line.status != "OK" && line.status != "IM") {
        return;
    }
    const auto path_of = [this](const std::string& name) {
        const std::string path = join_path(options_.path_of_images, name);
        return file_exists(path) ? path : as_on_disk(name);
    };
    const bool has_values = line.item_count == kWholeLine;
    list_.mounted.push_back({path_of(line.left), list_.two_files ? path_of(line.right) : std::string(),
                             list_.count(), has_values, has_values ? line.values[kRecordDeviation] : 0.0,
                             has_values ? line.values[kRecordRatio] : 1.0});
}

/// The mark behind the names decides.
bool ListReader::is_taken(ListLine& line, std::string_view raw) {
    if (line.status.empty()) {
        if (applies_) {
            tell_second_try(line);
        }
        return true;
    }
    if (line.status == "QU") {
        notes_.say<Msg::files_input_skipped_by_mark_quit>();
        return false;
    }
    if (line.status == "IM") {
        notes_.say<Msg::files_input_skipped_by_mark_imperfect>();
        return false;
    }
    if (line.status != "OK") {
        object_to(raw, applies_ ? "2!" : "5!");
        return false;
    }
    if (!applies_) {
        tell_done(line);
        return false;
    }
    if (line.item_count != kWholeLine) {
        object_to(raw, "2!");
        return false;
    }
    if (drop_foreign_selection(line.values, options_.shape)) {
        notes_.say<Msg::files_input_stored_selection_ignored>();
        notes_.wait(Severity::error);
    }
    return true;
}

void ListReader::tell_second_try(const ListLine& line) const {
    notes_.say<Msg::files_input_pair_failed_in_first_pass>();
    notes_.say<Msg::files_input_pair_will_be_tried_again>();
    notes_.print(printable(utf8_text(line.left)) +
                 (list_.two_files ? " <-> " + printable(utf8_text(line.right)) : "") + "\n\n");
    notes_.wait(Severity::information);
}

void ListReader::tell_done(const ListLine& line) const {
    if (notes_.verbose() == 0) {
        return;
    }
    if (list_.two_files) {
        notes_.say<Msg::files_input_ok_found_images_skipped>();
        notes_.print("   " + printable(utf8_text(line.left)) + "\n   " + printable(utf8_text(line.right)) +
                     '\n');
    } else {
        notes_.say<Msg::files_input_ok_found_image_skipped>();
        notes_.print(printable(utf8_text(line.left)) + '\n');
    }
}

void ListReader::object_to(std::string_view raw, const char* line_case) const {
    constexpr std::size_t kShown = 1000;  // characters of a line
    notes_.say<Msg::files_input_list_format_wrong>();
    notes_.say<Msg::files_input_list_line_objected>();
    notes_.print(printable(utf8_text(raw.substr(0, kShown))) + " ...\n");
    notes_.say<Msg::files_input_list_result_unexpected>();
    notes_.print(std::string(line_case) + "\n\n");
    notes_.wait(Severity::information);
}

/// A name that is no valid UTF-8 may be one of this disk as it is, or come from another system.
std::string ListReader::as_on_disk(const std::string& name) {
    const std::string path = join_path(options_.path_of_images, name);
    const std::string meant = utf8_text(path);
    if (meant != path && identity_of(path)) {
        return path;
    }
    const FoundName found = find_and_tell(finder_, notes_, meant);
    return found.is_there() ? found.path : meant;
}

bool ListReader::complete_names(ListLine& line, std::string_view raw) {
    for (const std::string* name : {&line.left, &line.right}) {
        if (name->find('\0') != std::string::npos) {  // the system would read the name only up to there
            object_to(raw, notes_.messages().either(
                               {"a name holds a zero byte", "ein Name enthaelt ein Nullbyte"}));
            return false;
        }
        if (has_drive(*name)) {
            object_to(raw, notes_.messages().either({"a drive letter has no meaning here",
                                                     "ein Laufwerksbuchstabe hat hier keine Bedeutung"}));
            return false;
        }
    }
    line.left = as_on_disk(line.left);
    if (!list_.two_files) {
        return true;
    }
    line.right = as_on_disk(line.right);
    return adder_.check(line.left, line.right);
}

void ListReader::add(ListLine& line) {
    const StoredCorrectionRecord* stored = applies_ && line.status == "OK" ? &line.values : nullptr;
    if (list_.two_files) {
        adder_.add(line.left, line.right, stored);
    } else {
        add_stereo_object(options_.interlaced_mode, notes_, line.left, stored, list_);
    }
}

}  // namespace

Result<ListedObjects> read_listed_objects(const CollectOptions& options, Notes& notes, ImageList& list) {
    return ListReader(options, notes, list).read();
}

}  // namespace zemora
