#pragma once
/// Turning, mirroring and exchanging the finished views.

#include "numerics/result.h"
#include "render/finished.h"
#include "render/warped_pair.h"

namespace zemora {

/// Turns the views of `pair`, which stand in the bitmaps of `warped`, by `RotMirOutputLeft` and
/// `RotMirOutputRight`. Both keep one size: where only one turning would exchange the sides, the right view
/// is turned as the left one. A mode outside 0 to 7 counts as 0. Fails without memory.
[[nodiscard]] Result<void> turn_outputs(Finished& pair, WarpedPair& warped, int left_mode, int right_mode);

/// Exchanges what stands at the left and at the right; the pixels stay.
void exchange_outputs(Finished& pair);

}  // namespace zemora
