#pragma once
/// Paths as text: "/" separates, a backslash of a setting counts as one, components are joined whole.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zemora {

/// Every backslash becomes "/"; for path-valued settings, options, list lines and arguments.
[[nodiscard]] std::string with_slashes(std::string_view path);

[[nodiscard]] bool is_absolute(std::string_view path);
/// "X:" or "X:/...": a drive of another system, which has no meaning here.
[[nodiscard]] bool has_drive(std::string_view path);

/// The part before the last "/" ("/" for a name in the root, empty without any "/").
[[nodiscard]] std::string folder_of(std::string_view path);
/// The part behind the last "/".
[[nodiscard]] std::string bare_name_of(std::string_view path);
/// The suffix with its dot, of the bare name; empty without one. A leading dot starts no suffix.
[[nodiscard]] std::string suffix_of(std::string_view path);
[[nodiscard]] std::string without_suffix(std::string_view path);
[[nodiscard]] std::string lower_case(std::string_view text);

/// `path` against `base`: "." and ".." as whole components, each ".." one level up; an absolute path
/// replaces the base; "~/" is the home folder. Repeated and trailing separators go.
[[nodiscard]] std::string join_path(std::string_view base, std::string_view path);

/// The components of `path` below `root`, both absolute; `path` itself when it does not lie there.
[[nodiscard]] std::string relative_to(std::string_view path, std::string_view root);

[[nodiscard]] bool is_directory(const std::string& path);
/// Whether `path` can be opened for reading.
[[nodiscard]] bool file_exists(const std::string& path);
/// The system's reason why `path` is no file that can be read; empty when it can be.
[[nodiscard]] std::string why_unreadable(const std::string& path);
/// What makes two names one file.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};
[[nodiscard]] std::optional<FileIdentity> identity_of(const std::string& path);
/// Whether both name one file.
[[nodiscard]] bool is_same_file(const std::string& a, const std::string& b);
/// Whether a file or folder belongs to the user and nobody else can write it.
[[nodiscard]] bool is_private_to_user(const std::string& path);
/// Makes the whole chain of folders; true when it stands at the end. Otherwise false, with the
/// system's reason in `reason`.
[[nodiscard]] bool make_folders(const std::string& path, std::string& reason);

[[nodiscard]] std::string working_directory();
/// Folder of the running executable, found from the system.
[[nodiscard]] std::string program_directory();
/// A data file of the program: in its folder, else in ../share/zemora; empty when it is in neither.
[[nodiscard]] std::string find_data_file(const std::string& name);
/// A page of the documentation: in the folder doc of the program's folder, else in ../share/doc/zemora; empty
/// when it is in neither.
[[nodiscard]] std::string find_document(const std::string& name);
/// Where the program keeps files of its own: its folder when that can be written, else
/// $XDG_STATE_HOME/zemora or ~/.local/state/zemora, which is made.
[[nodiscard]] std::string state_directory();

}  // namespace zemora
