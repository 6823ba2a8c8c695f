#pragma once
/// The wide search as a second opinion on the start of a pair: asked where the first phases are in doubt,
/// only with the robust fit.

#include <optional>

#include "analysis/wide_search.h"
#include "config/notes.h"
#include "numerics/pair_geometry.h"

namespace zemora {

enum class Opinion {
    start_stays,
    new_start,      ///< The correction has been replaced; the reduced pair is to be warped anew.
    no_correction,  ///< Hardly anything agrees with any correction; it has been reported.
};

/// One a pair.
class SecondOpinion {
public:
    /// `reduced` is the reduced pair, `scale` its pixels per pixel of the full-size input.
    SecondOpinion(AnalysisState& analysis, const StereoPicture& reduced, double scale, Notes& notes)
        : analysis_(analysis), reduced_(reduced), scale_(scale), notes_(notes) {}

    /// Where the first phases found nothing that can be right.
    [[nodiscard]] Opinion ask_for_start(PairGeometry& geometry);

    /// Behind a measured round. Asks in the first one, if the start is in doubt: a second shift that fits as
    /// well, heights that spread too far in the first grid, or too many cells that contradict the fit. Later
    /// rounds on the reduced pair guide the cells that failed.
    [[nodiscard]] Opinion ask_after_round(PairGeometry& geometry, bool reduced);

private:
    [[nodiscard]] Opinion ask(PairGeometry& geometry, bool has_start);
    void take_start(const Correction& best, PairGeometry& geometry);

    AnalysisState& analysis_;
    StereoPicture reduced_;
    double scale_;
    Notes& notes_;
    std::optional<WideSearch> wide_;
};

}  // namespace zemora
