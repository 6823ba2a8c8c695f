#pragma once
/// The frame round the input pictures: painted over, cut off, or taken from mask files.

#include <string>

#include "config/parameter_set.h"
#include "config/voice.h"
#include "input/loaded_view.h"
#include "input/view_geometry.h"

namespace zemora {

/// One view with what belongs to it.
struct ConditionedView {
    LoadedView& view;
    ViewGeometry& geometry;  ///< Takes the cut.
    /// Name of the mask files without "_pass_in.bmp" and "_pass_out.bmp": the view's file without suffix,
    /// with "_l" or "_r" behind it where the file holds both views.
    std::string mask_stem;
};

/// Treats both views by `Passepartout`, so that only what is no picture has the passepartout colour, and
/// writes the masks of `PasseOutput`. A mask file that is missing or of another size ends the run.
void condition_views(const ConditionedView& left, const ConditionedView& right,
                     const ParameterSet& parameters, Voice& voice);

}  // namespace zemora
