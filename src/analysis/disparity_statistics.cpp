#include "analysis/disparity_statistics.h"

#include <algorithm>
#include <array>

namespace zemora {

namespace {

constexpr float kEdgeSharpness = 0.4F;  ///< Quality of an edge cell that counts although it is not valid.
constexpr float kEdgeContrast = 0.5F;

/// A grid with the test that makes a cell count.
struct CellSet {
    const AnalysisState& state;
    const Grid<int>& valid;
    int columns;
    int rows;
};

/// Extremes and mean of the valid cells; returns their number.
int take_extremes(const CellSet& cells, int width, DisparityStatistics& out, double& shift) {
    out.near_point = static_cast<float>(width);
    out.far_point = -static_cast<float>(width);
    double sum = 0.0;
    int count = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(cells.rows); ++i) {
        for (std::size_t j = 0; j < static_cast<std::size_t>(cells.columns); ++j) {
            if (cells.valid[i][j] != 0) {
                const float x = cells.state.dx[i][j];
                out.near_point = std::min(out.near_point, x);
                out.far_point = std::max(out.far_point, x);
                sum += x;
                ++count;
            }
        }
    }
    shift = count > 0 ? static_cast<float>(sum / count) : 0.0F;  // a float
    return count;
}

/// Smallest disparities along the four edges over the cells for which `counts(i, j)` holds.
template <class Counts>
void take_edges(const CellSet& cells, DisparityStatistics& out, Counts counts) {
    out.left_edge_near = out.right_edge_near = out.top_edge_near = out.bottom_edge_near = out.far_point;
    const auto last_row = static_cast<std::size_t>(cells.rows - 1);
    const auto last_column = static_cast<std::size_t>(cells.columns - 1);
    const auto take = [&](float& edge, std::size_t i, std::size_t j) {
        if (counts(i, j)) {
            edge = std::min(edge, cells.state.dx[i][j]);
        }
    };
    for (std::size_t i = 0; i <= last_row; ++i) {
        take(out.left_edge_near, i, 0);
        take(out.right_edge_near, i, last_column);
    }
    for (std::size_t j = 0; j <= last_column; ++j) {
        take(out.bottom_edge_near, 0, j);
        take(out.top_edge_near, last_row, j);
    }
}

/// Mean disparity of the valid cells of the smallest central block that has any.
float centre_disparity(const AnalysisState& state) {
    for (int first = 6; first >= 0; --first) {
        double sum = 0.0;
        int count = 0;
        for (int i = first; i < kGridMax - first; ++i) {
            for (int j = first; j < kGridMax - first; ++j) {
                if (state.valid_disparity[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] != 0) {
                    sum += state.dx[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
                    ++count;
                }
            }
        }
        if (count > 0) {
            return static_cast<float>(sum / count);
        }
    }
    return 0.0F;
}

}  // namespace

void update_grid_disparities(AnalysisState& state, int width, int columns, int rows) {
    const CellSet cells{state, state.valid, columns, rows};
    take_extremes(cells, width, state.disparity, state.correction.shift_px);
    take_edges(cells, state.disparity, [&state](std::size_t i, std::size_t j) {
        return state.sharpness_x[i][j] >= kEdgeSharpness && state.sharpness_y[i][j] >= kEdgeSharpness &&
               state.sharpness[i][j] >= kEdgeSharpness && state.contrast[i][j] >= kEdgeContrast;
    });
}

bool update_line_disparities(AnalysisState& state, int width) {
    const CellSet cells{state, state.valid_disparity, kGridMax, kGridMax};
    if (take_extremes(cells, width, state.disparity, state.correction.shift_px) == 0) {
        state.disparity = {};
        return false;
    }
    take_edges(cells, state.disparity,
               [&state](std::size_t i, std::size_t j) { return state.valid_disparity[i][j] != 0; });
    state.disparity.centre_disparity = centre_disparity(state);
    return true;
}

double window_length_px(double length, int reference, double height, double width) {
    constexpr std::array<double, 4> kAspects = {1.3333333333333333, 1.6, 1.7777777777777777,
                                                1.8888888888888888};
    if (reference == setting::win_off_reference::of_width) {
        return width * length / 1000.0;
    }
    const int aspect = reference - setting::win_off_reference::of_4_3;
    if (aspect >= 0 && aspect < static_cast<int>(kAspects.size())) {
        return length * kAspects[static_cast<std::size_t>(aspect)] * height / 1000.0;
    }
    return length;
}

bool choose_window(AnalysisState& state, int height, int width) {
    const DisparityStatistics& d = state.disparity;
    float& window = state.window_px;
    switch (state.options.estimate_window) {
        case setting::estimate_window::as_measured: window = 0.0F; break;
        case setting::estimate_window::mean: window = static_cast<float>(state.correction.shift_px); break;
        case setting::estimate_window::near_point: window = d.near_point; break;
        case setting::estimate_window::edges:
            window = std::min({d.left_edge_near, d.right_edge_near, d.top_edge_near, d.bottom_edge_near});
            break;
        case setting::estimate_window::far_point: window = d.far_point; break;
        case setting::estimate_window::within_limit:
            window =
                std::max(d.near_point,
                         static_cast<float>(d.far_point - window_length_px(state.options.far_point_limit,
                                                                           state.options.win_off_reference,
                                                                           height, width)));
            break;
        default: return false;
    }
    return true;
}

}  // namespace zemora
