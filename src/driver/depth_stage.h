#pragma once
/// The views of a pair that comes as a photo with its depth mask.

#include "driver/pipeline.h"

namespace zemora {

/// Renders both views, which take the places of photo and mask, and stores with `ExtraOutput` 9 the mask in
/// colours. Two views stay as they are. Without memory the run ends.
void make_depth_views(Pipeline& pipeline, PairRun& pair);

}  // namespace zemora
