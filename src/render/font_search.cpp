#include "render/font_search.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string_view>
#include <utility>

#include "config/number_scan.h"
#include "platform/child_process.h"
#include "platform/console.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr const char* kDefaultFont = "resource/zemora.fnt";
constexpr int kItalic = 1;  // styles
constexpr int kBold = 10;

bool is_bold(int style) {
    return style == kBold || style == kBold + kItalic;
}
bool is_italic(int style) {
    return style == kItalic || style == kBold + kItalic;
}

struct FoundFont {
    std::string file;
    std::string families;  ///< All names of the family, separated by commas.
    bool is_bold = false;
    bool is_italic = false;
};

/// The name with the characters that mean something in a font pattern taken as they are.
std::string as_pattern(const std::string& name, int style) {
    std::string pattern;
    for (const char c : name) {
        if (std::string_view("\\-:,=").find(c) != std::string_view::npos) {
            pattern += '\\';
        }
        pattern += c;
    }
    return pattern + ":scalable=true" + (is_bold(style) ? ":bold" : "") + (is_italic(style) ? ":italic" : "");
}

/// What the font configuration gives for a name; it always gives something.
FoundFont matched_font(const std::string& name, int style) {
    constexpr double kDemiBold = 180.0;  // weights and slants of the font configuration
    constexpr double kSlanted = 100.0;
    const ChildResult result =
        run_child({"fc-match", "-f", "%{file}\n%{weight}\n%{slant}\n%{family}", as_pattern(name, style)});
    std::string text(result.output.begin(), result.output.end());
    const auto take_line = [&text] {
        const std::string line = text.substr(0, text.find('\n'));
        text.erase(0, std::min(line.size() + 1, text.size()));
        return line;
    };
    if (!result.succeeded()) {
        return {};
    }
    FoundFont found;
    found.file = take_line();
    found.is_bold = scan_real(take_line()).value_or(0.0) >= kDemiBold;
    found.is_italic = scan_real(take_line()).value_or(0.0) >= kSlanted;
    found.families = text;
    return found;
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

/// The font for a name that is known to the font configuration, by itself or by a substitute; a name that
/// gets what any unknown name gets is not. Without a file when there is none.
ChosenFont configured_font(const std::string& name, int style) {
    static const std::string kUnknown = "no font has this name";
    const FoundFont found = matched_font(name, style);
    if (!found.file.empty() && !has_family(found, name) && found.file == matched_font(kUnknown, style).file) {
        return {};
    }
    const bool is_styled = is_bold(style) || is_italic(style);
    const int left =
        (is_bold(style) && !found.is_bold ? kBold : 0) + (is_italic(style) && !found.is_italic ? kItalic : 0);
    return {found.file, is_styled ? left : style};
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

ChosenFont choose_font(const std::string& name, int style, Notes& notes) {
    if (is_absolute(name) && file_exists(name)) {
        return {name, style};
    }
    if (std::string file = windows_font(name); !file.empty()) {
        return {file, style};
    }
    // The configuration is asked once a run for each name and style, by whichever thread comes first.
    static std::mutex one_at_a_time;
    const std::lock_guard guard(one_at_a_time);
    static std::map<std::pair<std::string, int>, ChosenFont> asked;
    const auto [row, is_new] = asked.try_emplace({name, style});
    if (is_new) {
        row->second = configured_font(name, style);
        if (row->second.file.empty()) {
            notes.print(format_text(
                notes.messages().either(
                    {"The font '%s' was not found, the default font is used.\n",
                     "Die Schrift '%s' wurde nicht gefunden, die Standardschrift wird benutzt.\n"}),
                printable(name).c_str()));
        }
    }
    return row->second.file.empty() ? ChosenFont{default_font(), style} : row->second;
}

std::string font_of_letter(char32_t letter) {
    static std::mutex one_at_a_time;
    const std::lock_guard guard(one_at_a_time);
    static std::map<char32_t, std::string> asked;
    const auto [row, is_new] = asked.try_emplace(letter);
    if (is_new) {
        const std::string pattern = format_text(":charset=%x:scalable=true", static_cast<unsigned>(letter));
        const ChildResult result = run_child({"fc-match", "-f", "%{file}", pattern});
        if (result.succeeded()) {
            row->second.assign(result.output.begin(), result.output.end());
        }
    }
    return row->second;
}

}  // namespace zemora
