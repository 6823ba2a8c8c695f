#pragma once
/// How a written film tells players that its pictures hold two views.

#include <optional>

#include "video/video_facts.h"

namespace zemora {

/// The number of the frame packing in the H.264 stream (ITU-T H.264, D.2.26). None where the right view comes
/// first: the encoder can tell it the other way only, and a wrong flag exchanges the eyes.
[[nodiscard]] std::optional<int> frame_packing_of(StereoFlag flag);

/// Whether an MP4 file can tell it as well.
[[nodiscard]] bool has_mp4_flag(StereoFlag flag);

}  // namespace zemora
