#include "analysis/cell_measure.h"

#include <omp.h>

#include <algorithm>
#include <atomic>

#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr double kShareWhole = 0.75;        ///< Of a tile that must overlap.
constexpr double kSharePassepartout = 0.5;  ///< The same for pictures with a frame of one colour.

}  // namespace

MeasuredPair::MeasuredPair(const AnalysisState& state, const StereoPicture& pair)
    : left(pair.left, state.tone_left),
      right(pair.right, state.tone_right),
      rule{state.options.passe_colour, state.options.has_passepartout ? kSharePassepartout : kShareWhole},
      sub_pixel(state.options.robust ? SubPixel::vertex : SubPixel::damped_height),
      height(pair.left.height),
      width(pair.left.width) {}

float search_contrast(const ToneView& view, const TileSearch& search) {
    return tile_contrast(view, search.tile_rows, search.tile_columns, search.x, search.y,
                         search.tile_rows * search.tile_columns / 2);
}

DirectionResult measure_direction(const MeasuredPair& pair, bool left_first, const TileSearch& search,
                                  CellTools& tools) {
    const float contrast = search_contrast(left_first ? pair.left : pair.right, search);
    return measure_direction(pair, left_first, search, contrast, tools);
}

DirectionResult measure_direction(const MeasuredPair& pair, bool left_first, const TileSearch& search,
                                  float contrast, CellTools& tools) {
    const ToneView& first = left_first ? pair.left : pair.right;
    const ToneView& second = left_first ? pair.right : pair.left;
    ErrorSurface& surface = tools.surface(left_first);
    DirectionResult result;
    result.contrast = contrast;
    tools.correlator.correlate(first, second, pair.rule, search, surface);
    result.figures = evaluate_surface(surface, pair.height, pair.width, pair.sub_pixel);
    result.position_dx = result.figures.dx + static_cast<float>(search.shift_x);
    return result;
}

bool match_inside(const TileSearch& search, float position_dx, int width) {
    const float start = static_cast<float>(search.x) + position_dx;
    return start >= 0.0F && start + static_cast<float>(search.tile_columns) < static_cast<float>(width);
}

void store_cell(AnalysisState& state, int row, int column, const CellValue& value) {
    const auto i = static_cast<std::size_t>(row);
    const auto j = static_cast<std::size_t>(column);
    state.dx[i][j] = value.dx;
    state.dy[i][j] = value.dy;
    state.contrast[i][j] = value.contrast;
    state.sharpness_x[i][j] = value.figures.sharpness_x;
    state.sharpness_y[i][j] = value.figures.sharpness_y;
    state.sharpness[i][j] = value.figures.sharpness;
    state.looseness[i][j] = value.figures.looseness;
    state.ambiguity[i][j] = value.figures.ambiguity;
    state.match_error[i][j] = value.figures.match_error;
}

int tile_start(int nth, int tiles, int side, int length, double margin) {
    const double pitch = (length - 2.0 * margin - static_cast<double>(tiles) * side) / (tiles - 1) + side;
    return std::clamp(round_half_up(nth * pitch + margin), 0, std::max(length - side, 0));
}

void for_each_cell(int cells, CellOrder order, const AnalyseProgress& progress,
                   const std::function<void(int, CellTools&)>& measure) {
    std::atomic<int> done = 0;
#pragma omp parallel if (order == CellOrder::shared_out)
    {
        CellTools tools;
#pragma omp for schedule(dynamic)
        for (int cell = 0; cell < cells; ++cell) {
            measure(cell, tools);
            const int now_done = ++done;
            if (progress && omp_get_thread_num() == 0 && now_done < cells) {
                progress(100.0 * now_done / cells);
            }
        }
    }
    if (progress) {
        progress(100.0);
    }
}

}  // namespace zemora
