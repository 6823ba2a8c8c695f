#include "platform/move_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace zemora {

bool name_is_taken(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

MoveOutcome move_without_replacing(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return {MoveResult::done, {}};
    }
    int error = errno;
    // A file system that does not know this kind of renaming gives the file a second name first.
    if (error == EINVAL || error == ENOSYS) {
        if (link(from.c_str(), to.c_str()) == 0) {
            if (unlink(from.c_str()) == 0) {
                return {MoveResult::done, {}};
            }
            error = errno;
            unlink(to.c_str());
        } else {
            error = errno;
        }
    }
    return {error == EEXIST ? MoveResult::target_exists : MoveResult::failed, std::strerror(error)};
}

MoveOutcome keep_under_other_name(const std::string& from, const std::string& to) {
    if (link(from.c_str(), to.c_str()) == 0) {
        return {MoveResult::done, {}};
    }
    if (errno == EEXIST) {
        return {MoveResult::target_exists, std::strerror(EEXIST)};
    }
    return move_without_replacing(from, to);
}

std::string target_of_link(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_symlink(path, error)) {
        return path;
    }
    const std::string target = std::filesystem::weakly_canonical(path, error).string();
    return error ? path : target;
}

}  // namespace zemora
