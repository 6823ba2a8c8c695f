#include "report/html_page.h"

#include "config/html_text.h"
#include "config/text_lines.h"

namespace zemora {

namespace {

constexpr std::string_view kHeadStart =
    "<!DOCTYPE HTML>\n"
    "<html><head><meta name=\"author\" content=\"Zemora\">\n"
    "<meta http-equiv=\"content-type\" content=\"text/html; charset=ISO-8859-1\">\n"
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";

constexpr std::string_view kStyle =
#include "report/html_style.inc"
    ;

constexpr std::string_view kOpenCalculator = R"(
function OpenComCalc(Adresse) {
    var calculator = window.open(Adresse, "Zemora Comfort Calculator",
        "scrollbars=1,width=950px,height=700px,left=200,top=200");
    if (calculator) {
        calculator.focus();
    } else { // no windows allowed
        window.location.href = Adresse;
    }
}
)";

constexpr unsigned char kFirstNonAscii = 0x80;
constexpr unsigned kFirstPrintableLatin1 = 0xA0;
constexpr unsigned kLastLatin1 = 0xFF;

bool is_ascii(char c) {
    return static_cast<unsigned char>(c) < kFirstNonAscii;
}

/// The character at the beginning of valid UTF-8 that is not ASCII; the text goes on behind it.
unsigned take_character(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    unsigned code = first & (0xFFU >> (length + 1));
    for (const char c : text.substr(1, length - 1)) {
        code = code << 6 | (static_cast<unsigned char>(c) & 0x3FU);
    }
    text.remove_prefix(length);
    return code;
}

void append_latin1(std::string& latin1, unsigned code) {
    if (code < kFirstPrintableLatin1) {
        latin1 += '?';
    } else if (code <= kLastLatin1) {
        latin1 += static_cast<char>(code);
    } else {
        latin1 += "&#" + std::to_string(code) + ';';
    }
}

}  // namespace

std::string page_head(std::string_view description, Language language, std::string_view script) {
    const std::string title = latin1_html(html_text(description));
    std::string head(kHeadStart);
    head += "<meta name=\"description\" content=\"" + title + "\">\n<title>" + title + "</title>\n<style>\n";
    head += kStyle;
    head += "</style>\n";
    if (!script.empty()) {
        head += "<script>" + std::string(script) + "</script>\n";
    }
    head += std::string("</head>\n<body lang=\"") + (language == Language::german ? "de" : "en");
    return head + "\">\n<div class=\"page\">\n";
}

std::string_view open_calculator_script() {
    return kOpenCalculator;
}

std::string latin1_html(std::string_view html) {
    constexpr char kDelete = 0x7F;
    std::string latin1;
    while (!html.empty()) {
        if (is_ascii(html[0])) {
            const char c = html[0];
            latin1 += (c >= ' ' && c != kDelete) || c == '\n' || c == '\t' ? c : '?';
            html.remove_prefix(1);
            continue;
        }
        // Characters that follow each other without ASCII between them were written in one encoding.
        std::size_t end = 1;
        while (end < html.size() && !is_ascii(html[end])) {
            ++end;
        }
        const std::string run = utf8_text(html.substr(0, end));
        html.remove_prefix(end);
        for (std::string_view rest = run; !rest.empty();) {
            append_latin1(latin1, take_character(rest));
        }
    }
    return latin1;
}

}  // namespace zemora
