#pragma once
/// Text files of the user as lines in UTF-8.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zemora {

struct TextLine {
    std::string text;            ///< UTF-8, without line end, tabs as blanks.
    std::size_t length_in_file;  ///< Bytes as they stand in the file, without line end.
};

/// The lines of a file: carriage returns and a byte order mark are dropped, a last line without line
/// end counts, a line that is no valid UTF-8 is taken as Windows-1252.
[[nodiscard]] std::vector<TextLine> text_lines(std::span<const std::uint8_t> bytes);

/// A piece of such a file as UTF-8: itself, or from Windows-1252 when it is no valid UTF-8.
[[nodiscard]] std::string utf8_text(std::string_view raw);

/// Without the blanks at both ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// Removes every blank from the text in place and returns the new length.
std::size_t del_str_blanks(std::string& text);

}  // namespace zemora
