#include "video/video_writer.h"

#include <gtest/gtest.h>

#include "tests/support/speech.h"
#include "tests/support/test_folder.h"
#include "tests/video/film_tools.h"

namespace zemora {
namespace {

using test::probe;
using test::TestFolder;

constexpr PictureSize kSize{64, 48};

VideoWriterOptions plain_options(const std::string& path) {
    VideoWriterOptions options;
    options.path = path;
    options.size = kSize;
    options.rate = {25, 1};
    options.preset = "veryfast";
    return options;
}

Bitmap picture_of(Colour colour, PictureSize size = kSize) {
    Bitmap bitmap = Bitmap::create(size.width, size.height);
    fill(bitmap.picture(), colour);
    return bitmap;
}

/// Writes `frames` black pictures, white where `flashes` says so; the reason of a failure.
std::string write_film(const VideoWriterOptions& options, int frames, const std::vector<int>& flashes) {
    test::Speech speech;
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

TEST(VideoWriter, PlaysWithTheSoundOfItsSource) {
    const TestFolder folder;
    ASSERT_TRUE(test::make_flash_clip(folder / "in.mp4", 75, {10, 60}, "-c:v libx264 -c:a aac"));
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.sound = {SoundWish::Source::file, folder / "in.mp4", {0, 75, 1}, {25, 1}};
    ASSERT_EQ(write_film(options, 75, {10, 60}), "");
    EXPECT_EQ(folder.files(), (std::set<std::string>{"in.mp4", "out.mp4"}));

    auto video = probe(folder / "out.mp4", "-count_frames -select_streams v:0 -show_streams");
    EXPECT_EQ(video["codec_name"], "h264");
    EXPECT_EQ(video["nb_read_frames"], "75");
    EXPECT_EQ(video["avg_frame_rate"], "25/1");
    EXPECT_EQ(video["width"] + 'x' + video["height"], "64x48");
    const auto flashes = test::events_of(test::brightness_of(folder / "out.mp4"), 25.0);
    const auto beeps = test::beeps_of(folder / "out.mp4");
    ASSERT_EQ(flashes.size(), 2U);
    ASSERT_EQ(beeps.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_NEAR(flashes[i].start, beeps[i].start, 0.005) << i;
    }
}

}  // namespace
}  // namespace zemora
