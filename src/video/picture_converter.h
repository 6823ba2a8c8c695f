#pragma once
/// Decoded pictures as bitmaps.

#include "input/loaded_view.h"
#include "numerics/rescale.h"
#include "numerics/result.h"
#include "video/libav_handles.h"
#include "video/scene_cuts.h"
#include "video/video_facts.h"

namespace zemora {

/// Tags of a decoded picture, as they are.
[[nodiscard]] ColourTags tags_of(const AVFrame& frame);

class PictureConverter {
public:
    /// Fills `into` with the picture in the size `size`; the bitmap is reused where it fits. Fails for the
    /// run without memory, for the frame where its form of pixels cannot be changed.
    [[nodiscard]] Result<void> convert(const AVFrame& frame, PictureSize size, LoadedView& into);

private:
    [[nodiscard]] bool scale(const AVFrame& frame, Picture into);
    Scaler scaler_;
};

/// The sketch of a decoded picture, from its luma; false where its form of pixels has none of 8 or 10 bits.
[[nodiscard]] bool sketch_of(const AVFrame& frame, FrameSketch& sketch);

}  // namespace zemora
