#pragma once
/// Brings the finished pair to its final size.

#include "render/output_size.h"
#include "render/warp_pair.h"

namespace zemora {

/// With the image library's bicubic filter. Fails without memory.
[[nodiscard]] Result<void> rescale_to_final(WarpedPair& pair, const TargetSize& target);

}  // namespace zemora
