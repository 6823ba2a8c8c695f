#pragma once
/// Someone who looks at the inner results of the analysis while they come to be, for the study of hard pairs.
/// A visitor changes no result.

#include "analysis/cell_measure.h"
#include "analysis/stereo_analyse.h"

namespace zemora {

/// A cell of the grid of a phase. Phase 1 has 68 and 200 for its two correlations.
struct VisitedCell {
    AnalysePhase phase = AnalysePhase::shift;
    int row = 0;
    int column = 0;
};

/// One of the two correlations of phase 1.
struct ShiftFigures {
    SurfaceFigures figures;
    bool is_second = false;
    float shift_x = 0.0F;  ///< The result of the phase, with the second; pixels of the analysed pair.
    float shift_y = 0.0F;
};

class AnalysisVisitor {
public:
    virtual ~AnalysisVisitor() = default;

    /// Whether the cells of a phase are to come one after the other, in the calling thread.
    [[nodiscard]] virtual bool wants_cells(AnalysePhase phase) const = 0;

    /// A correlation of phase 1 is done.
    virtual void visit_shift(const ShiftFigures& shift) = 0;
    /// Behind each cell, in any thread where `wants_cells` is false. `surface` holds its errors, null where
    /// nothing was correlated; (dx, dy) is its displacement in pixels, right minus left.
    virtual void visit_cell(const MeasuredPair& pair, const VisitedCell& cell, const TileSearch& search,
                            const ErrorSurface* surface, float dx, float dy) = 0;
    /// Behind a pass of phase 3; `number` counts from 1.
    virtual void visit_pass(const AnalysisState& state, int number) = 0;
    /// Behind a phase that came to its end. `reduced`: measured on the reduced pair.
    virtual void visit_phase(const AnalysisState& state, AnalysePhase phase, bool reduced) = 0;
};

/// The order in which the cells of a phase are measured: a fixed one where somebody looks at them.
[[nodiscard]] inline CellOrder cell_order(const AnalysisState& state, AnalysePhase phase) {
    return state.visitor != nullptr && state.visitor->wants_cells(phase) ? CellOrder::one_after_other
                                                                         : CellOrder::shared_out;
}

}  // namespace zemora
