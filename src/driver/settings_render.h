#pragma once
/// What of the settings the rendering goes by, as its own options.

#include <optional>

#include "config/parameter_set.h"
#include "numerics/result.h"
#include "render/anaglyph.h"
#include "render/colour_change.h"
#include "render/extra_output.h"
#include "render/framing.h"
#include "render/save_picture.h"

namespace zemora {

/// The frame round the pictures before a pair changes it.
[[nodiscard]] FrameSettings frame_settings(const ParameterSet& parameters);

/// `plain_tiff`: there is no usable profile for print.
[[nodiscard]] SaveOptions save_options(const ParameterSet& parameters, bool plain_tiff = false);
[[nodiscard]] AnaglyphOptions anaglyph_options(const ParameterSet& parameters, bool plain_tiff = false);
/// `keeps_orientation`: nothing has turned the pictures of the pair.
[[nodiscard]] ExtraOptions extra_options(const ParameterSet& parameters, bool keeps_orientation,
                                         bool plain_tiff = false);
[[nodiscard]] SourceLayout source_layout(const ParameterSet& parameters);

/// The file of external colour management; nothing where neither `ExtColorManagement` nor `AnaglyphType` 8 or
/// 9 uses it.
[[nodiscard]] std::optional<ColourFile> colour_file(const ParameterSet& parameters);

/// What `ExtColorManagement` asks the warp for, from its file; nothing with 0. A faulty file fails, also when
/// only an anaglyph wants it: the run ends before the first pair was worked on.
[[nodiscard]] Result<std::optional<ColourChange>> read_colour_change(const ParameterSet& parameters,
                                                                     const MessageCatalogue& messages);

}  // namespace zemora
