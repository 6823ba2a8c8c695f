#include "config/options.h"

#include <algorithm>
#include <numeric>

#include "config/number_scan.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr std::size_t kCodeLength = 2;
constexpr std::size_t kValueStart = 4;  // behind the slash, the code and the separator
constexpr std::size_t kKeyWidth = 18;
constexpr std::size_t kNearestShown = 3;
constexpr std::string_view kHelpCode = "/h";

bool is_letter_or_digit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool looks_like_code_option(std::string_view argument) {
    return argument.size() >= kValueStart && argument[0] == '/' && is_letter_or_digit(argument[1]) &&
           is_letter_or_digit(argument[2]) && (argument[3] == '=' || argument[3] == ':');
}

/// Edits (insert, remove, replace) that turn `a` into `b`.
std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row.back();
}

/// How far a code is from the one written: 0 other case, 1 letters exchanged, 2 first letter equal,
/// 3 second letter equal, 4 nothing equal.
std::size_t code_distance(std::string_view written, std::string_view code) {
    const std::string a = lower_case(written);
    const std::string b = lower_case(code);
    return a == b ? 0 : a[0] == b[1] && a[1] == b[0] ? 1 : a[0] == b[0] ? 2 : a[1] == b[1] ? 3 : 4;
}

/// A name that goes on as a key begins is as near as one wrong letter.
std::size_t name_distance(std::string_view written, std::string_view key) {
    const std::string a = lower_case(written);
    const std::string b = lower_case(key);
    return !a.empty() && b.starts_with(a) ? 1 : edit_distance(a, b);
}

/// The option rows with the smallest distances: those that share the smallest one, at most a few.
std::vector<const ParameterRow*> nearest_rows(
    const std::function<std::size_t(const ParameterRow&)>& distance) {
    std::vector<std::pair<std::size_t, const ParameterRow*>> rows;
    for (const ParameterRow& row : kParameterRows) {
        if (!row.option.empty()) {
            rows.emplace_back(distance(row), &row);
        }
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<const ParameterRow*> nearest;
    for (std::size_t i = 0; i < kNearestShown && rows[i].first == rows[0].first; ++i) {
        nearest.push_back(rows[i].second);
    }
    return nearest;
}

void note_error(CommandLine& line, CallError error, const std::string& argument,
                const std::function<std::size_t(const ParameterRow&)>& distance) {
    if (line.error == CallError::none) {
        line.error = error;
        line.wrong_argument = argument;
        line.nearest = nearest_rows(distance);
    }
}

void read_code_option(CommandLine& line, const std::string& argument,
                      const std::function<bool(const std::string&)>& path_exists) {
    const std::string code = argument.substr(1, kCodeLength);
    bool known = false;
    for (const ParameterRow& row : kParameterRows) {
        if (row.option == code) {
            line.settings.push_back({&row, argument.substr(kValueStart)});
            known = true;
        }
    }
    if (known) {
        return;
    }
    if (path_exists(argument)) {
        line.positional.push_back(argument);
    } else {
        note_error(line, CallError::unknown_option, argument,
                   [&code](const ParameterRow& row) { return code_distance(code, row.option); });
    }
}

void read_name_option(CommandLine& line, const std::string& argument) {
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(2, equals == std::string::npos ? equals : equals - 2);
    if (name == "help" || name == "version") {
        (name == "help" ? line.wants_help : line.wants_version) = true;
        return;
    }
    const auto* row = std::find_if(
        std::begin(kParameterRows), std::end(kParameterRows),
        [&](const ParameterRow& r) { return !r.option.empty() && lower_case(r.key) == lower_case(name); });
    if (row != std::end(kParameterRows) && equals != std::string::npos) {
        line.settings.push_back({row, argument.substr(equals + 1)});
        return;
    }
    const auto error = row == std::end(kParameterRows) ? CallError::unknown_option : CallError::value_missing;
    note_error(line, error, argument, [&name](const ParameterRow& r) { return name_distance(name, r.key); });
}

/// False when the argument is no option; a path in the shape of one has been stored as such.
bool read_option(CommandLine& line, const std::string& argument,
                 const std::function<bool(const std::string&)>& path_exists) {
    if (looks_like_code_option(argument)) {
        read_code_option(line, argument, path_exists);
        return true;
    }
    if (argument.starts_with("--")) {
        read_name_option(line, argument);
        return true;
    }
    return argument == kHelpCode;
}

void set_field(ParameterSet& parameters, const OptionSetting& setting) {
    std::visit(
        [&](auto field) {
            auto& target = parameters.*field;
            if constexpr (std::is_same_v<decltype(field), std::string ParameterSet::*>) {
                target = setting.value;
            } else if constexpr (std::is_same_v<decltype(field), int ParameterSet::*>) {
                target = scan_integer(setting.value).value_or(target);
            } else {
                using Real = std::remove_reference_t<decltype(target)>;
                target = static_cast<Real>(scan_real(setting.value).value_or(static_cast<double>(target)));
            }
        },
        setting.row->field);
}

}  // namespace

CommandLine read_command_line(std::span<const std::string> arguments,
                              const std::function<bool(const std::string&)>& path_exists) {
    CommandLine line;
    bool options_ended = false;
    for (const std::string& argument : arguments) {
        if (!options_ended && argument == "--") {
            options_ended = true;
        } else if (options_ended || !read_option(line, argument, path_exists)) {
            line.positional.push_back(argument);
        }
    }
    line.wants_help = line.wants_help || (arguments.size() == 1 && arguments[0] == kHelpCode);
    return line;
}

std::string call_error_text(const CommandLine& line, const MessageCatalogue& messages) {
    const bool unknown = line.error == CallError::unknown_option;
    std::string text = unknown ? messages.either("Unknown option: ", "Unbekannte Option: ")
                               : messages.either("Option without value: ", "Option ohne Wert: ");
    text += printable(line.wrong_argument);
    text += unknown ? messages.either(", perhaps meant: ", ", vielleicht gemeint: ")
                    : messages.either(", please write: ", ", bitte so schreiben: ");
    const bool by_name = line.wrong_argument.starts_with("--");
    for (const ParameterRow* row : line.nearest) {
        text += row == line.nearest.front() ? "" : ", ";
        text += by_name ? "--" + std::string(row->key) + "="
                        : "/" + std::string(row->option) + "= (" + std::string(row->key) + ")";
    }
    return text + "\n";
}

EarlySettings early_settings(const CommandLine& line) {
    EarlySettings early;
    for (const OptionSetting& setting : line.settings) {
        const auto value = scan_integer(setting.value);
        if (value && setting.row == &row_of(Parameter::stop_at_error)) {
            early.stop_at_error = value;
        } else if (value && setting.row == &row_of(Parameter::language)) {
            early.language = language_of(*value);
        }
    }
    return early;
}

void apply_options(const CommandLine& line, ParameterSet& parameters, Voice& voice) {
    for (const OptionSetting& setting : line.settings) {
        set_field(parameters, setting);
        parameters.given.emplace(setting.row->key);
        if (setting.row == &row_of(Parameter::language)) {
            voice.messages().set_language(language_of(parameters.language));
        }
        std::string key(setting.row->key);
        key.resize(std::max(key.size(), kKeyWidth), '.');
        voice.say<Msg::parameters_overwritten_with_option>();
        voice.print(key + " = " + value_text(*setting.row, parameters) + "\n");
    }
}

}  // namespace zemora
