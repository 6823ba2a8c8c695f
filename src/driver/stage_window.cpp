// The stereo window of a measured pair.

#include "driver/outside_steps.h"
#include "driver/pipeline.h"
#include "input/list_line.h"

namespace zemora {

void place_stereo_window(const Pipeline& pipeline, PairRun& pair) {
    pair.geometry.window = place_window(pipeline.parameters, pair.geometry.correction.shift_px,
                                        pair.geometry.disparities.window_px, pair.scale, pair.working_height,
                                        pair.working_width);
    // The final warp uses what a list keeps of the values, so that a later run that applies them gives the
    // very same picture. Their six digits are finer than any effect in a picture.
    take_geometry(as_listed(record_of(pipeline, pair)), pair);
    pair.deviation = pair.scale * (pair.geometry.disparities.far_px - pair.geometry.disparities.near_px) /
                     pair.working_width;
}

}  // namespace zemora
