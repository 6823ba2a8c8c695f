#pragma once
/// Finds the font files of texts.

#include <string>

#include "config/voice.h"

namespace zemora {

/// The font of texts that name none.
[[nodiscard]] std::string default_font();

/// The file of a font: an absolute path, NAME.ttf in the fonts folder of $windir, or what the system's font
/// configuration has for the name. Otherwise the default font, which is told once for a name.
[[nodiscard]] std::string font_file(const std::string& name, const Voice& voice);

}  // namespace zemora
