#include "platform/directory_walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "platform/paths.h"

namespace zemora {

namespace {

enum class EntryKind { file, folder, other };

EntryKind kind_of(int folder, const dirent& entry) {
    if (entry.d_type == DT_REG) {
        return EntryKind::file;
    }
    struct stat status = {};
    if (fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return EntryKind::other;
    }
    if (S_ISDIR(status.st_mode)) {
        return EntryKind::folder;
    }
    const bool is_link_to_file =
        S_ISLNK(status.st_mode) && fstatat(folder, entry.d_name, &status, 0) == 0 && S_ISREG(status.st_mode);
    return is_link_to_file || S_ISREG(status.st_mode) ? EntryKind::file : EntryKind::other;
}

void sort_folded(std::vector<std::string>& names) {
    std::vector<std::pair<std::string, std::string>> keyed;
    keyed.reserve(names.size());
    for (std::string& name : names) {
        std::string folded = fold_case(name);
        keyed.emplace_back(std::move(folded), std::move(name));
    }
    std::sort(keyed.begin(), keyed.end());
    std::transform(keyed.begin(), keyed.end(), names.begin(),
                   [](auto& pair) { return std::move(pair.second); });
}

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};

bool is_there(const std::string& path) {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0;
}

}  // namespace

FolderContents read_folder(const std::string& folder) {
    FolderContents contents;
    const std::unique_ptr<DIR, FolderCloser> open(opendir(folder.c_str()));
    if (!open) {
        contents.reason = std::strerror(errno);
        return contents;
    }
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(open.get());
        if (entry == nullptr) {
            if (errno != 0) {
                contents.reason = std::strerror(errno);
            }
            break;
        }
        if (entry->d_name[0] == '.') {
            continue;
        }
        const EntryKind kind = kind_of(dirfd(open.get()), *entry);
        if (kind == EntryKind::file) {
            contents.files.emplace_back(entry->d_name);
        } else if (kind == EntryKind::folder) {
            contents.folders.emplace_back(entry->d_name);
        }
    }
    sort_folded(contents.files);
    sort_folded(contents.folders);
    return contents;
}

std::string path_in(std::string_view folder, std::string_view name) {
    std::string path(folder);
    if (path.empty() || path.back() != '/') {
        path += '/';
    }
    return path.append(name);
}

std::string fold_case(std::string_view text) {
    std::string folded = lower_case(text);
    // In UTF-8 the capitals U+00C0 to U+00DE are 0xC3 and 0x80 to 0x9E, their small letters 0x20 above;
    // 0x97 is the multiplication sign.
    constexpr char kLead = '\xC3';
    for (std::size_t i = 0; i + 1 < folded.size(); ++i) {
        const auto second = static_cast<unsigned char>(folded[i + 1]);
        if (folded[i] == kLead && second >= 0x80 && second <= 0x9E && second != 0x97) {
            folded[++i] = static_cast<char>(second + 0x20);
        }
    }
    return folded;
}

const NameFinder::Folder& NameFinder::contents_of(const std::string& folder) {
    constexpr std::size_t kRemembered = 8;  // folders; a list seldom changes between more
    const auto known =
        std::find_if(read_.begin(), read_.end(), [&](const Folder& f) { return f.path == folder; });
    if (known != read_.end()) {
        return *known;
    }
    if (read_.size() == kRemembered) {
        read_.erase(read_.begin());
    }
    Folder fresh{folder, {}};
    const FolderContents contents = read_folder(folder);
    for (const auto* names : {&contents.files, &contents.folders}) {
        for (const std::string& name : *names) {
            fresh.names.emplace_back(fold_case(name), name);
        }
    }
    std::sort(fresh.names.begin(), fresh.names.end());
    read_.push_back(std::move(fresh));
    return read_.back();
}

FoundName NameFinder::find(const std::string& path) {
    if (is_there(path)) {
        return {NameMatch::exact, path};
    }
    const std::string parent = folder_of(path);
    if (parent.empty() || parent == path) {
        return {};
    }
    FoundName folder = find(parent);
    if (!folder.is_there()) {
        return folder;
    }
    const std::string name = bare_name_of(path);
    const std::string exact = path_in(folder.path, name);
    if (folder.match == NameMatch::other_case && is_there(exact)) {
        return {NameMatch::other_case, exact};
    }
    const auto& names = contents_of(folder.path).names;
    const std::string folded = fold_case(name);
    const auto [first, last] =
        std::equal_range(names.begin(), names.end(), std::pair(folded, std::string()),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
    if (first == last) {
        return {};
    }
    if (last - first > 1) {
        return {NameMatch::several, {}};
    }
    return {NameMatch::other_case, path_in(folder.path, first->second)};
}

}  // namespace zemora
