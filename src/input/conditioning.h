#pragma once
/// The frame round the input pictures: painted over, cut off, or taken from mask files.

#include <string>

#include "config/notes.h"
#include "config/setting_values.h"
#include "input/loaded_view.h"
#include "numerics/result.h"

namespace zemora {

/// The frame round the input.
struct FrameOptions {
    int passepartout = setting::passepartout::none;
    Colour colour;              ///< Marks the absence of picture (`passe_colour_of`).
    int tolerance = 100;        ///< Colour distance up to which a pixel is frame.
    bool writes_masks = false;  ///< As `PasseOutput` wants them.
};

/// Names of the mask files of both views without "_pass_in.bmp" and "_pass_out.bmp": the view's file without
/// suffix, with "_l" or "_r" behind it where the file holds both views.
struct MaskStems {
    std::string left;
    std::string right;
};

/// Treats both views by `Passepartout`, so that only what is no picture has the colour of the options, and
/// writes masks. Fails for the run without memory and where a mask file is missing or of another size.
[[nodiscard]] Result<void> condition_views(const RecordedView& left, const RecordedView& right,
                                           const MaskStems& mask_stems, const FrameOptions& options,
                                           Notes& notes);

}  // namespace zemora
