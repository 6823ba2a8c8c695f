#pragma once
/// A generated scene mounted in memory, and what is left of its misalignment by the scene's
/// own truth.

#include <cstdint>
#include <string>
#include <vector>

#include "analysis/iteration_verdict.h"
#include "render/warp_pair.h"
#include "report/height_judgement.h"
#include "scene.h"

namespace zemora::test {

/// Settings that differ between the cases.
struct MountOptions {
    int apply_left_right = 0;
    int iterative_min = 3;  ///< Rounds before a good result may end the iteration.
    int robust = 1;         ///< Rule of the estimation: 0 the plain one, 1 the robust one.
    /// Shows the scene of another seed in the right view, so that nothing matches; 0 for a pair.
    std::uint32_t seed_of_right = 0;
};

struct MountedScene {
    bool mounted = false;
    StatusCode status = StatusCode::no_result;
    int iterations = 0;     ///< Measurements of the iteration.
    Correction correction;  ///< What the program applied.
    /// Vertical errors of the output pair, in output pixels, over a lattice of 39 x 39 places of the left
    /// view.
    double median_dy_px = 0.0;
    double p95_dy_px = 0.0;
    /// The same over the places alone that the right view shows too.
    int seen_places = 0;
    double mean_dy_px = 0.0;
    double seen_median_px = 0.0;
    double seen_p95_px = 0.0;
    /// What the best five terms would leave of the latter: no rule of the program could do better.
    double floor_mean_px = 0.0;
    double floor_median_px = 0.0;
    double floor_p95_px = 0.0;
    float residual_rms_px = 0.0F;
    /// What the program tells about its own result; unchecked by the plain rule.
    HeightVerdict told = HeightVerdict::unchecked;
};

/// By how much the right output view of a plan has points higher than the left one, in output pixels, over a
/// lattice of 39 x 39 places of the part that is kept.
[[nodiscard]] std::vector<double> heights_left(const WarpPlan& plan, const PixelRectangle& kept,
                                               const Scene& scene);

/// Renders, mounts without any file, and measures by the scene's displacements how far
/// matching points of the two output pictures lie apart in height.
[[nodiscard]] MountedScene mount_scene(const SceneOptions& options, const SceneErrors& errors,
                                       const MountOptions& mount = {});

}  // namespace zemora::test
