#pragma once
/// The mask of a film: a few key frames become a window for each frame, and its zoom may move the stereo
/// window.

#include <vector>

#include "input/mask_crop.h"
#include "video/correction_series.h"

namespace zemora {

/// One entry for each frame of the film from 0 on.
struct MaskTrack {
    std::vector<MaskFrame> masks;
    std::vector<unsigned char> is_key;  ///< 1 where the mask was set by a person.
};

/// Gives the frames between two keys the sides on a cubic from the one to the other that starts and ends
/// with slope 0; before the first and behind the last key stand theirs. Shifts stay. Nothing changes without
/// a key.
void interpolate_mask_keys(MaskTrack& track);

/// What the zoom of the mask did to the stereo window at its two extremes.
struct ZoomShift {
    struct Extreme {
        double zoom = 0.0;
        int frame = 0;  ///< The first one with that zoom.
        double window_before_px = 0.0;
        double window_px = 0.0;
    };
    Extreme smallest{.zoom = 100.0};
    Extreme largest;
};

/// Moves the window of the frames `first` to `end`, excluded, by `per_mille` of the width of a frame, in
/// pixels, for each time that the mask enlarges the picture beyond once. A mask without width counts as
/// whole.
ZoomShift shift_window_by_zoom(CorrectionSeries& series, const MaskTrack& track, int first, int end,
                               double per_mille, int width);

}  // namespace zemora
