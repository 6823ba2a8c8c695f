#pragma once
/// What is left of the vertical errors in the finished pair, measured on tiles that the fit has not used.

#include <vector>

#include "analysis/stereo_analyse.h"

namespace zemora {

/// The picture as the check found it.
struct HeightCheck {
    int tiles = 0;                 ///< With contrast, of `kHeightCheckTiles`.
    int matched = 0;               ///< Found in the other view and led back; they make the figures.
    int ambiguous = 0;             ///< Fitted at several heights about as well.
    int isolated = 0;              ///< Led back, but alone with their height.
    double median_input_px = 0.0;  ///< Of |dy| over the matched tiles.
    double most_input_px = 0.0;    ///< |dy| that 95 % of the matched tiles stay below.
    double rough_input_px = 0.0;   ///< Median distance of a tile's dy from that of its neighbours.
    double height_input_px = 0.0;  ///< Of the finished picture.
    /// Of the picture with its correction (`WideSearch::agreement`), where it was asked.
    double agreement = 1.0;
    double pixel_input_px = 1.0;  ///< Side of a pixel of finished picture or input, whichever is larger.
};

inline constexpr int kHeightCheckSide = 9;  ///< Tiles a side.
inline constexpr int kHeightCheckTiles = kHeightCheckSide * kHeightCheckSide;

/// Measures the finished pair; `scale` is its pixels per pixel of the input. Called directly behind phase 5
/// on the same pair and with its tone tables: the copies and the disparities that the phase left in `state`
/// show where to look. Changes nothing of `state`. Without such copies, or with copies smaller than a tile,
/// nothing is matched. A tile found too far up or down for the search (2.5 % of the height) counts as not
/// matched.
[[nodiscard]] HeightCheck check_heights(const AnalysisState& state, const StereoPicture& pair, double scale);

/// A measured tile of the check.
struct HeightSample {
    int row = 0;
    int column = 0;
    double dy = 0.0;  ///< Pixels, right minus left.
};

/// The figures of the samples, whose pixels count as input pixels. A sample more than six times the spread
/// away from its neighbours is isolated, and left out, unless two of them stand by it: a part of the picture
/// that is off counts.
[[nodiscard]] HeightCheck summarise_heights(const std::vector<HeightSample>& samples);

}  // namespace zemora
