#pragma once
/// Why a run has nothing to mount, with the settings that decide where files are looked for.

#include "config/messages.h"
#include "input/collect_options.h"
#include "numerics/result.h"

namespace zemora {

/// The failure of a run that found nothing to mount; says what was looked for, and where.
[[nodiscard]] Failure no_suited_files(const CollectOptions& options, const MessageCatalogue& messages);

/// The failure of a run with more pairs than it can number.
[[nodiscard]] Failure too_many_pairs(long long pairs, const MessageCatalogue& messages);

}  // namespace zemora
