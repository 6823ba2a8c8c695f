#pragma once
/// `ListofImages`: the text file that names the objects of a run and says what became of each.

#include <optional>
#include <string>

#include "config/parameter_set.h"
#include "config/voice.h"
#include "input/image_list.h"
#include "input/list_line.h"
#include "platform/paths.h"

namespace zemora {

/// Absolute path of the list; the file itself where the name is a link.
[[nodiscard]] std::string list_path_of(const ParameterSet& parameters);

/// The names of a run on their way into a new list. Nothing of the old list is touched before `store`.
class ListedNames {
public:
    ListedNames(const ParameterSet& parameters, Voice& voice);
    /// In the order in which the names are to stand in the line.
    void add_stereo(const std::string& file);
    void add_pair(const std::string& left, const std::string& right);
    /// Writes the list where `WriteDataBase` wants one and there is a name for it. An old list that is
    /// worth keeping gets another name first. A run on one named object keeps the old list and adds its
    /// line. Ends the run with code 1 when the list cannot be written, or is one of the named pictures.
    void store();

private:
    void add(const std::string& left, const std::string& right);
    [[nodiscard]] bool holds_named_object(const std::string& old_text) const;
    void keep_old_list(const std::string& path, const std::string& old_text) const;
    void write(const std::string& path, const std::string& text) const;
    [[noreturn]] void end_without_list(const std::string& path, const std::string& reason) const;

    const ParameterSet& parameters_;
    Voice& voice_;
    bool wanted_;
    std::optional<FileIdentity> old_list_;
    bool is_picture_ = false;  ///< The name of the list leads to one of the files.
    std::string lines_;
    std::string first_left_;
    std::string first_right_;
};

/// `InputMode` 10: the objects of the list, without those that its marks rule out, with their values
/// where the run applies stored ones. Ends the run with code 1 when the list cannot be opened or a line's
/// quotes are wrong. Returns the number of lines that name an object.
int read_listed_objects(const ParameterSet& parameters, Voice& voice, ImageList& list, int& left_name_width);

/// What became of an object, for its line.
struct ListResult {
    std::string status;                              ///< "OK", "IM" or "QU".
    const StoredCorrectionRecord* values = nullptr;  ///< With "OK".
    /// The values of the views in the other order, for a line that names the right one first.
    const StoredCorrectionRecord* reversed_values = nullptr;
};

/// Writes the result behind the names of the object's line, in place of an older result. The names are
/// compared as files, in any order; of equal lines the first without a result is taken. `right` is empty
/// for a stereo file. A failure leaves the list as it was and is told.
void update_database_line(const ParameterSet& parameters, Voice& voice, const std::string& list_path,
                          const std::string& left, const std::string& right, const ListResult& result);

}  // namespace zemora
