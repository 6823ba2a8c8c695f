#pragma once
/// Where the views stand on the canvases of several cells: numbers only, no pixels.

#include <array>
#include <string_view>
#include <vector>

#include "render/framing.h"

namespace zemora {

/// What lies between two rows of pictures.
enum class RowGap {
    central,       ///< Both frames and `FrameCentral`, which may close them, never more.
    shared_frame,  ///< The upper frame of the lower row; the upper row has none below it.
};

/// The arrangement of a canvas.
struct Tiling {
    /// Rows from the top, "l" and "r" for the views in each; an empty second row for a single one.
    std::array<std::string_view, 2> rows;
    RowGap gap = RowGap::central;
    bool is_squeezed_across = false;  ///< `FillWidth` need hold only half of a picture.
};

/// One picture on the canvas, its thin line not counted.
struct PlacedView {
    View view = View::left;
    int column = 0;  ///< Of its lower left pixel.
    int row = 0;
};

/// A row of pictures with its frame, as wide as the canvas.
struct CellRow {
    int bottom = 0;  ///< First row of the canvas.
    int height = 0;
    bool has_bottom_frame = true;
    std::vector<PlacedView> views;  ///< From the left.
};

struct TiledLayout {
    int width = 0;
    int height = 0;
    std::vector<CellRow> rows;  ///< From the top.
    FrameSettings frame;        ///< As it was settled for this canvas.
    FrameFaults faults;
};

/// Works out a canvas. Between rows `FrameCentral` is limited for this canvas alone.
[[nodiscard]] TiledLayout tiled_layout(const Finished& pair, const FrameSettings& frame,
                                       const Tiling& tiling);

}  // namespace zemora
