#include "report/comfort_calculator.h"

#include <cstdint>

#include "platform/safe_file.h"
#include "report/html_page.h"
#include "report/page_texts.h"

namespace zemora {

namespace {

constexpr std::string_view kBody =
#include "report/comfort_calculator_page.inc"
    ;

constexpr std::string_view kScript =
#include "report/comfort_calculator_script.inc"
    ;

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
    std::string page =
        page_head("Zemora Comfort Calculator", language) + latin1_html(filled_page(kBody, language));
    page += filled_page(kScript, language);
    page += kPageEnd;
    return write_file_whole(path, {reinterpret_cast<const std::uint8_t*>(page.data()), page.size()});
}

}  // namespace zemora
