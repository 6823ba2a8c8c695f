#include <vector>

#include "analysis/disparity_statistics.h"
#include "analysis/error_model.h"
#include "analysis/stereo_analyse.h"

namespace zemora {

namespace {

constexpr std::size_t kLeastModelCells = 6;
constexpr std::size_t kLeastSizeCells = 4;  ///< Of the first grid, for a size.

struct GridPoint {
    ModelPoint point;
    int row = 0;
};

std::vector<GridPoint> valid_points(const AnalysisState& state, int columns, int rows) {
    std::vector<GridPoint> points;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const auto i = static_cast<std::size_t>(row);
            const auto j = static_cast<std::size_t>(column);
            if (state.CQOK3[i][j] != 0) {
                points.push_back(
                    {{state.middle_x[i][j], state.middle_y[i][j], state.ErrorPixel_y[i][j]}, row});
            }
        }
    }
    return points;
}

/// Height as the mean and size from the outer rows; the middle row says next to nothing about it.
void estimate_first_grid(AnalysisState& state, const std::vector<GridPoint>& points, int height, int rows) {
    double sum = 0.0;
    for (const GridPoint& p : points) {
        sum += p.point.dy;
    }
    const double mean = sum / static_cast<double>(points.size());
    const int middle = height / 2;
    double product = 0.0;
    double square = 0.0;
    for (const GridPoint& p : points) {
        if (p.row == 0 || p.row == rows - 1) {
            const double y = p.point.y - middle;
            product += (p.point.dy - mean) * y;
            square += y * y;
        }
    }
    state.values = {};
    state.values.height = static_cast<float>(mean);
    state.values.size =
        points.size() >= kLeastSizeCells && square > 0.0 ? static_cast<float>(product / square) : 0.0F;
    state.residual_rms = 0.0F;
}

void estimate_model(AnalysisState& state, const std::vector<GridPoint>& points, int height, int width) {
    std::vector<ModelPoint> model_points;
    model_points.reserve(points.size());
    for (const GridPoint& p : points) {
        model_points.push_back(p.point);
    }
    const ModelTerms terms =
        model_terms(state.estimate_vergence_v, state.estimate_vergence_h, state.corner_coverage == 1);
    const ModelFit fit = solve_error_model(std::move(model_points), height, width, terms);
    state.values = fit.values;
    state.residual_rms = static_cast<float>(fit.residual_rms);
}

}  // namespace

EstimateStatus estimate_geometry(AnalysisState& state, int height, int width, int columns, int rows,
                                 AnalysePhase phase) {
    const std::vector<GridPoint> points = valid_points(state, columns, rows);
    const float window = state.values.window;
    if (phase == AnalysePhase::first_grid) {
        if (points.empty()) {
            return EstimateStatus::no_cell;
        }
        estimate_first_grid(state, points, height, rows);
    } else {
        if (points.size() < kLeastModelCells) {
            return EstimateStatus::too_few_cells;
        }
        estimate_model(state, points, height, width);
    }
    state.values.window = window;
    update_grid_disparities(state, width, columns, rows);
    choose_window(state, height, width);
    return EstimateStatus::done;
}

}  // namespace zemora
