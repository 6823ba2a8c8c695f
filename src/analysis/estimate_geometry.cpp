#include <algorithm>
#include <cmath>
#include <vector>

#include "analysis/disparity_statistics.h"
#include "analysis/error_model.h"
#include "analysis/phases.h"
#include "analysis/stereo_analyse.h"

namespace zemora {

namespace {

constexpr std::size_t kLeastModelCells = 6;
constexpr std::size_t kLeastSizeCells = 4;  ///< Of the first grid, for a size.

struct GridPoint {
    ModelPoint point;
    int row = 0;
    int column = 0;
};

std::vector<GridPoint> valid_points(const AnalysisState& state, int columns, int rows) {
    std::vector<GridPoint> points;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const auto i = static_cast<std::size_t>(row);
            const auto j = static_cast<std::size_t>(column);
            if (state.valid[i][j] != 0) {
                points.push_back(
                    {{state.middle_x[i][j], state.middle_y[i][j], state.dy[i][j], state.looseness[i][j]},
                     row,
                     column});
            }
        }
    }
    return points;
}

/// The middle one of the values, the mean of the two middle ones; 0 for none.
double median(std::vector<double> values) {
    if (values.empty()) {
        return 0.0;
    }
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2.0;
}

/// Height as the median, size as the median of the slopes between the outer rows: one false match does
/// not reach the result.
void estimate_first_grid_robustly(AnalysisState& state, const std::vector<GridPoint>& points, int height,
                                  int rows) {
    std::vector<double> slopes;
    for (const GridPoint& low : points) {
        for (const GridPoint& high : points) {
            if (low.row == 0 && high.row == rows - 1) {
                slopes.push_back((high.point.dy - low.point.dy) / (high.point.y - low.point.y));
            }
        }
    }
    const double size = points.size() >= kLeastSizeCells ? median(slopes) : 0.0;
    std::vector<double> heights;
    for (const GridPoint& p : points) {
        heights.push_back(p.point.dy - size * (p.point.y - height / 2));
    }
    state.correction = {};
    state.correction.height_px = static_cast<float>(median(heights));
    state.correction.size = static_cast<float>(size);
    state.residual_rms_px = 0.0F;
    state.first_grid_spread_px = 0.0F;
    for (const double dy : heights) {
        state.first_grid_spread_px =
            std::max(state.first_grid_spread_px, static_cast<float>(std::fabs(dy - median(heights))));
    }
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
    state.correction = {};
    state.correction.height_px = static_cast<float>(mean);
    state.correction.size =
        points.size() >= kLeastSizeCells && square > 0.0 ? static_cast<float>(product / square) : 0.0F;
    state.residual_rms_px = 0.0F;
}

ModelTerms terms_of(const AnalysisState& state) {
    return model_terms(state.options.estimate_vergence_v, state.options.estimate_vergence_h,
                       state.corner_coverage == 1);
}

void take_fit(AnalysisState& state, const ModelFit& fit) {
    state.correction = fit.values;
    state.residual_rms_px = static_cast<float>(fit.residual_rms_px);
}

/// Cells that contradict the fit lose their validity. Where the others do not reach into all corners,
/// terms that ask for these are left out and the fit is repeated.
void estimate_model_robustly(AnalysisState& state, const std::vector<GridPoint>& points,
                             const std::vector<ModelPoint>& model_points, int height, int width) {
    const ModelTerms terms = terms_of(state);
    RobustFit robust = solve_error_model_robustly(model_points, height, width, terms);
    const auto take_weights = [&] {
        for (std::size_t k = 0; k < points.size(); ++k) {
            const auto i = static_cast<std::size_t>(points[k].row);
            const auto j = static_cast<std::size_t>(points[k].column);
            state.valid[i][j] = robust.weights[k] > 0.0 ? 1 : 0;
        }
        state.corner_coverage = phases::corners_covered(state) ? 1 : 0;
    };
    take_weights();
    if (terms_of(state) != terms) {
        robust = solve_error_model_robustly(model_points, height, width, terms_of(state));
        take_weights();
    }
    take_fit(state, robust.fit);
    const auto rejected = std::count(robust.weights.begin(), robust.weights.end(), 0.0);
    state.rejected_share = static_cast<float>(rejected) / static_cast<float>(points.size());
}

void estimate_model(AnalysisState& state, const std::vector<GridPoint>& points, int height, int width) {
    std::vector<ModelPoint> model_points;
    model_points.reserve(points.size());
    for (const GridPoint& p : points) {
        model_points.push_back(p.point);
    }
    if (state.options.robust) {
        estimate_model_robustly(state, points, model_points, height, width);
    } else {
        take_fit(state, solve_error_model(std::move(model_points), height, width, terms_of(state)));
    }
}

}  // namespace

EstimateStatus estimate_geometry(AnalysisState& state, int height, int width, int columns, int rows,
                                 AnalysePhase phase) {
    const std::vector<GridPoint> points = valid_points(state, columns, rows);
    if (phase == AnalysePhase::first_grid) {
        if (points.empty()) {
            return EstimateStatus::no_cell;
        }
        if (state.options.robust) {
            estimate_first_grid_robustly(state, points, height, rows);
        } else {
            estimate_first_grid(state, points, height, rows);
        }
    } else {
        if (points.size() < kLeastModelCells) {
            return EstimateStatus::too_few_cells;
        }
        estimate_model(state, points, height, width);
    }
    update_grid_disparities(state, width, columns, rows);
    choose_window(state, height, width);
    return EstimateStatus::done;
}

}  // namespace zemora
