#pragma once
/// On which side of a step in depth the contour lies: it belongs to the nearer surface, and the strip that
/// one eye alone sees beside it continues the farther one.

#include "analysis/cell_measure.h"

namespace zemora {

/// Places of the picture, 32 pixels a side, whose contours speak for one order of the views.
struct ContourVotes {
    int in_order = 0;   ///< The contour moves with the surface of the smaller disparity.
    int exchanged = 0;  ///< It moves with that of the larger one.
};

/// Disparities from `low` to `high`, both inclusive, pixels, right minus left.
struct DisparityRange {
    int low = 0;
    int high = 0;
};

/// Matches single lines of both views and compares, at every step of 3 to 80 pixels of disparity, the strip
/// that only one view shows with the surfaces on either side of it. A range of more than 160 disparities
/// gives no votes. The sums behind the votes are integers: they depend neither on threads nor on the
/// instruction set.
[[nodiscard]] ContourVotes vote_on_contours(const MeasuredPair& pair, const DisparityRange& range);

}  // namespace zemora
