#pragma once
/// The last changes of the two finished views: ghost reduction and sharpening.

#include "render/warp_state.h"

namespace zemora {

/// Takes the share of the other view that a display lets through (`AutoGhostBust` percent) out of each
/// view; black is lifted just so far that nothing clips.
void ghost_bust(WarpState& warp, int percent);

/// Unsharp mask with a dead zone in very dark areas; `rounds` of a small blur make the radius.
void sharpen(WarpState& warp, int intensity, int rounds);

}  // namespace zemora
