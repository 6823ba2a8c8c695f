#pragma once
/// The geometry of a pair from its pictures: measured on a reduced copy first, warped, measured again, until
/// the errors are gone, at last at full size.

#include "analysis/frame_memory.h"
#include "analysis/stereo_analyse.h"
#include "config/notes.h"
#include "numerics/pair_geometry.h"
#include "numerics/result.h"

namespace zemora {

/// The views of a pair, and their copies for the first rounds.
struct MeasuredViews {
    StereoPicture full;
    StereoPicture reduced;
    /// The frame before in the same scene of a film: the measurement goes on from its correction, at full
    /// size, and starts afresh only where that leads to nothing. Null for a pair of its own.
    const FrameMemory* before = nullptr;
};

struct MeasureSettings {
    int most_rounds = 10;  ///< `IterativeWarp`; 0 leaves it at the first measurement.
    int least_rounds = 3;  ///< `IterativeMin`.
    bool shows_steps =
        false;  ///< `ProgressOutput` 1: shows what each step found, and stops behind the first.
};

/// A pair as a warp left it.
struct WarpedViews {
    StereoPicture pair;
    double scale = 1.0;  ///< Its pixels per pixel of the full-size input.
};

/// Takes corrections away for the next measurement.
class MeasuringWarp {
public:
    virtual ~MeasuringWarp() = default;
    /// The reduced or the full-size pair, corrected; valid until the next call. Fails where the correction
    /// passes the limits of the warp, and for want of memory, which ends the run.
    [[nodiscard]] virtual Result<WarpedViews> warp(const Correction& correction, bool reduced) = 0;
};

/// What the measurement works with; kept from pair to pair for its memory.
struct MeasureTools {
    AnalysisState& analysis;
    MeasuringWarp& warp;
};

/// Measures a pair. In the result: the status, correction, disparities, what the latest round still found,
/// and how far all of this is believed. A status that is not written and not `no_result` means that the pair
/// cannot be mounted. Fails for want of memory alone.
[[nodiscard]] Result<PairGeometry> measure_pair(const MeasuredViews& views, const MeasureSettings& settings,
                                                MeasureTools tools, Notes& notes);

/// The failure of a phase that found no memory; it ends the run.
[[nodiscard]] Failure no_memory_for_correlation(const AnalysisState& analysis);

/// "%s Height = ..., Size = ..." in pixels, percent and degrees, behind a label.
[[nodiscard]] std::string correction_line(const MessageCatalogue& messages, const char* label,
                                          const Correction& correction, bool with_shift);

}  // namespace zemora
