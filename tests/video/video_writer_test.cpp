#include "video/video_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

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

/// How much later than its flash each beep is heard, in seconds.
std::vector<double> lags_of(const std::string& path) {
    const auto flashes = test::events_of(test::brightness_of(path), 25.0);
    const auto beeps = test::beeps_of(path);
    EXPECT_EQ(flashes.size(), beeps.size()) << path;
    std::vector<double> lags;
    for (std::size_t i = 0; i < std::min(flashes.size(), beeps.size()); ++i) {
        lags.push_back(beeps[i].start - flashes[i].start);
        EXPECT_NEAR(beeps[i].seconds, 0.04, 0.01) << path;
    }
    return lags;
}

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
    ASSERT_TRUE(test::ffmpeg("-itsoffset " + std::to_string(given.picture_s) + input + "-itsoffset " +
                             std::to_string(given.sound_s) + input + "-map 0:v -map 1:a -c copy '" + source +
                             "'"));
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

TEST(VideoWriter, HasTheSizeRateAndTagsOfTheOptions) {
    const TestFolder folder;
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.rate = {30000, 1001};
    options.sound.source = SoundWish::Source::silence;
    ASSERT_EQ(write_film(options, 31, {4}), "");
    EXPECT_EQ(folder.files(), std::set<std::string>{"out.mp4"});
    auto video = probe(folder / "out.mp4", "-count_frames -select_streams v:0 -show_streams");
    const std::map<std::string, std::string> wanted = {{"codec_name", "h264"},
                                                       {"nb_read_frames", "31"},
                                                       {"width", "64"},
                                                       {"height", "48"},
                                                       {"avg_frame_rate", "30000/1001"},
                                                       {"pix_fmt", "yuv420p"},
                                                       {"color_range", "tv"},
                                                       {"color_space", "smpte170m"},
                                                       {"color_transfer", "smpte170m"},
                                                       {"color_primaries", "smpte170m"},
                                                       {"chroma_location", "left"},
                                                       {"start_time", "0.000000"}};
    for (const auto& [key, value] : wanted) {
        EXPECT_EQ(video[key], value) << key;
    }
    EXPECT_EQ(test::events_of(test::brightness_of(folder / "out.mp4"), 1.0).at(0).start, 4.0);
    // The index stands in front of the pictures.
    const std::string bytes = test::read_text(folder / "out.mp4");
    EXPECT_LT(bytes.find("moov"), bytes.find("mdat"));
    for (const float sample : test::sound_of(folder / "out.mp4")) {
        ASSERT_EQ(sample, 0.0F);
    }
}

TEST(VideoWriter, KeepsKnownTagsOfTheInput) {
    const TestFolder folder;
    VideoWriterOptions options = plain_options(folder / "out.mp4");
    options.colours = {9, 16, 9, true};
    ASSERT_EQ(write_film(options, 3, {}), "");
    auto video = probe(folder / "out.mp4", "-select_streams v:0 -show_streams");
    EXPECT_EQ(video["color_primaries"], "bt2020");
    EXPECT_EQ(video["color_transfer"], "smpte2084");
    EXPECT_EQ(video["color_space"], "bt2020nc");
    EXPECT_EQ(video["color_range"], "tv");
}

TEST(VideoWriter, ColoursComeBackWithinALevel) {
    const TestFolder folder;
    constexpr PictureSize kChart{1280, 720};
    for (const int height : {720, 480}) {
        const PictureSize size{kChart.width, height};
        Bitmap chart = picture_of({0, 0, 0}, size);
        std::vector<Colour> colours;
        for (int i = 0; i < 16; ++i) {
            const auto part = [i](int bit) {
                return static_cast<std::uint8_t>((i & bit) != 0 ? 230 - i * 4 : 20 + i * 3);
            };
            colours.push_back({part(1), part(2), part(4)});
            fill(chart.picture().part(i * 80, 0, 80, height), colours.back());
        }
        VideoWriterOptions options = plain_options(folder / "out.mp4");
        options.size = size;
        options.quality = 4;
        test::Speech speech;
        auto writer = *VideoWriter::open(options, speech.voice);
        for (int i = 0; i < 5; ++i) {
            ASSERT_TRUE(writer->add(chart.picture(), nullptr));
        }
        ASSERT_TRUE(writer->close());
        const std::string scale = "scale=in_color_matrix=" + std::string(height >= 720 ? "bt709" : "bt601") +
                                  ":flags=accurate_rnd+full_chroma_int+full_chroma_inp";
        const std::string bytes =
            test::output_of("ffmpeg -v error -i '" + (folder / "out.mp4") + "' -vf \"select=eq(n\\,2)," +
                            scale + ",format=bgr24\" -frames:v 1 -f rawvideo -");
        ASSERT_EQ(bytes.size(), static_cast<std::size_t>(kPixelBytes * size.width * size.height));
        for (int i = 0; i < 16; ++i) {
            std::array<double, 3> sums{};
            for (int y = 20; y < 100; ++y) {
                for (int x = i * 80 + 10; x < i * 80 + 70; ++x) {
                    for (int c = 0; c < kPixelBytes; ++c) {
                        sums[c] += static_cast<std::uint8_t>(bytes[(y * size.width + x) * kPixelBytes + c]);
                    }
                }
            }
            EXPECT_NEAR(sums[0] / 4800, colours[i].blue, 1.0) << i;
            EXPECT_NEAR(sums[1] / 4800, colours[i].green, 1.0) << i;
            EXPECT_NEAR(sums[2] / 4800, colours[i].red, 1.0) << i;
        }
    }
}

}  // namespace
}  // namespace zemora
