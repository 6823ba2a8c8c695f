#include "report/comfort_calculator.h"

#include <cstdint>

#include "platform/safe_file.h"
#include "report/html_page.h"

namespace zemora {

namespace {

/// A text of the page in both languages.
struct PageText {
    std::string_view mark;
    std::string_view english;
    std::string_view german;
};

constexpr PageText kTexts[] = {
#define TEXT(mark, english, german) {mark, english, german},
#include "report/comfort_calculator_texts.inc"
#undef TEXT
};

constexpr std::string_view kBody =
#include "report/comfort_calculator_page.inc"
    ;

constexpr std::string_view kScript =
#include "report/comfort_calculator_script.inc"
    ;

std::string_view words(std::string_view mark, Language language) {
    for (const PageText& text : kTexts) {
        if (text.mark == mark) {
            return language == Language::german ? text.german : text.english;
        }
    }
    return mark;
}

/// The body with the words of a language in place of its marks, UTF-8.
std::string filled_body(Language language) {
    std::string page;
    std::string_view rest = kBody;
    for (std::size_t mark = rest.find("{{"); mark != std::string_view::npos; mark = rest.find("{{")) {
        const std::size_t end = rest.find("}}", mark);
        page += rest.substr(0, mark);
        page += words(rest.substr(mark + 2, end - mark - 2), language);
        rest.remove_prefix(end + 2);
    }
    return page += rest;
}

}  // namespace

std::string calculator_file_name(Language language) {
    return language == Language::german ? "comfortcalculator_de.html" : "comfortcalculator_en.html";
}

std::string calculator_address(Language language, int far_px, int deviation_px, int width, int height,
                               int projection_ratio) {
    return calculator_file_name(language) + format_text("?far=%d&dev=%d&wi=%d&hei=%d&pr=%d", far_px,
                                                        deviation_px, width, height, projection_ratio);
}

std::string write_comfort_calculator(const std::string& path, Language language) {
    std::string page = page_head("Zemora Comfort Calculator", language) + latin1_html(filled_body(language));
    page += kScript;
    page += kPageEnd;
    return write_file_whole(path, {reinterpret_cast<const std::uint8_t*>(page.data()), page.size()});
}

}  // namespace zemora
