#pragma once
/// A folder of input with the settings and the voice that collect it.

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include "input/image_list.h"
#include "platform/paths.h"
#include "tests/support/speech.h"
#include "tests/support/test_folder.h"
#include "tests/support/timed_pictures.h"

namespace zemora::test {

struct CollectRig : Speech {
    /// Keeps what goes into the reports.
    struct Reports : ReportSink {
        std::string text;
        std::string html;
        void text_line(std::string_view line) override { text += line; }
        void html_line(std::string_view line) override { html += line; }
    };

    CollectOptions options;
    TestFolder folder;
    Reports reports;
    std::string told;
    Failure failure;  ///< Of the latest list that could not be built.

    explicit CollectRig(int input_mode, int stereo_image_input = 2) {
        options.path_of_images = folder.path();
        options.image_type = "jpg;png";
        options.input_mode = input_mode;
        options.stereo_image_input = stereo_image_input;
        options.write_data_base = 0;
        parameters.stop_at_error = 0;
        parameters.verbose_mode = 0;
        voice.set_report(&reports);
    }
    /// Small files that are no pictures, with their folders.
    void add(const std::vector<std::string>& names) const {
        for (const std::string& name : names) {
            write_text(place(name), name);
        }
    }
    /// A picture taken at `seconds` after noon.
    void add_shot(const std::string& name, int seconds) const {
        char time[32];
        std::snprintf(time, sizeof time, "2014:08:01 12:%02d:%02d", seconds / 60, seconds % 60);
        write_bytes(place(name), timed_jpeg({time, {}, {}, {}}));
    }
    /// The objects as "left right", relative to the folder; none on a failure.
    std::vector<std::string> build() {
        ::testing::internal::CaptureStdout();
        const Result<ImageList> built = build_image_list(options, voice);
        console.flush();
        told = ::testing::internal::GetCapturedStdout();
        if (!built) {
            failure = built.failure();
            return {};
        }
        const ImageList& list = *built;
        std::vector<std::string> objects;
        for (int i = 0; i < list.count(); ++i) {
            const std::string left = relative_to(list.left(i), folder.path());
            objects.push_back(list.two_files ? left + ' ' + relative_to(list.right(i), folder.path()) : left);
        }
        return objects;
    }
    /// Whether the regular expression is found in the text.
    [[nodiscard]] static bool matches(const std::string& text, const char* expression) {
        return ::testing::internal::RE::PartialMatch(text, ::testing::internal::RE(expression));
    }
    [[nodiscard]] bool has_told(const std::string& text) const {
        return told.find(text) != std::string::npos;
    }
    [[nodiscard]] static int count_of(const std::string& text, const std::string& part) {
        int count = 0;
        for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
            ++count;
        }
        return count;
    }

private:
    [[nodiscard]] std::string place(const std::string& name) const {
        const std::string path = folder / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        return path;
    }
};

using Names = std::vector<std::string>;

}  // namespace zemora::test
