#include "platform/new_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): the system's, with kill
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>

#include "platform/process_end.h"

namespace zemora {

namespace {

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

/// A hidden file stands for a moment only, or is written again and again; one that a process of this name on
/// another machine is writing is younger than this.
constexpr time_t kLeftOverAge = 60;  // seconds

bool is_left_over(int folder, const char* name) {
    const pid_t maker = maker_of(name);
    struct stat status = {};
    return maker != 0 && kill(maker, 0) != 0 && errno == ESRCH &&
           fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode) &&
           status.st_uid == geteuid() && status.st_mtime + kLeftOverAge < std::time(nullptr);
}

constexpr mode_t kReadWriteAll = 0666;  // less what the user's mask takes away
constexpr mode_t kPermissionBits = 0777;
constexpr int kTries = 100;  // names that a crashed run may have left

/// Names of lasting hidden files where a signal handler may read them; a slot that is taken has a name.
struct HiddenSlot {
    std::atomic<int> state{0};  ///< 0 free, 1 being filled, 2 taken.
    pid_t owner = 0;
    std::array<char, 4096> name{};
};
std::array<HiddenSlot, 16> g_slots;

/// -1 where all are taken or the name is too long.
int take_slot(const std::string& name) {
    static const int g_at_exit = std::atexit(remove_hidden_files);
    (void)g_at_exit;
    for (std::size_t i = 0; i < g_slots.size() && name.size() < g_slots[i].name.size(); ++i) {
        int free = 0;
        if (g_slots[i].state.compare_exchange_strong(free, 1)) {
            std::strcpy(g_slots[i].name.data(), name.c_str());
            g_slots[i].owner = getpid();
            g_slots[i].state = 2;
            return static_cast<int>(i);
        }
    }
    return -1;
}

/// Whether a nameless file in the folder can get a name later; needs a trial, as a name can be given once.
bool can_name_later(const std::string& path) {
    const NoEndSignals hold;
    NewFile trial(path, NewFile::Kind::nameless);
    return trial.is_open() && trial.give_name();
}

}  // namespace

std::string system_reason(int error) {
    return std::strerror(error);
}

std::string folder_with_slash(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

void remove_left_overs(const std::string& folder) {
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

void remove_hidden_files() {
    for (HiddenSlot& slot : g_slots) {
        if (slot.state == 2 && slot.owner == getpid()) {
            unlink(slot.name.data());
        }
    }
}

NewFile::NewFile(const std::string& path, Kind kind) : folder_(folder_with_slash(path)) {
    if (kind == Kind::nameless || (kind == Kind::lasting && can_name_later(path))) {
        file_ = open_nameless();
    } else {
        const NoEndSignals hold;
        file_ = open_hidden();
        slot_ = kind == Kind::lasting && file_ >= 0 ? take_slot(hidden_) : -1;
    }
}

NewFile::~NewFile() {
    (void)close_now();
    if (!hidden_.empty()) {
        unlink(hidden_.c_str());
    }
    forget_name();
}

void NewFile::forget_name() {
    hidden_.clear();
    if (slot_ >= 0) {
        g_slots[static_cast<std::size_t>(slot_)].state = 0;
        slot_ = -1;
    }
}

int NewFile::open_nameless() const {
    return open(folder_.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kReadWriteAll);
}

int NewFile::open_hidden() {
    for (int i = 0; i < kTries; ++i) {
        const std::string name = hidden_name(folder_);
        const int number = open(name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, kReadWriteAll);
        if (number >= 0) {
            hidden_ = name;
        }
        if (number >= 0 || errno != EEXIST) {
            return number;
        }
    }
    return -1;
}

bool NewFile::close_now() {
    const bool well = file_ < 0 || close(file_) == 0;
    file_ = -1;
    return well;
}

bool NewFile::write_at(std::int64_t place, std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kLargestWrite = std::size_t{1} << 26;
    while (!bytes.empty()) {
        const ssize_t count = pwrite(file_, bytes.data(), std::min(bytes.size(), kLargestWrite), place);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            errno = count == 0 ? ENOSPC : errno;
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
        place += count;
    }
    return true;
}

std::int64_t NewFile::read_at(std::int64_t place, std::span<std::uint8_t> bytes) {
    for (;;) {
        const ssize_t count = pread(file_, bytes.data(), bytes.size(), place);
        if (count >= 0 || errno != EINTR) {
            return count;
        }
    }
}

std::int64_t NewFile::size() const {
    struct stat status = {};
    return fstat(file_, &status) == 0 ? status.st_size : 0;
}

void NewFile::set_permissions(unsigned mode) {
    (void)fchmod(file_, mode);
}

bool NewFile::give_name() {
    const std::string source = "/proc/self/fd/" + std::to_string(file_);
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

bool NewFile::publish(const std::string& path) {
    if (!close_now() || rename(hidden_.c_str(), path.c_str()) != 0) {
        return false;
    }
    forget_name();
    return true;
}

unsigned permissions_to_keep(const std::string& path, std::string& reason) {
    struct stat old = {};
    if (stat(path.c_str(), &old) != 0) {
        return 0;
    }
    if (!S_ISREG(old.st_mode)) {
        reason = S_ISDIR(old.st_mode) ? system_reason(EISDIR) : "not a plain file";
    }
    return old.st_mode & kPermissionBits;
}

std::string publish_whole(NewFile& file, const std::string& path) {
    std::string reason;
    if (const unsigned mode = permissions_to_keep(path, reason); mode != 0) {
        file.set_permissions(mode);
    }
    const NoEndSignals hold;
    if (!reason.empty() || (file.give_name() && file.publish(path))) {
        return reason;
    }
    return system_reason(errno);
}

}  // namespace zemora
