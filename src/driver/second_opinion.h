#pragma once
/// The wide search as a second opinion on the start of a pair: asked where the first phases are in doubt,
/// only with the robust fit.

#include "driver/pipeline.h"

namespace zemora {

enum class Opinion {
    start_stays,
    new_start,  ///< Correction and displacements have been replaced; the reduced pair is to be warped anew.
    no_correction,  ///< Hardly anything agrees with any correction; it has been told.
};

/// Where the first phases found nothing that can be right.
[[nodiscard]] Opinion ask_for_start(Pipeline& pipeline, PairRun& pair);

/// Behind a measured round on the reduced pair. Asks in the first one, if the start is in doubt: a second
/// shift that fits as well, heights that spread too far in the first grid, or too many cells that contradict
/// the fit. Later ones guide the cells that failed.
[[nodiscard]] Opinion ask_after_round(Pipeline& pipeline, PairRun& pair);

}  // namespace zemora
