#pragma once
/// Which of the forms of the call applies, and what it forces.

#include <optional>
#include <string>
#include <vector>

#include "config/parameter_set.h"
#include "config/voice.h"
#include "driver/run_context.h"
#include "input/folder_layout.h"

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
void announce_call(const Invocation& invocation, Voice& voice);

/// How the pictures of form 7's folder are arranged: by its files, which a line tells. Where they do not
/// decide, the question is asked on a terminal; the run ends with code 1 at the end of input.
[[nodiscard]] FolderLayout choose_layout(const Invocation& invocation, const ParameterSet& parameters,
                                         Voice& voice);

/// The values that the form forces over file and options. Names of the command line are relative to
/// the working directory. `layout` is that of form 7.
void force_values(const Invocation& invocation, ParameterSet& parameters, const FolderLayout& layout = {});

/// The first word of the call that cannot be meant, because it names a drive of another system.
[[nodiscard]] const std::string* find_word_with_drive(const Invocation& invocation);

/// The first word of the call that names nothing that exists: the parameter file.
[[nodiscard]] const std::string* find_missing_parameter_file(const Invocation& invocation);

/// Likewise the pictures, which may also stand in the image folder (absolute) and differ in case.
[[nodiscard]] const std::string* find_missing_picture(const Invocation& invocation,
                                                      const ParameterSet& parameters);

/// The usage block with the call as it was, `reason` behind it, and the end of the run with code 1.
[[noreturn]] void end_with_usage(Voice& voice, const std::vector<std::string>& whole_call,
                                 const std::string& reason, bool waits);

}  // namespace zemora
