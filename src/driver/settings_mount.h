#pragma once
/// What the settings of a run mean for the mounting of its pairs.

#include "config/parameter_set.h"
#include "driver/mount.h"

namespace zemora {

/// Without the colours, which come from a file.
[[nodiscard]] MountSettings mount_settings(const ParameterSet& parameters);
[[nodiscard]] RenderSettings render_settings(const ParameterSet& parameters);
/// `UseHeight` to `UseVergenceH`, without shift.
[[nodiscard]] Correction use_keys(const ParameterSet& parameters);
[[nodiscard]] WindowWish window_wish(const ParameterSet& parameters);

}  // namespace zemora
