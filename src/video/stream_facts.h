#pragma once
/// What container and first picture say of a video.

#include "video/libav_handles.h"
#include "video/packet_reader.h"
#include "video/video_facts.h"

namespace zemora {

/// All facts but those of the even grid.
[[nodiscard]] VideoFacts stream_facts(const PacketReader& reader, const AVFrame& first);

}  // namespace zemora
