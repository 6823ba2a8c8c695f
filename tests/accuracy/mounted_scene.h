#pragma once
/// A generated scene sent through the pipeline, and what is left of its misalignment by the scene's
/// own truth.

#include <string>

#include "driver/pair_correction.h"
#include "scene.h"

namespace zemora::test {

/// Settings that differ between the cases.
struct MountOptions {
    int apply_left_right = 0;
    int iterative_min = 3;  ///< Rounds before a good result may end the iteration.
};

struct MountedScene {
    bool mounted = false;
    int iterations = 0;         ///< Measurements of the iteration.
    PairCorrection correction;  ///< What the program applied.
    double median_dy_px = 0.0;  ///< Vertical error of the output pair, in output pixels.
    double p95_dy_px = 0.0;
    float residual_rms_px = 0.0F;
};

/// Renders, stores, mounts without output files, and measures by the scene's displacements how far
/// matching points of the two output pictures lie apart in height.
[[nodiscard]] MountedScene mount_scene(const SceneOptions& options, const SceneErrors& errors,
                                       const MountOptions& mount = {});

}  // namespace zemora::test
