#include <algorithm>
#include <cmath>
#include <limits>

#include "analysis/analysis_visitor.h"
#include "analysis/cell_measure.h"
#include "analysis/phases.h"
#include "numerics/rounding.h"

namespace zemora::phases {

namespace {

constexpr int kCells = kGeometryGrid * kGeometryGrid;
constexpr int kMostPasses = 4;
constexpr int kLargestSearch = 500;  ///< Pixels.
constexpr int kLeastCells = 7;       ///< Valid cells that end a phase.

/// Values of `cell_course`.
enum Done { kNotMeasured = 0, kMeasured = 1, kAccepted = 2, kNoContrastRight = -97, kNoContrastLeft = -99 };

/// What a direction without contrast shows in all of its figures.
struct Blank {
    float quality;
    int figure;
};
constexpr Blank kBlankForward = {-99.0F, 9999};
constexpr Blank kBlankReverse = {-97.0F, 9997};

int default_search_rows(int height) {
    return height < 680 ? 23 : (height - 600) / 80 + 23;
}
int default_search_columns(int width) {
    return std::min(width < 840 ? 43 : (width - 800) / 40 + 43, kLargestSearch);
}

/// What all cells of a call have in common.
struct GeometryRun {
    bool first = false;  ///< First iteration of an image that follows nothing.
    int value_limit = kValueLimitReduced;
    int tile_rows = 0;
    int tile_columns = 0;
    int step_y = 1;
    int step_x = 1;
    bool predicted = false;  ///< Displacements of the iteration before centre the search.
};

bool acceptable(const DirectionResult& result, const TileSearch& search, const GeometryRun& run, int width) {
    const SurfaceFigures& f = result.figures;
    return result.contrast >= kLeastContrast && f.sharpness_x >= kGeometrySharpness &&
           f.sharpness_y >= kGeometrySharpness && f.sharpness >= kGeometrySharpness &&
           f.match_error <= run.value_limit && match_inside(search, result.position_dx, width);
}

/// A direction, or the blank figures when its tile has no contrast.
DirectionResult try_direction(const MeasuredPair& pair, bool left_first, const TileSearch& search,
                              const Blank& blank, CellTools& tools) {
    const float contrast = search_contrast(left_first ? pair.left : pair.right, search);
    if (contrast >= kLeastContrast) {
        return measure_direction(pair, left_first, search, contrast, tools);
    }
    DirectionResult result;
    result.contrast = contrast;
    result.figures.sharpness_x = result.figures.sharpness_y = result.figures.sharpness = blank.quality;
    result.figures.ambiguity = result.figures.match_error = blank.figure;
    return result;
}

/// Displacements of the left view's pixels, whichever view was looked for in the other.
CellValue value_of(const DirectionResult& result, float sign, int prediction) {
    return {static_cast<float>(prediction) + sign * result.figures.dx, sign * result.figures.dy,
            result.contrast, result.figures, sign < 0.0F};
}

/// Leaves the value of a cell in the state, and shows it. A tile without contrast has no surface.
void settle_cell(AnalysisState& state, const MeasuredPair& pair, const TileSearch& search, int row,
                 int column, const CellValue& value, bool accepted, CellTools& tools) {
    const auto i = static_cast<std::size_t>(row);
    const auto j = static_cast<std::size_t>(column);
    store_cell(state, row, column, value);
    state.valid[i][j] = accepted ? 1 : 0;
    if (accepted) {
        state.cell_course[i][j] = kAccepted;
    }
    if (state.visitor != nullptr) {
        const bool correlated = value.contrast >= kLeastContrast;
        state.visitor->visit_cell(pair, {AnalysePhase::geometry, row, column}, search,
                                  correlated ? &tools.surface(!value.from_reverse) : nullptr, value.dx,
                                  value.dy);
    }
}

/// Measures the cell forward and, where that gives nothing, in reverse.
void measure_cell(AnalysisState& state, const MeasuredPair& pair, const GeometryRun& run, TileSearch search,
                  int row, int column, CellTools& tools) {
    int& done = state.cell_course[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
    const int prediction = search.shift_x;
    const DirectionResult forward = try_direction(pair, true, search, kBlankForward, tools);
    const CellValue forward_value = value_of(forward, 1.0F, prediction);
    if (acceptable(forward, search, run, pair.width)) {
        settle_cell(state, pair, search, row, column, forward_value, true, tools);
        return;
    }
    if (forward.contrast < kLeastContrast) {
        done = kNoContrastLeft;
    }
    search.shift_x = -prediction;
    const DirectionResult reverse = try_direction(pair, false, search, kBlankReverse, tools);
    const CellValue reverse_value = value_of(reverse, -1.0F, prediction);
    if (acceptable(reverse, search, run, pair.width)) {
        settle_cell(state, pair, search, row, column, reverse_value, true, tools);
        return;
    }
    if (reverse.contrast < kLeastContrast) {
        done = kNoContrastRight;
    }
    if (run.first && std::max(forward.contrast, reverse.contrast) >= kLeastContrast) {
        done = kMeasured;
    }
    const bool forward_stays = forward.contrast > reverse.contrast;
    settle_cell(state, pair, search, row, column, forward_stays ? forward_value : reverse_value, false,
                tools);
}

/// One pass over the cells.
void measure_pass(AnalysisState& state, const MeasuredPair& pair, const GeometryRun& run,
                  const AnalyseProgress& progress) {
    const double margin = state.search_columns[0][0] / 2.0 + 1.0;
    const CellOrder order = cell_order(state, AnalysePhase::geometry);
    for_each_cell(kCells, order, progress, [&](int cell, CellTools& tools) {
        const int row = cell / kGeometryGrid;
        const int column = cell % kGeometryGrid;
        const auto i = static_cast<std::size_t>(row);
        const auto j = static_cast<std::size_t>(column);
        if (run.first) {
            if (state.cell_course[i][j] == kAccepted) {
                return;
            }
            state.search_rows[i][j] = std::min(state.search_rows[i][j] * 4 / 3, kLargestSearch);
            state.search_columns[i][j] = std::min(state.search_columns[i][j] * 4 / 3, kLargestSearch);
        }
        const int x = tile_start(column, kGeometryGrid, run.tile_columns, pair.width, margin);
        const int y = tile_start(row, kGeometryGrid, run.tile_rows, pair.height, margin);
        state.middle_x[i][j] = x + run.tile_columns / 2;
        state.middle_y[i][j] = y + run.tile_rows / 2;
        const int prediction = run.predicted ? round_half_up(state.dx[i][j]) : 0;
        const TileSearch search{x,
                                y,
                                run.tile_rows,
                                run.tile_columns,
                                state.search_rows[i][j],
                                state.search_columns[i][j],
                                run.step_y,
                                run.step_x,
                                prediction,
                                0};
        measure_cell(state, pair, run, search, row, column, tools);
    });
}

/// The first measurement of an image starts from the default searches; later ones go on with those
/// that it ended with, on full-size images with the default width.
void prepare_searches(AnalysisState& state, const StereoPicture& pair, bool first, bool reduced) {
    for (std::size_t i = 0; i < kGeometryGrid; ++i) {
        for (std::size_t j = 0; j < kGeometryGrid; ++j) {
            if (first || state.search_rows[i][j] == 0) {
                state.cell_course[i][j] = kNotMeasured;
                state.search_rows[i][j] = std::min(default_search_rows(pair.left.height), kLargestSearch);
            }
            if (first || !reduced || state.search_columns[i][j] == 0) {
                state.search_columns[i][j] = default_search_columns(pair.left.width);
            }
        }
    }
}

/// Brings the displacements of the iteration before to the pixels of this image.
void scale_predictions(AnalysisState& state, int width) {
    const float before = state.previous_width > 0.0F ? state.previous_width : static_cast<float>(width);
    const float ratio = static_cast<float>(width) / before;
    for (std::size_t i = 0; i < kGeometryGrid; ++i) {
        for (std::size_t j = 0; j < kGeometryGrid; ++j) {
            state.dx[i][j] *= ratio;
        }
    }
}

struct CellCount {
    int valid = 0;
    int without_contrast = 0;
};

CellCount count_cells(const AnalysisState& state) {
    CellCount count;
    for (std::size_t i = 0; i < kGeometryGrid; ++i) {
        for (std::size_t j = 0; j < kGeometryGrid; ++j) {
            const int done = state.cell_course[i][j];
            count.valid += state.valid[i][j];
            count.without_contrast += done == kNoContrastLeft || done == kNoContrastRight ? 1 : 0;
        }
    }
    return count;
}

/// Calls `visit` for the valid cells, row by row from the bottom.
template <class Visit>
void for_valid_cells(const AnalysisState& state, Visit visit) {
    for (std::size_t i = 0; i < kGeometryGrid; ++i) {
        for (std::size_t j = 0; j < kGeometryGrid; ++j) {
            if (state.valid[i][j] != 0) {
                visit(i, j);
            }
        }
    }
}

/// Cells much nearer than the spread of those on the near side. Only that side is cut, and no cell that
/// lies within the same number of search steps of the mean: a flat subject has no spread at all.
void remove_near_outliers(AnalysisState& state, int step_x) {
    constexpr double kSigmas = 2.5;
    double sum = 0.0;
    int count = 0;
    for_valid_cells(state, [&](std::size_t i, std::size_t j) {
        sum += state.dx[i][j];
        ++count;
    });
    const double mean = count > 0 ? sum / count : 0.0;
    double squares = 0.0;
    int near = 0;
    for_valid_cells(state, [&](std::size_t i, std::size_t j) {
        const double x = state.dx[i][j];
        if (x <= 0.0) {
            squares += (x - mean) * (x - mean);
            ++near;
        }
    });
    if (near == 0) {
        return;
    }
    const double limit = std::min(-kSigmas * std::sqrt(squares / near), mean - kSigmas * step_x);
    for_valid_cells(state, [&](std::size_t i, std::size_t j) {
        if (state.dx[i][j] < limit) {
            state.valid[i][j] = 0;
        }
    });
}

/// The cells with the largest and the smallest vertical displacement, the first ones among equals.
void remove_vertical_extremes(AnalysisState& state) {
    constexpr int kLeastForRemoval = 3;
    int* highest = nullptr;
    int* lowest = nullptr;
    float high = -std::numeric_limits<float>::infinity();
    float low = std::numeric_limits<float>::infinity();
    for_valid_cells(state, [&](std::size_t i, std::size_t j) {
        const float y = state.dy[i][j];
        if (y > high) {
            high = y;
            highest = &state.valid[i][j];
        }
        if (y < low) {
            low = y;
            lowest = &state.valid[i][j];
        }
    });
    if (count_cells(state).valid >= kLeastForRemoval && highest != nullptr && lowest != nullptr) {
        *highest = 0;
        *lowest = 0;
    }
}

/// Whether most of the picture has texture of its own, by the measurement before. Then smaller tiles match as
/// well, and each of them sees less depth. Where edges are all there is to see, they need the larger ones.
bool is_textured(const AnalysisState& state) {
    constexpr float kTexture = 2.5F;  // contrast
    constexpr int kMost = kCells * 3 / 4;
    int textured = 0;
    for (std::size_t i = 0; i < kGeometryGrid; ++i) {
        for (std::size_t j = 0; j < kGeometryGrid; ++j) {
            textured += state.contrast[i][j] >= kTexture ? 1 : 0;
        }
    }
    return textured >= kMost;
}

/// Whether the disparities of the measurement before span much of the width.
bool is_deep(const AnalysisState& state) {
    constexpr float kDeep = 0.06F;
    return state.disparity.far_point - state.disparity.near_point > kDeep * state.previous_width;
}

}  // namespace

void remove_outliers(AnalysisState& state, int step_x) {
    remove_near_outliers(state, step_x);
    if (!state.options.robust) {  // the robust fit finds those that are false
        remove_vertical_extremes(state);
    }
}

bool corners_covered(const AnalysisState& state) {
    constexpr int kBlock = 4;         // cells a side of a corner block
    constexpr int kCornerWeight = 7;  // of the outermost cell, falling by one a step
    constexpr int kLeastWeight = 7;
    for (int corner = 0; corner < 4; ++corner) {
        int weight = 0;
        for (int a = 0; a < kBlock; ++a) {
            for (int b = 0; b < kBlock; ++b) {
                const int row = (corner & 1) != 0 ? kGeometryGrid - 1 - a : a;
                const int column = (corner & 2) != 0 ? kGeometryGrid - 1 - b : b;
                const int valid =
                    state.valid[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
                weight += valid != 0 ? kCornerWeight - a - b : 0;
            }
        }
        if (weight < kLeastWeight) {
            return false;
        }
    }
    return true;
}

void measure_geometry(AnalysisState& state, const StereoPicture& pair, const PhaseRequest& request,
                      const AnalyseProgress& progress) {
    const MeasuredPair measured(state, pair);
    GeometryRun run;
    run.first = !request.carry && !request.started && request.iteration == 1;
    run.predicted = request.iteration > 1 || request.started;
    run.value_limit = request.reduced ? kValueLimitReduced : kValueLimitFull;
    run.tile_rows = 2 * measured.height / 21;
    run.tile_columns = 2 * measured.width / 21;
    run.step_y = std::min(measured.height / 799 + 1, 2);
    run.step_x = std::min(measured.width / 799 + 1, 3);
    if (state.options.robust && !request.reduced && is_textured(state)) {
        constexpr int kLeastForThird = 180;  // columns
        const int part = run.tile_columns >= kLeastForThird && is_deep(state) ? 3 : 2;
        run.tile_rows = std::max(run.tile_rows / part, 1);
        run.tile_columns = std::max(run.tile_columns / part, 1);
        run.step_y = 1;  // the smaller tile pays for it
    }
    scale_predictions(state, measured.width);
    state.previous_width = static_cast<float>(measured.width);
    prepare_searches(state, pair, run.first, request.reduced);
    if (run.tile_rows == 0 || run.tile_columns == 0) {
        state.valid = {};
        return;
    }
    // The first measurement of a continued frame has neither prediction nor growth: each pass would
    // repeat the first.
    const int passes = run.first || run.predicted ? kMostPasses : 1;
    for (int pass = 0; pass < passes; ++pass) {
        measure_pass(state, measured, run, progress);
        remove_outliers(state, run.step_x);
        if (state.visitor != nullptr) {
            state.visitor->visit_pass(state, pass + 1);
        }
        const CellCount count = count_cells(state);
        const bool enough = request.iteration > 1 || (kCells - count.without_contrast) / 2 <= count.valid;
        if (enough && count.valid >= kLeastCells) {
            break;
        }
    }
    state.corner_coverage = corners_covered(state) ? 1 : 0;
}

}  // namespace zemora::phases
