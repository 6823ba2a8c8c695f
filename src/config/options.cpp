#include "config/options.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

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
std::size_t name_distance(std::string_view written, std::string_view name) {
    const std::string a = lower_case(written);
    const std::string b = lower_case(name);
    return !a.empty() && b.starts_with(a) ? 1 : edit_distance(a, b);
}

/// Something that can be written, and how far it is from what was.
struct Suggestion {
    std::size_t distance;
    std::string text;
};

/// The suggestions with the smallest distance, at most a few; none when even those are farther than `limit`.
std::vector<std::string> nearest_of(std::vector<Suggestion> suggestions, std::size_t limit) {
    std::stable_sort(suggestions.begin(), suggestions.end(),
                     [](const Suggestion& a, const Suggestion& b) { return a.distance < b.distance; });
    std::vector<std::string> nearest;
    for (const Suggestion& suggestion : suggestions) {
        if (nearest.size() < kNearestShown && suggestion.distance <= limit &&
            suggestion.distance == suggestions.front().distance) {
            nearest.push_back(suggestion.text);
        }
    }
    return nearest;
}

std::string code_spelling(const ParameterRow& row) {
    return "/" + std::string(row.option) + "= (" + std::string(row.key) + ")";
}

std::string name_spelling(const ParameterRow& row) {
    return "--" + std::string(row.key) + "=";
}

/// The codes that share a letter, in any case, with the one written.
std::vector<std::string> nearest_codes(std::string_view code) {
    constexpr std::size_t kOneLetterEqual = 3;
    std::vector<Suggestion> suggestions;
    for (const ParameterRow& row : kParameterRows) {
        if (!row.option.empty()) {
            suggestions.push_back({code_distance(code, row.option), code_spelling(row)});
        }
    }
    return nearest_of(std::move(suggestions), kOneLetterEqual);
}

/// The names that differ in a third of their letters at most, or in two.
std::vector<std::string> nearest_names(std::string_view name) {
    constexpr std::size_t kLettersOfADifference = 3;
    constexpr std::size_t kAlwaysNear = 2;  // differences: exchanged letters are two
    std::vector<Suggestion> suggestions;
    for (const char* plain : {"help", "version"}) {
        suggestions.push_back({name_distance(name, plain), std::string("--") + plain});
    }
    for (const ParameterRow& row : kParameterRows) {
        if (!row.option.empty()) {
            suggestions.push_back({name_distance(name, row.key), name_spelling(row)});
        }
    }
    return nearest_of(std::move(suggestions), std::max(name.size() / kLettersOfADifference, kAlwaysNear));
}

void note_error(CommandLine& line, CallError error, const std::string& argument,
                std::vector<std::string> nearest, const ParameterRow* row = nullptr) {
    if (line.error == CallError::none) {
        line.error = error;
        line.wrong_argument = argument;
        line.nearest = std::move(nearest);
        line.wrong_row = row;
    }
}

/// What is wrong with the value of a named option.
CallError value_error(const ParameterRow& row, std::string_view value) {
    if (row.is_text()) {
        return CallError::none;
    }
    if (!(row.type == ParameterType::integer ? is_integer(value) : is_real(value))) {
        return CallError::no_number;
    }
    const double number = scan_real(value).value_or(0.0);
    return row.has_limits() && (number < row.low || number > row.high) ? CallError::outside_range
                                                                       : CallError::none;
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
        note_error(line, CallError::unknown_option, argument, nearest_codes(code));
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
    if (row == std::end(kParameterRows)) {
        note_error(line, CallError::unknown_option, argument, nearest_names(name));
    } else if (equals == std::string::npos) {
        note_error(line, CallError::value_missing, argument, {name_spelling(*row)});
    } else if (const CallError error = value_error(*row, argument.substr(equals + 1));
               error != CallError::none) {
        note_error(line, error, argument, {}, row);
    } else {
        line.settings.push_back({row, argument.substr(equals + 1)});
    }
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
    if (argument.size() > 1 && argument[0] == '-' && !path_exists(argument)) {
        note_error(line, CallError::unknown_option, argument, nearest_names(argument.substr(1)));
        return true;
    }
    return argument == kHelpCode;
}

bool asks_for_help(const std::string& only_argument) {
    static constexpr std::array kSpellings{"/h", "/?", "-h", "-?", "-help", "--help"};
    return std::find(kSpellings.begin(), kSpellings.end(), lower_case(only_argument)) != kSpellings.end();
}

/// "--OutputHeight=abc: OutputHeight takes a whole number from 0 to 32000."
std::string wrong_value_text(const CommandLine& line, const MessageCatalogue& messages) {
    const ParameterRow& row = *line.wrong_row;
    const std::string key(row.key);
    const bool is_whole = row.type == ParameterType::integer;
    std::string text = printable(line.wrong_argument) + ": " + key +
                       (is_whole ? messages.either({" takes a whole number", " verlangt eine ganze Zahl"})
                                 : messages.either({" takes a number", " verlangt eine Zahl"}));
    if (row.has_limits()) {
        text += messages.either({" from ", " von "}) + number_text(row.low) +
                messages.either({" to ", " bis "}) + number_text(row.high);
    }
    return text +
           (is_whole ? ".\n" : messages.either({", with a decimal point.\n", ", mit Dezimalpunkt.\n"}));
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
    if (arguments.size() == 1 && asks_for_help(arguments[0])) {
        line.wants_help = true;
        return line;
    }
    bool options_ended = false;
    for (const std::string& argument : arguments) {
        if (!options_ended && argument == "--") {
            options_ended = true;
        } else if (options_ended || !read_option(line, argument, path_exists)) {
            line.positional.push_back(argument);
        }
    }
    return line;
}

std::string call_error_text(const CommandLine& line, const MessageCatalogue& messages) {
    if (line.wrong_row != nullptr) {
        return wrong_value_text(line, messages);
    }
    const bool unknown = line.error == CallError::unknown_option;
    std::string text = unknown ? messages.either({"Unknown option: ", "Unbekannte Option: "})
                               : messages.either({"Option without value: ", "Option ohne Wert: "});
    text += printable(line.wrong_argument);
    const char* before = unknown ? messages.either({", perhaps meant: ", ", vielleicht gemeint: "})
                                 : messages.either({", please write: ", ", bitte so schreiben: "});
    for (const std::string& spelling : line.nearest) {
        text += before + spelling;
        before = ", ";
    }
    if (line.nearest.empty()) {
        text +=
            messages.either({". zemora --help shows all options.", ". zemora --help zeigt alle Optionen."});
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
            voice.set_language(language_of(parameters.language));
        }
        std::string key(setting.row->key);
        key.resize(std::max(key.size(), kKeyWidth), '.');
        voice.say<Msg::parameters_overwritten_with_option>();
        voice.print(key + " = " + value_text(*setting.row, parameters) + "\n");
    }
}

}  // namespace zemora
