#include "video/sound_track.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "tests/support/speech.h"
#include "tests/support/test_folder.h"
#include "tests/video/clips.h"
#include "tests/video/film_tools.h"

namespace zemora {
namespace {

using test::TestFolder;

/// A sound whose every moment is another one. It has no noise, which some decoders make up as they like.
std::string sound_source(int seconds, int rate = 44100) {
    return "-f lavfi -i \"aevalsrc='0.6*sin(300*t*(1+t/9))*(0.6+0.4*sin(17*t))':s=" + std::to_string(rate) +
           ":d=" + std::to_string(seconds) + "\" ";
}

std::string picture_source(int seconds) {
    return "-f lavfi -i color=black:s=32x32:r=25:d=" + std::to_string(seconds) + " ";
}

std::vector<float> read(SoundTrack& track, std::int64_t first, int count) {
    std::vector<float> samples(static_cast<std::size_t>(count) *
                               static_cast<std::size_t>(track.format().channels));
    track.read(first, count, samples.data());
    return samples;
}

double largest_difference(const std::vector<float>& a, const std::vector<float>& b) {
    double largest = a.size() == b.size() ? 0.0 : 1.0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        largest = std::max(largest, static_cast<double>(std::fabs(a[i] - b[i])));
    }
    return largest;
}

struct TrackCase {
    const char* name;
    const char* coding;
    const char* suffix;
    double tolerance;  ///< Of samples read by a jump against those read in order.
};

class TrackForms : public testing::TestWithParam<TrackCase> {};

TEST_P(TrackForms, JumpsGiveWhatReadingInOrderGives) {
    const TrackCase& given = GetParam();
    const TestFolder folder;
    const std::string path = folder / ("in" + std::string(given.suffix));
    ASSERT_TRUE(test::run_ffmpeg(picture_source(24) + sound_source(24) + given.coding + " '" + path + "'"));
    test::Speech speech;
    auto in_order = SoundTrack::open(path, speech.voice);
    auto by_jumps = SoundTrack::open(path, speech.voice);
    ASSERT_TRUE(in_order && by_jumps);
    const int rate = (*in_order)->format().sample_rate;
    std::vector<std::vector<float>> blocks;
    constexpr int kCount = 3000;
    for (int i = 0; i < 23; ++i) {
        blocks.push_back(read(**in_order, static_cast<std::int64_t>(i) * rate, kCount));
    }
    // Backwards, and to and fro.
    for (int i = 0; i < 2 * 23; ++i) {
        const int block = i < 23 ? 22 - i : (i * 7) % 23;
        const auto samples = read(**by_jumps, static_cast<std::int64_t>(block) * rate, kCount);
        EXPECT_LE(largest_difference(samples, blocks[static_cast<std::size_t>(block)]), given.tolerance)
            << block;
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, TrackForms,
                         testing::Values(TrackCase{"PcmInAvi", "-c:v mpeg4 -c:a pcm_s16le", ".avi", 0.0},
                                         TrackCase{"PcmInMov", "-c:v mpeg4 -c:a pcm_s24le", ".mov", 0.0},
                                         TrackCase{"PcmInMatroska", "-c:v mpeg4 -c:a pcm_s16le", ".mkv", 0.0},
                                         TrackCase{"FlacInMatroska", "-c:v mpeg4 -c:a flac", ".mkv", 0.0},
                                         TrackCase{"AacInMp4", "-c:v mpeg4 -c:a aac", ".mp4", 0.01},
                                         TrackCase{"AacInStream", "-c:v mpeg2video -c:a aac", ".ts", 0.01},
                                         TrackCase{"Mp3InAvi", "-c:v mpeg4 -c:a libmp3lame", ".avi", 0.01},
                                         TrackCase{"VorbisInMatroska", "-c:v mpeg4 -c:a libvorbis", ".mkv",
                                                   0.01}),
                         [](const auto& tested) { return tested.param.name; });

TEST(SoundTrack, GivesTheSamplesOfTheFileAndSilenceRoundThem) {
    const TestFolder folder;
    const std::string path = folder / "in.mov";
    ASSERT_TRUE(test::run_ffmpeg(picture_source(2) + sound_source(2, 32000) +
                                 "-ac 2 -c:v mpeg4 -c:a pcm_s16le '" + path + "'"));
    test::Speech speech;
    auto opened = SoundTrack::open(path, speech.voice);
    ASSERT_TRUE(opened);
    SoundTrack& track = **opened;
    EXPECT_EQ(track.format().sample_rate, 32000);
    EXPECT_EQ(track.format().channels, 2);
    EXPECT_EQ(track.format().bits, 16);
    const std::string bytes = test::output_of("ffmpeg -v error -i '" + path + "' -map 0:a -f s16le -");
    std::vector<float> wanted(2 * 1000, 0.0F);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        std::int16_t sample = 0;
        std::memcpy(&sample, bytes.data() + i, sizeof sample);
        wanted.push_back(static_cast<float>(sample) / 32768.0F);
    }
    ASSERT_EQ(wanted.size(), 2U * 65000U);
    wanted.resize(wanted.size() + 2 * 1000);
    EXPECT_EQ(read(track, -1000, 66000), wanted);
    EXPECT_EQ(read(track, 1'000'000'000, 4), std::vector<float>(8));
    EXPECT_EQ(read(track, -1'000'000'000, 4), std::vector<float>(8));
    EXPECT_EQ(read(track, 63990, 10), std::vector<float>(wanted.end() - 2 * 1010, wanted.end() - 2 * 1000));
}

TEST(SoundTrack, TellsWhatCannotBeRead) {
    const TestFolder folder;
    ASSERT_TRUE(test::run_ffmpeg(picture_source(1) + "-c:v mpeg4 '" + (folder / "mute.mp4") + "'"));
    test::write_text(folder / "list.mp4", "#EXTM3U\n#EXTINF:1,\nmute.mp4\n");
    test::Speech speech;
    for (const char* name : {"mute.mp4", "list.mp4", "none.mp4"}) {
        const auto track = SoundTrack::open(folder / name, speech.voice);
        ASSERT_FALSE(track) << name;
        EXPECT_NE(track.failure().note.text.find(name), std::string::npos);
    }
}

}  // namespace
}  // namespace zemora
