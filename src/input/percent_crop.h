#pragma once
/// The part of each view that a pre-selection keeps.

#include "config/notes.h"
#include "input/loaded_view.h"
#include "numerics/pair_geometry.h"

namespace zemora {

/// Keeps the part of both views that `chosen` gives in percent, and records it. Where a value
/// cannot be used, it is reported and both views stay whole.
void crop_by_percent(const RecordedView& left, const RecordedView& right, const PreSelection& chosen,
                     Notes& notes);

}  // namespace zemora
