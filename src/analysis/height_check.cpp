#include "analysis/height_check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "analysis/cell_measure.h"
#include "analysis/phases.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

// On the copies of phase 5.
constexpr double kHeightReach = 0.025;  ///< Of the copy's height, up and down.
constexpr int kLeastReach = 8;          ///< Pixels, up and down.
constexpr int kSideReach = 8;           ///< Pixels on either side of the disparities near by.
constexpr int kSideStep = 2;            ///< Pixels; every so many columns of tiles and displacements.
constexpr int kMostSideReach = 100;     ///< Pixels; what it costs is limited.
constexpr int kBackReach = 32;          ///< Pixels on either side of the way back.
constexpr int kCellsNear = 6;           ///< Cells of phase 5 whose disparities count as near by.
constexpr double kMargin = 0.03;        ///< Between tiles and edge, of width and height.
constexpr int kOwnRows = 3;             ///< Displacements this near belong to the same minimum.
// Another minimum is a rival below this multiple of the least error, and as much above it as the noise of 8
// bits or half a pixel beside the minimum makes.
constexpr double kRivalError = 1.4;
constexpr double kRivalLevels = 3.0;
constexpr double kRivalBeside = 0.3;   ///< Of the rise over one pixel.
constexpr double kPatternShare = 0.5;  ///< Of the mean error; a rival below it belongs to a pattern.
// At full size.
constexpr int kFineTile = 64;  ///< Pixels a side.
constexpr int kLeastFineTile = 32;
constexpr int kFineParts = 6;       ///< The tile is at most this part of the shorter side.
constexpr int kFineReach = 3;       ///< Pixels all round, and as many as a pixel of the copy has.
constexpr double kBackAgain = 1.0;  ///< Pixels within which a match has to lead back.

struct Point {
    double x = 0.0;
    double y = 0.0;
};

/// A tile looked for in the other view.
struct Match {
    Point displacement;      ///< Pixels, from the first view to the second.
    bool sharp = false;      ///< A clear minimum without a rival.
    bool ambiguous = false;  ///< Not, because a pattern repeats.
};

/// Whether a tile fits at another height about as well: hardly anywhere, or again as in a pattern.
enum class Rival { none, weak, repeated };

Rival find_rival(const ErrorSurface& surface) {
    std::vector<double> least;
    double sum = 0.0;
    int rows = 0;
    for (int i = 0; i < surface.rows(); ++i) {
        float error = kNoOverlap;
        for (int j = 0; j < surface.columns(); ++j) {
            error = std::min(error, surface.at(i, j));
        }
        least.push_back(error);
        sum += error < kNoOverlap ? error : 0.0;
        rows += error < kNoOverlap ? 1 : 0;
    }
    const auto at = [&least](int i) { return least[static_cast<std::size_t>(i)]; };
    const int best = static_cast<int>(std::min_element(least.begin(), least.end()) - least.begin());
    if (best == 0 || best == surface.rows() - 1) {
        return Rival::weak;
    }
    const double beside = (at(best - 1) + at(best + 1)) / 2.0 - at(best);
    double rival = kRivalError * at(best) + std::max(kRivalLevels, kRivalBeside * beside);
    bool found = false;
    for (int i = 1; i + 1 < surface.rows(); ++i) {
        const bool is_low = at(i) <= at(i - 1) && at(i) <= at(i + 1) && at(i) < rival;
        if (is_low && std::abs(i - best) > kOwnRows) {
            rival = at(i);
            found = true;
        }
    }
    return !found ? Rival::none : rival < kPatternShare * sum / rows ? Rival::repeated : Rival::weak;
}

/// The one place where a tile is correlated.
Match find_match(const MeasuredPair& pair, bool left_first, const TileSearch& search, CellTools& tools) {
    ErrorSurface& surface = tools.surface(left_first);
    tools.correlator.correlate(left_first ? pair.left : pair.right, left_first ? pair.right : pair.left,
                               pair.rule, search, surface);
    const SurfaceFigures figures = evaluate_surface(surface, pair.height, pair.width, SubPixel::vertex);
    Match match;
    if (figures.sharpness_x >= phases::kGeometrySharpness &&
        figures.sharpness_y >= phases::kGeometrySharpness &&
        figures.sharpness >= phases::kGeometrySharpness) {
        const Rival rival = find_rival(surface);
        match.displacement = {static_cast<double>(search.shift_x) + figures.dx,
                              static_cast<double>(search.shift_y) + figures.dy};
        match.ambiguous = rival == Rival::repeated;
        match.sharp = rival == Rival::none;
    }
    return match;
}

/// The range of disparities that a tile of the copy is looked for in.
struct SideRange {
    int centre = 0;
    int reach = 0;
};

/// That of the valid cells of phase 5 that lie nearest to (x, y), pixels of the copy.
SideRange disparities_near(const AnalysisState& state, int x, int y) {
    struct Cell {
        std::int64_t distance;
        float disparity;
    };
    std::vector<Cell> cells;
    for (std::size_t i = 0; i < kGridMax; ++i) {
        for (std::size_t j = 0; j < kGridMax; ++j) {
            if (state.valid_disparity[i][j] != 0) {
                const std::int64_t dx = state.middle_x[i][j] - x;
                const std::int64_t dy = state.middle_y[i][j] - y;
                cells.push_back({dx * dx + dy * dy, state.dx[i][j]});
            }
        }
    }
    std::stable_sort(cells.begin(), cells.end(),
                     [](const Cell& a, const Cell& b) { return a.distance < b.distance; });
    cells.resize(std::min<std::size_t>(cells.size(), kCellsNear));
    if (cells.empty()) {
        return {0, kMostSideReach};
    }
    const auto [low, high] = std::minmax_element(
        cells.begin(), cells.end(), [](const Cell& a, const Cell& b) { return a.disparity < b.disparity; });
    const double middle = (low->disparity + high->disparity) / 2.0;
    const int spread = round_half_up((high->disparity - low->disparity) / 2.0);
    return {round_half_up(middle), std::min(spread + kSideReach, kMostSideReach)};
}

bool tile_inside(const TileSearch& search, const MeasuredPair& pair) {
    return search.x >= 0 && search.y >= 0 && search.x + search.tile_columns <= pair.width &&
           search.y + search.tile_rows <= pair.height;
}

/// Looks for a tile of the left view, and for the tile found there in the left view again: the mean of both
/// ways, or nothing where they do not agree.
Match match_both_ways(const MeasuredPair& pair, const TileSearch& search, CellTools& tools) {
    Match there = find_match(pair, true, search, tools);
    if (!there.sharp) {
        return there;
    }
    const int dx = round_half_up(there.displacement.x);
    const int dy = round_half_up(there.displacement.y);
    TileSearch back = search;
    back.x += dx;
    back.y += dy;
    back.shift_x = -dx;
    back.shift_y = -search.shift_y;
    back.search_columns = std::min(search.search_columns, 2 * kBackReach);
    if (!tile_inside(back, pair)) {
        return {};
    }
    const Match again = find_match(pair, false, back, tools);
    const double off_x = there.displacement.x + again.displacement.x;
    const double off_y = there.displacement.y + again.displacement.y;
    if (!again.sharp || std::abs(off_x) > kBackAgain * search.step_x || std::abs(off_y) > kBackAgain) {
        return {{}, false, again.ambiguous};
    }
    there.displacement.x -= off_x / 2.0;
    there.displacement.y -= off_y / 2.0;
    return there;
}

/// What all tiles have in common.
struct CheckedPair {
    CheckedPair(const AnalysisState& state_in, const StereoPicture& full_in, const StereoPicture& copy_in)
        : state(state_in), full(state_in, full_in), copy(state_in, copy_in) {
        const int shorter = std::min(full.width, full.height);
        fine_tile = std::min(std::clamp(shorter / kFineParts, kLeastFineTile, kFineTile), shorter);
    }
    [[nodiscard]] double scale_x() const { return static_cast<double>(full.width) / copy.width; }
    [[nodiscard]] double scale_y() const { return static_cast<double>(full.height) / copy.height; }

    const AnalysisState& state;
    MeasuredPair full;
    MeasuredPair copy;
    int fine_tile = kFineTile;
};

enum class Outcome { flat, lost, ambiguous, matched };
struct TileResult {
    Outcome outcome = Outcome::flat;
    double dy = 0.0;
};

TileSearch coarse_search(const CheckedPair& pair, int row, int column) {
    TileSearch search;
    search.tile_rows = search.tile_columns = kDisparityTile;
    search.x =
        tile_start(column, kHeightCheckSide, kDisparityTile, pair.copy.width, kMargin * pair.copy.width);
    search.y =
        tile_start(row, kHeightCheckSide, kDisparityTile, pair.copy.height, kMargin * pair.copy.height);
    const SideRange range =
        disparities_near(pair.state, search.x + kDisparityTile / 2, search.y + kDisparityTile / 2);
    search.step_x = kSideStep;
    search.search_columns = 2 * range.reach / kSideStep * kSideStep;
    search.search_rows = 2 * std::max(round_half_up(kHeightReach * pair.copy.height), kLeastReach);
    search.shift_x = range.centre;
    return search;
}

/// The middle of the tile at full size, round the place that the copies gave.
TileSearch fine_search(const CheckedPair& pair, const TileSearch& coarse, const Point& displacement) {
    const auto start = [&](int copy_start, double scale, int length) {
        const double middle = (copy_start + kDisparityTile / 2.0) * scale;
        return std::clamp(round_half_up(middle - pair.fine_tile / 2.0), 0, length - pair.fine_tile);
    };
    TileSearch search;
    search.tile_rows = search.tile_columns = pair.fine_tile;
    search.x = start(coarse.x, pair.scale_x(), pair.full.width);
    search.y = start(coarse.y, pair.scale_y(), pair.full.height);
    const int reach = kFineReach + static_cast<int>(std::max(pair.scale_x(), pair.scale_y()));
    search.search_rows = search.search_columns = 2 * reach;
    search.shift_x = round_half_up(displacement.x * pair.scale_x());
    search.shift_y = round_half_up(displacement.y * pair.scale_y());
    return search;
}

TileResult measure_tile(const CheckedPair& pair, int row, int column, CellTools& tools) {
    const TileSearch search = coarse_search(pair, row, column);
    if (search_contrast(pair.copy.left, search) < kLeastContrast) {
        return {Outcome::flat, 0.0};
    }
    const Match coarse = match_both_ways(pair.copy, search, tools);
    if (!coarse.sharp) {
        return {coarse.ambiguous ? Outcome::ambiguous : Outcome::lost, 0.0};
    }
    const TileSearch fine = fine_search(pair, search, coarse.displacement);
    const Match match = match_both_ways(pair.full, fine, tools);
    if (!match.sharp) {
        return {Outcome::lost, 0.0};
    }
    return {Outcome::matched, match.displacement.y};
}

}  // namespace

HeightCheck check_heights(const AnalysisState& state, const StereoPicture& pair, double scale) {
    const std::optional<StereoPicture> copies = phases::disparity_copies(state, pair);
    if (!copies || std::min(copies->left.width, copies->left.height) < kDisparityTile ||
        std::min(pair.left.width, pair.left.height) < kLeastFineTile) {
        return {};
    }
    const CheckedPair checked(state, pair, *copies);
    std::array<TileResult, kHeightCheckTiles> results;
    for_each_cell(kHeightCheckTiles, CellOrder::shared_out, {}, [&](int cell, CellTools& tools) {
        results[static_cast<std::size_t>(cell)] =
            measure_tile(checked, cell / kHeightCheckSide, cell % kHeightCheckSide, tools);
    });
    std::vector<HeightSample> samples;
    int tiles = 0;
    int ambiguous = 0;
    for (int cell = 0; cell < kHeightCheckTiles; ++cell) {
        const TileResult& result = results[static_cast<std::size_t>(cell)];
        tiles += result.outcome != Outcome::flat ? 1 : 0;
        ambiguous += result.outcome == Outcome::ambiguous ? 1 : 0;
        if (result.outcome == Outcome::matched) {
            samples.push_back({cell / kHeightCheckSide, cell % kHeightCheckSide, result.dy});
        }
    }
    HeightCheck check = summarise_heights(samples);
    check.tiles = tiles;
    check.ambiguous = ambiguous;
    check.median_input_px /= scale;
    check.most_input_px /= scale;
    check.rough_input_px /= scale;
    check.height_input_px = pair.left.height / scale;
    check.pixel_input_px = std::max(1.0 / scale, 1.0);
    return check;
}

}  // namespace zemora
