#pragma once
/// Two pictures to set values by: the anaglyph calibration image and the alignment image.

#include <functional>
#include <string>

#include "config/notes.h"
#include "numerics/result.h"

namespace zemora {

/// Puts the sRGB profile into a stored file.
using AddProfile = std::function<void(const std::string& file)>;

/// Colour ramps to be printed, as "tintrovela_print_%03d.tif" in `folder`. `green_percent` is the share of
/// green in cyan. Fails without a word below 50 pixels of width, where the font cannot be used or the file
/// not be written, and for the run without memory.
[[nodiscard]] Result<void> write_anaglyph_test_image(int width, const std::string& folder, int green_percent,
                                                     Notes& notes, const AddProfile& add_profile);

struct AlignmentOptions {
    int width = 0;  ///< Of a view, pixels.
    int height = 0;
    std::string folder;
    bool mirrors_right = false;  ///< For a projector behind the screen.
};

/// Numbered bands whose ghosts tell the value of `AutoGhostBust`, as "zemora_alignment.tif" in the folder.
/// Fails where a side is 0, the font cannot be used or the file not be written, and for the run without
/// memory.
[[nodiscard]] Result<void> write_alignment_image(const AlignmentOptions& options, Notes& notes);

}  // namespace zemora
