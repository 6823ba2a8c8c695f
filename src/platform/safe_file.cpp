#include "platform/safe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/new_file.h"
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

}  // namespace

std::string write_file_whole(const std::string& path, std::span<const std::uint8_t> bytes) {
    std::string reason;
    const unsigned kept_mode = permissions_to_keep(path, reason);
    if (!reason.empty()) {
        return reason;
    }
    remove_left_overs(folder_with_slash(path));
    for (const auto kind : {NewFile::Kind::nameless, NewFile::Kind::hidden}) {
        // A hidden name never outlives the run.
        std::optional<NoEndSignals> hold;
        if (kind == NewFile::Kind::hidden) {
            hold.emplace();
        }
        NewFile file(path, kind);
        if (!file.is_open()) {
            continue;
        }
        if (!file.write_at(0, bytes)) {
            return system_reason(errno);
        }
        if (kept_mode != 0) {
            file.set_permissions(kept_mode);
        }
        if (kind == NewFile::Kind::nameless) {
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
