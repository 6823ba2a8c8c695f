#include "input/pair_adder.h"

#include <algorithm>

#include "input/file_selection.h"
#include "platform/paths.h"

namespace zemora {

namespace {

// Values of `InterlacedMode`: which views belong to the two fields of a frame.
constexpr int kProgressive = 0;
constexpr int kRightOfPairBefore = 2;
constexpr int kLeftOfPairBefore = 3;

}  // namespace

FoundName find_and_tell(NameFinder& finder, Voice& voice, const std::string& file) {
    FoundName found = finder.find(file);
    if (found.match == NameMatch::several) {
        voice.print(
            format_text(voice.messages().either(
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
    const FoundName found = find_and_tell(finder_, voice_, file);
    CheckedFile checked{found.is_there() ? found.path : file, false};
    checked.is_readable = found.is_there() && file_exists(checked.path);
    if (!checked.is_readable) {
        voice_.say<Msg::files_input_file_missing_name_open>();
        voice_.print(printable(file));
        voice_.say<Msg::files_input_file_missing_name_close>();
        voice_.say<Msg::files_input_file_missing_cause_names>();
        voice_.say<Msg::files_input_file_missing_cause_characters>();
        voice_.print("   " + printable(checked.path) + ": " + why_unreadable(checked.path) + '\n');
        voice_.wait(Severity::information);
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
    const bool exchanged =
        parameters_.inverse_input == 1 && !holds_depth_mask(parameters_.stereo_image_input);
    switch (parameters_.interlaced_mode) {
        case kProgressive: add_object(exchanged ? right : left, exchanged ? left : right, stored); break;
        case kRightOfPairBefore:
            if (has_pair_before_) {
                add_object(left, right_before_, stored);
            }
            add_object(left, right, stored);
            break;
        case kLeftOfPairBefore:
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

void add_stereo_object(const ParameterSet& parameters, Voice& voice, const std::string& file,
                       const StoredCorrectionRecord* stored, ImageList& list) {
    constexpr int kFields = 1;
    constexpr int kFieldsWithMotion = 4;
    const int mode = parameters.interlaced_mode;
    if (mode != kProgressive && mode != kFields && mode != kFieldsWithMotion) {
        voice.say<Msg::files_input_stereo_input_1_with_time_shift>();
        voice.wait(Severity::information);
        return;
    }
    const std::uint32_t number = list.add_name(file);
    for (int field = 0; field < (mode == kProgressive ? 1 : 2); ++field) {
        if (stored != nullptr) {
            list.add_object(number, number, *stored);
        } else {
            list.add_object(number, number);
        }
    }
}

}  // namespace zemora
