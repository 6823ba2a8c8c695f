#include "driver/post_run.h"

#include <utility>
#include <chrono>
#include <sstream>
#include <thread>

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

std::string with_last_replaced(const std::string& line, const std::string& mark, const std::string& name) {
    std::string changed = line;
    changed.replace(line.rfind(mark), mark.size(), shell_word(name));
    return changed;
}

bool is_remark(const std::string& line) { return lower_case(line.substr(0, 3)) == "rem"; }

}  // namespace

std::string batch_script(const std::string& text, const std::string& anaglyph_name, const std::string& stereo_name) {
    std::string script = "rm -f -- \"$0\"\n";
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line) && !line.empty();) {
        if (line.back() == '\r') {
            line.pop_back();
        }
        std::string written = line;
        // Each replacement starts from the line as read; the last one that applies counts.
        for (const auto& [mark, name] : {std::pair<std::string, const std::string&>{"#CA#", anaglyph_name},
                                         {"#CS#", stereo_name}, {"#CM#", stereo_name}}) {
            if (line.find(mark) != std::string::npos) {
                written = with_last_replaced(line, mark, name);
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
