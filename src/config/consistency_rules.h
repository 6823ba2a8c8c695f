#pragma once
/// The rules that bring the settings of a run together, or refuse settings that contradict each other.

#include "config/rule_surroundings.h"

namespace zemora {

/// Derives `VideoMode` from the input, settles the codec and the encoder's latency, and passes once
/// through the table of rules, in its order; each rule sees what those before it changed. Fails
/// for the run at the first rule that refuses the settings. To be called once, after the parameter file and
/// the options.
[[nodiscard]] Result<void> apply_consistency_rules(ParameterSet& parameters,
                                                   const RuleSurroundings& surroundings, Voice& voice);

/// The `VideoMode` that the pass gives the settings: by `InputMode` and the names of the input.
[[nodiscard]] int derived_video_mode(const ParameterSet& parameters);

}  // namespace zemora
