#pragma once
/// The size step of a warp: by what factor the frame of this call changes towards the target.

#include "render/output_size.h"

namespace zemora {

/// What decides the step.
struct SizeStepRequest {
    int height = 0;  ///< Whole frame before the step, pixels.
    int width = 0;
    int step = 0;  ///< 0 keeps the size.
    int height_done = 0;
    int width_done = 0;
    double ratio_height = 1.0;  ///< Target over present size.
    double ratio_width = 1.0;
};

struct SizeStep {
    double factor = 1.0;
    int height = 0;  ///< Whole frame after the step.
    int width = 0;
};

[[nodiscard]] SizeStep size_step(const SizeStepRequest& request, int force_size, float aspect,
                                 float last_scale_step);

}  // namespace zemora
