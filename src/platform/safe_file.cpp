#include "platform/safe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

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

std::string system_reason(int error) { return std::strerror(error); }

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

/// A name for a new file in the folder of `path`; the six X are for mkstemp.
std::string hidden_pattern(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return (slash == std::string::npos ? std::string() : path.substr(0, slash + 1)) + ".zemora-XXXXXX";
}

}  // namespace

std::string write_file_whole(const std::string& path, std::span<const std::uint8_t> bytes) {
    struct stat old = {};
    if (stat(path.c_str(), &old) == 0 && !S_ISREG(old.st_mode)) {
        return S_ISDIR(old.st_mode) ? system_reason(EISDIR) : "not a plain file";
    }
    std::string hidden = hidden_pattern(path);
    Descriptor file(mkostemp(hidden.data(), O_CLOEXEC));
    if (file.number() < 0) {
        return system_reason(errno);
    }
    const mode_t mask = umask(0);
    umask(mask);
    constexpr mode_t kReadWriteAll = 0666;
    const bool whole = write_all(file.number(), bytes) && fchmod(file.number(), kReadWriteAll & ~mask) == 0 &&
                       file.close_now();
    if (whole && rename(hidden.c_str(), path.c_str()) == 0) {
        return {};
    }
    const std::string reason = system_reason(errno);
    unlink(hidden.c_str());
    return reason;
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
