#pragma once
/// The end of a run that has nothing to mount, with the settings that decide where files are looked for.

#include "config/parameter_set.h"
#include "config/voice.h"

namespace zemora {

/// Tells what was looked for and ends the process with code 1.
[[noreturn]] void end_without_files(const ParameterSet& parameters, Voice& voice);

/// Ends the process with code 1: more pairs than a run can number.
[[noreturn]] void end_with_too_many_pairs(Voice& voice, long long pairs);

}  // namespace zemora
