#include "input/capture_time.h"

#include <algorithm>
#include <array>

#include "input/picture_file.h"
#include "platform/child_process.h"

namespace zemora {

namespace {

constexpr int kSecondsOfMinute = 60;
constexpr int kSecondsOfHour = 60 * kSecondsOfMinute;
constexpr int kSecondsOfDay = 24 * kSecondsOfHour;

int seconds_of_month(int month) {
    static constexpr std::array kDays{31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return kDays[static_cast<std::size_t>(month - 1)] * kSecondsOfDay;
}

int month_seconds(int left, int right) {
    constexpr int kAcrossNewYear = 11;
    if (left - right == kAcrossNewYear) {
        return -seconds_of_month(right);
    }
    if (right - left == kAcrossNewYear) {
        return seconds_of_month(left);
    }
    return (left - right) * seconds_of_month(std::min(left, right));
}

/// A column of a time and the values that it may have.
struct Column {
    int CaptureTime::*field;
    std::size_t start;
    std::size_t size;
    int low;
    int high;
};
constexpr std::array kColumns{
    Column{&CaptureTime::year, 0, 4, 1, 9999},  Column{&CaptureTime::month, 5, 2, 1, 12},
    Column{&CaptureTime::day, 8, 2, 1, 31},     Column{&CaptureTime::hour, 11, 2, 0, 23},
    Column{&CaptureTime::minute, 14, 2, 0, 59}, Column{&CaptureTime::second, 17, 2, 0, 60},
};
constexpr std::size_t kTimeSize = 19;  // characters

/// Digits, perhaps with blanks before them; -1 for anything else.
int number_of(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    int number = text.empty() ? -1 : 0;
    for (const char c : text) {
        if (c < '0' || c > '9') {
            return -1;
        }
        number = 10 * number + (c - '0');
    }
    return number;
}

constexpr std::string_view kTimestamp = "Image timestamp : ";
constexpr std::string_view kFileName = "File name       : ";

/// What exiv2 puts before each line about a file, when it is asked about many: the name, at least 20 wide.
std::string line_start(const std::string& file) {
    constexpr std::size_t kNameWidth = 20;
    return file + std::string(file.size() < kNameWidth ? kNameWidth - file.size() : 0, ' ') + ' ';
}

template <class Visit>
void for_each_line(std::string_view text, Visit visit) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        visit(line);
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
}

/// From the lines about one file.
std::optional<CaptureTime> time_in_answer(std::string_view text, const std::string& file) {
    const std::string heading = std::string(kFileName) + file + '\n';  // the name may hold line ends
    text.remove_prefix(text.substr(0, heading.size()) == heading ? heading.size() : 0);
    std::optional<std::string_view> value;
    for_each_line(text, [&](std::string_view line) {
        if (!value && line.substr(0, kTimestamp.size()) == kTimestamp) {
            value = line.substr(kTimestamp.size());
        }
    });
    return value ? parse_capture_time(*value) : std::nullopt;
}

/// From the lines about many files; those without a line have no time.
void take_times(std::string_view text, const std::vector<std::string>& files, CaptureTimes& times) {
    std::unordered_map<std::string, const std::string*> file_of_line;
    for (const std::string& file : files) {
        file_of_line[line_start(file) + std::string(kTimestamp)] = &file;
        times[file] = std::nullopt;
    }
    for_each_line(text, [&](std::string_view line) {
        const std::size_t label = line.rfind(kTimestamp);
        if (label == std::string_view::npos) {
            return;
        }
        const std::size_t value = label + kTimestamp.size();
        const auto found = file_of_line.find(std::string(line.substr(0, value)));
        if (found != file_of_line.end()) {
            times[*found->second] = parse_capture_time(line.substr(value));
        }
    });
}

}  // namespace

std::optional<CaptureTime> parse_capture_time(std::string_view text) {
    if (text.size() < kTimeSize) {
        return std::nullopt;
    }
    CaptureTime time;
    for (const Column& column : kColumns) {
        const int value = number_of(text.substr(column.start, column.size));
        if (value < column.low || value > column.high) {
            return std::nullopt;
        }
        time.*column.field = value;
    }
    return time;
}

int difference_seconds(const CaptureTime& left, const CaptureTime& right) {
    return kSecondsOfDay * (left.day - right.day) + month_seconds(left.month, right.month) +
           kSecondsOfHour * (left.hour - right.hour) + kSecondsOfMinute * (left.minute - right.minute) +
           left.second - right.second;
}

CaptureClock::CaptureClock() : program_(find_program("exiv2")) {}

void CaptureClock::expect(const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        if (place_.try_emplace(file, expected_.size()).second) {
            expected_.push_back(file);
        }
    }
}

std::optional<CaptureTime> CaptureClock::time_of(const std::string& file) {
    if (file.empty()) {
        return std::nullopt;
    }
    if (const auto known = known_.find(file); known != known_.end()) {
        return known->second;
    }
    if (uses_exiv2()) {
        ask_exiv2(batch_from(file));
        return known_[file];
    }
    return known_[file] = parse_capture_time(capture_time_text(file));
}

/// The file and those expected behind it. A name with a line end would break the lines of the answer.
std::vector<std::string> CaptureClock::batch_from(const std::string& file) const {
    constexpr std::size_t kMostFiles = 64;
    const auto stands_alone = [](const std::string& name) { return name.find('\n') != std::string::npos; };
    std::vector<std::string> batch{file};
    const auto place = place_.find(file);
    if (place == place_.end() || stands_alone(file)) {
        return batch;
    }
    for (std::size_t i = place->second + 1; i < expected_.size() && batch.size() < kMostFiles; ++i) {
        if (!stands_alone(expected_[i]) && !known_.contains(expected_[i])) {
            batch.push_back(expected_[i]);
        }
    }
    return batch;
}

void CaptureClock::ask_exiv2(const std::vector<std::string>& files) {
    std::vector<std::string> call{program_, "-ps", "pr"};
    call.insert(call.end(), files.begin(), files.end());
    const ChildResult answer = run_child(call, false, true);
    const std::string_view text(reinterpret_cast<const char*>(answer.output.data()),  // NOLINT: bytes as text
                                answer.output.size());
    if (files.size() == 1) {
        known_[files[0]] = time_in_answer(text, files[0]);
    } else if (answer.exit_code < 0) {  // one file of many brought it down
        for (const std::string& file : files) {
            ask_exiv2({file});
        }
    } else {
        take_times(text, files, known_);
    }
}

}  // namespace zemora
