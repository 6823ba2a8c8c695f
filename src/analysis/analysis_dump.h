#pragma once
/// Inner results of the analysis, laid open for the study of hard pairs: error surfaces for gnuplot, the
/// compared pieces of the views, the grid of cells. Each belongs to one phase. A dump changes no result,
/// and a file that cannot be written stops nothing.

#include <string>

#include "analysis/cell_measure.h"
#include "analysis/stereo_analyse.h"
#include "config/parameter_set.h"
#include "config/voice.h"

namespace zemora {

/// A cell as it stands in file names. Phase 1 has 68 and 200 for its two correlations.
struct DumpedCell {
    AnalysePhase phase = AnalysePhase::shift;
    int row = 0;
    int column = 0;
};

class AnalysisDump {
public:
    /// `working_folder` takes surfaces and tables, `PathofImages` profiles and pieces; `program_folder`
    /// may hold the viewer of the pieces.
    AnalysisDump(const ParameterSet& parameters, std::string working_folder, std::string program_folder,
                 Voice& voice);

    [[nodiscard]] bool wants_surfaces(AnalysePhase phase) const;  ///< `GnuErrorOutput`
    [[nodiscard]] bool wants_segments(AnalysePhase phase) const;  ///< `ImageSegmentOutput`
    [[nodiscard]] bool wants_tables(AnalysePhase phase) const;    ///< `MatrixOutput`
    /// Whether single cells are laid open: then they are measured one after the other.
    [[nodiscard]] bool wants_cells(AnalysePhase phase) const {
        return wants_surfaces(phase) || wants_segments(phase);
    }

    /// `MatrixOutput` 1: the names of the pair as heads in the files of the tables of phases 2 and 3.
    void write_head(const std::string& left_name, const std::string& right_name) const;

    /// Behind each cell: its surface or profile, where one was correlated (null otherwise), and its pieces,
    /// as far as they are wanted. (dx, dy): the displacement of the cell in pixels, right minus left.
    void write_cell(const MeasuredPair& pair, const DumpedCell& cell, const TileSearch& search,
                    const ErrorSurface* surface, float dx, float dy) const;
    /// Behind the phase: its tables and the list of its pieces, as far as they are wanted. `reduced`:
    /// measured on the reduced images.
    void conclude_phase(const AnalysisState& state, AnalysePhase phase, bool reduced) const;

    /// Data and gnuplot file of a surface, the errors negated: a good match shows as a peak.
    void write_error_surface(const ErrorSurface& surface, const DumpedCell& cell) const;
    /// Data and gnuplot file of the profile of a cell of phase 5, not negated.
    void write_error_profile(const ErrorSurface& profile, const DumpedCell& cell) const;
    /// The tile of `search` in the left view and its place in the right view. In phase 5 also the tile of
    /// the right view with its place in the left one, and the strip that was searched.
    void write_segment_images(const MeasuredPair& pair, const DumpedCell& cell, const TileSearch& search,
                              float dx, float dy) const;
    /// Behind the last cell: one line a cell, and the viewer.
    void show_segments(const AnalysisState& state, AnalysePhase phase) const;

    /// One of the two correlations of phase 1.
    struct ShiftFigures {
        SurfaceFigures figures;
        bool is_second = false;
        float shift_x = 0.0F;  ///< The result of the phase, with the second.
        float shift_y = 0.0F;
    };
    void print_shift(const ShiftFigures& shift) const;
    /// The state of the cells behind a pass of phase 3; `number` counts from 1.
    void display_try(const AnalysisState& state, int number) const;
    /// The tables of phases 2, 3 and 5; behind those of 2 and 3 it waits for Enter.
    void display_analyse(const AnalysisState& state, AnalysePhase phase, bool reduced) const;

private:
    [[nodiscard]] std::string image_path(const std::string& name) const;
    [[nodiscard]] bool write_text(const std::string& path, const std::string& text) const;
    /// Where a piece is cut, in pixels of the view; parts of it may lie outside.
    struct PiecePlace {
        int x = 0;  ///< Lower left pixel.
        int y = 0;
        int width = 0;
        int height = 0;
    };
    void write_piece(const ConstPicture& view, const PiecePlace& place, const std::string& name) const;
    /// Adds to the end of the phase's file of tables.
    void append_to_tables(AnalysePhase phase, const std::string& text) const;
    void tell_not_opened(const char* what, const std::string& name) const;

    const ParameterSet& parameters_;
    std::string working_folder_;
    std::string program_folder_;
    Voice& voice_;
};

/// The order in which the cells of a phase are measured: a fixed one where single cells are laid open.
[[nodiscard]] inline CellOrder cell_order(const AnalysisState& state, AnalysePhase phase) {
    return state.dump != nullptr && state.dump->wants_cells(phase) ? CellOrder::one_after_other
                                                                   : CellOrder::shared_out;
}

}  // namespace zemora
