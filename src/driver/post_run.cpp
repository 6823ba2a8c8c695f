#include "driver/post_run.h"

#include <chrono>
#include <sstream>
#include <string_view>
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

/// The marks of a batch text and the variables that hold their names.
struct Mark {
    std::string_view mark;
    const char* variable;
};
constexpr const char* kAnaglyphVariable = "ZEMORA_CA";
constexpr const char* kStereoVariable = "ZEMORA_CS";
constexpr const char* kExtraVariable = "ZEMORA_CM";
constexpr Mark kMarks[] = {{"#CA#", kAnaglyphVariable}, {"#CS#", kStereoVariable}, {"#CM#", kExtraVariable}};

/// Every mark counts: to the shell one that stayed would be the begin of a remark.
std::string with_marks_replaced(std::string_view line) {
    std::string written;
    while (!line.empty()) {
        const Mark* found = nullptr;
        for (const Mark& mark : kMarks) {
            found = line.starts_with(mark.mark) ? &mark : found;
        }
        if (found != nullptr) {
            written += reference_behind(written, found->variable);
        } else {
            written += line.front();
        }
        line.remove_prefix(found != nullptr ? found->mark.size() : 1);
    }
    return written;
}

bool is_remark(const std::string& line) {
    return lower_case(line.substr(0, 3)) == "rem";
}

}  // namespace

std::string batch_script(const std::string& text, const BatchNames& names) {
    const std::string& stereo = names.stereo.empty() ? names.extra : names.stereo;
    const std::string& extra = names.extra.empty() ? names.stereo : names.extra;
    std::string script = "rm -f -- \"$0\"\n";
    script += std::string(kAnaglyphVariable) + '=' + shell_word(names.anaglyph) + '\n';
    script += std::string(kStereoVariable) + '=' + shell_word(stereo) + '\n';
    script += std::string(kExtraVariable) + '=' + shell_word(extra) + '\n';
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line) && !line.empty();) {
        if (line.back() == '\r') {
            line.pop_back();
        }
        script += (is_remark(line) ? "# " : "") + with_marks_replaced(line) + '\n';
    }
    return script;
}

void start_batch(const std::string& script, Voice& voice) {
    const std::string name = temporary_folder() + "/dopostzemora.sh";
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(script.data());  // NOLINT: text as bytes
    if (temporary_folder().empty() || !write_file_whole(name, std::span(bytes, script.size())).empty()) {
        voice.print(format_text("The file %s cannot be opened.\n", name.c_str()));
        return;
    }
    if (voice.verbose() > 1) {
        voice.say<Msg::main_batch_file_called>();
    }
    voice.wait(Severity::information);
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
