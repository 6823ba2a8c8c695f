#pragma once
/// Small films for the tests, made by the program ffmpeg in a folder of the test.

#include <gtest/gtest.h>

#include <cstdio>
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

/// How many pictures the decoder gives, counted by ffprobe.
inline int decoded_pictures(const std::string& path) {
    const std::string command =
        "ffprobe -v quiet -select_streams v:0 -count_frames -show_entries stream=nb_read_frames -of "
        "default=nw=1:nk=1 '" +
        path + "'";
    int count = -1;
    if (FILE* pipe = popen(command.c_str(), "r"); pipe != nullptr) {
        if (std::fscanf(pipe, "%d", &count) != 1) {
            count = -1;
        }
        pclose(pipe);
    }
    return count;
}

}  // namespace zemora::test
