#pragma once
/// A line of text as a mask of its letters, drawn by the font library; needs no display.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct _TTF_Font;

namespace zemora {

struct TextFont {
    std::string file;
    int pixels = 0;  ///< Held to 1 to 4000.
    int style = 0;   ///< 0 plain, 1 italic, 10 bold, 11 bold italic.
};

/// How much of each pixel the letters cover, 0 to 255. Rows from the bottom without gaps.
struct LetterMask {
    int width = 0;
    int height = 0;
    int text_width = 0;  ///< Of the whole text; above `width` when its end was left away.
    std::vector<std::uint8_t> cover;
    [[nodiscard]] const std::uint8_t* row(int y) const {
        return cover.data() + static_cast<std::ptrdiff_t>(y) * width;
    }
};

/// What is in the way of a font or a text.
enum class TextFault { none, library, font };

/// An open font with the library below it, which serves one thread at a time.
class LetterFont {
public:
    explicit LetterFont(const TextFont& font);
    LetterFont(const LetterFont&) = delete;
    LetterFont& operator=(const LetterFont&) = delete;
    ~LetterFont();

    [[nodiscard]] TextFault fault() const { return fault_; }
    /// The library's words for the fault.
    [[nodiscard]] const std::string& reason() const { return reason_; }
    [[nodiscard]] int pixels() const { return pixels_; }

    /// Letters of the latest text that neither this font nor another one of the system has, in UTF-8.
    [[nodiscard]] const std::string& missing() const { return missing_; }

    /// The mask of a UTF-8 text; letters that the font lacks are those of another one that has them. Invalid
    /// UTF-8 counts as Windows-1252, control characters as blanks. What lies beyond `widest` pixels may be
    /// left away. Empty for a text without width, and for a failure with its reason.
    [[nodiscard]] LetterMask mask(const std::string& text, int widest);

private:
    struct Closer {
        void operator()(_TTF_Font* font) const;
    };
    using OpenFont = std::unique_ptr<_TTF_Font, Closer>;
    /// A part of a text that one font draws.
    struct Run {
        _TTF_Font* font;
        std::string text;
    };
    [[nodiscard]] std::vector<Run> split(const std::string& text);
    [[nodiscard]] _TTF_Font* font_with(char32_t letter, const std::string& written);
    [[nodiscard]] LetterMask mask_of_runs(const std::vector<Run>& runs, int widest);

    int pixels_;
    int flags_ = 0;  ///< The library's style.
    bool is_started_ = false;
    OpenFont font_;
    std::vector<OpenFont> others_;  ///< For letters that `font_` lacks.
    std::string missing_;
    TextFault fault_ = TextFault::none;
    std::string reason_;
};

}  // namespace zemora
