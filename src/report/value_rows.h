#pragma once
/// The rows that a report is made of. Console, text and HTML report are written from the same rows.

#include <string>
#include <vector>

namespace zemora {

/// One value with its words.
struct ValueRow {
    std::string label;      ///< Filled with blanks up to the equal sign; blanks alone where the row goes on.
    std::string number;     ///< Formatted, filled with blanks at the left.
    std::string unit = {};  ///< With the blank in front.
    std::string remark = {};
    bool is_share = false;  ///< One of so many parts: "1/" stands in front of the number.
};

/// Rows below a title that is underlined by a rule.
struct RowBlock {
    std::string title;
    std::string rule;
    std::vector<ValueRow> rows;
};

// The numbers of rows. A value that is no finite number is a dash as wide as the number.
[[nodiscard]] std::string measured_number(double value);  ///< Two decimals in 7 columns.
[[nodiscard]] std::string rounded_number(double value);   ///< Rounded half up, in 4 columns.
[[nodiscard]] std::string share_number(double value);     ///< Rounded half up, in 2 columns.
[[nodiscard]] std::string ratio_number(double value);     ///< Three decimals in 5 columns.

/// The block for console and text report: title and rule, each with its line end, and a line a row.
[[nodiscard]] std::string text_of(const RowBlock& block);

/// The block as rows of an HTML table of five columns. Titles behind the first keep a distance.
[[nodiscard]] std::string html_of(const RowBlock& block, bool is_first);

/// A text alone in an HTML paragraph; line ends behind it fall away.
[[nodiscard]] std::string html_paragraph(const std::string& text);

}  // namespace zemora
