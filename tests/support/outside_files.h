#pragma once
/// Folders of real files that are no part of the project; tests that want them skip without.

#include <cstdlib>
#include <filesystem>
#include <string>

namespace zemora::test {

/// The folder that the environment variable names, else shared/data/`kind` beside the project or above
/// it; empty when there is none.
inline std::string outside_folder(const char* kind, const char* variable) {
    if (const char* set = std::getenv(variable)) {
        return set;
    }
    for (std::filesystem::path folder = std::filesystem::path(__FILE__).parent_path();
         folder != folder.root_path(); folder = folder.parent_path()) {
        if (std::filesystem::is_directory(folder / "shared/data" / kind)) {
            return folder / "shared/data" / kind;
        }
    }
    return {};
}

}  // namespace zemora::test
