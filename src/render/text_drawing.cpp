#include "render/text_drawing.h"

#include <algorithm>
#include <mutex>

#include "platform/console.h"

namespace zemora {

namespace {

void tell_fault(const LetterFont& letters, const std::string& file, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    const std::string told = letters.fault() == TextFault::library
                                 ? messages.text<Msg::warpimage_ttf_init_failed>() + letters.reason()
                                 : messages.text<Msg::warpimage_font_load_failed>(
                                       letters.pixels(), printable(file), letters.reason());
    notes.print_once(told + '\n');
    notes.wait_once(Severity::error, file);
}

template <Msg message>
void tell_misfit(const std::string& text, Notes& notes) {
    const std::string told = notes.messages().text<message>();
    notes.print_once(told + '\'' + printable(text) + "'\n");
    notes.wait_once(Severity::warning, told);
}

/// A text that stands at an edge by intention is only too large when it is larger than the picture.
bool fits(int at, int extent, int limit) {
    return extent <= limit && (at == 0 || at == limit || (at > 0 && at + extent < limit));
}

int aligned_column(const TextPlace& place, int text_width) {
    switch (place.align) {
        case TextAlign::centre: return place.column - text_width / 2;
        case TextAlign::right: return place.column - text_width;
        case TextAlign::left: break;
    }
    return place.column;
}

std::uint8_t blended(int ground, int cover, int colour) {
    return static_cast<std::uint8_t>((ground * (255 - cover) + cover * colour) >> 8);
}

}  // namespace

std::optional<LetterMask> told_mask(const std::string& text, const TextFont& font, int widest, Notes& notes) {
    // Texts are drawn for several pairs and products at the same time; the font library serves one.
    static std::mutex one_at_a_time;
    const std::lock_guard guard(one_at_a_time);
    LetterFont letters(font);
    LetterMask mask;
    if (letters.fault() == TextFault::none) {
        mask = letters.mask(text, widest);
    }
    if (letters.fault() != TextFault::none) {
        tell_fault(letters, font.file, notes);
        return std::nullopt;
    }
    if (!letters.missing().empty()) {
        notes.print_once(format_text(notes.messages().either({"No font here has the letters '%s'.\n",
                                                              "Keine Schrift hat hier die Zeichen '%s'.\n"}),
                                     printable(letters.missing()).c_str()),
                         Repeat::once_a_run);
    }
    return mask;
}

Picture text_ground(Picture picture, const LetterMask& mask, int row, int column, const std::string& text,
                    Notes& notes) {
    if (!fits(row, mask.height, picture.height)) {
        tell_misfit<Msg::warpimage_frame_too_narrow_for_text>(text, notes);
    }
    if (!fits(column, mask.text_width, picture.width)) {
        tell_misfit<Msg::warpimage_text_too_long_for_frame>(text, notes);
    }
    const int x = std::clamp(column, 0, picture.width);
    const int y = std::clamp(row, 0, picture.height);
    return picture.part(x, y, std::min(mask.width, picture.width - x),
                        std::min(mask.height, picture.height - y));
}

void blend(std::uint8_t* pixel, int cover, Colour colour) {
    pixel[0] = blended(pixel[0], cover, colour.blue);
    pixel[1] = blended(pixel[1], cover, colour.green);
    pixel[2] = blended(pixel[2], cover, colour.red);
}

void blend_letters(Picture ground, const LetterMask& mask, Colour colour, bool is_mirrored) {
    for (int y = 0; y < ground.height; ++y) {
        const std::uint8_t* const cover = mask.row(y);
        for (int x = 0; x < ground.width; ++x) {
            blend(ground.pixel(is_mirrored ? ground.width - 1 - x : x, y), cover[x], colour);
        }
    }
}

bool draw_text(Picture picture, const std::string& text, const TextFont& font, const TextPlace& place,
               Colour colour, Notes& notes) {
    const std::optional<LetterMask> mask = told_mask(text, font, picture.width, notes);
    if (!mask) {
        return false;
    }
    if (mask->width > 0) {
        const Picture ground =
            text_ground(picture, *mask, place.row, aligned_column(place, mask->text_width), text, notes);
        blend_letters(ground, *mask, colour, place.is_mirrored);
    }
    return true;
}

}  // namespace zemora
