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

    /// The mask of a UTF-8 text; invalid UTF-8 counts as Windows-1252, control characters as blanks. What
    /// lies beyond `widest` pixels may be left away. Empty for a text without width, and for a failure with
    /// its reason.
    [[nodiscard]] LetterMask mask(const std::string& text, int widest);

private:
    struct Closer {
        void operator()(_TTF_Font* font) const;
    };
    int pixels_;
    bool is_started_ = false;
    std::unique_ptr<_TTF_Font, Closer> font_;
    TextFault fault_ = TextFault::none;
    std::string reason_;
};

}  // namespace zemora
