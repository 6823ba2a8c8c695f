#include "platform/temp_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/paths.h"

namespace zemora {

namespace {

/// Copy of the folder's name that a signal handler may read.
std::array<char, 4096> g_folder_name{};
pid_t g_owner = 0;

/// Removes the folder with system calls alone: a signal may have come in the middle of an allocation.
void remove_named_folder() {
    if (g_folder_name[0] == '\0' || g_owner != getpid()) {
        return;
    }
    const int folder = open(g_folder_name.data(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    alignas(dirent64) std::array<char, 4096> block;
    for (;;) {
        const ssize_t size = folder < 0 ? 0 : getdents64(folder, block.data(), block.size());
        if (size <= 0) {
            break;
        }
        for (ssize_t at = 0; at < size;) {
            const auto* entry =
                reinterpret_cast<const dirent64*>(block.data() + at);  // NOLINT: the system's layout
            unlinkat(folder, entry->d_name, 0);                        // fails for "." and ".."
            at += entry->d_reclen;
        }
    }
    if (folder >= 0) {
        close(folder);
    }
    rmdir(g_folder_name.data());
    g_folder_name[0] = '\0';
}

std::string make_folder() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = base != nullptr && *base != '\0' ? base : "/tmp";
    pattern += "/zemora-XXXXXX";
    if (pattern.size() >= g_folder_name.size() || mkdtemp(pattern.data()) == nullptr) {
        return {};
    }
    std::strcpy(g_folder_name.data(), pattern.c_str());
    g_owner = getpid();
    std::atexit(remove_named_folder);
    return pattern;
}

}  // namespace

const std::string& temporary_folder() {
    static const std::string folder = make_folder();
    return folder;
}

std::string alias_in_temporary_folder(const std::string& path) {
    static std::atomic<unsigned> counter{0};
    const std::string alias = temporary_folder() + "/alias" + std::to_string(counter++) + suffix_of(path);
    return !temporary_folder().empty() && symlink(path.c_str(), alias.c_str()) == 0 ? alias : std::string();
}

void remove_temporary_folder() {
    remove_named_folder();
}

}  // namespace zemora
