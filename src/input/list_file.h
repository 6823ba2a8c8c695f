#pragma once
/// `ListofImages`: a text file with a line for each object of a run and what became of it.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/parameter_set.h"
#include "config/voice.h"
#include "input/image_list.h"
#include "input/stored_record.h"

namespace zemora {

/// Absolute path of the list.
[[nodiscard]] std::string list_path_of(const ParameterSet& parameters);

/// One line of the list in its parts.
struct ListLine {
    std::string left;    ///< Or the stereo name; as written, "\" as "/".
    std::string right;   ///< Empty for a stereo file.
    std::string status;  ///< "", "OK", "IM", "QU", or some other word.
    int item_count = 0;  ///< Status and values: 36 when whole.
    StoredCorrectionRecord values = empty_record();
    std::size_t names_end = 0;  ///< Bytes of the line up to the end of its names.
};

enum class LineFault {
    none,
    no_name,       ///< A line of a stereo list whose only quote stands at its start.
    wrong_quotes,  ///< A line of a pair list with a quote missing or a name too short.
};

/// Reads a line of more than four characters.
[[nodiscard]] LineFault parse_list_line(std::string_view text, bool two_files, ListLine& line);

/// The names of an object as a line of the list, without line end; nothing for a name that cannot stand
/// in it (with a double quote, a backslash or a line end).
[[nodiscard]] std::optional<std::string> names_line(const std::string& root, const std::string& left,
                                                    const std::string& right);

/// The names of a run on their way into a new list. Nothing of the old list is touched before `store`.
class ListedNames {
public:
    ListedNames(const ParameterSet& parameters, const Voice& voice);
    void add_stereo(const std::string& file);
    void add_pair(const std::string& left, const std::string& right);
    /// Writes the list, where `WriteDataBase` wants one: an old one that is worth keeping gets another
    /// name first. A run on one named pair keeps the old list and adds its line. Ends the run with
    /// code 1 when the list cannot be written.
    void store();

private:
    void add(const std::string& left, const std::string& right);
    [[nodiscard]] bool keep_old_list(const std::string& old_text) const;
    void add_to_old_list(std::string text) const;

    const ParameterSet& parameters_;
    const Voice& voice_;
    bool wanted_;
    std::string lines_;
    std::string only_left_;  ///< Of a run on one named pair.
    std::string only_right_;
};

/// `InputMode` 10: the objects of the list, without those that its marks rule out. Ends the run with
/// code 1 when the list cannot be opened or a line's quotes are wrong. Returns the number of lines.
int read_listed_objects(const ParameterSet& parameters, const Voice& voice, ImageList& list,
                        int& left_name_width);

/// What became of an object, for its line.
struct ListResult {
    std::string status;                              ///< "OK", "IM" or "QU".
    const StoredCorrectionRecord* values = nullptr;  ///< With "OK".
};

/// Writes the result behind the names of the object's line. The names are compared as files, in any
/// order. A failure leaves the list as it was and is told.
void update_database_line(const ParameterSet& parameters, const Voice& voice, const std::string& list_path,
                          const std::string& left, const std::string& right, const ListResult& result);

}  // namespace zemora
