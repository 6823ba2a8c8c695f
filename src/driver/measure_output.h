#pragma once
/// What the output pair shows: near and far point, edges, deviation, what is left of its vertical errors.

#include "driver/mount.h"

namespace zemora {

/// Measures the pair in `bench.warped`. A status that is not written means that there is nothing to measure,
/// which a pair from keys may come without. Fails for want of memory alone.
[[nodiscard]] Result<MountedPair> measure_output(const LocatedPair& located, const MountSettings& settings,
                                                 Workbench& bench, Notes& notes);

}  // namespace zemora
