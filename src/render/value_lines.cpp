#include "render/value_lines.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace zemora {

namespace {

/// Takes the next word off `line`; empty at its end.
std::string_view take_word(std::string_view& line) {
    constexpr std::string_view kBlanks = " \t\v\f";
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
    line.remove_prefix(word.size());
    return word;
}

template <class T>
std::optional<T> whole_number(std::string_view word) {
    if (word.size() > 1 && word[0] == '+' && word[1] != '-') {
        word.remove_prefix(1);
    }
    T value{};
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size()) {
        return std::nullopt;
    }
    return value;
}

std::optional<float> whole_real(std::string_view word) {
    const auto value = whole_number<double>(word);
    if (!value || !(std::abs(*value) <= std::numeric_limits<float>::max())) {
        return std::nullopt;
    }
    return static_cast<float>(*value);
}

template <class T, class Scan>
int read_with(std::string_view line, std::span<T> values, Scan scan) {
    int count = 0;
    for (T& value : values) {
        const std::optional<T> number = scan(take_word(line));
        if (!number) {
            break;
        }
        value = *number;
        ++count;
    }
    return count;
}

}  // namespace

int read_values(std::string_view line, std::span<float> values) {
    return read_with(line, values, whole_real);
}

int read_values(std::string_view line, std::span<int> values) {
    return read_with(line, values, whole_number<int>);
}

}  // namespace zemora
