#pragma once
/// Both finished views in one picture for red-cyan glasses.

#include <string>

#include "render/output_writer.h"
#include "render/warp_state.h"

namespace zemora {

/// Merges the views of `warp` by `AnaglyphType` on the canvas with frame and texts. Empty when the memory is
/// not there.
[[nodiscard]] Bitmap compose_anaglyph(WarpState& warp);

/// Writes the anaglyph, or its dome image with `PlanetariumOutput`.
[[nodiscard]] StoreResult write_anaglyph(WarpState& warp, const std::string& file);

}  // namespace zemora
