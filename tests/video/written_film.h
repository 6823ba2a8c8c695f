#pragma once
/// Films of black and white pictures that a test writes, and how they come out.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/speech.h"
#include "tests/support/test_folder.h"
#include "tests/video/film_tools.h"
#include "video/video_writer.h"

namespace zemora::test {

inline constexpr PictureSize kSize{64, 48};

inline VideoWriterOptions plain_options(const std::string& path) {
    VideoWriterOptions options;
    options.path = path;
    options.size = kSize;
    options.rate = {25, 1};
    options.preset = "veryfast";
    return options;
}

inline Bitmap picture_of(Colour colour, PictureSize size = kSize) {
    Bitmap bitmap = Bitmap::create(size.width, size.height);
    fill(bitmap.picture(), colour);
    return bitmap;
}

/// Writes `frames` black pictures, white where `flashes` says so; the reason of a failure.
inline std::string write_film(const VideoWriterOptions& options, int frames,
                              const std::vector<int>& flashes) {
    Speech speech;
    auto writer = VideoWriter::open(options, speech.voice);
    if (!writer) {
        return writer.failure().note.text;
    }
    const Bitmap black = picture_of({0, 0, 0}, options.size);
    const Bitmap white = picture_of({255, 255, 255}, options.size);
    for (int i = 0; i < frames; ++i) {
        const bool flash = std::find(flashes.begin(), flashes.end(), i) != flashes.end();
        const ConstPicture picture = (flash ? white : black).picture();
        const auto done = (*writer)->add(picture, options.has_two_streams ? &picture : nullptr);
        if (!done) {
            return done.failure().note.text;
        }
    }
    const auto closed = (*writer)->close();
    return closed ? "" : closed.failure().note.text;
}

/// How much later than its flash each beep is heard, in seconds.
inline std::vector<double> lags_of(const std::string& path) {
    const auto flashes = events_of(brightness_of(path), 25.0);
    const auto beeps = beeps_of(path);
    EXPECT_EQ(flashes.size(), beeps.size()) << path;
    std::vector<double> lags;
    for (std::size_t i = 0; i < std::min(flashes.size(), beeps.size()); ++i) {
        lags.push_back(beeps[i].start - flashes[i].start);
        EXPECT_NEAR(beeps[i].seconds, 0.04, 0.01) << path;
    }
    return lags;
}

}  // namespace zemora::test
