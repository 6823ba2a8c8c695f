#include "input/list_line.h"

#include <charconv>
#include <cmath>

#include "config/messages.h"
#include "config/text_lines.h"
#include "numerics/rounding.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr std::size_t kShortestRightName = 5;  // characters between quotes
constexpr auto npos = std::string_view::npos;

bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

/// Takes the next word off the front of `text`; empty at its end.
std::string_view take_word(std::string_view& text) {
    while (!text.empty() && is_blank(text.front())) {
        text.remove_prefix(1);
    }
    std::size_t length = 0;
    while (length < text.size() && !is_blank(text[length])) {
        ++length;
    }
    const std::string_view word = text.substr(0, length);
    text.remove_prefix(length);
    return word;
}

/// Status and values behind the names, as far as they can be read.
void read_result(std::string_view rest, ListLine& line) {
    line.values = {};
    line.values[kRecordRatio] = 1.0;
    line.status = utf8_text(take_word(rest));
    line.item_count = line.status.empty() ? 0 : 1;
    for (double& value : line.values) {
        std::string_view word = take_word(rest);
        if (word.size() > 1 && word.front() == '+') {
            word.remove_prefix(1);
        }
        double number = 0.0;
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
        if (word.empty() || error != std::errc() || end != word.data() + word.size() ||
            !std::isfinite(number)) {
            return;
        }
        value = number;
        ++line.item_count;
    }
}

LineFault find_quoted_pair(std::string_view raw, ListLine& line) {
    const std::size_t right_end = raw.rfind('"');
    const auto quote_before = [&](std::size_t place) {
        return place == 0 || place == npos ? npos : raw.rfind('"', place - 1);
    };
    const std::size_t right_start = quote_before(right_end);
    const std::size_t left_end = quote_before(right_start);
    const std::size_t left_start = quote_before(left_end);
    if (left_start == npos || right_end - right_start - 1 < kShortestRightName) {
        return LineFault::wrong_quotes;
    }
    line.left = with_slashes(raw.substr(left_start + 1, left_end - left_start - 1));
    line.right = with_slashes(raw.substr(right_start + 1, right_end - right_start - 1));
    line.names_end = right_end + 1;
    return LineFault::none;
}

LineFault find_quoted_name(std::string_view raw, ListLine& line) {
    const std::size_t start = raw.find('"');
    const std::size_t end = raw.rfind('"');
    if (start == end) {
        return LineFault::no_name;
    }
    line.left = with_slashes(raw.substr(start + 1, end - start - 1));
    line.names_end = end + 1;
    return LineFault::none;
}

void find_words(std::string_view raw, bool two_files, ListLine& line) {
    std::string_view rest = raw;
    line.left = with_slashes(take_word(rest));
    if (two_files) {
        line.right = with_slashes(take_word(rest));
    }
    line.names_end = raw.size() - rest.size();
}

/// Whether a name comes back from a list as it went in.
bool can_stand_in_list(const std::string& name) {
    return name.find_first_of("\"\\\n\r\t") == npos;
}

/// Whether a relative name comes back as one: folders may be called "~" or "C:".
bool leads_below_root(const std::string& name) {
    return !is_absolute(name) && !has_drive(name) && !name.starts_with("~/");
}

}  // namespace

LineFault parse_list_line(std::string_view raw, bool two_files, ListLine& line) {
    line = {};
    if (raw.find('"') == npos) {
        find_words(raw, two_files, line);
    } else if (const LineFault fault = two_files ? find_quoted_pair(raw, line) : find_quoted_name(raw, line);
               fault != LineFault::none) {
        return fault;
    }
    read_result(raw.substr(line.names_end), line);
    return LineFault::none;
}

std::optional<std::string> names_line(const std::string& root, const std::string& left,
                                      const std::string& right) {
    if (!can_stand_in_list(left) || !can_stand_in_list(right)) {
        return std::nullopt;
    }
    const std::string below_left = relative_to(left, root);
    const std::string below_right = relative_to(right, root);
    const bool relative = leads_below_root(below_left) && (right.empty() || leads_below_root(below_right));
    if (right.empty()) {
        return '"' + (relative ? below_left : left) + '"';
    }
    return '"' + (relative ? below_left : left) + "\"   \"" + (relative ? below_right : right) + '"';
}

StoredCorrectionRecord as_listed(const StoredCorrectionRecord& values) {
    ListLine line;
    read_result("OK" + values_text(values), line);
    return line.values;
}

std::string values_text(const StoredCorrectionRecord& values) {
    std::string text;
    for (std::size_t i = 0; i < kRecordFields; ++i) {
        const double value = std::isfinite(values[i]) ? values[i] : 0.0;
        text +=
            i == kRecordCroppOutput ? format_text(" %d", round_half_up(value)) : format_text(" %g", value);
    }
    return text;
}

}  // namespace zemora
