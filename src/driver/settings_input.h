#pragma once
/// What the settings of a run mean for the input and for depth masks.

#include "config/parameter_set.h"
#include "depth/depth_views.h"
#include "input/collect_options.h"
#include "input/pair_reader.h"
#include "input/stored_record.h"
#include "input/view_preparer.h"

namespace zemora {

[[nodiscard]] CollectOptions collect_options(const ParameterSet& parameters);

/// Absolute path of `ListofImages`.
[[nodiscard]] std::string list_path_of(const ParameterSet& parameters);

[[nodiscard]] WantedShape wanted_shape(const ParameterSet& parameters);

[[nodiscard]] PairReadOptions pair_read_options(const ParameterSet& parameters);

[[nodiscard]] PrepareOptions prepare_options(const ParameterSet& parameters);

/// `PasseColor`, black where a measured frame is painted.
[[nodiscard]] Colour passe_colour_of(const ParameterSet& parameters);

/// That of the keys.
[[nodiscard]] PreSelection pre_selection_of(const ParameterSet& parameters);

[[nodiscard]] DepthSettings depth_settings(const ParameterSet& parameters);

}  // namespace zemora
