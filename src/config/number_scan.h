#pragma once
/// Numbers in texts, read and written as in the "C" locale whatever the user's locale says.

#include <optional>
#include <string>
#include <string_view>

namespace zemora {

/// The integer at the beginning of the text, blanks before it and anything behind it left aside;
/// beyond the range of int the nearest limit. Nothing when the text begins with no integer.
[[nodiscard]] std::optional<int> scan_integer(std::string_view text);

/// The real number at the beginning of the text, likewise. "nan" and "inf" are no numbers; beyond the
/// range of double it is the greatest or the least one.
[[nodiscard]] std::optional<double> scan_real(std::string_view text);

/// Whether the text is one whole number, or one real number, and nothing else but blanks in front.
[[nodiscard]] bool is_integer(std::string_view text);
[[nodiscard]] bool is_real(std::string_view text);

[[nodiscard]] std::string number_text(int value);
/// The shortest text that reads back as the same value, e.g. "0.8".
[[nodiscard]] std::string number_text(float value);
[[nodiscard]] std::string number_text(double value);

}  // namespace zemora
