#include "report/value_rows.h"

#include <cmath>

#include "config/html_text.h"
#include "config/messages.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

/// What stands for a value that is no finite number.
std::string dash(std::size_t columns) {
    return std::string(columns - 1, ' ') + '-';
}

std::string without_end(const std::string& text, const char* filling) {
    return text.substr(0, text.find_last_not_of(filling) + 1);
}

}  // namespace

std::string measured_number(double value) {
    return std::isfinite(value) ? format_text("%7.2f", value) : dash(7);
}

std::string rounded_number(double value) {
    return std::isfinite(value) ? format_text("%4d", round_half_up(value)) : dash(4);
}

std::string share_number(double value) {
    return std::isfinite(value) ? format_text("%2d", round_half_up(value)) : dash(2);
}

std::string ratio_number(double value) {
    return std::isfinite(value) ? format_text("%5.3f", value) : dash(5);
}

std::string text_of(const RowBlock& block) {
    std::string text = block.title + block.rule;
    for (const ValueRow& row : block.rows) {
        text += row.label + (row.is_share ? "= 1/" : "= ") + row.number + row.unit + row.remark + '\n';
    }
    return text;
}

std::string html_of(const RowBlock& block, bool is_first) {
    std::string html = std::string("<tr><td colspan=5>") + (is_first ? "<b>" : "<br><b>") +
                       html_text(without_end(block.title, "\n")) + "</b><br></td></tr>\n";
    for (const ValueRow& row : block.rows) {
        html += "<tr><td>" + html_text(without_end(row.label, " ")) + "</td><td>=</td><td>" +
                (row.is_share ? "1/" : "") + html_text(row.number) + "</td><td>" + html_text(row.unit) +
                "</td><td>" + html_text(row.remark) + "</td></tr>\n";
    }
    return html;
}

std::string html_paragraph(const std::string& text) {
    return "<p>" + html_text(without_end(text, "\n")) + "</p>\n";
}

}  // namespace zemora
