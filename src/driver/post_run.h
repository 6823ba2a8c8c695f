#pragma once
/// The batch that the user wants to run after the last picture.

#include <string>

#include "config/voice.h"

namespace zemora {

/// The files that a run has stored last; empty where it stored none.
struct BatchNames {
    std::string anaglyph;
    std::string stereo;
    std::string extra;
};

/// The shell script of a batch text: its lines up to the first empty one, remarks as comments, and the names,
/// as values that the shell never reads as commands, in place of "#CA#" (anaglyph), "#CS#" (stereo, else
/// extra) and
/// "#CM#" (extra, else stereo).
[[nodiscard]] std::string batch_script(const std::string& text, const BatchNames& names);

/// Starts the script and does not wait for its end.
void start_batch(const std::string& script, Voice& voice);

}  // namespace zemora
