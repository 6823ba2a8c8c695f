#pragma once
/// The warp: from the source pair and one set of corrections to a corrected pair.

#include "analysis/tone_tables.h"
#include "numerics/result.h"
#include "render/selection_box.h"
#include "render/warp_state.h"

namespace zemora {

/// What one warp applies. Sign: that of the right view's source coordinate; rows count upward.
struct WarpCorrection {
    float height = 0.0F;      ///< Pixels of the output before the size step.
    float size = 0.0F;        ///< Fraction.
    float rotation = 0.0F;    ///< Radians.
    float vergence_v = 0.0F;  ///< Radians.
    float vergence_h = 0.0F;  ///< Radians.
    float shift = 0.0F;       ///< Pixels of the output before the size step.
};

/// One call of the warp.
struct WarpRequest {
    StereoPicture source;  ///< Untouched.
    int frame_height = 0;  ///< Size of the whole frame before the size step, pixels.
    int frame_width = 0;
    int size_step = 0;      ///< 1 when this call may change the size.
    int interpolation = 1;  ///< Kernel 0 to 3, from `choose_interpolation`.
    int height_done = 0;    ///< 1 when that side has reached its target.
    int width_done = 0;
    double ratio_height = 1.0;  ///< Target over present size, cropped.
    double ratio_width = 1.0;
    WarpCorrection correction;
    const ToneTables* tone_left = nullptr;
    const ToneTables* tone_right = nullptr;
    int tone_mode_left = 0;  ///< `AutoOutputContrast` for an adapted view, else 0.
    int tone_mode_right = 0;
    bool use_tone = false;
    float gamma = 1.0F;  ///< 0 counts as 1.
    /// 0 keep the whole frame whatever `CroppOutput` says (analysis passes); 1 crop by `CroppOutput`.
    int crop = 1;
};

/// Warps `request.source` into the working pair of `warp` and sets its size. Fails for the pair, with all
/// said, beyond the limits of the warp; for the run without memory.
[[nodiscard]] Result<void> warp_still(WarpState& warp, const WarpRequest& request, SelectionBox& selection);

/// Kernel for the next warp at `scale` output pixels per source pixel; sets `filter_radius`.
[[nodiscard]] int choose_interpolation(WarpState& warp, float scale);

}  // namespace zemora
