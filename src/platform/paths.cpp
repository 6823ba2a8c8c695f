#include "platform/paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <vector>

namespace zemora {

namespace {

std::string home_folder() {
    const char* home = std::getenv("HOME");
    return home == nullptr ? std::string() : home;
}

std::vector<std::string> components_of(std::string_view path) {
    std::vector<std::string> parts;
    while (!path.empty()) {
        const std::size_t slash = path.find('/');
        parts.emplace_back(path.substr(0, slash));
        path = slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
    }
    return parts;
}

std::string resolve_dots(std::string_view path) {
    const bool absolute = is_absolute(path);
    std::vector<std::string> kept;
    for (const std::string& part : components_of(path)) {
        if (part.empty() || part == ".") {
            continue;
        }
        if (part != "..") {
            kept.push_back(part);
        } else if (!kept.empty() && kept.back() != "..") {
            kept.pop_back();
        } else if (!absolute) {
            kept.push_back(part);
        }
    }
    std::string joined;
    for (const std::string& part : kept) {
        if (absolute || !joined.empty()) {
            joined += '/';
        }
        joined += part;
    }
    return joined.empty() ? (absolute ? "/" : ".") : joined;
}

}  // namespace

std::string with_slashes(std::string_view path) {
    std::string changed(path);
    std::replace(changed.begin(), changed.end(), '\\', '/');
    return changed;
}

bool is_absolute(std::string_view path) {
    return !path.empty() && path.front() == '/';
}

bool has_drive(std::string_view path) {
    return path.size() >= 2 && path[1] == ':' && std::isalpha(static_cast<unsigned char>(path[0])) != 0 &&
           (path.size() == 2 || path[2] == '/' || path[2] == '\\');
}

std::string folder_of(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) {
        return {};
    }
    return slash == 0 ? "/" : std::string(path.substr(0, slash));
}

std::string bare_name_of(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string suffix_of(std::string_view path) {
    const std::string name = bare_name_of(path);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? std::string() : name.substr(dot);
}

std::string without_suffix(std::string_view path) {
    return std::string(path.substr(0, path.size() - suffix_of(path).size()));
}

std::string lower_case(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return lower;
}

std::string join_path(std::string_view base, std::string_view path) {
    if (path == "~" || path.substr(0, 2) == "~/") {
        return resolve_dots(home_folder() + std::string(path.substr(1)));
    }
    if (is_absolute(path)) {
        return resolve_dots(path);
    }
    return resolve_dots(base.empty() ? std::string(path) : std::string(base) + '/' + std::string(path));
}

std::string relative_to(std::string_view path, std::string_view root) {
    if (root == "/" && is_absolute(path)) {
        return std::string(path.substr(1));
    }
    if (path.size() > root.size() + 1 && path.substr(0, root.size()) == root && path[root.size()] == '/') {
        return std::string(path.substr(root.size() + 1));
    }
    return std::string(path);
}

bool is_directory(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool file_exists(const std::string& path) {
    return !is_directory(path) && access(path.c_str(), R_OK) == 0;
}

std::string why_unreadable(const std::string& path) {
    if (is_directory(path)) {
        return std::strerror(EISDIR);
    }
    return access(path.c_str(), R_OK) == 0 ? std::string() : std::strerror(errno);
}

std::optional<FileIdentity> identity_of(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return FileIdentity{status.st_dev, status.st_ino};
}

bool is_same_file(const std::string& a, const std::string& b) {
    const auto first = identity_of(a);
    return first && first == identity_of(b);
}

bool is_private_to_user(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && status.st_uid == geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool make_folders(const std::string& path, std::string& reason) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (is_directory(path)) {
        return true;
    }
    reason = error ? error.message() : std::string(std::strerror(ENOTDIR));
    return false;
}

std::string working_directory() {
    std::error_code error;
    const std::string path = std::filesystem::current_path(error).string();
    return error ? "." : path;
}

std::string program_directory() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? working_directory() : program.parent_path().string();
}

namespace {

/// The name in one of two folders, seen from the program's own; empty when it is in neither.
std::string find_beside_program(const char* first, const char* second, const std::string& name) {
    for (const char* folder : {first, second}) {
        const std::string place = join_path(join_path(program_directory(), folder), name);
        if (file_exists(place)) {
            return place;
        }
    }
    return {};
}

}  // namespace

std::string find_data_file(const std::string& name) {
    return find_beside_program(".", "../share/zemora", name);
}

std::string find_document(const std::string& name) {
    return find_beside_program("doc", "../share/doc/zemora", name);
}

std::string state_directory() {
    const std::string folder = program_directory();
    if (access(folder.c_str(), W_OK) == 0) {
        return folder;
    }
    const char* state = std::getenv("XDG_STATE_HOME");
    const std::string base = state != nullptr && *state == '/' ? state : home_folder() + "/.local/state";
    std::string kept = base + "/zemora";
    std::string reason;
    return make_folders(kept, reason) ? kept : folder;
}

}  // namespace zemora
