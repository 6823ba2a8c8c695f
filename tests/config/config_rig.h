#pragma once
/// A voice whose console output is captured, and parameter files in a temporary place.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "config/parameter_file.h"

namespace zemora::testing {

/// A file below the test's temporary folder that goes with the object.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& content, const std::string& name = "settings.ini")
        : path_(::testing::TempDir() + "zemora_" + std::to_string(getpid()) + "_" + name) {
        std::ofstream(path_, std::ios::binary) << content;
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { std::filesystem::remove(path_); }
    [[nodiscard]] const std::string& path() const { return path_; }

private:
    std::string path_;
};

struct ReadBack {
    ParameterSet parameters;
    ParameterFileResult result;
    bool stopped = false;  ///< The file ends the run.
    std::string told;
    Language language_after = Language::english;
};

/// Reads the path with a catalogue that starts in `language` and keeps what was printed. Standard
/// input is put to its end, so that no wait stops the test.
inline ReadBack read_path(const std::string& path, Language language = Language::english,
                          const EarlySettings& early = {}) {
    (void)!std::freopen("/dev/null", "r", stdin);
    ReadBack back;
    Console console;
    MessageCatalogue messages(language);
    Voice voice(console, messages, back.parameters);
    ::testing::internal::CaptureStdout();
    const Result<ParameterFileResult> result = read_parameter_file(path, back.parameters, voice, early);
    back.stopped = !result && result.failure().ends_run;
    back.result = result ? *result : ParameterFileResult{};
    console.flush();
    back.told = ::testing::internal::GetCapturedStdout();
    back.language_after = messages.language();
    return back;
}

inline ReadBack read_content(const std::string& content, Language language = Language::english,
                             const EarlySettings& early = {}) {
    const TemporaryFile file(content);
    return read_path(file.path(), language, early);
}

inline int count_of(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

}  // namespace zemora::testing
