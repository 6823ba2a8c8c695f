#pragma once
/// Files that nobody sees under their final name before they are whole.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace zemora {

/// Removes the hidden files that killed runs have left in a folder, once a folder.
void remove_left_overs(const std::string& folder);

/// The folder of `path` with the slash behind it; "./" without any.
[[nodiscard]] std::string folder_with_slash(const std::string& path);

/// The system's reason of an error number.
[[nodiscard]] std::string system_reason(int error);

/// A new file without a name where the file system can do that, so that even a killed process leaves nothing,
/// else under a hidden one. It can be read and written at any place, and goes with its object unless it was
/// published. Calls that fail leave the system's reason in `errno`.
class NewFile {
public:
    enum class Kind {
        nameless,  ///< May turn out not to get a name.
        hidden,    ///< Stands for a moment only: the caller holds end signals back.
        lasting,   ///< Nameless where that will get a name, else hidden and removed by end signals as well.
    };
    /// In the folder of `path`; look at `is_open`.
    NewFile(const std::string& path, Kind kind);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    [[nodiscard]] bool is_open() const { return file_ >= 0; }
    /// All of it, or false.
    [[nodiscard]] bool write_at(std::int64_t place, std::span<const std::uint8_t> bytes);
    /// Bytes read, 0 at the end, or -1.
    [[nodiscard]] std::int64_t read_at(std::int64_t place, std::span<std::uint8_t> bytes);
    [[nodiscard]] std::int64_t size() const;
    void set_permissions(unsigned mode);
    /// Gives a nameless file its hidden name; true when it has one.
    [[nodiscard]] bool give_name();
    /// Closes the file, which has a name, and renames it to `path`.
    [[nodiscard]] bool publish(const std::string& path);

private:
    [[nodiscard]] int open_nameless() const;
    [[nodiscard]] int open_hidden();
    [[nodiscard]] bool close_now();
    void forget_name();

    std::string folder_;
    std::string hidden_;
    int file_ = -1;
    int slot_ = -1;  ///< Among the names that end signals remove.
};

/// Publishes a lasting file as `path`, which hands its permissions on where it stands already. Returns an
/// empty text, or the system's reason of the failure.
[[nodiscard]] std::string publish_whole(NewFile& file, const std::string& path);

/// The permissions that a new file of that name takes over, 0 where none stands; `reason` is set where
/// something else than a plain file has the name.
[[nodiscard]] unsigned permissions_to_keep(const std::string& path, std::string& reason);

/// Removes the lasting files that have hidden names; async-signal-safe.
void remove_hidden_files();

}  // namespace zemora
