#pragma once
/// The last changes of the two finished views: ghost reduction and sharpening.

#include "numerics/result.h"
#include "render/frame_settings.h"

namespace zemora {

/// Takes the share of the other view that a display lets through (`AutoGhostBust` percent) out of each
/// view; black is lifted just so far that nothing clips.
void reduce_ghosts(const WorkingViews& views, int percent);

/// Unsharp mask with a dead zone in very dark areas; `rounds` of a small blur make the radius. Fails
/// without memory.
[[nodiscard]] Result<void> sharpen(const WorkingViews& views, int intensity, int rounds);

}  // namespace zemora
