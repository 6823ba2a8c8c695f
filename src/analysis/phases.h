#pragma once
/// The phases behind `analyse_phase`, one file each.

#include <optional>

#include "analysis/stereo_analyse.h"

namespace zemora::phases {

/// Least sharpness of an accepted match: of two-dimensional searches, and along a line.
inline constexpr float kFirstGridSharpness = 0.5F;
inline constexpr float kGeometrySharpness = 0.25F;
inline constexpr float kDisparitySlope = 7.0F;
/// Largest `match_error` of an accepted match of phase 3, on reduced and on full-size images.
inline constexpr int kValueLimitReduced = 2500;
inline constexpr int kValueLimitFull = 10000;
/// Phase 5: displacements of similar error, and width of the low band, of an accepted match.
inline constexpr int kMostAmbiguous = 50;

/// Phase 1: the global shift, from two small copies.
[[nodiscard]] AnalyseStatus measure_shift(AnalysisState& state, const StereoPicture& pair);

/// Phase 2: 3 x 3 tiles in both directions.
void measure_first_grid(AnalysisState& state, const StereoPicture& pair, const AnalyseProgress& progress);

/// Phase 3: 10 x 10 tiles, in passes of growing search where the first does not do.
void measure_geometry(AnalysisState& state, const StereoPicture& pair, const PhaseRequest& request,
                      const AnalyseProgress& progress);

/// Phase 5: 16 x 16 tiles along lines, and the disparities. `centre_px`: in the middle of the search.
[[nodiscard]] AnalyseStatus measure_disparity(AnalysisState& state, const StereoPicture& pair,
                                              double centre_px, const AnalyseProgress& progress);

/// Rescaled copies of both views in the working bitmaps; false without memory.
struct WorkingCopies {
    StereoPicture pair;
    bool made = false;
};
[[nodiscard]] WorkingCopies make_copies(AnalysisState& state, const StereoPicture& pair, PictureSize size);

/// Size of the copies that phase 5 measures.
[[nodiscard]] PictureSize disparity_copy_size(const StereoPicture& pair);

/// The copies of `pair` that phase 5 left in `state`; none where they are not there or of another size.
[[nodiscard]] std::optional<StereoPicture> disparity_copies(const AnalysisState& state,
                                                            const StereoPicture& pair);

/// Outliers of phase 3 lose their validity: cells far on the near side and, by the plain rule, the cells with
/// the largest and the smallest vertical displacement, which the robust fit judges itself.
void remove_outliers(AnalysisState& state, int step_x);

/// Whether the valid cells of phase 3 reach into all four corners.
[[nodiscard]] bool corners_covered(const AnalysisState& state);

/// The plain rule: `valid_disparity` of cells whose disparity stands alone at either end of all disparities
/// is cleared.
void remove_isolated_extremes(AnalysisState& state);

/// `valid_disparity` of cells at either end of all disparities is cleared, again and again, where no
/// neighbour is valid with nearly the same disparity. Where this would leave no cell, all stay.
void remove_lonely_extremes(AnalysisState& state);

}  // namespace zemora::phases
