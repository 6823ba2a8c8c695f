#pragma once
/// What the measuring stages share: calls of the analysis with their words, and units.

#include <string>

#include "driver/pipeline.h"

namespace zemora {

/// Full-size pictures are warped and measured in working pixels, corrections kept in input pixels:
/// working (or reduced) height over input height.
[[nodiscard]] double measured_scale(const Pipeline& pipeline, const PairRun& pair);

/// Progress of a step on the console.
[[nodiscard]] AnalyseProgress progress_of(const Pipeline& pipeline, std::string step);

/// A phase of the analysis on `pictures`. Without memory for its copies the run ends.
[[nodiscard]] AnalyseStatus run_phase(Pipeline& pipeline, const StereoPicture& pictures,
                                      const PhaseRequest& request, const AnalyseProgress& progress);

/// The analysis' values in input pixels, for values measured at `scale` working pixels per input pixel.
[[nodiscard]] Correction correction_of(const CorrectionValues& values, double scale);
/// The way back: a correction in pixels of which `scale` are one of the input. The window is 0.
[[nodiscard]] CorrectionValues values_of(const Correction& correction, double scale);
[[nodiscard]] PairDisparities disparities_of(const AnalysisState& analysis, double scale);

/// Warps as planned. False when the values pass the limits of the warp; without memory the run ends.
[[nodiscard]] bool warp_views(Pipeline& pipeline, const StereoPicture& source, const WarpPlan& plan);

/// Warps the pair under work (reduced, or full size) with the present correction for the next
/// measurement, and finds the common area. False when the values pass the limits of the warp.
[[nodiscard]] bool warp_for_measuring(Pipeline& pipeline, PairRun& pair, const std::string& step);

/// "%s Height = ..., Size = ..." in pixels, percent and degrees, behind a label.
[[nodiscard]] std::string correction_line(const MessageCatalogue& messages, const char* label,
                                          const Correction& correction, bool with_shift);

}  // namespace zemora
