#pragma once
/// The grid of a phase, for those who write all of its cells.

#include "analysis/stereo_analyse.h"

namespace zemora {

struct PhaseGrid {
    int side;                ///< Cells.
    const Grid<int>& valid;  ///< `valid` or `valid_disparity`.
};

/// Of phase 2, 3 or 5.
[[nodiscard]] inline PhaseGrid grid_of(const AnalysisState& state, AnalysePhase phase) {
    switch (phase) {
        case AnalysePhase::first_grid: return {kFirstGrid, state.valid};
        case AnalysePhase::disparity: return {kGridMax, state.valid_disparity};
        default: return {kGeometryGrid, state.valid};
    }
}

}  // namespace zemora
