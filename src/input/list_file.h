#pragma once
/// `ListofImages`: the text file that names the objects of a run and says what became of each.

#include <optional>
#include <string>

#include "config/notes.h"
#include "input/collect_options.h"
#include "input/image_list.h"
#include "input/list_line.h"
#include "numerics/result.h"
#include "platform/paths.h"

namespace zemora {

/// Absolute path of the list `name` of the image folder `root`; the file itself where the name is a link.
[[nodiscard]] std::string list_path_of(const std::string& root, const std::string& name);

/// The names of a run on their way into a new list. Nothing of the old list is touched before `store`.
class ListedNames {
public:
    ListedNames(const CollectOptions& options, Notes& notes);
    /// In the order in which the names are to stand in the line.
    void add_stereo(const std::string& file);
    void add_pair(const std::string& left, const std::string& right);
    /// Writes the list where `WriteDataBase` wants one and there is a name for it. An old list that is
    /// worth keeping gets another name first. A run on one named object keeps the old list and adds its
    /// line. Fails for the run when the list cannot be written, or is one of the named pictures.
    [[nodiscard]] Result<void> store();

private:
    void add(const std::string& left, const std::string& right);
    [[nodiscard]] bool holds_named_object(const std::string& old_text) const;
    [[nodiscard]] Result<void> keep_old_list(const std::string& path, const std::string& old_text) const;
    [[nodiscard]] Result<void> write(const std::string& path, const std::string& text) const;
    [[nodiscard]] Failure no_list(const std::string& path, const std::string& reason) const;

    const CollectOptions& options_;
    Notes& notes_;
    bool wanted_;
    std::optional<FileIdentity> old_list_;
    bool is_picture_ = false;  ///< The name of the list leads to one of the files.
    std::string lines_;
    std::string first_left_;
    std::string first_right_;
};

/// What was found in a list.
struct ListedObjects {
    int named = 0;            ///< Lines that name an object.
    int left_name_width = 0;  ///< Characters of the longest left name.
};

/// `InputMode` 10: the objects of the list, without those that its marks rule out, with their values
/// where the run applies stored ones. Fails for the run when the list cannot be opened or a line's quotes are
/// wrong.
[[nodiscard]] Result<ListedObjects> read_listed_objects(const CollectOptions& options, Notes& notes,
                                                        ImageList& list);

/// What became of an object, for its line.
struct ListResult {
    std::string status;                              ///< "OK", "IM" or "QU".
    const StoredCorrectionRecord* values = nullptr;  ///< With "OK".
    /// The values of the views in the other order, for a line that names the right one first.
    const StoredCorrectionRecord* reversed_values = nullptr;
};

/// Writes the result behind the names of the object's line, in place of an older result. The names are
/// compared as files, in any order; of equal lines the first without a result is taken. `right` is empty
/// for a stereo file. `root` is the image folder. A failure is reported and leaves the list as it was.
void update_database_line(const std::string& root, Notes& notes, const std::string& list_path,
                          const std::string& left, const std::string& right, const ListResult& result);

}  // namespace zemora
