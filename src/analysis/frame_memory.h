#pragma once
/// What the measurement of one frame of a film leaves for the frame that follows: the correction, and where
/// each cell was found.

#include "analysis/stereo_analyse.h"

namespace zemora {

struct FrameMemory {
    PairGeometry geometry;
    Grid<float> dx{};        ///< Pixels of the full-size pair, against the correction.
    Grid<float> contrast{};  ///< Tells how much texture there is.
    Grid<int> search_rows{}, search_columns{}, cell_course{};
    DisparityStatistics disparity;
    float width = 0.0F;  ///< Of the pair that was measured.
};

/// Taken when the geometry is measured, before the cells serve for anything else.
[[nodiscard]] FrameMemory remember_frame(const AnalysisState& state, const PairGeometry& geometry);

/// Readies the state for the frame behind.
void recall_frame(const FrameMemory& memory, AnalysisState& state);

}  // namespace zemora
