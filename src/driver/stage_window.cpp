// The stereo window of a measured pair.

#include "driver/pipeline.h"

namespace zemora {

void place_stereo_window(const Pipeline& pipeline, PairRun& pair) {
    pair.window = place_window(pipeline.parameters, pair.correction.shift_px, pair.disparities.window_px,
                               pair.scale, pair.working_height, pair.working_width);
    pair.deviation = pair.scale * (pair.disparities.far_px - pair.disparities.near_px) / pair.working_width;
}

}  // namespace zemora
