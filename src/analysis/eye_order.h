#pragma once
/// Whether near and far look turned round in a measured pair, as they do when left and right view are
/// exchanged.

#include "analysis/contour_votes.h"
#include "analysis/stereo_analyse.h"

namespace zemora {

/// Two cues. That of the contours is a matter of geometry: what hides something else is the nearer of the
/// two. That of the rows is a habit of pictures: the ground at the bottom is nearer than what stands above
/// it.
struct EyeOrder {
    ContourVotes contours;
    double rows = 0.0;  ///< Correlation of row and disparity over the valid cells, -1 to 1; above 0 in order.

    /// How far the votes lie off a draw, in its standard deviations; above 0 in order.
    [[nodiscard]] double contour_value() const;
    /// Both cues together; above 0 in order.
    [[nodiscard]] double value() const;
    /// Only where the contours say so, and the rows do not speak against it.
    [[nodiscard]] bool looks_exchanged() const;
};

/// Called directly behind phase 5 on the same pair and with its tone tables, as `check_heights`: measures on
/// the copies and disparities that the phase left in `state`, and changes nothing of it. Without such copies
/// nothing is known.
[[nodiscard]] EyeOrder measure_eye_order(const AnalysisState& state, const StereoPicture& pair);

}  // namespace zemora
