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

/// A cell as it stands in file names. Phase 1 has the long sides of its two copies instead.
struct DumpedCell {
    AnalysePhase phase;
    int row;
    int column;
};

class AnalysisDump {
public:
    /// `working_folder` takes surfaces and tables, `PathofImages` profiles and pieces; `program_folder`
    /// may hold the viewer of the pieces.
    AnalysisDump(const ParameterSet& parameters, std::string working_folder, std::string program_folder,
                 const Voice& voice);

    [[nodiscard]] bool wants_surfaces(AnalysePhase phase) const;  ///< `GnuErrorOutput`
    [[nodiscard]] bool wants_segments(AnalysePhase phase) const;  ///< `ImageSegmentOutput`
    [[nodiscard]] bool wants_tables(AnalysePhase phase) const;    ///< `MatrixOutput`
    /// Whether single cells are laid open: then they are measured one after the other.
    [[nodiscard]] bool wants_cells(AnalysePhase phase) const {
        return wants_surfaces(phase) || wants_segments(phase);
    }

    /// `MatrixOutput` 1: the names of the pair as heads in the files of the tables of phases 2 and 3.
    void write_head(const std::string& left_name, const std::string& right_name) const;

    void write_error_surface(const ErrorSurface& surface, const DumpedCell& cell) const;
    /// The profile of a cell of phase 5.
    void write_error_profile(const ErrorSurface& profile, const DumpedCell& cell) const;
    /// The tile of `search` in the left view and its place in the right view; (dx, dy) in pixels.
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
    /// The try of a pass of phase 3.
    void display_try(const AnalysisState& state, int number) const;
    /// The tables of phases 2, 3 and 5. `reduced`: measured on the reduced images.
    void display_analyse(const AnalysisState& state, AnalysePhase phase, bool reduced) const;

private:
    const ParameterSet& parameters_;
    std::string working_folder_;
    std::string program_folder_;
    const Voice& voice_;
};

}  // namespace zemora
