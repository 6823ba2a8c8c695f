#pragma once
/// Why a run has nothing to mount, with the settings that decide where files are looked for.

#include "config/messages.h"
#include "input/collect_options.h"
#include "numerics/result.h"

namespace zemora {

/// What was looked for and not found; ends the run.
[[nodiscard]] Failure no_suited_files(const CollectOptions& options, const MessageCatalogue& messages);

/// More pairs than a run can number; ends the run.
[[nodiscard]] Failure too_many_pairs(long long pairs, const MessageCatalogue& messages);

}  // namespace zemora
