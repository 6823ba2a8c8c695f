/// The grids of the analysis as tables, on the console and at the end of a text file for each phase.

#include <array>
#include <cstdio>
#include <memory>

#include "analysis/phases.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "report/analysis_dump.h"
#include "report/analysis_dump_grid.h"

namespace zemora {

namespace {

/// Limits that the qualities of a phase are held against.
struct PhaseLimits {
    double qm;
    double qx;
    double qy_qz;
    double qp;
    double qv;
};

constexpr double kShownAmbiguous = 5000.0;  ///< Nothing is refused for it in phases 2 and 3.

PhaseLimits limits_of(AnalysePhase phase, bool reduced) {
    const double value =
        reduced && phase == AnalysePhase::geometry ? phases::kValueLimitReduced : phases::kValueLimitFull;
    switch (phase) {
        case AnalysePhase::first_grid:
            return {kLeastContrast, phases::kFirstGridSharpness, phases::kFirstGridSharpness, kShownAmbiguous,
                    value};
        case AnalysePhase::disparity:
            return {kLeastContrast, phases::kDisparitySlope, 0.0, phases::kMostAmbiguous,
                    phases::kMostAmbiguous};
        default:
            return {kLeastContrast, phases::kGeometrySharpness, phases::kGeometrySharpness, kShownAmbiguous,
                    value};
    }
}

/// Which cells stand in brackets.
enum class Mark { none, below_limit, above_limit, not_valid };

using RealGrid = Grid<float> AnalysisState::*;
using WholeGrid = Grid<int> AnalysisState::*;

struct GridTable {
    const char* title;
    RealGrid real;    ///< Null for tables of integers.
    WholeGrid whole;  ///< Null with `real` null too: the validity of the phase.
    int decimals;     ///< Of the cells.
    Mark mark = Mark::none;
    double PhaseLimits::*limit = nullptr;
    const char* level = nullptr;  ///< What stands before the limit.
};

// clang-format off
constexpr std::array<GridTable, 9> kTables = {{
    {"\nQualitaet Monochrom:",          &AnalysisState::contrast, nullptr, 1, Mark::below_limit, &PhaseLimits::qm,    "individuelle Schwelle: QM_Level  = "},
    {"\nQualitaet QX:",                 &AnalysisState::sharpness_x, nullptr, 2, Mark::below_limit, &PhaseLimits::qx,    "individuelle Schwelle: QX_Level   = "},
    {"\nQualitaet Q_Ycur:",             &AnalysisState::sharpness_y, nullptr, 2, Mark::below_limit, &PhaseLimits::qy_qz, "individuelle Schwelle: QY_Level   = "},
    {"\nQualitaet QZ:",                 &AnalysisState::sharpness, nullptr, 2, Mark::below_limit, &PhaseLimits::qy_qz, "individuelle Schwelle: QZ_Level   = "},
    {"\nQualitaet QPDF:",               nullptr, &AnalysisState::ambiguity, 0, Mark::above_limit, &PhaseLimits::qp,  "individuelle Schwelle: QP_Level   = "},
    {"\nQualitaet QVAL:",               nullptr, &AnalysisState::match_error, 0, Mark::above_limit, &PhaseLimits::qv,  "individuelle Schwelle: QV_Level   = "},
    {"\nQualitaet QOK:",                nullptr, nullptr, 0},
    {"\nSeitenfehler ErrorPixel_x:",    &AnalysisState::dx, nullptr, 1, Mark::not_valid},
    {"\nHoehenfehler ErrorPixel_y:",    &AnalysisState::dy, nullptr, 2, Mark::not_valid},
}};

constexpr std::array<GridTable, 3> kTryTables = {{
    {"\nDONE:", nullptr, &AnalysisState::cell_course, 0},
    {"\nTW_A:", nullptr, &AnalysisState::search_columns, 0},
    {"\nTH_A:", nullptr, &AnalysisState::search_rows, 0},
}};
// clang-format on

constexpr int kRule = 95;  ///< Dashes below the column numbers.

struct PhaseTables {
    const AnalysisState& state;
    PhaseGrid grid;
    PhaseLimits limits;
};

PhaseTables tables_of(const AnalysisState& state, AnalysePhase phase, bool reduced) {
    return {state, grid_of(state, phase), limits_of(phase, reduced)};
}

bool in_brackets(const GridTable& table, double value, bool valid, const PhaseLimits& limits) {
    switch (table.mark) {
        case Mark::below_limit: return value < limits.*table.limit;
        case Mark::above_limit: return value > limits.*table.limit;
        case Mark::not_valid: return !valid;
        default: return false;
    }
}

std::string cell_text(const GridTable& table, const PhaseTables& tables, std::size_t i, std::size_t j) {
    const int valid = tables.grid.valid[i][j];
    const double value = table.real != nullptr    ? (tables.state.*table.real)[i][j]
                         : table.whole != nullptr ? (tables.state.*table.whole)[i][j]
                                                  : valid;
    const bool marked = in_brackets(table, value, valid != 0, tables.limits);
    return format_text("%c%6.*f%c", marked ? '(' : ' ', table.decimals, value, marked ? ')' : ' ');
}

/// Rows stand as in the picture: the last one, its top, comes first.
std::string table_text(const GridTable& table, const PhaseTables& tables) {
    const std::string title = table.title;
    const std::size_t shown = title.size() - title.find_first_not_of('\n');
    std::string text = title + '\n';
    text.append(shown, '-');
    text += "\n    ";
    for (int column = 0; column < tables.grid.side; ++column) {
        text += format_text("%5d   ", column);  // as wide as a cell
    }
    text += '\n';
    text.append(kRule, '-');
    text += '\n';
    for (int row = tables.grid.side - 1; row >= 0; --row) {
        text += format_text("%3d |", row);
        for (int column = 0; column < tables.grid.side; ++column) {
            text += cell_text(table, tables, static_cast<std::size_t>(row), static_cast<std::size_t>(column));
        }
        text += '\n';
    }
    if (table.limit != nullptr) {
        text +=
            table.level + format_text("%.*f\n", table.real != nullptr ? 2 : 0, tables.limits.*table.limit);
    }
    return text;
}

/// Adds to the end of a file; false when it cannot be opened or written.
bool append(const std::string& path, const std::string& text) {
    struct Closer {
        void operator()(std::FILE* file) const { (void)std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Closer> file(std::fopen(path.c_str(), "ab"));
    return file != nullptr && std::fwrite(text.data(), 1, text.size(), file.get()) == text.size() &&
           std::fclose(file.release()) == 0;
}

}  // namespace

void AnalysisDump::append_to_tables(AnalysePhase phase, const std::string& text) const {
    const std::string name = format_text("analyse_file_%02d.dat", static_cast<int>(phase));
    if (!append(join_path(options_.working_folder, name), text)) {
        tell_not_opened("\nFile ", name);
    }
}

void AnalysisDump::write_heads() const {
    if (!wants_tables(AnalysePhase::shift)) {
        return;
    }
    const std::string head = "analysis for files: " + printable(names_) + '\n';
    append_to_tables(AnalysePhase::first_grid, head);
    append_to_tables(AnalysePhase::geometry, head);
}

void AnalysisDump::visit_shift(const ShiftFigures& shift) {
    if (!wants_tables(AnalysePhase::shift)) {
        return;
    }
    const SurfaceFigures& f = shift.figures;
    // Any minimum inside the search is taken in this phase.
    const bool valid = f.sharpness_x > kNoMinimum && f.sharpness_y > kNoMinimum && f.sharpness > kNoMinimum;
    notes_->print(shift.is_second ? "\nPHASE 1: zweite Korrelation:\n" : "\nPHASE 1: erste Korrelation:\n");
    notes_->print(format_text(
        "EP_X     = %f\n"
        "EP_Y     = %f\n"
        "CQX1     = %f\n"
        "CQY1     = %f\n"
        "CQZ1     = %f\n"
        "CQPDF1   = %d\n"
        "CQVAL1   = %d\n"
        "CQOK1    = %d\n",
        f.dx, f.dy, f.sharpness_x, f.sharpness_y, f.sharpness, f.ambiguity, f.match_error, valid ? 1 : 0));
    if (shift.is_second) {
        notes_->print(
            format_text("dX       = %f\n"
                        "dY       = %f\n",
                        shift.shift_x, shift.shift_y));
    }
}

void AnalysisDump::visit_pass(const AnalysisState& state, int number) {
    if (!wants_tables(AnalysePhase::geometry)) {
        return;
    }
    const PhaseTables tables = tables_of(state, AnalysePhase::geometry, true);
    std::string text = format_text("Beginn Output Try: %d\n", number);
    for (const GridTable& table : kTryTables) {
        text += table_text(table, tables);
    }
    notes_->print(text);
    append_to_tables(AnalysePhase::geometry, text);
}

void AnalysisDump::print_tables(const AnalysisState& state, AnalysePhase phase, bool reduced) const {
    const PhaseTables tables = tables_of(state, phase, reduced);
    std::string text =
        "\n\nstereo_analyse::display_analyse: correlation durchgefuert\n"
        "Vorzeicheninversion, falls Flaechenanalyse verletzt.\n"
        "Falls Error Minimum ausserhalb des Suchbereiches links-rechts: -2.0.\n"
        "Falls Error Minimum ausserhalb des Suchbereiches oben-unten:   -2.0.\n"
        "Falls Korrelation nicht moeglich: Error-Werte = 0 und Qualitaet = -99.\n";
    for (const GridTable& table : kTables) {
        text += table_text(table, tables);
    }
    notes_->print(text);
    append_to_tables(phase, text);
    if (phase != AnalysePhase::disparity) {
        notes_->wait(Severity::must_be_seen);
    }
}

}  // namespace zemora
