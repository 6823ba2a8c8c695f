#pragma once
/// Walking through the lines of a list as they stand in its file, and finding the one of an object.

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "input/list_line.h"

namespace zemora {

/// The whole list as bytes; nothing, with the system's reason, when it cannot be read.
[[nodiscard]] std::optional<std::string> read_list(const std::string& path, std::string& reason);

/// Calls `visit(line, first byte)` for each line, without its line end and the byte order mark.
template <class Visit>
void for_each_line(std::string_view text, const Visit& visit) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    std::size_t start = text.substr(0, kByteOrderMark.size()) == kByteOrderMark ? kByteOrderMark.size() : 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        std::string_view line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        visit(line, start);
        start = end + 1;
    }
}

/// Where an object stands in a list.
struct LinePlace {
    std::size_t start = 0;      ///< First byte of the line.
    std::size_t names_end = 0;  ///< Byte behind its names.
    std::size_t end = 0;        ///< Byte behind the line, before its line end.
    bool is_reversed = false;   ///< The line names the right view first.
};

/// An object by its absolute names, `right` empty for a stereo file.
struct ObjectNames {
    std::string left;
    std::string right;
};

/// The line of the object: names are compared as absolute paths, in any order; byte by byte
/// first, then without regard to case and encoding. Of equal lines the first without a result.
[[nodiscard]] std::optional<LinePlace> find_object(std::string_view text, const std::string& root,
                                                   const ObjectNames& object);

}  // namespace zemora
