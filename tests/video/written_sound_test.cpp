#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/test_folder.h"
#include "tests/video/written_film.h"

namespace zemora {
namespace {

using test::lags_of;
using test::plain_options;
using test::probe;
using test::TestFolder;
using test::write_film;

struct SoundCase {
    const char* name;
    const char* coding;  ///< Of the source, with its suffix.
    const char* suffix;
    const char* written;  ///< Codec of the sound in the film.
    int channels;
    double lag_s = 0.0;  ///< Of the source: not all forms tell how late their encoder is.
};

class SoundOfASource : public testing::TestWithParam<SoundCase> {};

TEST_P(SoundOfASource, IsInStepAtStartAndEnd) {
    const SoundCase& given = GetParam();
    const TestFolder folder;
    const std::string source = folder / ("in" + std::string(given.suffix));
    ASSERT_TRUE(test::make_flash_clip(source, 75, {3, 70}, given.coding, given.channels));
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.sound = {SoundWish::Source::file, source, {0, 75, 1}, {25, 1}};
    ASSERT_EQ(write_film(options, 75, {3, 70}), "");
    auto sound = probe(folder / "out.mp4", "-select_streams a:0 -show_streams");
    EXPECT_EQ(sound["codec_name"], given.written);
    EXPECT_EQ(sound["channels"], std::to_string(given.channels));
    EXPECT_NEAR(std::stod(sound["duration"]), 3.0, 0.02);
    const auto lags = lags_of(folder / "out.mp4");
    ASSERT_EQ(lags.size(), 2U);
    EXPECT_NEAR(lags[0], given.lag_s, 0.003);
    EXPECT_NEAR(lags[1], given.lag_s, 0.003);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, SoundOfASource,
    testing::Values(SoundCase{"AacInMp4", "-c:v libx264 -c:a aac", ".mp4", "aac", 2},
                    SoundCase{"AacInMatroska", "-c:v libx264 -c:a aac", ".mkv", "aac", 1},
                    SoundCase{"AacInTransportStream", "-c:v libx264 -g 10 -c:a aac", ".ts", "aac", 2},
                    SoundCase{"Mp3InAvi", "-c:v mjpeg -c:a libmp3lame", ".avi", "mp3", 2, 0.023},
                    SoundCase{"Mp3InMp4", "-c:v libx264 -c:a libmp3lame", ".mp4", "mp3", 2},
                    SoundCase{"Ac3With6", "-c:v libx264 -c:a ac3", ".mp4", "ac3", 6},
                    SoundCase{"PcmInAvi", "-c:v mjpeg -c:a pcm_s16le", ".avi", "aac", 2},
                    SoundCase{"OpusInMatroska", "-c:v libx264 -c:a libopus", ".mkv", "aac", 2, -0.007},
                    SoundCase{"VorbisInMatroska", "-c:v libx264 -c:a libvorbis", ".mkv", "aac", 2},
                    SoundCase{"Mp2InProgramStream", "-c:v mpeg2video -c:a mp2", ".mpg", "aac", 2},
                    SoundCase{"PcmWith24Bits", "-c:v libx264 -c:a pcm_s24le", ".mov", "aac", 1}),
    [](const auto& tested) { return tested.param.name; });

struct StartCase {
    const char* name;
    const char* suffix;
    double picture_s;  ///< Start of the stream.
    double sound_s;
    int first_frame;  ///< 0: the sound is copied.
};

class StartsOfStreams : public testing::TestWithParam<StartCase> {};

TEST_P(StartsOfStreams, Count) {
    const StartCase& given = GetParam();
    const TestFolder folder;
    ASSERT_TRUE(test::make_flash_clip(folder / "even.mp4", 75, {15, 60}, "-c:v libx264 -bf 2 -c:a aac"));
    const std::string source = folder / ("in" + std::string(given.suffix));
    const std::string input = " -i '" + (folder / "even.mp4") + "' ";
    ASSERT_TRUE(test::run_ffmpeg("-itsoffset " + std::to_string(given.picture_s) + input + "-itsoffset " +
                                 std::to_string(given.sound_s) + input + "-map 0:v -map 1:a -c copy '" +
                                 source + "'"));
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.sound = {SoundWish::Source::file, source, {given.first_frame, 75, 1}, {25, 1}};
    ASSERT_EQ(write_film(options, 75 - given.first_frame, {15 - given.first_frame, 60 - given.first_frame}),
              "");
    const auto lags = lags_of(folder / "out.mp4");
    ASSERT_EQ(lags.size(), 2U);
    for (const double lag : lags) {
        EXPECT_NEAR(lag, given.sound_s - given.picture_s, 0.005);
    }
}

INSTANTIATE_TEST_SUITE_P(Films, StartsOfStreams,
                         testing::Values(StartCase{"LateInMp4", ".mp4", 0.0, 0.3, 0},
                                         StartCase{"EarlyInMp4", ".mp4", 0.3, 0.0, 0},
                                         StartCase{"LateInMatroska", ".mkv", 0.0, 0.3, 2},
                                         StartCase{"EarlyInMatroska", ".mkv", 0.3, 0.0, 0},
                                         StartCase{"LateInTransportStream", ".ts", 0.0, 0.3, 0},
                                         StartCase{"EarlyInTransportStream", ".ts", 0.3, 0.0, 3}),
                         [](const auto& tested) { return tested.param.name; });

struct WalkCase {
    const char* name;
    FrameWalk walk;
    Rational rate;  ///< Of the film.
};

class SoundOfAWalk : public testing::TestWithParam<WalkCase> {};

TEST_P(SoundOfAWalk, IsInStep) {
    const WalkCase& given = GetParam();
    const TestFolder folder;
    const std::vector<int> flashes = {11, 61};
    ASSERT_TRUE(
        test::make_flash_clip(folder / "in.mov", 75, flashes, "-c:v libx264 -c:a pcm_s16le", 2, 44100));
    std::vector<int> written;
    for (int i = 0; i < given.walk.count(); ++i) {
        if (std::find(flashes.begin(), flashes.end(), given.walk.at(i)) != flashes.end()) {
            written.push_back(i);
        }
    }
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.rate = given.rate;
    options.sound = {SoundWish::Source::file, folder / "in.mov", given.walk, {25, 1}};
    ASSERT_EQ(write_film(options, given.walk.count(), written), "");
    const auto beeps = test::beeps_of(folder / "out.mp4");
    ASSERT_EQ(beeps.size(), 2U);
    ASSERT_EQ(written.size(), 2U);
    const double frame = 1.0 / given.rate.value();
    for (std::size_t i = 0; i < 2; ++i) {
        // A beep is as long as a frame of the source: with steps it lies at one end of the written frame.
        const double centre = beeps[i].start + beeps[i].seconds / 2;
        EXPECT_NEAR(centre, (written[i] + 0.5) * frame, 0.5 * frame) << i;
        EXPECT_NEAR(beeps[i].seconds, 0.04, 0.005) << i;
    }
    auto sound = probe(folder / "out.mp4", "-select_streams a:0 -show_streams");
    EXPECT_NEAR(std::stod(sound["duration"]), given.walk.count() * frame, 0.001);
}

INSTANTIATE_TEST_SUITE_P(Walks, SoundOfAWalk,
                         testing::Values(WalkCase{"FromTheMiddle", {5, 75, 1}, {25, 1}},
                                         WalkCase{"EverySecond", {1, 75, 2}, {25, 2}},
                                         WalkCase{"Backwards", {0, 75, -1}, {25, 1}},
                                         WalkCase{"BackwardsByTwo", {2, 74, -2}, {25, 2}},
                                         WalkCase{"FromBeforeTheStart", {-10, 75, 1}, {25, 1}}),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
}  // namespace zemora
