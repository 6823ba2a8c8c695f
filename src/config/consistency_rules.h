#pragma once
/// The rules that bring the settings of a run together, or end a run whose settings contradict.

#include "config/rule_surroundings.h"

namespace zemora {

/// Derives `VideoMode` from the input, settles the codec and the encoder's latency, and passes once
/// through the table of rules, in its order; each rule sees what those before it changed. A stop ends
/// the process with code 1. To be called once, after the parameter file and the options.
[[nodiscard]] Result<void> apply_consistency_rules(ParameterSet& parameters,
                                                   const RuleSurroundings& surroundings, Voice& voice);

}  // namespace zemora
