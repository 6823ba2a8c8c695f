#pragma once
/// Which of the forms of the call applies, and what it forces.

#include <optional>
#include <string>
#include <vector>

#include "config/parameter_set.h"
#include "config/voice.h"
#include "driver/run_context.h"

namespace zemora {

struct Invocation {
    InvocationForm form = InvocationForm::defaults;
    std::vector<std::string> arguments;  ///< Positional, with "/" and without one at the end.
    std::string parameter_file;          ///< Empty in forms 7 and 8.
    bool parameter_file_named = false;   ///< The user gave it on the command line.
};

/// Nothing for a call that fits no form.
[[nodiscard]] std::optional<Invocation> classify_call(const std::vector<std::string>& positional);

/// "Start Zemora with ..." for the form.
void announce_call(const Invocation& invocation, const Voice& voice);

/// The answer to form 7's question: 1 stereo files, 2 left and right files. Ends the run with code 1
/// at the end of input.
[[nodiscard]] int ask_for_layout(const Voice& voice);

/// The values that the form forces over file and options. Names of the command line are relative to
/// the working directory. `layout` is the answer of form 7.
void force_values(const Invocation& invocation, ParameterSet& parameters, int layout);

/// The usage block with the call as it was, and the end of the run with code 1.
[[noreturn]] void end_with_usage(const Voice& voice, const std::vector<std::string>& whole_call);

}  // namespace zemora
