/// Writes the texts that are made from the table of parameters into the source tree: the sample
/// parameter files and the manual pages. Run after every change of the table.

#include <cstdio>
#include <span>
#include <string>
#include <vector>

#include "config/help_text.h"
#include "platform/safe_file.h"

namespace {

struct MadeText {
    const char* path;
    std::string text;
};

bool write_text(const std::string& path, const std::string& text) {
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    const std::string reason = zemora::write_file_whole(path, bytes);
    if (!reason.empty()) {
        std::fprintf(stderr, "zemora_texts: %s: %s\n", path.c_str(), reason.c_str());
    }
    return reason.empty();
}

}  // namespace

int main(int count, char** values) {
    const std::span<char*> arguments(values, static_cast<std::size_t>(count));
    if (arguments.size() != 2) {
        std::fprintf(stderr, "Usage: zemora_texts <source directory>\n");
        return 1;
    }
    using zemora::Language;
    const MadeText texts[] = {
        {"/resource/zemora.ini", zemora::sample_parameter_file(Language::english)},
        {"/resource/zemora_de.ini", zemora::sample_parameter_file(Language::german)},
        {"/doc/zemora.1", zemora::manual_page(Language::english)},
        {"/doc/zemora.de.1", zemora::manual_page(Language::german)},
    };
    for (const MadeText& made : texts) {
        if (!write_text(arguments[1] + std::string(made.path), made.text)) {
            return 1;
        }
    }
    return 0;
}
