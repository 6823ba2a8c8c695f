#pragma once
/// The settings of generated scenes and films as words of a command line: name=value.

#include <map>
#include <string>
#include <vector>

#include "film.h"

namespace zemora {

using SceneSettings = std::map<std::string, double>;

/// All settings of a scene and what they are when they are not given.
[[nodiscard]] SceneSettings scene_settings();
/// Those of a film: the same, and what changes from frame to frame.
[[nodiscard]] SceneSettings film_settings();

/// Overwrites a setting by a word; false for one that does not exist.
[[nodiscard]] bool read_setting(const std::string& word, SceneSettings& settings);

[[nodiscard]] SceneErrors errors_of(const SceneSettings& settings);
[[nodiscard]] SceneOptions options_of(int width, int height, const SceneSettings& settings);
[[nodiscard]] FilmOptions film_of(const SceneOptions& scene, int frames, const std::vector<int>& cuts,
                                  const SceneSettings& settings);
/// Whether such a scene can be rendered.
[[nodiscard]] bool is_possible(const SceneOptions& options);

}  // namespace zemora
