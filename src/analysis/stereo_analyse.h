#pragma once
/// Measuring a pair: the phases of the analysis and the error model.
///
/// Displacements are right view minus left view; rows count upward from the bottom, columns from
/// the left. The tile at (x, y) of the first image matches the second image at (x + dx, y + dy).

#include <array>
#include <functional>

#include "analysis/tone_tables.h"
#include "config/setting_values.h"
#include "numerics/bitmap.h"
#include "numerics/pair_geometry.h"
#include "numerics/rescale.h"

namespace zemora {

/// Disparities of an image, in pixels of the image given to the phase or the estimate.
struct DisparityStatistics {
    float near_point = 0.0F;        ///< Smallest disparity.
    float far_point = 0.0F;         ///< Largest disparity.
    float centre_disparity = 0.0F;  ///< Mean near the centre, phase 5 only.
    float left_edge_near = 0.0F;
    float right_edge_near = 0.0F;
    float top_edge_near = 0.0F;
    float bottom_edge_near = 0.0F;
};

inline constexpr int kGridMax = 16;        ///< Cells a side of the largest grid, phase 5.
inline constexpr int kGeometryGrid = 10;   ///< Cells a side in phase 3.
inline constexpr int kFirstGrid = 3;       ///< Cells a side in phase 2.
inline constexpr int kDisparityTile = 51;  ///< Pixels a side of a tile in phase 5.

template <class T>
using Grid = std::array<std::array<T, kGridMax>, kGridMax>;

enum class AnalysePhase { shift = 1, first_grid = 2, geometry = 3, disparity = 5 };

/// Result of `analyse_phase`.
enum class AnalyseStatus {
    done = 0,
    shift_too_large = 2,  ///< Phase 1 found a shift beyond the searches of the others.
    no_memory = 3,        ///< `AnalysisState::memory_failure` says for which copy.
    no_disparity = 5,     ///< Phase 5 found no valid cell.
};
/// Which copy found no memory, by the number of its message.
enum class MemoryFailure { none = 0, first_copy = 403, second_copy = 539, disparity_copy = 1551 };
/// Result of `estimate_geometry`.
enum class EstimateStatus { done = 0, no_cell = 1, too_few_cells = 2 };

/// Called from the thread of the caller with a growing percentage.
using AnalyseProgress = std::function<void(double percent)>;

struct PhaseRequest {
    AnalysePhase phase = AnalysePhase::shift;
    int iteration = 1;     ///< Counts from 1 within an image.
    bool carry = false;    ///< A video frame continues from the cells of the preceding frame.
    bool reduced = true;   ///< The images are the reduced analysis images.
    bool started = false;  ///< The displacements in the state centre the searches of the first iteration too.
    double centre_px = 0.0;  ///< Disparity in the middle of the search of phase 5, pixels of the images.
};

class AnalysisVisitor;

/// What the user wants of the analysis.
struct AnalysisOptions {
    int estimate_window = setting::estimate_window::near_point;
    int far_point_limit = 33;  ///< Of the window within a limit, in the unit of `win_off_reference`.
    int win_off_reference = setting::win_off_reference::of_width;
    int color_left_right = setting::color_left_right::both;  ///< The view that is adapted in tone.
    int auto_gamma_adjust = setting::auto_gamma_adjust::off;
    bool has_passepartout = false;  ///< The views may have a frame of one colour.
    int estimate_vergence_v = setting::estimate_vergence_v::with_corners;
    int estimate_vergence_h = setting::estimate_vergence_h::with_corners;
    bool robust = true;   ///< The fit rejects matches that contradict the others.
    Colour passe_colour;  ///< Marks what is no picture.
};

/// What the phases leave for each other and for their caller; one for each pair at work.
class AnalysisState {
public:
    explicit AnalysisState(const AnalysisOptions& wanted);

    AnalysisOptions options;

    // Results; lengths are pixels of the image measured, where nothing else is said.
    /// The shift is the mean disparity of the valid cells. The values are rounded to floats.
    Correction correction;
    float window_px = 0.0F;  ///< The disparity chosen as reference of the stereo window.
    DisparityStatistics disparity;
    float residual_rms_px = 0.0F;       ///< Root mean square of the solver's residuals.
    bool ambiguous_shift = false;       ///< Phase 1 met a second shift that fits nearly as well.
    float first_grid_spread_px = 0.0F;  ///< Largest height that the first estimate leaves in its cells.
    float rejected_share = 0.0F;        ///< Of the cells matched in phase 3, those that contradict the fit.
    int corner_coverage = 0;            ///< 1 when the valid cells reach into all four corners.
    double oversize_shift_px = 0.0;     ///< What phase 1 found when it refused, right minus left.
    bool oversize_is_vertical = false;
    MemoryFailure memory_failure = MemoryFailure::none;
    int disparity_copy_width = 0;        ///< Of the copy that phase 5 measured, in its own pixels.
    bool disparity_end_reached = false;  ///< Near or far point lie at the end of the search of phase 5.

    // Cells, [row][column], row 0 at the bottom.
    Grid<float> sharpness_x{}, sharpness_y{}, sharpness{}, contrast{}, looseness{};
    Grid<int> ambiguity{}, match_error{}, valid{}, valid_disparity{}, cell_course{}, search_rows{},
        search_columns{};
    Grid<float> dx{}, dy{};
    Grid<int> middle_x{}, middle_y{};  ///< Measured middle of each cell's tile, image pixels.

    ToneTables tone_left, tone_right;

    AnalysisVisitor* visitor = nullptr;  ///< Looks at inner results, if there is one.

    // Kept between calls.
    float previous_width = 0.0F;  ///< Width analysed before; 0 after a reset.
    Bitmap working_left, working_right;
    RescaleScratch rescale_scratch;
};

/// Clears the cells and counters of an image; with `keep` the displacements stay.
void reset_analysis(AnalysisState& state, bool keep);

/// Lays the tiles of a phase over the images and leaves the grid of measured cells in `state`.
/// Phase 1 leaves its shift in `dx[0][0]` and `dy[0][0]`. Phase 5 also sets `disparity`,
/// `correction.shift_px` and `window_px`.
[[nodiscard]] AnalyseStatus analyse_phase(AnalysisState& state, const StereoPicture& pair,
                                          const PhaseRequest& request, const AnalyseProgress& progress);

/// The displacements of the cells against views that have moved by `shift_px` more, in pixels of the image
/// measured: the next iteration looks for the tiles there.
void shift_predictions(AnalysisState& state, double shift_px);

/// Fits the error model to the valid cells of a grid with `columns` x `rows` cells (3 x 3 after
/// phase 2, 10 x 10 after phase 3) measured on images of `height` by `width`.
[[nodiscard]] EstimateStatus estimate_geometry(AnalysisState& state, int height, int width, int columns,
                                               int rows, AnalysePhase phase);

/// Mean of |dy| in pixels that the correction stands for, over a 16 x 16 lattice of the picture.
[[nodiscard]] double mean_model_error(const Correction& values, int height, int width);

}  // namespace zemora
