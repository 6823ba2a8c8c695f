#pragma once
/// Inner results of the analysis as files and tables, for the study of hard pairs: error surfaces for
/// gnuplot, the compared pieces of the views, the grid of cells. Each belongs to one phase. A file that
/// cannot be written stops nothing.

#include <string>

#include "analysis/analysis_visitor.h"
#include "config/notes.h"

namespace zemora {

/// What is written, and where. A phase is 1, 2, 3 or 5, and 0 for none.
struct AnalysisDumpOptions {
    int surface_phase = 0;       ///< `GnuErrorOutput`: error surfaces, of phase 5 profiles.
    int segment_phase = 0;       ///< `ImageSegmentOutput`: pieces of the views.
    int table_phase = 0;         ///< `MatrixOutput`: tables of the cells; 1 the figures of phase 1.
    std::string working_folder;  ///< Takes surfaces and tables.
    std::string image_folder;    ///< Takes profiles and pieces.
    std::string program_folder;  ///< May hold the viewer of the pieces.
};

class AnalysisDump : public AnalysisVisitor {
public:
    AnalysisDump(AnalysisDumpOptions options, Notes& notes);

    /// The names of the pair to come, which head its tables, and its listener; `right_name` is empty for a
    /// stereo file.
    void set_pair(const std::string& left_name, const std::string& right_name, Notes& notes);

    [[nodiscard]] bool wants_cells(AnalysePhase phase) const override {
        return wants_surfaces(phase) || wants_segments(phase);
    }
    void visit_shift(const ShiftFigures& shift) override;
    void visit_cell(const MeasuredPair& pair, const VisitedCell& cell, const TileSearch& search,
                    const ErrorSurface* surface, float dx, float dy) override;
    void visit_pass(const AnalysisState& state, int number) override;
    /// The heads of the tables, the tables of phases 2, 3 and 5, the list of the pieces. Behind the tables of
    /// 2 and 3 it asks for Enter.
    void visit_phase(const AnalysisState& state, AnalysePhase phase, bool reduced) override;

    /// Data and gnuplot file of a surface, the errors negated: a good match shows as a peak.
    void write_error_surface(const ErrorSurface& surface, const VisitedCell& cell) const;
    /// Data and gnuplot file of the profile of a cell of phase 5, not negated.
    void write_error_profile(const ErrorSurface& profile, const VisitedCell& cell) const;
    /// The tile of `search` in the left view and its place in the right view. In phase 5 also the tile of
    /// the right view with its place in the left one, and the strip that was searched.
    void write_segment_images(const MeasuredPair& pair, const VisitedCell& cell, const TileSearch& search,
                              float dx, float dy) const;
    /// Behind the last cell: one line a cell, and the viewer.
    void show_segments(const AnalysisState& state, AnalysePhase phase) const;

private:
    [[nodiscard]] bool wants_surfaces(AnalysePhase phase) const;
    [[nodiscard]] bool wants_segments(AnalysePhase phase) const;
    [[nodiscard]] bool wants_tables(AnalysePhase phase) const;
    void write_heads() const;
    void print_tables(const AnalysisState& state, AnalysePhase phase, bool reduced) const;
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

    AnalysisDumpOptions options_;
    std::string names_;  ///< Of the pair, as a head.
    Notes* notes_;
};

}  // namespace zemora
