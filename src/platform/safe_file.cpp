#include "platform/safe_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): the system's, with kill
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>
#include <set>
#include <string_view>

#include "platform/process_end.h"

namespace zemora {

namespace {

/// Closes the descriptor at the end of its scope.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { (void)close_now(); }
    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] bool close_now() {
        const bool well = number_ < 0 || close(number_) == 0;
        number_ = -1;
        return well;
    }

private:
    int number_;
};

std::string system_reason(int error) {
    return std::strerror(error);
}

bool write_all(int file, std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kLargestWrite = std::size_t{1} << 26;
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), std::min(bytes.size(), kLargestWrite));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            errno = count == 0 ? ENOSPC : errno;
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

std::string folder_with_slash(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

constexpr std::string_view kHiddenStart = ".zemora-";

/// A name that no other call of this process gets.
std::string hidden_name(const std::string& folder) {
    static std::atomic<unsigned> counter{0};
    return folder + std::string(kHiddenStart) + std::to_string(getpid()) + '-' + std::to_string(counter++);
}

/// The process that made a hidden file; 0 for any other name.
pid_t maker_of(std::string_view name) {
    if (!name.starts_with(kHiddenStart)) {
        return 0;
    }
    name.remove_prefix(kHiddenStart.size());
    unsigned counter = 0;
    pid_t process = 0;
    const char* end = name.data() + name.size();
    const auto [dash, error] = std::from_chars(name.data(), end, process);
    if (error != std::errc() || process <= 0 || dash == end || *dash != '-') {
        return 0;
    }
    const auto [rest, counter_error] = std::from_chars(dash + 1, end, counter);
    return counter_error == std::errc() && rest == end ? process : 0;
}

/// A hidden file stands for a moment only; one that a process of this name on another machine is writing is
/// younger than this.
constexpr time_t kLeftOverAge = 60;  // seconds

bool is_left_over(int folder, const char* name) {
    const pid_t maker = maker_of(name);
    struct stat status = {};
    return maker != 0 && kill(maker, 0) != 0 && errno == ESRCH &&
           fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode) &&
           status.st_uid == geteuid() && status.st_mtime + kLeftOverAge < std::time(nullptr);
}

/// Removes what killed runs have left, once a folder.
void sweep(const std::string& folder) {
    static std::mutex mutex;
    static std::set<std::string> swept;
    const std::lock_guard lock(mutex);
    if (!swept.insert(folder).second) {
        return;
    }
    DIR* entries = opendir(folder.c_str());
    while (const dirent* entry = entries != nullptr ? readdir(entries) : nullptr) {
        if (is_left_over(dirfd(entries), entry->d_name)) {
            unlinkat(dirfd(entries), entry->d_name, 0);
        }
    }
    if (entries != nullptr) {
        closedir(entries);
    }
}

constexpr mode_t kReadWriteAll = 0666;  // less what the user's mask takes away
constexpr int kTries = 100;             // names that a crashed run may have left

/// A new file that nobody sees before it is whole: without a name where the file system can do that,
/// so that even a killed process leaves nothing, else under a hidden name.
class NewFile {
public:
    explicit NewFile(const std::string& path, bool nameless)
        : folder_(folder_with_slash(path)), file_(nameless ? open_nameless() : open_hidden()) {}
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile() {
        if (!hidden_.empty()) {
            unlink(hidden_.c_str());
        }
    }
    [[nodiscard]] bool is_open() const { return file_.number() >= 0; }
    [[nodiscard]] bool write(std::span<const std::uint8_t> bytes) { return write_all(file_.number(), bytes); }
    /// Gives a nameless file its hidden name.
    [[nodiscard]] bool give_name() {
        const std::string source = "/proc/self/fd/" + std::to_string(file_.number());
        for (int i = 0; i < kTries && hidden_.empty(); ++i) {
            const std::string name = hidden_name(folder_);
            if (linkat(AT_FDCWD, source.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
                hidden_ = name;
            } else if (errno != EEXIST) {
                break;
            }
        }
        return !hidden_.empty();
    }
    void set_permissions(mode_t mode) { (void)fchmod(file_.number(), mode); }
    [[nodiscard]] bool publish(const std::string& path) {
        if (!file_.close_now() || rename(hidden_.c_str(), path.c_str()) != 0) {
            return false;
        }
        hidden_.clear();
        return true;
    }

private:
    int open_nameless() { return open(folder_.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, kReadWriteAll); }
    int open_hidden() {
        for (int i = 0; i < kTries; ++i) {
            const std::string name = hidden_name(folder_);
            const int number = open(name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kReadWriteAll);
            if (number >= 0) {
                hidden_ = name;
            }
            if (number >= 0 || errno != EEXIST) {
                return number;
            }
        }
        return -1;
    }

    std::string folder_;
    std::string hidden_;
    Descriptor file_;
};

}  // namespace

std::string write_file_whole(const std::string& path, std::span<const std::uint8_t> bytes) {
    constexpr mode_t kPermissionBits = 0777;
    struct stat old = {};
    const bool replaces = stat(path.c_str(), &old) == 0;
    if (replaces && !S_ISREG(old.st_mode)) {
        return S_ISDIR(old.st_mode) ? system_reason(EISDIR) : "not a plain file";
    }
    sweep(folder_with_slash(path));
    for (const bool nameless : {true, false}) {
        // A hidden name never outlives the run.
        std::optional<NoEndSignals> hold;
        if (!nameless) {
            hold.emplace();
        }
        NewFile file(path, nameless);
        if (!file.is_open()) {
            continue;
        }
        if (!file.write(bytes)) {
            return system_reason(errno);
        }
        if (replaces) {
            file.set_permissions(old.st_mode & kPermissionBits);
        }
        if (nameless) {
            hold.emplace();
            if (!file.give_name()) {
                continue;
            }
        }
        return file.publish(path) ? std::string() : system_reason(errno);
    }
    return system_reason(errno);
}

std::optional<std::vector<std::uint8_t>> read_file_whole(const std::string& path, std::string& reason) {
    // A pipe would block the opening; only plain files are waited for.
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status = {};
    if (file.number() < 0 || fstat(file.number(), &status) != 0) {
        reason = system_reason(errno);
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        reason = S_ISDIR(status.st_mode) ? system_reason(EISDIR) : "not a plain file";
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(status.st_size));
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count = read(file.number(), bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            reason = system_reason(errno);
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return bytes;
}

}  // namespace zemora
