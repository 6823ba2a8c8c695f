#include "render/calibration_files.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "config/number_scan.h"
#include "config/text_lines.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "render/value_lines.h"

namespace zemora {

namespace {

constexpr const char* kMonitorFile = "tintrovela_monitor.txt";
constexpr const char* kPrintFile = "tintrovela_print.txt";
constexpr std::string_view kPrintHeading = "Tintrovela Version 0.2";
constexpr std::size_t kGreenLine = 2;

/// A value of a file: its line, counted from 1, and how it is listed.
template <class Values>
struct ValueRow {
    std::size_t line;
    const char* label;
    float Values::*value;
};

// In the order of the listing.
// clang-format off
constexpr ValueRow<MonitorCalibration> kMonitorRows[] = {
    {1, "white_red = ", &MonitorCalibration::white_red},
    {2, "white_cya = ", &MonitorCalibration::white_cyan},
    {3, "black_red = ", &MonitorCalibration::black_red},
    {4, "black_cya = ", &MonitorCalibration::black_cyan},
};
constexpr ValueRow<PrintCalibration> kPrintRows[] = {
    { 3, "white_red         = ", &PrintCalibration::white_red},
    { 7, "black_red         = ", &PrintCalibration::black_red},
    { 5, "shape_red         = ", &PrintCalibration::shape_red},
    { 6, "white_cya         = ", &PrintCalibration::white_cyan},
    { 4, "black_cya         = ", &PrintCalibration::black_cyan},
    { 8, "shape_cya         = ", &PrintCalibration::shape_cyan},
    { 9, "gamma_whiteredred = ", &PrintCalibration::gamma_white_red_red},
    {10, "gamma_whiteredcya = ", &PrintCalibration::gamma_white_red_cyan},
    {11, "gamma_blackredred = ", &PrintCalibration::gamma_black_red_red},
    {12, "gamma_blackredcya = ", &PrintCalibration::gamma_black_red_cyan},
    {13, "gamma_whitecyacya = ", &PrintCalibration::gamma_white_cyan_cyan},
    {14, "gamma_whitecyared = ", &PrintCalibration::gamma_white_cyan_red},
    {15, "gamma_blackcyacya = ", &PrintCalibration::gamma_black_cyan_cyan},
    {16, "gamma_blackcyared = ", &PrintCalibration::gamma_black_cyan_red},
};
// clang-format on

/// The number on a line, counted from 1.
template <class T>
bool read_line(std::span<const TextLine> lines, std::size_t number, T& value) {
    return number <= lines.size() && read_values(lines[number - 1].text, std::span<T>(&value, 1)) == 1;
}

/// Reads all rows. The first line of the file that holds no number, 0 when all do.
template <class Values, std::size_t count>
std::size_t read_rows(std::span<const TextLine> lines, const ValueRow<Values> (&rows)[count],
                      Values& values) {
    std::size_t faulty = 0;
    for (const auto& row : rows) {
        if (!read_line(lines, row.line, values.*row.value) && (faulty == 0 || row.line < faulty)) {
            faulty = row.line;
        }
    }
    return faulty;
}

template <class Values, std::size_t count>
void list_values(Notes& notes, const ValueRow<Values> (&rows)[count], const Values& values) {
    for (const auto& row : rows) {
        notes.print(row.label + number_text(values.*row.value) + '\n');
    }
}

/// The lines of the file; nothing, with the message, when it cannot be read.
std::optional<std::vector<TextLine>> read_lines(const std::string& path, Notes& notes) {
    std::string reason;
    const auto bytes = read_file_whole(path, reason);
    if (!bytes) {
        notes.print(printable(path));
        notes.say<Msg::warpimage_anaglyph_values_missing>();
        notes.wait_once(Severity::error, path);
        return std::nullopt;
    }
    return text_lines(*bytes);
}

void tell_faulty_line(Notes& notes, const std::string& path, std::size_t line) {
    notes.print(printable(path) +
                format_text(notes.messages().either({": line %d holds no number. Standard values are used.\n",
                                                     ": Zeile %d enthaelt keine Zahl. Standardwerte werden "
                                                     "benutzt.\n"}),
                            static_cast<int>(line)));
}

}  // namespace

MonitorCalibration read_monitor_calibration(const std::string& folder, Notes& notes) {
    const std::string path = join_path(folder, kMonitorFile);
    const auto lines = read_lines(path, notes);
    if (!lines) {
        return {};
    }
    MonitorCalibration values;
    if (const std::size_t faulty = read_rows(*lines, kMonitorRows, values)) {
        tell_faulty_line(notes, path, faulty);
        notes.wait_once(Severity::error, path);
        return {};
    }
    if (notes.verbose() > 1) {
        notes.say<Msg::warpimage_anaglyph_monitor_values_used>();
        list_values(notes, kMonitorRows, values);
    }
    return values;
}

PrintCalibration read_print_calibration(const std::string& folder, Notes& notes) {
    const std::string path = join_path(folder, kPrintFile);
    const auto lines = read_lines(path, notes);
    if (!lines) {
        return {};
    }
    PrintCalibration values;
    const bool has_heading = !lines->empty() && lines->front().text == kPrintHeading;
    std::size_t faulty = read_rows(*lines, kPrintRows, values);
    if (!read_line(*lines, kGreenLine, values.green_percent)) {
        faulty = kGreenLine;
    }
    if (!has_heading || faulty != 0) {
        if (has_heading) {
            tell_faulty_line(notes, path, faulty);
        } else {
            notes.say<Msg::warpimage_anaglyph_print_file_mismatch>(printable(folder_of(path)));
            notes.print("\n");
        }
        notes.say<Msg::warpimage_anaglyph_make_new_print_file>();
        notes.wait_once(Severity::error, path);
        return {};
    }
    if (notes.verbose() > 1) {
        notes.say<Msg::warpimage_anaglyph_print_values_used>();
        notes.print("GreenValue        = " + number_text(values.green_percent) + '\n');
        list_values(notes, kPrintRows, values);
    }
    return values;
}

}  // namespace zemora
