#pragma once
/// Measuring single cells of a grid, and running over the cells of a grid on all cores.

#include <functional>

#include "analysis/correlation.h"
#include "analysis/stereo_analyse.h"
#include "analysis/surface.h"

namespace zemora {

/// A tile with less contrast can carry no match.
inline constexpr float kLeastContrast = 0.5F;
/// `ambiguity` and `match_error` of a cell without a match.
inline constexpr int kNoFigure = 9999;

/// The pair as a phase sees it.
struct MeasuredPair {
    MeasuredPair(const AnalysisState& state, const StereoPicture& pair);

    ToneView left;
    ToneView right;
    OverlapRule rule;
    SubPixel sub_pixel;
    int height;
    int width;
};

/// What each thread works with.
struct CellTools {
    Correlator correlator;
    ErrorSurface forward;  ///< The tile of the left view in the right one.
    ErrorSurface reverse;

    [[nodiscard]] ErrorSurface& surface(bool left_first) { return left_first ? forward : reverse; }
};

/// One direction of a cell: the tile of one view looked for in the other.
struct DirectionResult {
    float contrast = 0.0F;
    SurfaceFigures figures;
    float position_dx = 0.0F;  ///< Whole displacement of the match, with the centre of the search.
};

/// Measures contrast and displacement of the tile of one view in the other; the errors stay in the
/// surface of that direction.
[[nodiscard]] DirectionResult measure_direction(const MeasuredPair& pair, bool left_first,
                                                const TileSearch& search, CellTools& tools);

/// The same for a tile whose contrast is known.
[[nodiscard]] DirectionResult measure_direction(const MeasuredPair& pair, bool left_first,
                                                const TileSearch& search, float contrast, CellTools& tools);

/// Contrast of the tile of a search; -1 when less than half of it lies in the view.
[[nodiscard]] float search_contrast(const ToneView& view, const TileSearch& search);

/// Whether the matched tile lies inside the picture.
[[nodiscard]] bool match_inside(const TileSearch& search, float position_dx, int width);

/// The numbers to store for a cell of the grid; displacements in pixels, right minus left.
struct CellValue {
    float dx = 0.0F;
    float dy = 0.0F;
    float contrast = 0.0F;
    SurfaceFigures figures;
    bool from_reverse = false;  ///< Of the right view's tile alone.
};
/// Writes the numbers into the grids of `state`.
void store_cell(AnalysisState& state, int row, int column, const CellValue& value);

/// Left or lower start of tile `nth` of a row of `tiles` tiles of `side` pixels that are spread
/// over `length` pixels with `margin` at both ends; kept inside the picture.
[[nodiscard]] int tile_start(int nth, int tiles, int side, int length, double margin);

/// How the cells of a grid are gone through: on all cores, or one after the other in their order.
enum class CellOrder { shared_out, one_after_other };

/// Calls `measure` for the cells 0 to `cells` - 1; each thread has tools of its own. Progress is
/// reported from the calling thread only.
void for_each_cell(int cells, CellOrder order, const AnalyseProgress& progress,
                   const std::function<void(int cell, CellTools& tools)>& measure);

}  // namespace zemora
