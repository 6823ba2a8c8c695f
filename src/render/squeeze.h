#pragma once
/// Pictures of half the width or height: means of two neighbours, rounded down.

#include "numerics/bitmap.h"

namespace zemora {

enum class Squeeze {
    nothing,
    columns,  ///< Half the width; an odd last column is dropped.
    rows,     ///< Half the height; an odd last row, the uppermost one, is dropped.
};

/// The squeezed form of a bitmap of 24 or 48 bits. Empty when the memory is not there or nothing is left.
[[nodiscard]] Bitmap squeezed(const Bitmap& picture, Squeeze squeeze);

/// Writes the means of rows r and r + 1 of `left`, then those of `right`, to rows r and r + 1 of `target`,
/// r = 0, 2 and so on. The views have their lower left pixels at (left_column, row) and (right_column, row)
/// of the target; what lies beside it is left out, and so is an odd last row.
void interlace_rows(const StereoPicture& views, Picture target, int row, int left_column, int right_column);

}  // namespace zemora
