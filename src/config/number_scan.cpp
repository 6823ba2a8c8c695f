#include "config/number_scan.h"

#include <charconv>
#include <limits>

namespace zemora {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

/// Without the blanks and the plus sign in front, which `from_chars` does not take.
std::string_view number_start(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
    return plus ? text.substr(1) : text;
}

/// Whether all of the text is a number, of any size.
template <class T>
bool is_all_number(std::string_view text) {
    T value{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec != std::errc::invalid_argument && result.ptr == text.data() + text.size();
}

template <class T>
std::string shortest(T value) {
    char buffer[64];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
    return {buffer, end};
}

}  // namespace

std::optional<int> scan_integer(std::string_view text) {
    text = number_start(text);
    int value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        return text[0] == '-' ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    }
    return result.ec == std::errc() ? std::optional(value) : std::nullopt;
}

std::optional<double> scan_real(std::string_view text) {
    text = number_start(text);
    const std::size_t first = text.empty() || text[0] != '-' ? 0 : 1;
    if (first >= text.size() || std::string_view("0123456789.").find(text[first]) == std::string_view::npos) {
        return std::nullopt;
    }
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        const std::string_view number(text.data(), static_cast<std::size_t>(result.ptr - text.data()));
        if (number.find("e-") != std::string_view::npos || number.find("E-") != std::string_view::npos) {
            return 0.0;
        }
        return text[0] == '-' ? std::numeric_limits<double>::lowest() : std::numeric_limits<double>::max();
    }
    return result.ec == std::errc() ? std::optional(value) : std::nullopt;
}

bool is_integer(std::string_view text) {
    return is_all_number<int>(number_start(text));
}

bool is_real(std::string_view text) {
    return scan_real(text).has_value() && is_all_number<double>(number_start(text));
}

std::string number_text(int value) {
    return shortest(value);
}
std::string number_text(float value) {
    return shortest(value);
}
std::string number_text(double value) {
    return shortest(value);
}

}  // namespace zemora
