#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "analysis/analysis_visitor.h"
#include "analysis/cell_measure.h"
#include "analysis/disparity_statistics.h"
#include "analysis/phases.h"
#include "numerics/rounding.h"

namespace zemora::phases {

namespace {

constexpr int kCells = kGridMax * kGridMax;
constexpr int kCopySide = 1024;  ///< Pixels of the copy's longer side.
constexpr int kSearch = 304;     ///< Displacements -152 to 152 pixels.
constexpr int kMargin = 14;      ///< Pixels round the grid.
constexpr int kLeastTilePixels = 1300;
constexpr int kGap = 5;  ///< Empty pixels that make an extreme stand alone.

DirectionResult measure_line(const MeasuredPair& pair, bool left_first, TileSearch search, CellTools& tools) {
    search.shift_x = left_first ? search.shift_x : -search.shift_x;
    const ToneView& first = left_first ? pair.left : pair.right;
    const ToneView& second = left_first ? pair.right : pair.left;
    ErrorSurface& surface = tools.surface(left_first);
    DirectionResult result;
    result.contrast =
        tile_contrast(first, kDisparityTile, kDisparityTile, search.x, search.y, kLeastTilePixels);
    tools.correlator.correlate(first, second, pair.rule, search, surface);
    result.figures = evaluate_profile(surface);
    result.position_dx = result.figures.dx + static_cast<float>(search.shift_x);
    return result;
}

bool is_good(const DirectionResult& result, const TileSearch& search, int width) {
    return result.contrast >= kLeastContrast && result.figures.sharpness_x >= kDisparitySlope &&
           match_inside(search, result.position_dx, width);
}

CellValue value_of(const DirectionResult& result, float sign) {
    return {sign * result.figures.dx, 0.0F, result.contrast, result.figures, sign < 0.0F};
}

/// Both directions on one line: the reverse profile runs the other way round.
CellValue joined(const DirectionResult& forward, CellTools& tools) {
    ErrorSurface& sum = tools.forward;
    for (int k = 0; k <= kSearch; ++k) {
        sum.set(0, k, sum.at(0, k) + tools.reverse.at(0, kSearch - k));
    }
    CellValue value = value_of(forward, 1.0F);
    value.figures = evaluate_profile(sum);
    value.dx = value.figures.dx;
    return value;
}

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
    value.contrast = (forward.contrast + reverse.contrast) / 2.0F;
    value.figures.ambiguity = value.figures.match_error = kNoFigure;
    return value;
}

bool unambiguous(const CellValue& value) {
    return value.contrast >= kLeastContrast && value.figures.sharpness_x >= kDisparitySlope &&
           value.figures.ambiguity <= kMostAmbiguous && value.figures.match_error <= kMostAmbiguous;
}

/// `centre`: the disparity in the middle of the search, pixels of the copy.
void measure_cell(AnalysisState& state, const MeasuredPair& pair, int cell, int centre, CellTools& tools) {
    const int row = cell / kGridMax;
    const int column = cell % kGridMax;
    const auto i = static_cast<std::size_t>(row);
    const auto j = static_cast<std::size_t>(column);
    const TileSearch search{tile_start(column, kGridMax, kDisparityTile, pair.width, kMargin),
                            tile_start(row, kGridMax, kDisparityTile, pair.height, kMargin),
                            kDisparityTile,
                            kDisparityTile,
                            0,
                            kSearch,
                            1,
                            1,
                            centre,
                            0};
    state.middle_x[i][j] = search.x + kDisparityTile / 2;
    state.middle_y[i][j] = search.y + kDisparityTile / 2;
    const DirectionResult forward = measure_line(pair, true, search, tools);
    const DirectionResult reverse = measure_line(pair, false, search, tools);
    const bool forward_good = is_good(forward, search, pair.width);
    const bool reverse_good = is_good(reverse, search, pair.width);
    CellValue value = forward_good && reverse_good ? joined(forward, tools)
                      : forward_good               ? value_of(forward, 1.0F)
                      : reverse_good               ? value_of(reverse, -1.0F)
                                                   : rejected(forward, reverse);
    value.dx += static_cast<float>(centre);
    store_cell(state, row, column, value);
    state.valid_disparity[i][j] = (forward_good || reverse_good) && unambiguous(value) ? 1 : 0;
    if (state.visitor != nullptr) {
        state.visitor->visit_cell(pair, {AnalysePhase::disparity, row, column}, search, &tools.reverse,
                                  value.dx, value.dy);
    }
}

/// Brings the disparities from the copy's pixels to those of the picture.
void scale_disparities(AnalysisState& state, float scale) {
    DisparityStatistics& d = state.disparity;
    for (float* value : {&d.near_point, &d.far_point, &d.centre_disparity, &d.left_edge_near,
                         &d.right_edge_near, &d.top_edge_near, &d.bottom_edge_near}) {
        *value *= scale;
    }
    state.correction.shift_px = static_cast<float>(state.correction.shift_px) * scale;
}

/// Calls `visit(row, column)` for the valid cells.
template <class Visit>
void for_valid_cells(const AnalysisState& state, Visit visit) {
    for (int i = 0; i < kGridMax; ++i) {
        for (int j = 0; j < kGridMax; ++j) {
            if (state.valid_disparity[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] != 0) {
                visit(i, j);
            }
        }
    }
}

}  // namespace

void remove_isolated_extremes(AnalysisState& state) {
    std::array<int, kSearch + 1> cells_at{};
    constexpr int kMiddle = kSearch / 2;
    const auto bin = [&state](std::size_t i, std::size_t j) {
        return std::clamp(round_half_up(state.dx[i][j] + kMiddle), 0, kSearch);
    };
    int low = kSearch + 1;
    int high = -1;
    for (std::size_t i = 0; i < kGridMax; ++i) {
        for (std::size_t j = 0; j < kGridMax; ++j) {
            if (state.valid_disparity[i][j] != 0) {
                const int b = bin(i, j);
                ++cells_at[static_cast<std::size_t>(b)];
                low = std::min(low, b);
                high = std::max(high, b);
            }
        }
    }
    const auto alone = [&cells_at](int b, int direction) {
        int neighbours = 0;
        for (int k = 1; k <= kGap; ++k) {
            const int at = b + direction * k;
            neighbours += at >= 0 && at <= kSearch ? cells_at[static_cast<std::size_t>(at)] : 0;
        }
        return cells_at[static_cast<std::size_t>(b)] == 1 && neighbours == 0;
    };
    if (high < 0) {
        return;
    }
    const bool high_alone = alone(high, -1);
    const bool low_alone = alone(low, 1);
    for (std::size_t i = 0; i < kGridMax; ++i) {
        for (std::size_t j = 0; j < kGridMax; ++j) {
            const int b = bin(i, j);
            if ((high_alone && b == high) || (low_alone && b == low)) {
                state.valid_disparity[i][j] = 0;
            }
        }
    }
}

void remove_lonely_extremes(AnalysisState& state) {
    const auto has_neighbour = [&state](int row, int column) {
        const auto at = [](const auto& grid, int i, int j) {
            return grid[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
        };
        for (int i = std::max(row - 1, 0); i <= std::min(row + 1, kGridMax - 1); ++i) {
            for (int j = std::max(column - 1, 0); j <= std::min(column + 1, kGridMax - 1); ++j) {
                const bool self = i == row && j == column;
                if (!self && at(state.valid_disparity, i, j) != 0 &&
                    std::fabs(at(state.dx, i, j) - at(state.dx, row, column)) <= static_cast<float>(kGap)) {
                    return true;
                }
            }
        }
        return false;
    };
    const Grid<int> before = state.valid_disparity;
    int left = 0;
    for (bool goes_on = true; goes_on;) {
        goes_on = false;
        left = 0;
        float low = std::numeric_limits<float>::max();
        float high = std::numeric_limits<float>::lowest();
        for_valid_cells(state, [&](int i, int j) {
            const float dx = state.dx[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
            low = std::min(low, dx);
            high = std::max(high, dx);
        });
        for_valid_cells(state, [&](int i, int j) {
            const float dx = state.dx[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
            ++left;
            if ((dx == low || dx == high) && !has_neighbour(i, j)) {
                state.valid_disparity[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = 0;
                goes_on = true;
            }
        });
    }
    if (left == 0) {  // each cell stands alone: then none is better than the others
        state.valid_disparity = before;
    }
}

PictureSize disparity_copy_size(const StereoPicture& pair) {
    const auto shorter = [](int length, int side) {
        return static_cast<int>(
            std::max<std::int64_t>(static_cast<std::int64_t>(length) * kCopySide / side, 1));
    };
    const int width = pair.left.width;
    const int height = pair.left.height;
    return width < height ? PictureSize{shorter(width, height), kCopySide}
                          : PictureSize{kCopySide, shorter(height, width)};
}

std::optional<StereoPicture> disparity_copies(const AnalysisState& state, const StereoPicture& pair) {
    const PictureSize size = disparity_copy_size(pair);
    if (state.disparity_copy_width != size.width || state.working_left.width() < size.width ||
        state.working_left.height() < size.height) {
        return std::nullopt;
    }
    return StereoPicture{state.working_left.picture(size.width, size.height),
                         state.working_right.picture(size.width, size.height)};
}

AnalyseStatus measure_disparity(AnalysisState& state, const StereoPicture& pair, double centre_px,
                                const AnalyseProgress& progress) {
    const int long_side = std::max(pair.left.width, pair.left.height);
    const int short_side = std::min(pair.left.width, pair.left.height);
    state.valid_disparity = {};
    if (short_side <= 0) {
        return AnalyseStatus::no_disparity;
    }
    const WorkingCopies copies = make_copies(state, pair, disparity_copy_size(pair));
    if (!copies.made) {
        state.memory_failure = MemoryFailure::disparity_copy;
        return AnalyseStatus::no_memory;
    }
    const MeasuredPair measured(state, copies.pair);
    state.disparity_copy_width = measured.width;
    const float scale = static_cast<float>(long_side) / kCopySide;
    const int centre = round_half_up(centre_px / scale);
    const bool tiles_fit = measured.width >= kDisparityTile && measured.height >= kDisparityTile;
    for_each_cell(tiles_fit ? kCells : 0, cell_order(state, AnalysePhase::disparity), progress,
                  [&](int cell, CellTools& tools) { measure_cell(state, measured, cell, centre, tools); });
    if (state.options.robust) {
        remove_lonely_extremes(state);
    } else {
        remove_isolated_extremes(state);
    }
    if (!update_line_disparities(state, measured.width)) {
        return AnalyseStatus::no_disparity;
    }
    constexpr int kEnd = kSearch / 2 - kGap;
    const float middle = static_cast<float>(centre);
    state.disparity_end_reached =
        state.disparity.far_point - middle >= kEnd || state.disparity.near_point - middle <= -kEnd;
    if (choose_window(state, measured.height, measured.width)) {
        state.window_px *= scale;
    }
    scale_disparities(state, scale);
    return AnalyseStatus::done;
}

}  // namespace zemora::phases
