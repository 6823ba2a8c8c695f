#pragma once
/// Blends a line of text into a picture.

#include <optional>
#include <string>

#include "config/notes.h"
#include "numerics/bitmap.h"
#include "render/letter_mask.h"

namespace zemora {

enum class TextAlign { left, centre, right };

struct TextPlace {
    int row = 0;     ///< Lowest row of the text.
    int column = 0;  ///< Where the side named by `align` stands.
    TextAlign align = TextAlign::left;
    /// The text runs from right to left, for a view that is seen in a mirror.
    bool is_mirrored = false;
};

/// The mask of `text`, without pixels when it has no width. Nothing when it failed, which is reported.
[[nodiscard]] std::optional<LetterMask> told_mask(const std::string& text, const TextFont& font, int widest,
                                                  Notes& notes);

/// The part of the picture that a text of the mask's size with that lower left pixel covers, moved in at the
/// left and the bottom and cut at the right and the top. Tells a text that does not fit.
[[nodiscard]] Picture text_ground(Picture picture, const LetterMask& mask, int row, int column,
                                  const std::string& text, Notes& notes);

/// Blends a colour over one pixel by a cover of 0 to 255.
void blend(std::uint8_t* pixel, int cover, Colour colour);
/// Blends letters of one colour over a ground of at most the mask's size.
void blend_letters(Picture ground, const LetterMask& mask, Colour colour, bool is_mirrored);

/// Draws the text; false when it failed, which is reported.
bool draw_text(Picture picture, const std::string& text, const TextFont& font, const TextPlace& place,
               Colour colour, Notes& notes);

}  // namespace zemora
