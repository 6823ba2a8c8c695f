/// The compared pieces of the views as pictures, their list, and the viewer that may show them.

#include <algorithm>

#include "codec/encode.h"
#include "numerics/rounding.h"
#include "platform/child_process.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "report/analysis_dump.h"
#include "report/analysis_dump_grid.h"

namespace zemora {

namespace {

/// Copies what lies inside the view; the rest of the piece stays black.
void cut_piece(const ConstPicture& view, int x, int y, const Picture& piece) {
    const int left = std::clamp(x, 0, view.width);
    const int right = std::clamp(x + piece.width, left, view.width);
    const int bottom = std::clamp(y, 0, view.height);
    const int top = std::clamp(y + piece.height, bottom, view.height);
    if (left < right && bottom < top) {
        copy(view.part(left, bottom, right - left, top - bottom),
             piece.part(left - x, bottom - y, right - left, top - bottom));
    }
}

}  // namespace

void AnalysisDump::write_piece(const ConstPicture& view, const PiecePlace& place,
                               const std::string& name) const {
    const Bitmap piece = Bitmap::create(place.width, place.height);
    if (piece) {
        cut_piece(view, place.x, place.y, piece.picture());
    }
    const std::string path = image_path(name);
    const EncodeOptions best{.format = PictureFormat::jpeg, .quality = 100, .chroma = Chroma::full};
    if (!piece || !encode_and_write(piece, best, path).empty()) {
        tell_not_opened("\nFile ", path);
    }
}

void AnalysisDump::write_segment_images(const MeasuredPair& pair, const VisitedCell& cell,
                                        const TileSearch& search, float dx, float dy) const {
    const auto write_both = [&](int index, const PiecePlace& left, const PiecePlace& right) {
        const std::string name = format_text("segment_%02d_%02d_%02d_%02d", static_cast<int>(cell.phase),
                                             cell.row, cell.column, index);
        write_piece(pair.left.picture, left, name + "_l.jpg");
        write_piece(pair.right.picture, right, name + "_r.jpg");
    };
    const PiecePlace tile{search.x, search.y, search.tile_columns, search.tile_rows};
    const auto moved = [&tile](float by_x, float by_y) {
        return PiecePlace{tile.x + round_half_up(by_x), tile.y + round_half_up(by_y), tile.width,
                          tile.height};
    };
    write_both(0, tile, moved(dx, dy));
    if (cell.phase == AnalysePhase::disparity) {
        write_both(1, moved(-dx, -dy), tile);
        const PiecePlace strip{tile.x - search.search_columns / 2, tile.y, tile.width + search.search_columns,
                               tile.height};
        write_both(2, strip, strip);
    }
}

void AnalysisDump::show_segments(const AnalysisState& state, AnalysePhase phase) const {
    const PhaseGrid grid = grid_of(state, phase);
    std::string text;
    for (int row = 0; row < grid.side; ++row) {
        for (int column = 0; column < grid.side; ++column) {
            const auto i = static_cast<std::size_t>(row);
            const auto j = static_cast<std::size_t>(column);
            text += format_text("%2d %2d %4d %4d %1d\n", row, column, round_half_up(state.dx[i][j]),
                                round_half_up(state.dy[i][j]), grid.valid[i][j]);
        }
    }
    const std::string path = image_path("zemora_segment_data.txt");
    if (!write_text(path, text)) {
        tell_not_opened("\nFile ", path);
    }
    for (const char* name : {"zemora_segment_viewer", "zemora_segment_viewer.au3"}) {
        const std::string viewer = join_path(options_.program_folder, name);
        if (file_exists(viewer) && !is_directory(viewer)) {
            flush_console();
            (void)run_child({viewer, options_.image_folder, std::to_string(static_cast<int>(phase)), "0"});
            return;
        }
    }
}

}  // namespace zemora
