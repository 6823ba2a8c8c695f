#include "render/font_search.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <string_view>

#include "platform/child_process.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr const char* kDefaultFont = "resource/zemora.fnt";

struct FoundFont {
    std::string file;
    std::string families;  ///< All names of the family, separated by commas.
};

/// The name with the characters that mean something in a font pattern taken as they are.
std::string as_pattern(const std::string& name) {
    std::string pattern;
    for (const char c : name) {
        if (std::string_view("\\-:,=").find(c) != std::string_view::npos) {
            pattern += '\\';
        }
        pattern += c;
    }
    return pattern + ":scalable=true";
}

/// What the font configuration gives for a name; it always gives something.
FoundFont matched_font(const std::string& name) {
    const ChildResult result = run_child({"fc-match", "-f", "%{file}\n%{family}", as_pattern(name)});
    const std::string text(result.output.begin(), result.output.end());
    const std::size_t line_end = text.find('\n');
    if (!result.succeeded() || line_end == std::string::npos) {
        return {};
    }
    return {text.substr(0, line_end), text.substr(line_end + 1)};
}

/// Lower case without blanks, for names that are written in several ways.
std::string bare(std::string_view name) {
    std::string letters = lower_case(name);
    letters.erase(
        std::remove_if(letters.begin(), letters.end(), [](unsigned char c) { return std::isspace(c) != 0; }),
        letters.end());
    return letters;
}

bool has_family(const FoundFont& font, const std::string& name) {
    return (',' + bare(font.families) + ',').find(',' + bare(name) + ',') != std::string::npos;
}

/// The file for a name that is known to the font configuration, by itself or by a substitute; a name that
/// gets what any unknown name gets is not. Empty without one.
std::string configured_font(const std::string& name) {
    static const std::string kUnknown = "no font has this name";
    const FoundFont found = matched_font(name);
    if (found.file.empty() || has_family(found, name)) {
        return found.file;
    }
    return found.file == matched_font(kUnknown).file ? std::string() : found.file;
}

std::string windows_font(const std::string& name) {
    const char* root = std::getenv("windir");
    if (root == nullptr || *root == '\0') {
        return {};
    }
    const std::string file = join_path(working_directory(), with_slashes(root) + "/fonts/" + name + ".ttf");
    return file_exists(file) ? file : std::string();
}

}  // namespace

std::string default_font() {
    const std::string file = find_data_file(kDefaultFont);
    return file.empty() ? program_directory() + '/' + kDefaultFont : file;
}

std::string font_file(const std::string& name, const Voice& voice) {
    if (is_absolute(name) && file_exists(name)) {
        return name;
    }
    if (std::string file = windows_font(name); !file.empty()) {
        return file;
    }
    // The configuration is asked once a run for each name.
    static std::map<std::string, std::string> asked;
    const auto [row, is_new] = asked.try_emplace(name);
    if (is_new) {
        row->second = configured_font(name);
        if (row->second.empty()) {
            voice.print(
                format_text(voice.messages().either(
                                "The font '%s' was not found, the default font is used.\n",
                                "Die Schrift '%s' wurde nicht gefunden, die Standardschrift wird benutzt.\n"),
                            printable(name).c_str()));
        }
    }
    return row->second.empty() ? default_font() : row->second;
}

}  // namespace zemora
