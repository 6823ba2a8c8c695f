#pragma once
/// Two pictures to set values by: the anaglyph calibration image and the alignment image.

#include <functional>
#include <string>

#include "config/parameter_set.h"
#include "config/voice.h"

namespace zemora {

/// Puts the sRGB profile into a stored file.
using AddProfile = std::function<void(const std::string& file)>;

/// Colour ramps to be printed, as "tintrovela_print_%03d.tif" in `folder`. `green_percent` is the share of
/// green in cyan. 0, or 1 when it cannot be made.
[[nodiscard]] int write_anaglyph_test_image(int width, const std::string& folder, int green_percent,
                                            Voice& voice, const AddProfile& add_profile);

/// Numbered bands whose ghosts tell the value of `AutoGhostBust`, as "zemora_alignment.tif" in
/// `PathofImages`. 0, or 1 when `OutputHeight` or `OutputWidth` is 0 or it cannot be made.
[[nodiscard]] int write_alignment_image(const ParameterSet& parameters, Voice& voice);

}  // namespace zemora
