#include "analysis/analysis_visitor.h"
#include "analysis/cell_measure.h"
#include "analysis/phases.h"
#include "numerics/rounding.h"

namespace zemora::phases {

namespace {

constexpr int kStep = 2;  ///< Of tile and search, pixels.

bool is_good(const DirectionResult& result, const TileSearch& search, int width) {
    const SurfaceFigures& f = result.figures;
    return result.contrast >= kLeastContrast && f.sharpness_x >= kFirstGridSharpness &&
           f.sharpness_y >= kFirstGridSharpness && f.sharpness >= kFirstGridSharpness &&
           match_inside(search, result.position_dx, width);
}

CellValue value_of(const DirectionResult& result, float sign) {
    return {sign * result.figures.dx, sign * result.figures.dy, result.contrast, result.figures, sign < 0.0F};
}

float mean(float a, float b) {
    return (a + b) / 2.0F;
}

CellValue mean_of(const DirectionResult& forward, const DirectionResult& reverse) {
    const SurfaceFigures& a = forward.figures;
    const SurfaceFigures& b = reverse.figures;
    CellValue value{(a.dx - b.dx) / 2.0F, (a.dy - b.dy) / 2.0F, mean(forward.contrast, reverse.contrast), a};
    value.figures.sharpness_x = mean(a.sharpness_x, b.sharpness_x);
    value.figures.sharpness_y = mean(a.sharpness_y, b.sharpness_y);
    value.figures.sharpness = mean(a.sharpness, b.sharpness);
    value.figures.ambiguity = (a.ambiguity + b.ambiguity) / 2;
    value.figures.match_error = (a.match_error + b.match_error) / 2;
    return value;
}

/// What a cell without a good direction shows.
CellValue rejected(const DirectionResult& forward, const DirectionResult& reverse) {
    const float a = forward.figures.sharpness_x;
    const float b = reverse.figures.sharpness_x;
    if (forward.contrast >= kLeastContrast && a >= b) {
        return value_of(forward, 1.0F);
    }
    if (reverse.contrast >= kLeastContrast && b >= a) {
        return value_of(reverse, -1.0F);
    }
    CellValue value;
    value.contrast = mean(forward.contrast, reverse.contrast);
    value.figures.ambiguity = kNoFigure;
    value.figures.match_error = kNoFigure;
    return value;
}

void measure_cell(AnalysisState& state, const MeasuredPair& pair, TileSearch search, int row, int column,
                  CellTools& tools) {
    const auto i = static_cast<std::size_t>(row);
    const auto j = static_cast<std::size_t>(column);
    const int shift_x = search.shift_x;
    const int shift_y = search.shift_y;
    state.middle_x[i][j] = search.x + search.tile_columns / 2;
    state.middle_y[i][j] = search.y + search.tile_rows / 2;
    const DirectionResult forward = measure_direction(pair, true, search, tools);
    const bool forward_good = is_good(forward, search, pair.width);
    search.shift_x = -shift_x;
    search.shift_y = -shift_y;
    const DirectionResult reverse = measure_direction(pair, false, search, tools);
    const bool reverse_good = is_good(reverse, search, pair.width);
    CellValue value = forward_good && reverse_good ? mean_of(forward, reverse)
                      : forward_good               ? value_of(forward, 1.0F)
                      : reverse_good               ? value_of(reverse, -1.0F)
                                                   : rejected(forward, reverse);
    value.dx += static_cast<float>(shift_x);
    value.dy += static_cast<float>(shift_y);
    store_cell(state, row, column, value);
    state.valid[i][j] = forward_good || reverse_good ? 1 : 0;
    if (state.visitor != nullptr) {
        state.visitor->visit_cell(pair, {AnalysePhase::first_grid, row, column}, search,
                                  &tools.surface(!value.from_reverse), value.dx, value.dy);
    }
}

}  // namespace

void measure_first_grid(AnalysisState& state, const StereoPicture& pair, const AnalyseProgress& progress) {
    const MeasuredPair measured(state, pair);
    const int tile_rows = measured.height / 6;
    const int tile_columns = measured.width / 6;
    const double margin = tile_columns / 2.0 + 1.0;
    const int shift_x = round_half_up(state.dx[0][0]);
    const int shift_y = round_half_up(state.dy[0][0]);
    const bool has_area = tile_rows > 0 && tile_columns > 0;
    state.previous_width = static_cast<float>(measured.width);
    const int cells = has_area ? kFirstGrid * kFirstGrid : 0;
    const CellOrder order = cell_order(state, AnalysePhase::first_grid);
    for_each_cell(cells, order, progress, [&](int cell, CellTools& tools) {
        const int row = cell / kFirstGrid;
        const int column = cell % kFirstGrid;
        const TileSearch search{tile_start(column, kFirstGrid, tile_columns, measured.width, margin),
                                tile_start(row, kFirstGrid, tile_rows, measured.height, margin),
                                tile_rows,
                                tile_columns,
                                tile_rows,
                                tile_columns,
                                kStep,
                                kStep,
                                shift_x,
                                shift_y};
        measure_cell(state, measured, search, row, column, tools);
    });
    for (std::size_t k = 0; !has_area && k < kFirstGrid * kFirstGrid; ++k) {
        state.valid[k / kFirstGrid][k % kFirstGrid] = 0;
    }
}

}  // namespace zemora::phases
