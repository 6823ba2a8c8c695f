#include "input/conversion.h"

#include <chrono>
#include <thread>

#include "platform/child_process.h"
#include "platform/console.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr int kTriesForTarget = 61;

/// The converter of the setting, else the shipped one; empty when neither is there.
std::string usable_converter(const std::string& setting) {
    return file_exists(setting) ? setting : find_data_file("resource/convert");
}

void await_target(const std::string& target, Notes& notes) {
    for (int attempt = 0; attempt < kTriesForTarget && !file_exists(target); ++attempt) {
        if (attempt == 0) {
            notes.print("waiting for conversion to " + printable(target) + '\n');
        }
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

}  // namespace

Conversion convert_picture(const std::string& converter, const std::string& source, const std::string& target,
                           Notes& notes) {
    const std::string program = usable_converter(converter);
    constexpr int kWrapperWithoutProgram = 3;  // exit code
    const ChildResult result =
        program.empty() ? ChildResult{} : run_child({program, source, "/convert=" + target});
    if (program.empty() || !result.succeeded()) {
        notes.say<Msg::img_input_irfanview_call_failed>();
        notes.print(printable(program.empty() ? converter : program) + '\n');
        notes.wait(Severity::error);
        const bool is_wrapper = program != converter;
        return program.empty() || (is_wrapper && result.exit_code == kWrapperWithoutProgram)
                   ? Conversion::no_converter
                   : Conversion::failed;
    }
    await_target(target, notes);
    return Conversion::done;
}

}  // namespace zemora
