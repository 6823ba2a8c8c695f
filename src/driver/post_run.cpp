#include "driver/post_run.h"

#include <chrono>
#include <sstream>
#include <thread>
#include <utility>

#include "platform/child_process.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "platform/temp_folder.h"

namespace zemora {

namespace {

/// 'text' with the quotes in it escaped: one word for the shell whatever it holds.
std::string shell_word(const std::string& text) {
    std::string word = "'";
    for (const char c : text) {
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return word + '\'';
}

/// What stands for a variable at the end of `before`, so that its value is one word there or a part of
/// the quoted text, and never a command.
std::string reference_behind(const std::string& before, const std::string& variable) {
    char quote = '\0';
    for (std::size_t i = 0; i < before.size(); ++i) {
        const char c = before[i];
        if (c == '\\' && quote != '\'') {
            ++i;
        } else if (quote == '\0' && (c == '\'' || c == '"')) {
            quote = c;
        } else if (c == quote) {
            quote = '\0';
        }
    }
    const std::string value = "${" + variable + '}';
    return quote == '"' ? value : (quote == '\'' ? "'\"" + value + "\"'" : '"' + value + '"');
}

std::string with_last_replaced(const std::string& line, const std::string& mark,
                               const std::string& variable) {
    const std::size_t place = line.rfind(mark);
    const std::string before = line.substr(0, place);
    return before + reference_behind(before, variable) + line.substr(place + mark.size());
}

/// The marks of a batch text and the variables that hold their names.
struct Mark {
    const char* mark;
    const char* variable;
};
constexpr const char* kAnaglyphVariable = "ZEMORA_CA";
constexpr const char* kStereoVariable = "ZEMORA_CS";
constexpr Mark kMarks[] = {{"#CA#", kAnaglyphVariable}, {"#CS#", kStereoVariable}, {"#CM#", kStereoVariable}};

bool is_remark(const std::string& line) {
    return lower_case(line.substr(0, 3)) == "rem";
}

}  // namespace

std::string batch_script(const std::string& text, const std::string& anaglyph_name,
                         const std::string& stereo_name) {
    std::string script = "rm -f -- \"$0\"\n";
    script += std::string(kAnaglyphVariable) + '=' + shell_word(anaglyph_name) + '\n';
    script += std::string(kStereoVariable) + '=' + shell_word(stereo_name) + '\n';
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line) && !line.empty();) {
        if (line.back() == '\r') {
            line.pop_back();
        }
        std::string written = line;
        // Each replacement starts from the line as read; the last one that applies counts.
        for (const auto& [mark, variable] : kMarks) {
            if (line.find(mark) != std::string::npos) {
                written = with_last_replaced(line, mark, variable);
            }
        }
        script += (is_remark(line) ? "# " : "") + written + '\n';
    }
    return script;
}

void start_batch(const std::string& script, const Voice& voice) {
    const std::string name = temporary_folder() + "/dopostzemora.sh";
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(script.data());  // NOLINT: text as bytes
    if (temporary_folder().empty() || !write_file_whole(name, std::span(bytes, script.size())).empty()) {
        voice.print(format_text("The file %s cannot be opened.\n", name.c_str()));
        return;
    }
    if (voice.verbose() > 1) {
        voice.say<Msg::main_batch_file_called>();
    }
    voice.wait(WaitAbove::information);
    voice.console().flush();
    if (!start_child({"/bin/sh", name})) {
        return;
    }
    // The script removes itself first: it has then been read, and the folder may go.
    constexpr int kTries = 200;
    for (int i = 0; i < kTries && file_exists(name); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

}  // namespace zemora
