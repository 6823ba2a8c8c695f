#include "analysis/eye_order.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "analysis/phases.h"

namespace zemora {

namespace {

constexpr double kRowWeight = 2.0;        ///< Of the full correlation, in standard deviations of the votes.
constexpr double kExchanged = -3.5;       ///< Both cues together at most,
constexpr double kLeastContours = -1.75;  ///< and the contours alone.
constexpr int kMargin = 4;                ///< Pixels that the range of a line goes beyond that of the cells.
constexpr int kFewCells = 8;

/// Calls `visit(row, disparity)` for the valid cells.
template <class Visit>
void for_valid_cells(const AnalysisState& state, Visit visit) {
    for (std::size_t i = 0; i < kGridMax; ++i) {
        for (std::size_t j = 0; j < kGridMax; ++j) {
            if (state.valid_disparity[i][j] != 0) {
                visit(static_cast<double>(i), static_cast<double>(state.dx[i][j]));
            }
        }
    }
}

double correlation_with_rows(const AnalysisState& state) {
    int cells = 0;
    double mean_row = 0.0;
    double mean = 0.0;
    for_valid_cells(state, [&](double row, double disparity) {
        ++cells;
        mean_row += row;
        mean += disparity;
    });
    if (cells < kFewCells) {
        return 0.0;
    }
    mean_row /= cells;
    mean /= cells;
    double rows = 0.0;
    double disparities = 0.0;
    double common = 0.0;
    for_valid_cells(state, [&](double row, double disparity) {
        rows += (row - mean_row) * (row - mean_row);
        disparities += (disparity - mean) * (disparity - mean);
        common += (row - mean_row) * (disparity - mean);
    });
    return rows > 0.0 && disparities > 0.0 ? common / std::sqrt(rows * disparities) : 0.0;
}

std::optional<DisparityRange> range_of_cells(const AnalysisState& state) {
    std::optional<DisparityRange> range;
    for_valid_cells(state, [&range](double, double disparity) {
        const int low = static_cast<int>(std::floor(disparity)) - kMargin;
        const int high = static_cast<int>(std::ceil(disparity)) + kMargin;
        range = range ? DisparityRange{std::min(range->low, low), std::max(range->high, high)}
                      : DisparityRange{low, high};
    });
    return range;
}

}  // namespace

double EyeOrder::contour_value() const {
    const int votes = contours.in_order + contours.exchanged;
    return votes > 0 ? (contours.in_order - contours.exchanged) / std::sqrt(votes) : 0.0;
}

double EyeOrder::value() const {
    return contour_value() + kRowWeight * rows;
}

bool EyeOrder::looks_exchanged() const {
    return contour_value() <= kLeastContours && value() <= kExchanged;
}

EyeOrder measure_eye_order(const AnalysisState& state, const StereoPicture& pair) {
    EyeOrder order;
    const std::optional<StereoPicture> copies = phases::disparity_copies(state, pair);
    const std::optional<DisparityRange> range = range_of_cells(state);
    if (copies && range) {
        order.rows = correlation_with_rows(state);
        order.contours = vote_on_contours(MeasuredPair(state, *copies), *range);
    }
    return order;
}

}  // namespace zemora
