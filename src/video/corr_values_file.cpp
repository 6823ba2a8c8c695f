#include "video/corr_values_file.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

#include "config/number_scan.h"
#include "config/text_lines.h"
#include "platform/console.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

constexpr int kMostToldLines = 20;                // bad ones; the rest is counted
constexpr std::uintmax_t kMostText = 400;         // bytes that a line may have in the mean
constexpr std::uintmax_t kMostRemarks = 1 << 20;  // bytes beyond that

std::string line_of(int frame, const FrameValues& v) {
    const auto wide = [](float value) { return static_cast<double>(value); };
    return format_text("%5d %11.8f %11.8f %11.8f %11.8f %11.8f %9.4f %9.4f %9.4f\n", frame, wide(v.height_px),
                       wide(v.size), wide(v.rotation_rad), wide(v.vergence_v_rad), wide(v.vergence_h_rad),
                       wide(v.window_px), wide(v.curtain_left_px), wide(v.curtain_right_px));
}

/// The text up to the next blank, which is taken from the line.
std::string_view next_word(std::string_view& line) {
    constexpr std::string_view kBlanks = " \t\v\f";
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
    line.remove_prefix(word.size());
    return word;
}

std::optional<float> next_value(std::string_view& line) {
    const std::string_view word = next_word(line);
    const std::optional<double> value = is_real(word) ? scan_real(word) : std::nullopt;
    if (!value || !std::isfinite(static_cast<float>(*value))) {
        return std::nullopt;
    }
    return static_cast<float>(*value);
}

std::optional<StoredValues> values_in(std::string_view line) {
    StoredValues found;
    const std::string_view frame = next_word(line);
    if (!is_integer(frame)) {
        return std::nullopt;
    }
    found.frame = *scan_integer(frame);
    FrameValues& v = found.values;
    for (float* value :
         {&v.height_px, &v.size, &v.rotation_rad, &v.vergence_v_rad, &v.vergence_h_rad, &v.window_px}) {
        const std::optional<float> number = next_value(line);
        if (!number) {
            return std::nullopt;
        }
        *value = *number;
    }
    return found;
}

/// Why a line does not count, in words.
constexpr BothTexts kNoValues = {"it does not hold a frame number and six values",
                                 "sie enthaelt nicht eine Framenummer und sechs Werte"};
constexpr BothTexts kNotInFilm = {"its frame is not in the film", "ihr Frame gehoert nicht zum Film"};
constexpr BothTexts kNotAscending = {"its frame does not come behind that of the line before",
                                     "ihr Frame kommt nicht hinter dem der Zeile davor"};

/// Reads one file and keeps its account.
class Reader {
public:
    Reader(const std::string& path, int frames, Notes& notes) : path_(path), frames_(frames), notes_(notes) {}

    [[nodiscard]] Result<std::vector<StoredValues>> read();

private:
    [[nodiscard]] const char* either(const BothTexts& text) const { return notes_.messages().either(text); }
    void take_line(int number, std::string_view line);
    void refuse_line(int number, const BothTexts& why);
    [[nodiscard]] Failure failure(std::string_view reason) const;
    [[nodiscard]] bool is_too_long() const;

    std::string path_;
    int frames_;
    Notes& notes_;
    std::vector<StoredValues> found_;
    int refused_ = 0;
};

Failure Reader::failure(std::string_view reason) const {
    Failure failed = Failure::of_run(format_text(
        either({"The file %s cannot be used: %s\n", "Die Datei %s kann nicht benutzt werden: %s\n"}),
        printable(path_).c_str(), std::string(reason).c_str()));
    failed.file = path_;
    return failed;
}

void Reader::refuse_line(int number, const BothTexts& why) {
    if (++refused_ <= kMostToldLines) {
        notes_.print(format_text(either({"%s, line %d is left out: %s\n", "%s, Zeile %d entfaellt: %s\n"}),
                                 printable(path_).c_str(), number, either(why)));
    }
}

void Reader::take_line(int number, std::string_view line) {
    line = trimmed(line);
    if (line.empty() || line.front() == '#') {
        return;
    }
    const std::optional<StoredValues> values = values_in(line);
    if (!values) {
        refuse_line(number, kNoValues);
    } else if (values->frame < 0 || values->frame >= frames_) {
        refuse_line(number, kNotInFilm);
    } else if (!found_.empty() && values->frame <= found_.back().frame) {
        refuse_line(number, kNotAscending);
    } else {
        found_.push_back(*values);
    }
}

bool Reader::is_too_long() const {
    std::error_code none;
    const std::uintmax_t size = std::filesystem::file_size(path_, none);
    return !none && size > kMostRemarks + kMostText * static_cast<std::uintmax_t>(frames_);
}

Result<std::vector<StoredValues>> Reader::read() {
    if (is_too_long()) {
        return failure(either({"it is too long for this film", "sie ist zu lang fuer diesen Film"}));
    }
    std::string reason;
    const std::optional<std::vector<std::uint8_t>> bytes = read_file_whole(path_, reason);
    if (!bytes) {
        return failure(reason);
    }
    int number = 0;
    for (const TextLine& line : text_lines(*bytes)) {
        take_line(++number, line.text);
    }
    if (refused_ > kMostToldLines) {
        notes_.print(
            format_text(either({"%s: %d lines are left out in all\n", "%s: %d Zeilen entfallen insgesamt\n"}),
                        printable(path_).c_str(), refused_));
    }
    if (found_.empty()) {
        return failure(either({"no line of it can be used", "keine Zeile darin ist zu gebrauchen"}));
    }
    return std::move(found_);
}

}  // namespace

Result<void> write_corr_values(const std::string& path, const CorrectionSeries& series,
                               const MessageCatalogue& messages) {
    std::string text;
    for (int i = 0; i < series.analysed.count(); ++i) {
        const int frame = series.analysed.at(i);
        if (frame < series.frames()) {
            text += line_of(frame, series.values[static_cast<std::size_t>(frame)]);
        }
    }
    const std::string reason =
        write_file_whole(path, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    if (reason.empty()) {
        return {};
    }
    Failure failed =
        Failure::of_run(format_text(messages.either({"The file %s cannot be written: %s\n",
                                                     "Die Datei %s kann nicht geschrieben werden: %s\n"}),
                                    printable(path).c_str(), reason.c_str()));
    failed.file = path;
    return failed;
}

Result<std::vector<StoredValues>> read_corr_values(const std::string& path, int frames, Notes& notes) {
    return Reader(path, frames, notes).read();
}

}  // namespace zemora
