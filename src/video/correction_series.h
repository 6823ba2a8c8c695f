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

/// Values of a frame that come from elsewhere than the analysis.
struct StoredValues {
    int frame = 0;
    FrameValues values;
};

/// The mean of the valid frames, each value by itself; zero without one.
[[nodiscard]] FrameValues mean_values(const CorrectionSeries& series);

// The steps from what was measured to what is applied, in their order.

/// Frames with a value that is no finite number count as not measured; such values and disparities become 0.
void discard_unusable(CorrectionSeries& series);
/// Gives analysed frames without a result the values between their valid neighbours in the scene, at its ends
/// those of the nearest one; a scene without any has those of the valid frame before it, else behind it. Only
/// where anything is smoothed, and not the curtains. Flags stay.
void fill_holes(CorrectionSeries& series, const SmoothSettings& settings);
/// Replaces height, size and angles of the analysed frames by their mean, or by the running median of their
/// scene. `length`, as `SmoothSettings::geometry`, is held to the length of the film; a scene of few frames
/// has the longest median that fits in. Where the window of the median leaves the scene values stay.
void smooth_geometry(CorrectionSeries& series, const FrameValues& mean, int& length);
/// The same for window and curtains.
void smooth_window(CorrectionSeries& series, const FrameValues& mean, int& length);
/// Gives all frames between analysed ones the values on the straight line between these, within each scene;
/// frames up to a cut keep those before it. Before the first analysed frame stand its values, behind the last
/// one its.
void spread_values(CorrectionSeries& series);

// What runs the steps.

/// As far as the holes are filled, which is the state that is kept as raw. False, with nothing changed but
/// what was no number, without a valid frame.
[[nodiscard]] bool fill_series(CorrectionSeries& series, const SmoothSettings& settings);
/// Smooths and spreads what is filled. Lengths beyond the film become its own.
void smooth_filled_series(CorrectionSeries& series, SmoothSettings& settings);
/// Both.
[[nodiscard]] bool smooth_series(CorrectionSeries& series, SmoothSettings& settings);

/// Puts stored values, ascending in their frames and within the film, in place of all others: each at its
/// frame, on the straight line between two, as by `spread_values`. Curtains stay.
void take_stored_values(CorrectionSeries& series, const std::vector<StoredValues>& stored);

}  // namespace zemora
