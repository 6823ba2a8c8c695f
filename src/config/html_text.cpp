#include "config/html_text.h"

namespace zemora {

std::string html_text(std::string_view text) {
    std::string html;
    for (const char c : text) {
        switch (c) {
            case '&': html += "&amp;"; break;
            case '<': html += "&lt;"; break;
            case '>': html += "&gt;"; break;
            case '"': html += "&quot;"; break;
            case '\'': html += "&#39;"; break;
            case '\n': html += "<br>\n"; break;
            default: html += c;
        }
    }
    return html;
}

}  // namespace zemora
