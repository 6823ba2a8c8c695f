#pragma once
/// An input pair on files of its own, for the tests of what happens between file and view.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "input/input_pair.h"
#include "tests/support/pictures.h"
#include "tests/support/speech.h"
#include "tests/support/test_folder.h"

namespace zemora::test {

/// An input pair with its surroundings; its console goes to standard output, which tests capture.
struct Rig : Speech {
    TestFolder folder;
    ViewGeometry left;
    ViewGeometry right;
    std::string told;

    Rig() {
        parameters.stop_at_error = 0;
        parameters.passe_color_red = 200;
    }
    void save(const char* name, const Bitmap& picture) const {
        const auto bytes = encoded(picture.handle(), FIF_BMP);
        write_text(folder / name, {bytes.begin(), bytes.end()});
    }
    std::unique_ptr<InputPair> pair_of(int stereo_image_input) {
        parameters.stereo_image_input = stereo_image_input;
        return std::make_unique<InputPair>(parameters, left, right, voice);
    }
    ReadResult read(InputPair& pair) {
        return read(pair, {folder / "l.bmp", folder / "r.bmp", folder / "s.bmp"});
    }
    ReadResult read(InputPair& pair, const PairFiles& files) {
        testing::internal::CaptureStdout();
        const ReadResult result = pair.read_input_images(files, true);
        console.flush();
        told = testing::internal::GetCapturedStdout();
        return result;
    }
};

}  // namespace zemora::test
