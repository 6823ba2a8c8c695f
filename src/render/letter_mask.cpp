#include "render/letter_mask.h"

#include <SDL.h>
#include <SDL_ttf.h>

#include <algorithm>

#include "config/text_lines.h"

namespace zemora {

namespace {

constexpr int kLargestFont = 4000;  // pixels; a letter is 16 MB then
/// Bytes of a text that are looked at: positions are counted in 1/64 pixel by the library, and this many
/// letters of the largest font stay below 2^31 of them.
constexpr std::size_t kLongestText = 4096;

struct StyleRow {
    int style;
    int flags;
};
constexpr StyleRow kStyles[] = {
    {1, TTF_STYLE_ITALIC},
    {10, TTF_STYLE_BOLD},
    {11, TTF_STYLE_BOLD | TTF_STYLE_ITALIC},
};

int style_flags(int style) {
    for (const StyleRow& row : kStyles) {
        if (row.style == style) {
            return row.flags;
        }
    }
    return TTF_STYLE_NORMAL;
}

/// The longest end at or before `end` that cuts no character.
std::size_t character_end(const std::string& text, std::size_t end) {
    if (end >= text.size()) {
        return text.size();
    }
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return end;
}

/// Valid UTF-8 without control characters and not beyond what the library can count.
std::string drawable(const std::string& raw) {
    std::string text = utf8_text(raw);
    text.resize(character_end(text, kLongestText));
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7F') {
            c = ' ';
        }
    }
    return text;
}

int text_width(TTF_Font* font, const std::string& text) {
    int width = 0;
    int height = 0;
    return TTF_SizeUTF8(font, text.c_str(), &width, &height) == 0 ? width : 0;
}

/// The beginning of the text that just fills `widest` pixels.
std::string filling(TTF_Font* font, const std::string& text, int widest) {
    std::size_t low = 0;
    std::size_t high = text.size();
    while (low + 1 < high) {
        const std::size_t middle = low + (high - low) / 2;
        const bool fills = text_width(font, text.substr(0, character_end(text, middle))) >= widest;
        (fills ? high : low) = middle;
    }
    std::size_t end = high;
    while (end < text.size() && character_end(text, end) != end) {
        ++end;
    }
    return text.substr(0, end);
}

struct SurfaceCloser {
    void operator()(SDL_Surface* surface) const { SDL_FreeSurface(surface); }
};

/// The grey values of a white on black surface of 8 bits; its first row is the top one.
void copy_cover(const SDL_Surface& surface, LetterMask& mask) {
    mask.width = surface.w;
    mask.height = surface.h;
    mask.cover.resize(static_cast<std::size_t>(mask.width) * static_cast<std::size_t>(mask.height));
    const SDL_Palette* const palette = surface.format->palette;
    const auto* top = static_cast<const std::uint8_t*>(surface.pixels);
    for (int y = 0; y < mask.height; ++y) {
        const std::uint8_t* const from =
            top + static_cast<std::ptrdiff_t>(mask.height - 1 - y) * surface.pitch;
        std::uint8_t* const to = mask.cover.data() + static_cast<std::ptrdiff_t>(y) * mask.width;
        for (int x = 0; x < mask.width; ++x) {
            to[x] = from[x] < palette->ncolors ? palette->colors[from[x]].r : 0;
        }
    }
}

}  // namespace

void LetterFont::Closer::operator()(_TTF_Font* font) const {
    TTF_CloseFont(font);
}

LetterFont::LetterFont(const TextFont& font) : pixels_(std::clamp(font.pixels, 1, kLargestFont)) {
    is_started_ = TTF_Init() == 0;
    if (!is_started_) {
        fault_ = TextFault::library;
        reason_ = TTF_GetError();
        return;
    }
    font_.reset(TTF_OpenFont(font.file.c_str(), pixels_));
    if (!font_) {
        fault_ = TextFault::font;
        reason_ = TTF_GetError();
        return;
    }
    TTF_SetFontStyle(font_.get(), style_flags(font.style));
}

LetterFont::~LetterFont() {
    font_.reset();
    if (is_started_) {
        TTF_Quit();
    }
}

LetterMask LetterFont::mask(const std::string& raw, int widest) {
    LetterMask mask;
    std::string text = drawable(raw);
    mask.text_width = text_width(font_.get(), text);
    if (mask.text_width <= 0) {
        return mask;
    }
    if (mask.text_width > widest) {
        text = filling(font_.get(), text, widest);
    }
    constexpr SDL_Color kWhite{255, 255, 255, 255};
    constexpr SDL_Color kBlack{0, 0, 0, 255};
    const std::unique_ptr<SDL_Surface, SurfaceCloser> surface(
        TTF_RenderUTF8_Shaded(font_.get(), text.c_str(), kWhite, kBlack));
    if (!surface || surface->format->BitsPerPixel != 8) {
        fault_ = TextFault::font;
        reason_ = TTF_GetError();
        return mask;
    }
    copy_cover(*surface, mask);
    mask.text_width = std::max(mask.text_width, mask.width);
    return mask;
}

}  // namespace zemora
