#include "config/parameter_file.h"

#include <optional>
#include <vector>

#include "config/number_scan.h"
#include "config/parameter_table.h"
#include "config/text_lines.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

constexpr std::size_t kLineLimit = 511;  // bytes; a line of this length is refused
constexpr std::string_view kVersionStart = "0.9i";
constexpr char kComment = '%';

/// A line with the form that number keys are compared with.
struct ParameterLine {
    std::string text;
    std::string without_blanks;
    std::size_t length_in_file;
};

std::vector<ParameterLine> parameter_lines(std::span<const std::uint8_t> bytes) {
    std::vector<ParameterLine> lines;
    for (TextLine& line : text_lines(bytes)) {
        std::string compact = line.text;
        del_str_blanks(compact);
        lines.push_back({std::move(line.text), std::move(compact), line.length_in_file});
    }
    return lines;
}

class ParameterFileReader {
public:
    ParameterFileReader(std::vector<ParameterLine> lines, ParameterSet& parameters, Voice& voice,
                        const EarlySettings& early)
        : lines_(std::move(lines)), parameters_(parameters), voice_(voice), early_(early) {}

    /// True when a note reported a missing key. Fails for the run, with everything said.
    Result<bool> read();

private:
    void read_language();
    void read_version();
    void read_stop_level();
    void read_row(const ParameterRow& row);
    void read_text(const ParameterRow& row);
    void read_batch();
    template <class Number>
    void read_number(const ParameterRow& row, Number ParameterSet::*field);

    std::optional<std::size_t> find_line(const ParameterRow& row);
    std::string value_in_line(std::size_t line) const;
    void tell_faulty_line(const ParameterLine& line, std::string_view key) const;
    void note_missing(const ParameterRow& row);
    void stop_without_value(std::size_t line, bool has_equality_sign);
    void stop_outside_limits(const ParameterRow& row, double value);
    void stop();

    std::vector<ParameterLine> lines_;
    ParameterSet& parameters_;
    Voice& voice_;
    EarlySettings early_;
    int stop_level_ = 0;
    bool default_used_ = false;
    bool stopped_ = false;  ///< What was read cannot be used; nothing more is.
};

Result<bool> ParameterFileReader::read() {
    read_language();
    read_version();
    read_stop_level();
    for (const ParameterRow& row : kParameterRows) {
        const bool already_read = &row == &row_of(Parameter::language) ||
                                  &row == &row_of(Parameter::zemora_version) ||
                                  &row == &row_of(Parameter::stop_at_error);
        if (row.is_in_file() && !already_read && &row != &row_of(Parameter::do_post_zemora)) {
            read_row(row);
        }
    }
    read_batch();
    if (stopped_) {
        Failure failure;
        failure.ends_run = true;
        return failure;
    }
    if (stop_level_ > static_cast<int>(Severity::warning) && default_used_) {
        voice_.console().wait_for_enter();
    }
    return default_used_;
}

void ParameterFileReader::read_language() {
    stop_level_ = early_.stop_at_error.value_or(parameters_.stop_at_error);
    read_row(row_of(Parameter::language));
    if (stopped_) {
        return;
    }
    voice_.set_language(early_.language.value_or(language_of(parameters_.language)));
}

void ParameterFileReader::read_version() {
    read_row(row_of(Parameter::zemora_version));
    if (!stopped_ && !parameters_.zemora_version.starts_with(kVersionStart)) {
        voice_.say<Msg::parameters_file_version_mismatch>();
        voice_.say<Msg::parameters_program_and_file_version>();
        voice_.print(parameters_.zemora_version + "\n");
        stop();
    }
}

void ParameterFileReader::read_stop_level() {
    stop_level_ = early_.stop_at_error.value_or(0);
    read_row(row_of(Parameter::stop_at_error));
    stop_level_ = early_.stop_at_error.value_or(parameters_.stop_at_error);
}

void ParameterFileReader::read_row(const ParameterRow& row) {
    if (stopped_) {
        return;
    }
    if (row.is_text()) {
        read_text(row);
    } else if (const auto* integer = std::get_if<int ParameterSet::*>(&row.field)) {
        read_number(row, *integer);
    } else if (const auto* real = std::get_if<float ParameterSet::*>(&row.field)) {
        read_number(row, *real);
    } else {
        read_number(row, std::get<double ParameterSet::*>(row.field));
    }
}

template <class Number>
void ParameterFileReader::read_number(const ParameterRow& row, Number ParameterSet::*field) {
    const auto line = find_line(row);
    if (!line) {
        return note_missing(row);
    }
    const bool has_equality_sign = lines_[*line].text.find('=') != std::string::npos;
    const std::string value = value_in_line(*line);
    if (trimmed(value).empty()) {
        return stop_without_value(*line, has_equality_sign);
    }
    std::optional<double> number;
    if constexpr (std::is_same_v<Number, int>) {
        number = scan_integer(value);
    } else {
        number = scan_real(value);
    }
    if (!number) {
        return;  // letters leave the default in place
    }
    if (*number < row.low || *number > row.high) {
        return stop_outside_limits(row, *number);
    }
    parameters_.*field = static_cast<Number>(*number);
    parameters_.given.emplace(row.key);
}

void ParameterFileReader::read_text(const ParameterRow& row) {
    const auto line = find_line(row);
    if (!line) {
        return note_missing(row);
    }
    if (lines_[*line].text.find('=') != std::string::npos) {
        parameters_.*std::get<std::string ParameterSet::*>(row.field) = trimmed(value_in_line(*line));
        parameters_.given.emplace(row.key);
    }
}

/// The text behind the equality sign and then all lines up to the next comment sign.
void ParameterFileReader::read_batch() {
    if (stopped_) {
        return;
    }
    const ParameterRow& row = row_of(Parameter::do_post_zemora);
    const auto line = find_line(row);
    if (!line) {
        return note_missing(row);
    }
    if (lines_[*line].text.find('=') == std::string::npos) {
        return;
    }
    std::string batch(trimmed(value_in_line(*line)));
    batch += batch.empty() ? "" : "\n";
    for (std::size_t i = *line + 1; i < lines_.size(); ++i) {
        const std::string& text = lines_[i].text;
        const std::size_t end = text.find(kComment);
        batch += text.substr(0, end);
        if (end != std::string::npos) {
            break;
        }
        batch += '\n';
    }
    parameters_.do_post_zemora = batch;
}

/// The first line that holds the key. Faulty lines on the way are reported, in each search anew.
std::optional<std::size_t> ParameterFileReader::find_line(const ParameterRow& row) {
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const ParameterLine& line = lines_[i];
        if (line.length_in_file >= kLineLimit) {
            voice_.say<Msg::parameters_error_in_file>();
            voice_.say<Msg::parameters_line_too_long>(static_cast<int>(i) + 1);
            stop();
            return std::nullopt;
        }
        const std::string_view compared = row.is_text() ? line.text : line.without_blanks;
        if (!compared.starts_with(row.key)) {
            continue;
        }
        const std::string_view rest = compared.substr(row.key.size());
        if (rest.empty() || rest[0] == ' ' || rest[0] == '=') {
            return i;
        }
        tell_faulty_line(line, row.key);
    }
    return std::nullopt;
}

/// The text behind the first equality sign, up to a comment.
std::string ParameterFileReader::value_in_line(std::size_t line) const {
    const std::string& text = lines_[line].text;
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
        return {};
    }
    const std::size_t comment = text.find(kComment, equals);
    return text.substr(equals + 1, comment == std::string::npos ? comment : comment - equals - 1);
}

void ParameterFileReader::tell_faulty_line(const ParameterLine& line, std::string_view key) const {
    const MessageCatalogue& messages = voice_.messages();
    voice_.print(messages.either({"Error in parameterfile\n", "Fehler in der Parameterdatei\n"}));
    voice_.print(messages.either({"line: ", "Zeile: "}) + line.text + "\n");
    voice_.print(messages.either({"searched for: ", "gesucht wurde: "}) + std::string(key) + "\n");
    if (stop_level_ > static_cast<int>(Severity::error)) {
        voice_.console().wait_for_enter();
    }
}

void ParameterFileReader::note_missing(const ParameterRow& row) {
    if (stopped_ || row.missing != MissingKey::noted || acts_when_not_set(row)) {
        return;
    }
    default_used_ = true;
    voice_.print(row.key);
    voice_.say<Msg::parameters_not_found_in_file>();
    voice_.say<Msg::parameters_default_will_be_used>();
    voice_.print(std::string(row.key) + " = " + value_text(row, parameters_) + "\n\n");
}

void ParameterFileReader::stop_without_value(std::size_t line, bool has_equality_sign) {
    voice_.say<Msg::parameters_error_in_file>();
    voice_.say<Msg::parameters_in_line>();
    voice_.print(number_text(static_cast<int>(line) + 1) + "\n");
    if (!has_equality_sign) {
        voice_.say<Msg::parameters_no_equality_sign>();
    }
    stop();
}

void ParameterFileReader::stop_outside_limits(const ParameterRow& row, double value) {
    const std::string key(row.key);
    voice_.say<Msg::parameters_error_in_file>();
    if (row.type == ParameterType::integer) {
        voice_.say<Msg::parameters_integer_value_outside_limits>(key, static_cast<int>(value));
        voice_.say<Msg::parameters_integer_limits>(static_cast<int>(row.low), static_cast<int>(row.high));
    } else {
        voice_.say<Msg::parameters_real_value_outside_limits>(key, value);
        voice_.say<Msg::parameters_real_limits>(row.low, row.high);
    }
    stop();
}

void ParameterFileReader::stop() {
    voice_.wait(Severity::must_be_seen);
    stopped_ = true;
}

void tell_missing_file(const std::string& path, ParameterSet& parameters, Voice& voice,
                       const EarlySettings& early) {
    if (voice.messages().is_german()) {
        parameters.language = static_cast<int>(Language::german);
    }
    if (path.empty()) {
        voice.print(
            voice.messages().either({"No parameter file belongs to this call. All parameters default.\n\n",
                                     "Zu diesem Aufruf gehoert keine Parameterdatei. Alle Parameter "
                                     "default.\n\n"}));
    } else {
        voice.say<Msg::parameters_file_not_found>(printable(path));
    }
    const int level = early.stop_at_error.value_or(parameters.stop_at_error);
    const bool is_usual_name = path.find("zemora.ini") != std::string::npos;
    if (level > static_cast<int>(is_usual_name ? Severity::warning : Severity::error)) {
        voice.console().wait_for_enter();
    }
}

Failure unreadable(const std::string& path, const std::string& reason, const ParameterSet& parameters,
                   Voice& voice, const EarlySettings& early) {
    voice.print(
        format_text(voice.messages().either({"The parameter file %s cannot be read: %s\n",
                                             "Die Parameterdatei %s kann nicht gelesen werden: %s\n"}),
                    printable(path).c_str(), reason.c_str()));
    if (early.stop_at_error.value_or(parameters.stop_at_error) > static_cast<int>(Severity::error)) {
        voice.wait(Severity::must_be_seen);
    }
    Failure failure;
    failure.ends_run = true;
    return failure;
}

}  // namespace

Result<ParameterFileResult> read_parameter_file(const std::string& path, ParameterSet& parameters,
                                                Voice& voice, const EarlySettings& early) {
    parameters = default_parameters();
    std::string reason;
    const auto bytes = read_file_whole(path, reason);
    if (!bytes && !path.empty() && identity_of(path)) {
        return unreadable(path, reason, parameters, voice, early);
    }
    if (!bytes) {
        tell_missing_file(path, parameters, voice, early);
        return ParameterFileResult{};
    }
    ParameterFileReader reader(parameter_lines(*bytes), parameters, voice, early);
    const Result<bool> default_used = reader.read();
    if (!default_used) {
        return default_used.failure();
    }
    return ParameterFileResult{true, *default_used};
}

}  // namespace zemora
