#pragma once
/// The batch that the user wants to run after the last picture.

#include <string>

#include "config/voice.h"

namespace zemora {

/// The shell script of a batch text: its lines up to the first empty one, remarks as comments, and the
/// last anaglyph and stereo names, as values that the shell never reads as commands, in place of "#CA#",
/// "#CS#" and "#CM#".
[[nodiscard]] std::string batch_script(const std::string& text, const std::string& anaglyph_name,
                                       const std::string& stereo_name);

/// Starts the script and does not wait for its end.
void start_batch(const std::string& script, const Voice& voice);

}  // namespace zemora
