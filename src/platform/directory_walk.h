#pragma once
/// What a folder holds, in the order in which people expect it.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zemora {

struct FolderContents {
    std::vector<std::string> files;    ///< Bare names: plain files and links to plain files.
    std::vector<std::string> folders;  ///< Bare names; links to folders are not followed.
    std::string reason;                ///< The system's reason when the folder cannot be read.
    [[nodiscard]] bool is_readable() const { return reason.empty(); }
};

/// Both lists are sorted without regard to case, equal names by their bytes. Names with a leading dot,
/// pipes and devices are passed over.
[[nodiscard]] FolderContents read_folder(const std::string& folder);

/// The path of a name that stands in a folder. Unlike a name in a setting it means only itself, "~" too.
[[nodiscard]] std::string path_in(std::string_view folder, std::string_view name);

/// The text in lower case, of the letters A to Z and of the accented letters of Latin-1 in UTF-8.
[[nodiscard]] std::string fold_case(std::string_view text);

enum class NameMatch {
    exact,
    other_case,  ///< The only one that differs in nothing but case.
    none,
    several,  ///< More than one that differs in case: nobody can know which is meant.
};

struct FoundName {
    NameMatch match = NameMatch::none;
    std::string path;  ///< Of the file or folder, as the disk spells it; empty for none and several.
    [[nodiscard]] bool is_there() const { return !path.empty(); }
};

/// Finds files and folders whose names may differ in case from what is on disk. Remembers the folders
/// that it had to read for that.
class NameFinder {
public:
    /// `path` is absolute; each component is looked for exactly first.
    [[nodiscard]] FoundName find(const std::string& path);

private:
    struct Folder {
        std::string path;
        std::vector<std::pair<std::string, std::string>> names;  ///< Folded and real, sorted.
    };
    const Folder& contents_of(const std::string& folder);
    std::vector<Folder> read_;
};

}  // namespace zemora
