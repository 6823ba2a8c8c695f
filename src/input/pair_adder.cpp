#include "input/pair_adder.h"

#include <algorithm>

#include "input/file_selection.h"
#include "platform/console.h"
#include "platform/paths.h"

namespace zemora {

namespace interlaced = setting::interlaced_mode;

FoundName find_and_tell(NameFinder& finder, Notes& notes, const std::string& file) {
    FoundName found = finder.find(file);
    if (found.match == NameMatch::several) {
        notes.print(
            format_text(notes.messages().either(
                            {"%s: more than one file has this name in other upper and lower case.\n",
                             "%s: mehrere Dateien heissen so in anderer Gross- und Kleinschreibung.\n"}),
                        printable(file).c_str()));
    }
    return found;
}

int character_count(const std::string& text) {
    return static_cast<int>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;  // no continuation byte
    }));
}

bool PairAdder::check(std::string& left, std::string& right) {
    if (left.empty() || right.empty()) {
        return false;
    }
    const bool left_is_readable = check_file(left);
    return check_file(right) && left_is_readable;
}

bool PairAdder::check_file(std::string& file) {
    auto known = checked_.find(file);
    if (known == checked_.end()) {
        known = checked_.emplace(file, look_up(file)).first;
    }
    file = known->second.path;
    return known->second.is_readable;
}

PairAdder::CheckedFile PairAdder::look_up(const std::string& file) {
    const FoundName found = find_and_tell(finder_, notes_, file);
    CheckedFile checked{found.is_there() ? found.path : file, false};
    checked.is_readable = found.is_there() && file_exists(checked.path);
    if (!checked.is_readable) {
        notes_.say<Msg::files_input_file_missing_name_open>();
        notes_.print(printable(file));
        notes_.say<Msg::files_input_file_missing_name_close>();
        notes_.say<Msg::files_input_file_missing_cause_names>();
        notes_.say<Msg::files_input_file_missing_cause_characters>();
        notes_.print("   " + printable(checked.path) + ": " + why_unreadable(checked.path) + '\n');
        notes_.wait(Severity::information);
    }
    return checked;
}

std::uint32_t PairAdder::number_of(const std::string& file) {
    const auto known = numbers_.find(file);
    return known != numbers_.end() ? known->second : numbers_[file] = list_.add_name(file);
}

void PairAdder::add_object(std::uint32_t left, std::uint32_t right, const StoredCorrectionRecord* stored) {
    if (stored != nullptr) {
        list_.add_object(left, right, *stored);
    } else {
        list_.add_object(left, right);
    }
    if (left != measured_left_) {
        measured_left_ = left;
        const std::string name = printable(bare_name_of(list_.names()[left]));
        left_name_width_ = std::max(left_name_width_, character_count(name));
    }
}

void PairAdder::add(const std::string& left_file, const std::string& right_file,
                    const StoredCorrectionRecord* stored) {
    const std::uint32_t left = number_of(left_file);
    const std::uint32_t right = number_of(right_file);
    const bool exchanged = options_.inverse_input == setting::inverse_input::exchanged &&
                           !holds_depth_mask(options_.stereo_image_input);
    switch (options_.interlaced_mode) {
        case interlaced::progressive:
            add_object(exchanged ? right : left, exchanged ? left : right, stored);
            break;
        case interlaced::right_of_pair_before:
            if (has_pair_before_) {
                add_object(left, right_before_, stored);
            }
            add_object(left, right, stored);
            break;
        case interlaced::left_of_pair_before:
            if (has_pair_before_) {
                add_object(left_before_, right, stored);
            }
            add_object(left, right, stored);
            break;
        default:
            add_object(left, right, stored);
            add_object(left, right, stored);
            break;
    }
    left_before_ = left;
    right_before_ = right;
    has_pair_before_ = true;
}

void add_stereo_object(int interlaced_mode, Notes& notes, const std::string& file,
                       const StoredCorrectionRecord* stored, ImageList& list) {
    if (interlaced_mode != interlaced::progressive && interlaced_mode != interlaced::fields &&
        interlaced_mode != interlaced::fields_with_motion) {
        notes.say<Msg::files_input_stereo_input_1_with_time_shift>();
        notes.wait(Severity::information);
        return;
    }
    const std::uint32_t number = list.add_name(file);
    for (int field = 0; field < (interlaced_mode == interlaced::progressive ? 1 : 2); ++field) {
        if (stored != nullptr) {
            list.add_object(number, number, *stored);
        } else {
            list.add_object(number, number);
        }
    }
}

}  // namespace zemora
