#include "report/page_texts.h"

namespace zemora {

namespace {

/// A text of a page in both languages.
struct PageText {
    std::string_view mark;
    std::string_view english;
    std::string_view german;
};

constexpr PageText kTexts[] = {
#define TEXT(mark, english, german) {mark, english, german},
#include "report/comfort_calculator_texts.inc"
#include "report/video_charts_texts.inc"
#undef TEXT
};

/// Markup or script that several pages have.
struct PagePiece {
    std::string_view mark;
    std::string_view text;
};

constexpr PagePiece kPieces[] = {
#define PIECE(mark, text) {mark, text},
#include "report/page_pieces.inc"
#undef PIECE
};

std::string replacement(std::string_view mark, Language language) {
    for (const PageText& text : kTexts) {
        if (text.mark == mark) {
            return filled_page(language == Language::german ? text.german : text.english, language);
        }
    }
    for (const PagePiece& piece : kPieces) {
        if (piece.mark == mark) {
            return filled_page(piece.text, language);
        }
    }
    return "{{" + std::string(mark) + "}}";
}

}  // namespace

std::string filled_page(std::string_view body, Language language) {
    std::string page;
    for (std::size_t mark = body.find("{{"); mark != std::string_view::npos; mark = body.find("{{")) {
        const std::size_t end = body.find("}}", mark);
        page += body.substr(0, mark);
        page += replacement(body.substr(mark + 2, end - mark - 2), language);
        body.remove_prefix(end + 2);
    }
    return page += body;
}

}  // namespace zemora
