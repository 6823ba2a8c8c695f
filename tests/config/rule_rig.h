#pragma once
/// One pass of the consistency rules with its output captured, in a folder of its own.

#include <functional>
#include <iostream>

#include "config/consistency_rules.h"
#include "tests/config/config_rig.h"
#include "tests/support/test_folder.h"

namespace zemora::testing {

/// Puts the lines before the reader of standard input.
inline void type_in(const test::TestFolder& folder, const std::string& lines) {
    test::write_text(folder / "typed", lines);
    (void)!std::freopen((folder / "typed").c_str(), "r", stdin);
    std::cin.clear();
}

/// The folder of the program, with both viewers in it.
class RuleRig {
public:
    RuleRig() {
        std::filesystem::create_directory(folder / "32");
        test::write_text(folder / "32/zemora_image_preview", "");
        test::write_text(folder / "32/zemora_image_postview.exe", "");
        around.program_folder = folder.path();
        around.own_folder = [this] { return folder.path(); };
        parameters.stop_at_error = 0;
    }

    void pass(Language language = Language::english) {
        Console console;
        MessageCatalogue messages(language);
        Voice voice(console, messages, parameters);
        const Result<void> passed = apply_consistency_rules(parameters, around, voice);
        stopped = !passed && passed.failure().ends_run;
        if (!passed) {
            voice.add(passed.failure().note);
        }
        console.flush();
    }

    /// What a pass prints.
    std::string told(Language language = Language::english) {
        ::testing::internal::CaptureStdout();
        pass(language);
        return ::testing::internal::GetCapturedStdout();
    }

    test::TestFolder folder;
    ParameterSet parameters;
    RuleSurroundings around;
    bool stopped = false;  ///< The latest pass ended the run.
};

/// Two video files.
inline void take_video(ParameterSet& p) {
    p.input_mode = 0;
    p.left_file_name = "a.avi";
    p.right_file_name = "b.avi";
}

}  // namespace zemora::testing
