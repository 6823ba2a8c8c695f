#include "report/disparity_matrix.h"

#include <algorithm>
#include <limits>

#include "config/html_text.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kHeadRule = 85;  // dashes below the numbers of the columns

/// Cells in whole per mille of the width, and the range of those that count. The cells were measured on a
/// copy, whose width is their measure: the copy's rounding of sizes shall not part a cell from the range.
struct PerMilleGrid {
    Grid<int> cells{};
    int near_point = std::numeric_limits<int>::max();
    int far_point = std::numeric_limits<int>::min();
};

PerMilleGrid per_mille_of(const AnalysisState& analysis) {
    PerMilleGrid grid;
    const double width = std::max(1, analysis.disparity_copy_width);
    for (std::size_t i = 0; i < kGridMax; ++i) {
        for (std::size_t j = 0; j < kGridMax; ++j) {
            const int cell = round_half_up(analysis.dx[i][j] * 1000.0 / width);
            grid.cells[i][j] = cell;
            if (analysis.valid_disparity[i][j] == 1) {
                grid.near_point = std::min(grid.near_point, cell);
                grid.far_point = std::max(grid.far_point, cell);
            }
        }
    }
    return grid;
}

std::string head_line() {
    std::string head = "Segment";
    for (int column = 0; column < kGridMax; ++column) {
        head += format_text("%3d  ", column);
    }
    return head + '\n' + std::string(kHeadRule, '-') + '\n';
}

}  // namespace

DisparityMatrix disparity_matrix(const AnalysisState& analysis, const MessageCatalogue& messages) {
    const PerMilleGrid grid = per_mille_of(analysis);
    const std::string title = messages.either(
        {"Disparity Matrix of final image [per mille]:", "Disparitaetsmatrix des Ergebnisbilds [Promille]:"});
    DisparityMatrix matrix;
    matrix.text = '\n' + title + '\n' + std::string(title.size(), '-') + "\n\n" + head_line();
    matrix.html = "<p><b>" + html_text(title) + "</b></p>\n<pre>\n" + head_line();
    for (int line = 0; line < kGridMax; ++line) {
        const auto row = static_cast<std::size_t>(kGridMax - 1 - line);
        const std::string start = format_text("%3d |", line);
        matrix.text += start;
        matrix.html += start;
        for (std::size_t column = 0; column < kGridMax; ++column) {
            const int value = grid.cells[row][column];
            const bool counts = analysis.valid_disparity[row][column] == 1;
            const bool is_extreme = counts && (value == grid.near_point || value == grid.far_point);
            const std::string cell = counts ? format_text("%4d", value) : "   x";
            matrix.text += ' ' + cell;
            matrix.html += is_extreme ? " <span class=\"red\">" + cell + "</span>" : ' ' + cell;
        }
        matrix.text += '\n';
        matrix.html += '\n';
    }
    matrix.text += '\n';
    matrix.html += "</pre>\n";
    return matrix;
}

}  // namespace zemora
