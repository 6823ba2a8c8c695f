#pragma once
/// A folder for one test, and the text files in it.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace zemora::test {

/// Made below the system's folder for temporary files and removed with all that is in it.
class TestFolder {
public:
    TestFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "ztest-XXXXXX";
        path_ = mkdtemp(pattern.data());
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    ~TestFolder() {
        std::error_code error;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path_, error)) {
            if (entry.is_directory(error)) {  // what a test made unwritable
                std::filesystem::permissions(entry.path(), std::filesystem::perms::owner_all, error);
            }
        }
        std::filesystem::remove_all(path_, error);
    }
    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string operator/(const std::string& name) const { return path_ + '/' + name; }

    /// Names of all plain files below the folder, relative to it, hidden ones too.
    [[nodiscard]] std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path_)) {
            if (!entry.is_directory()) {
                names.insert(entry.path().lexically_relative(path_).string());
            }
        }
        return names;
    }

private:
    std::string path_;
};

inline void write_text(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string read_text(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace zemora::test
