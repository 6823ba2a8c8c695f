#pragma once
/// Small films for the tests, made by the program ffmpeg in a folder of the test.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/test_folder.h"

namespace zemora::test {

/// A picture that moves and counts, so that no two frames of it are alike.
inline std::string moving_source(int width, int height, int frames, const std::string& rate = "25") {
    return "testsrc2=size=" + std::to_string(width) + "x" + std::to_string(height) + ":rate=" + rate +
           ",trim=end_frame=" + std::to_string(frames);
}

/// Runs ffmpeg with these arguments behind its quiet ones; whether it has succeeded.
inline bool run_ffmpeg(const std::string& arguments) {
    return std::system(("ffmpeg -hide_banner -loglevel error -nostdin -y " + arguments).c_str()) == 0;
}

/// A film of `source` (a filter) with these coding options.
inline bool make_clip(const std::string& path, const std::string& source, const std::string& coding) {
    return run_ffmpeg("-f lavfi -i '" + source + "' " + coding + " '" + path + "'");
}

}  // namespace zemora::test
