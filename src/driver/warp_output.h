#pragma once
/// The output pair: the full-size views warped once more with kernel, tone and gamma of the output, the
/// automatic frame, and the repeats that force the size.

#include "driver/mount.h"

namespace zemora {

/// What all warps for the output of a pair have in common; frame, scale and correction are not set.
[[nodiscard]] WarpPlan output_plan(const LocatedPair& located, const PairWish& wish,
                                   const RenderSettings& settings, const AnalysisState& analysis);

/// What the warps of the output have settled.
struct SettledOutput {
    TargetSize target;  ///< Its final width is that of the automatic frame.
    FrameSettings frame;
    StatusCode status = StatusCode::success;  ///< Usable where the wanted size was not reached.
};

/// Leaves the output pair in `bench.warped`. Fails for the pair, with all said, beyond the limits of the
/// warp; for the run without memory.
[[nodiscard]] Result<SettledOutput> warp_output(const InputViews& views, const LocatedPair& located,
                                                const PairWish& wish, const MountSettings& settings,
                                                Workbench& bench, Notes& notes);

}  // namespace zemora
