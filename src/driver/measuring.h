#pragma once
/// What the measuring stages share: calls of the analysis with their words, and units.

#include <string>

#include "analysis/measure_pair.h"
#include "driver/pipeline.h"

namespace zemora {

/// Progress of a step on the console.
[[nodiscard]] AnalyseProgress progress_of(const Pipeline& pipeline, std::string step);

/// A phase of the analysis on `pictures`. Without memory for its copies the run ends.
[[nodiscard]] AnalyseStatus run_phase(Pipeline& pipeline, const StereoPicture& pictures,
                                      const PhaseRequest& request, const AnalyseProgress& progress);

/// Warps the pair at work for its measurement, and leaves scale, size and common area of the latest warp in
/// the pair.
class PipelineWarp : public MeasuringWarp {
public:
    PipelineWarp(Pipeline& pipeline, PairRun& pair) : pipeline_(pipeline), pair_(pair) {}
    [[nodiscard]] Result<WarpedViews> warp(const Correction& correction, bool reduced) override;

private:
    Pipeline& pipeline_;
    PairRun& pair_;
};

/// Warps as planned. False when the values pass the limits of the warp; without memory the run ends.
[[nodiscard]] bool warp_views(Pipeline& pipeline, const StereoPicture& source, const WarpPlan& plan);

}  // namespace zemora
