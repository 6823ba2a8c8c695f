#pragma once
/// The corrections of a film: what was measured at some frames becomes a value for each frame. Pure numbers.

#include <vector>

#include "numerics/pair_geometry.h"
#include "video/frame_walk.h"

namespace zemora {

/// Lengths are pixels of the input frame, angles radians, the size a fraction.
struct FrameValues {
    float height_px = 0.0F;
    float window_px = 0.0F;  ///< The shift that the warp applies, which also places the stereo window.
    float size = 0.0F;
    float rotation_rad = 0.0F;
    float vergence_v_rad = 0.0F;
    float vergence_h_rad = 0.0F;
    float curtain_left_px = 0.0F;  ///< Nearest disparity at the left edge, against the window.
    float curtain_right_px = 0.0F;
};

/// Disparities against the window, pixels of the input frame.
struct FrameDisparities {
    float near_px = 0.0F;
    float far_px = 0.0F;
    float centre_px = 0.0F;
    float deviation_px = 0.0F;  ///< Far minus near.
    float ssg_px = 0.0F;        ///< Sum of geometric errors.
};

/// One entry for each frame of the film from 0 on; those that were not analysed are zero until smoothing.
struct CorrectionSeries {
    FrameWalk analysed;  ///< Its step is above 0.
    std::vector<FrameValues> values;
    std::vector<FrameDisparities> disparities;
    std::vector<unsigned char> valid;  ///< 1 where the frame was measured with success.
    std::vector<int> scene_starts;     ///< First frames of the scenes behind the first one, ascending.

    void resize(int frames);
    [[nodiscard]] int frames() const { return static_cast<int>(values.size()); }
};

struct SmoothSettings {
    int geometry = 3;  ///< `SmoothGeometryCorr`: 0 the mean, 1 as measured, 2 to 5 a median of 3 to 9 frames.
    int window = 3;    ///< `SmoothWindowCorr`, for the window and the curtains.
};

/// The mean of the valid frames.
[[nodiscard]] FrameValues mean_values(const CorrectionSeries& series);

/// Gives frames without a result the values between their neighbours, where anything is smoothed.
void fill_holes(CorrectionSeries& series, const SmoothSettings& settings);
/// Smooths and spreads over all frames, within each scene. False, with nothing changed, without a valid
/// frame. Lengths beyond the film become its own.
[[nodiscard]] bool smooth_series(CorrectionSeries& series, SmoothSettings& settings);

}  // namespace zemora
