#pragma once
/// Pictures into limited-range YUV 4:2:0 with 8 bits, in the plainest way.

#include <array>

#include "numerics/bitmap.h"
#include "video/frame_colours.h"
#include "video/video_facts.h"

namespace zemora {

[[nodiscard]] ColourTags plain_settled_tags(ColourTags tags, int height);
void plain_yuv_from_bgr(ConstPicture picture, const ColourTags& tags, std::array<WritablePlane, 3> into);

}  // namespace zemora
