#include "analysis/frame_memory.h"

namespace zemora {

FrameMemory remember_frame(const AnalysisState& state, const PairGeometry& geometry) {
    return {geometry,          state.dx,        state.contrast,      state.search_rows, state.search_columns,
            state.cell_course, state.disparity, state.previous_width};
}

void recall_frame(const FrameMemory& memory, AnalysisState& state) {
    reset_analysis(state, true);
    state.dx = memory.dx;
    state.dy = {};
    state.contrast = memory.contrast;
    state.search_rows = memory.search_rows;
    state.search_columns = memory.search_columns;
    state.cell_course = memory.cell_course;
    state.disparity = memory.disparity;
    state.previous_width = memory.width;
}

}  // namespace zemora
