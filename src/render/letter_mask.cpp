#include "render/letter_mask.h"

#include <SDL.h>
#include <SDL_ttf.h>

#include <algorithm>
#include <string_view>

#include "config/text_lines.h"
#include "render/font_search.h"

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

/// The style that the letters of the file have by themselves.
int own_flags(TTF_Font* font) {
    const char* const words = TTF_FontFaceStyleName(font);
    const std::string_view name = words == nullptr ? "" : words;
    const auto has = [name](std::string_view word) { return name.find(word) != std::string_view::npos; };
    return (has("Bold") ? TTF_STYLE_BOLD : 0) | (has("Italic") || has("Oblique") ? TTF_STYLE_ITALIC : 0);
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

/// The character that begins at `at`, with its length in bytes. The text is valid.
struct Letter {
    char32_t code;
    std::size_t bytes;
};
Letter letter_at(const std::string& text, std::size_t at) {
    const auto byte = [&text](std::size_t i) {
        return static_cast<unsigned char>(i < text.size() ? text[i] : 0);
    };
    const unsigned first = byte(at);
    const std::size_t bytes = first < 0xC0U ? 1 : first < 0xE0U ? 2 : first < 0xF0U ? 3 : 4;
    char32_t code = bytes == 1 ? first : first & (0xFFU >> (bytes + 1));
    for (std::size_t i = 1; i < bytes; ++i) {
        code = (code << 6) | (byte(at + i) & 0x3FU);
    }
    return {code, bytes};
}

/// Joiners and variation marks show nothing by themselves.
bool is_invisible(char32_t letter) {
    return (letter >= 0x200B && letter <= 0x200F) || (letter >= 0xFE00 && letter <= 0xFE0F) ||
           letter == 0xFEFF;
}

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

/// The text, or as much of its beginning as fills `widest` pixels.
std::string filling_text(TTF_Font* font, const std::string& text, int widest) {
    return text_width(font, text) > widest ? filling(font, text, widest) : text;
}

/// The letters in the height of their font; without width when they cannot be drawn.
LetterMask rendered(TTF_Font* font, const std::string& text) {
    constexpr SDL_Color kWhite{255, 255, 255, 255};
    constexpr SDL_Color kBlack{0, 0, 0, 255};
    const std::unique_ptr<SDL_Surface, SurfaceCloser> surface(
        TTF_RenderUTF8_Shaded(font, text.c_str(), kWhite, kBlack));
    LetterMask mask;
    if (surface && surface->format->BitsPerPixel == 8) {
        copy_cover(*surface, mask);
    }
    return mask;
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
    flags_ = style_flags(font.style);
    TTF_SetFontStyle(font_.get(), flags_);
}

LetterFont::~LetterFont() {
    others_.clear();
    font_.reset();
    if (is_started_) {
        TTF_Quit();
    }
}

_TTF_Font* LetterFont::font_with(char32_t letter, const std::string& written) {
    const auto has = [letter](TTF_Font* font) { return TTF_GlyphIsProvided32(font, letter) != 0; };
    if (letter <= ' ' || is_invisible(letter) || has(font_.get())) {
        return font_.get();
    }
    for (const OpenFont& other : others_) {
        if (has(other.get())) {
            return other.get();
        }
    }
    OpenFont found(TTF_OpenFont(font_of_letter(letter).c_str(), pixels_));
    if (!found || !has(found.get())) {
        missing_ += written;
        return font_.get();
    }
    // As high as the text at most.
    const int height = TTF_FontHeight(font_.get());
    if (const int its = TTF_FontHeight(found.get()); its > height) {
        TTF_SetFontSize(found.get(), std::max(1, pixels_ * height / its));
    }
    TTF_SetFontStyle(found.get(), flags_ | own_flags(font_.get()));
    return others_.emplace_back(std::move(found)).get();
}

std::vector<LetterFont::Run> LetterFont::split(const std::string& text) {
    missing_.clear();
    std::vector<Run> runs;
    for (std::size_t at = 0; at < text.size();) {
        const Letter letter = letter_at(text, at);
        const std::string written = text.substr(at, letter.bytes);
        _TTF_Font* const font = font_with(letter.code, written);
        if (runs.empty() || runs.back().font != font) {
            runs.push_back({font, {}});
        }
        runs.back().text += written;
        at += letter.bytes;
    }
    return runs;
}

/// The runs side by side on one base line, in the height of the text's own font.
LetterMask LetterFont::mask_of_runs(const std::vector<Run>& runs, int widest) {
    LetterMask mask;
    std::vector<LetterMask> parts;
    for (const Run& run : runs) {
        if (mask.text_width < widest) {
            parts.push_back(rendered(run.font, filling_text(run.font, run.text, widest)));
            mask.width += parts.back().width;
        }
        mask.text_width += text_width(run.font, run.text);
    }
    mask.height = TTF_FontHeight(font_.get());
    mask.text_width = std::max(mask.text_width, mask.width);
    mask.cover.resize(static_cast<std::size_t>(mask.width) * static_cast<std::size_t>(mask.height));
    int column = 0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const LetterMask& part = parts[i];
        // Rows count from the bottom: the part's descent comes to stand on that of the text.
        const int up = TTF_FontDescent(runs[i].font) - TTF_FontDescent(font_.get());
        for (int y = std::max(0, -up); y < part.height && y + up < mask.height; ++y) {
            std::copy_n(part.row(y), part.width,
                        mask.cover.data() + static_cast<std::ptrdiff_t>(y + up) * mask.width + column);
        }
        column += part.width;
    }
    return mask;
}

LetterMask LetterFont::mask(const std::string& raw, int widest) {
    LetterMask mask;
    const std::string text = drawable(raw);
    mask.text_width = text_width(font_.get(), text);
    if (mask.text_width <= 0) {
        return mask;
    }
    if (const std::vector<Run> runs = split(text);
        std::any_of(runs.begin(), runs.end(), [this](const Run& run) { return run.font != font_.get(); })) {
        return mask_of_runs(runs, widest);
    }
    const LetterMask drawn = rendered(font_.get(), filling_text(font_.get(), text, widest));
    if (drawn.width == 0) {
        fault_ = TextFault::font;
        reason_ = TTF_GetError();
        return mask;
    }
    const int whole = std::max(mask.text_width, drawn.width);
    mask = drawn;
    mask.text_width = whole;
    return mask;
}

}  // namespace zemora
