#pragma once
/// The command line: settings in both spellings, everything else in its order.

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "config/parameter_table.h"
#include "config/voice.h"

namespace zemora {

/// One field set by an option, with the value as it was written.
struct OptionSetting {
    const ParameterRow* row = nullptr;
    std::string value;
};

enum class CallError { none, unknown_option, value_missing, no_number, outside_range };

struct CommandLine {
    std::vector<std::string> positional;
    std::vector<OptionSetting> settings;  ///< In the order of the line; an option of two fields stands twice.
    bool wants_help = false;
    bool wants_version = false;
    CallError error = CallError::none;  ///< Of the first argument that is wrong.
    std::string wrong_argument;
    std::vector<std::string>
        nearest;  ///< What may have been meant, as it is to be written, best first; may be empty.
    const ParameterRow* wrong_row = nullptr;  ///< The setting whose value is wrong.
};

/// Reads the arguments behind the program's name. Settings are "/XX=value", "/XX:value" and
/// "--Key=value" (the key in any case) and may stand anywhere; "--" ends them. A value of the second spelling
/// has to be a whole number or a number, by its key, inside the limits of a parameter file. "/h", "/?", "-h",
/// "-?", "-help" and "--Help" in any case count as a call for help when they stand alone. An argument that
/// begins with one "-" and names nothing that exists is an error. Other arguments that begin with "/" are
/// paths; one that looks like a setting with an unknown code is a path if `path_exists` says so, and an error
/// otherwise.
[[nodiscard]] CommandLine read_command_line(std::span<const std::string> arguments,
                                            const std::function<bool(const std::string&)>& path_exists);

/// The sentence for `error`, which names the options that are near, or the range of the value.
[[nodiscard]] std::string call_error_text(const CommandLine& line, const MessageCatalogue& messages);

/// The settings that count already while the parameter file is read: for waiting and for the language.
struct EarlySettings {
    std::optional<int> stop_at_error;
    std::optional<Language> language;
};
[[nodiscard]] EarlySettings early_settings(const CommandLine& line);

/// Puts the settings into the parameters in their order and prints a line for each field. No limits
/// hold here; a value of a code option that is no number leaves a number as it is. `Language` acts at once.
void apply_options(const CommandLine& line, ParameterSet& parameters, Voice& voice);

/// The language that a value of `Language` selects.
[[nodiscard]] constexpr Language language_of(int value) {
    return value == 0 ? Language::german : Language::english;
}

}  // namespace zemora
