#pragma once
/// Finds the font files of texts.

#include <string>

#include "config/notes.h"

namespace zemora {

/// The font of texts that name none.
[[nodiscard]] std::string default_font();

/// A font file, and what of the wanted style is still to be made from its letters: 0 plain, 1 italic, 10
/// bold, 11 bold italic.
struct ChosenFont {
    std::string file;
    int style = 0;
};

/// The font of a name: an absolute path, NAME.ttf in the fonts folder of $windir, or what the system's font
/// configuration has for the name, its bold and italic forms for those styles. Otherwise the default font,
/// which is reported once for a name.
[[nodiscard]] ChosenFont choose_font(const std::string& name, int style, Notes& notes);

/// The file that the font configuration has for a letter; it may lack the letter all the same. Empty without
/// one.
[[nodiscard]] std::string font_of_letter(char32_t letter);

}  // namespace zemora
