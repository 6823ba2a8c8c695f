#include "render/extra_layout.h"

#include <algorithm>

namespace zemora {

namespace {

/// A row of pictures whose cell begins at canvas row `bottom`.
CellRow lay_out_row(const Finished& pair, const SettledFrame& settled, std::string_view views, int bottom,
                    bool has_bottom_frame) {
    const auto& [frame, cell, faults] = settled;
    const int line = frame.thin_line;
    const int frame_below = has_bottom_frame ? frame.bottom : 0;
    const int pitch = pair.width() + 2 * line + cell.left + cell.right + frame.central;
    CellRow row{bottom, frame_below + pair.height() + 2 * line + frame.top, has_bottom_frame, {}};
    int column = cell.left + line;
    for (const char name : views) {
        const View view = name == 'l' ? View::left : View::right;
        row.views.push_back({view, column + floating_share(pair, frame, view), bottom + frame_below + line});
        column += pitch;
    }
    return row;
}

/// Where the cell of the upper row begins.
int upper_row_start(const FrameSettings& frame, const CellRow& lower, RowGap gap) {
    return gap == RowGap::shared_frame ? lower.height
                                       : lower.height + std::max(-(frame.top + frame.bottom), frame.central);
}

}  // namespace

TiledLayout tiled_layout(const Finished& pair, const FrameSettings& wanted, const Tiling& tiling) {
    SettledFrame settled =
        settle_frame(pair, wanted, tiling.is_squeezed_across ? pair.width() / 2 : pair.width());
    FrameSettings& frame = settled.frame;
    const CellFrame& cell = settled.cell;
    const auto columns = static_cast<int>(tiling.rows[0].size());
    if (columns > 1) {
        frame.central = held_central(frame, cell);
    }
    const bool has_two_rows = !tiling.rows[1].empty();
    TiledLayout layout;
    layout.width = columns * (pair.width() + 2 * frame.thin_line + cell.left + cell.right) +
                   (columns - 1) * frame.central;
    CellRow lowest = lay_out_row(pair, settled, tiling.rows[has_two_rows ? 1 : 0], 0, true);
    if (has_two_rows) {
        layout.rows.push_back(lay_out_row(pair, settled, tiling.rows[0],
                                          upper_row_start(frame, lowest, tiling.gap),
                                          tiling.gap != RowGap::shared_frame));
    }
    layout.rows.push_back(std::move(lowest));
    layout.height = layout.rows.front().bottom + layout.rows.front().height;
    layout.frame = frame;
    layout.faults = settled.faults;
    return layout;
}

}  // namespace zemora
