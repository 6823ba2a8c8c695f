#pragma once
/// One line of `ListofImages`: the names of an object, what became of it, its 35 values.

#include <optional>
#include <string>
#include <string_view>

#include "input/stored_record.h"

namespace zemora {

/// Lines of no more characters are passed over.
inline constexpr std::size_t kShortestListLine = 5;
/// Longer lines are garbage.
inline constexpr std::size_t kLongestListLine = 64 * 1024;

struct ListLine {
    std::string left;                 ///< Or the stereo name; in the bytes of the file, "\" as "/".
    std::string right;                ///< Empty for a stereo file.
    std::string status;               ///< "", "OK", "IM", "QU", or some other word.
    int item_count = 0;               ///< Status and values: 36 when whole.
    StoredCorrectionRecord values{};  ///< As far as they stand there; the ratio 1 without one.
    std::size_t names_end = 0;        ///< Bytes of the line up to the end of its names.
};

enum class LineFault {
    none,
    no_name,       ///< A line of a stereo list whose only quote stands at its start.
    wrong_quotes,  ///< A line of a pair list with a quote missing or a right name too short.
};

/// Reads a line as it stands in the file, without its line feed. Without any quote it is read as words.
[[nodiscard]] LineFault parse_list_line(std::string_view raw, bool two_files, ListLine& line);

/// The names of an object as a line, without line end; nothing for a name that cannot stand in a list
/// (with a double quote, a backslash or a line end). Names below `root` are written relative to it, of a
/// pair only when both are. `right` is empty for a stereo file.
[[nodiscard]] std::optional<std::string> names_line(const std::string& root, const std::string& left,
                                                    const std::string& right);

/// The values as they stand in a line: six significant digits, the last one as an integer.
[[nodiscard]] std::string values_text(const StoredCorrectionRecord& values);

/// The values as a later run reads them back from a line.
[[nodiscard]] StoredCorrectionRecord as_listed(const StoredCorrectionRecord& values);

}  // namespace zemora
