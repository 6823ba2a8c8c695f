#include <algorithm>
#include <cmath>

#include "analysis/analysis_visitor.h"
#include "analysis/cell_measure.h"
#include "analysis/phases.h"
#include "numerics/rounding.h"

namespace zemora::phases {

namespace {

/// Tile, search and start of the tile along one axis of a small copy, pixels.
struct AxisPlan {
    int side = 0;
    int tile = 0;
    int search = 0;
    int start = 0;
};

/// The copy for one of the two correlations.
struct CopyPlan {
    AxisPlan along;  ///< Along the longer side.
    AxisPlan across;
};

constexpr int kFirstLongSide = 66;
constexpr int kSecondLongSide = 200;
constexpr int kFirstDumpName = 68;       ///< Row and column of the first correlation in file names.
constexpr int kSecondPerFirst = 3;       ///< Pixels of the second copy per pixel of the first.
constexpr int kFinalPerSecond = 4;       ///< Pixels of the 800-pixel analysis image per pixel of the second.
constexpr float kLargestShift = 200.0F;  ///< Pixels of the analysis image.

CopyPlan first_plan(std::int64_t long_side, std::int64_t short_side) {
    const int s = static_cast<int>(22 * short_side / long_side) * 3 + 3;
    return {{kFirstLongSide, 33, 34, 17}, {s, s / 2, (s / 4 + 1) * 2, s / 4 + 1}};
}

CopyPlan second_plan(std::int64_t long_side, std::int64_t short_side) {
    const int s = static_cast<int>(50 * short_side / long_side) * 4 + 4;
    return {{kSecondLongSide, 100, 26, 50}, {s, s / 2, s / 16 * 2 + 2, s / 2 - s / 4}};
}

/// Whether a second minimum, apart from the least error, comes near to it.
bool has_second_minimum(const ErrorSurface& surface) {
    constexpr float kNear = 1.3F;  // times the least error
    constexpr int kApart = 2;      // steps
    const auto& errors = surface.errors();
    const auto least = std::min_element(errors.begin(), errors.end());
    const int best_row = static_cast<int>(least - errors.begin()) / surface.columns();
    const int best_column = static_cast<int>(least - errors.begin()) % surface.columns();
    for (int row = 1; row < surface.rows() - 1; ++row) {
        for (int column = 1; column < surface.columns() - 1; ++column) {
            const bool apart = std::abs(row - best_row) > kApart || std::abs(column - best_column) > kApart;
            if (apart && surface.at(row, column) < kNear * *least &&
                surface.is_local_minimum(row, column, 1)) {
                return true;
            }
        }
    }
    return false;
}

/// Correlates the middle of the left copy; the copy's memory is missing when `found` stays false.
SurfaceFigures correlate_copy(AnalysisState& state, const StereoPicture& pair, const CopyPlan& plan,
                              int shift_x, int shift_y, bool& found) {
    const bool portrait = pair.left.width < pair.left.height;
    const AxisPlan& x = portrait ? plan.across : plan.along;
    const AxisPlan& y = portrait ? plan.along : plan.across;
    const WorkingCopies copies = make_copies(state, pair, {x.side, y.side});
    found = copies.made;
    if (!found) {
        return {};
    }
    const MeasuredPair small(state, copies.pair);
    CellTools tools;
    const TileSearch search{x.start, y.start, y.tile, x.tile, y.search, x.search, 1, 1, shift_x, shift_y};
    tools.correlator.correlate(small.left, small.right, small.rule, search, tools.forward);
    if (state.options.robust && plan.along.side == kFirstLongSide) {
        state.ambiguous_shift = has_second_minimum(tools.forward);
    }
    const SurfaceFigures figures =
        evaluate_surface(tools.forward, pair.left.height, pair.left.width, small.sub_pixel);
    if (state.visitor != nullptr) {
        const int name = plan.along.side == kFirstLongSide ? kFirstDumpName : kSecondLongSide;
        state.visitor->visit_cell(small, {AnalysePhase::shift, name, name}, search, &tools.forward,
                                  static_cast<float>(shift_x) + figures.dx,
                                  static_cast<float>(shift_y) + figures.dy);
    }
    return figures;
}

}  // namespace

AnalyseStatus measure_shift(AnalysisState& state, const StereoPicture& pair) {
    const int long_side = std::max(pair.left.width, pair.left.height);
    const int short_side = std::min(pair.left.width, pair.left.height);
    if (short_side <= 0) {
        return AnalyseStatus::done;
    }
    bool found = false;
    const SurfaceFigures rough = correlate_copy(state, pair, first_plan(long_side, short_side), 0, 0, found);
    if (!found) {
        state.memory_failure = MemoryFailure::first_copy;
        return AnalyseStatus::no_memory;
    }
    const int shift_x = round_half_up(kSecondPerFirst * rough.dx);
    const int shift_y = round_half_up(kSecondPerFirst * rough.dy);
    const SurfaceFigures fine =
        correlate_copy(state, pair, second_plan(long_side, short_side), shift_x, shift_y, found);
    if (!found) {
        state.memory_failure = MemoryFailure::second_copy;
        return AnalyseStatus::no_memory;
    }
    const float dx = kFinalPerSecond * (static_cast<float>(shift_x) + fine.dx);
    const float dy = kFinalPerSecond * (static_cast<float>(shift_y) + fine.dy);
    state.dx[0][0] = dx;
    state.dy[0][0] = dy;
    if (state.visitor != nullptr) {
        state.visitor->visit_shift({rough});
        state.visitor->visit_shift({fine, true, dx, dy});
    }
    if (std::fabs(dx) >= kLargestShift || std::fabs(dy) >= kLargestShift) {
        state.oversize_is_vertical = std::fabs(dx) < kLargestShift;
        state.oversize_shift_px = state.oversize_is_vertical ? dy : dx;
        return AnalyseStatus::shift_too_large;
    }
    return AnalyseStatus::done;
}

}  // namespace zemora::phases
