#include "video/video_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/video/film_rig.h"

namespace zemora::test {
namespace {

constexpr int kFrames = 60;

struct ClipCase {
    const char* name;
    const char* coding;
};

class EveryFormat : public testing::TestWithParam<ClipCase> {};

TEST_P(EveryFormat, AFrameReachedByAJumpIsThatReachedInOrder) {
    FilmRig rig;
    const std::string path = rig.folder / GetParam().name;
    ASSERT_TRUE(make_clip(path, moving_source(96, 64, kFrames), GetParam().coding));
    const auto in_order = rig.open(path);
    ASSERT_TRUE(in_order);
    const VideoFacts& facts = in_order->facts();
    ASSERT_EQ(facts.frames, kFrames);
    const std::vector<std::uint64_t> sums = rig.sums(*in_order);
    EXPECT_EQ(std::set(sums.begin(), sums.end()).size(),
              static_cast<std::size_t>(decoded_pictures(path) - facts.dropped_frames));
    EXPECT_EQ(facts.frames, decoded_pictures(path) + facts.repeated_frames - facts.dropped_frames);
    const auto jumping = rig.open(path);
    std::mt19937 random(1);
    for (int jump = 0; jump < 40; ++jump) {
        const int frame = static_cast<int>(random() % kFrames);
        ASSERT_EQ(rig.sum(*jumping, frame), sums[static_cast<std::size_t>(frame)]) << "frame " << frame;
    }
    EXPECT_FALSE(rig.notes.has("damaged")) << rig.notes.text();
}

INSTANTIATE_TEST_SUITE_P(
    Table, EveryFormat,
    testing::Values(
        ClipCase{"closed.mp4", "-c:v libx264 -preset fast -g 12 -bf 3"},
        ClipCase{"open.mp4", "-c:v libx264 -preset fast -g 12 -bf 3 -x264opts open-gop=1"},
        ClipCase{"open.mkv", "-c:v libx264 -preset fast -g 12 -bf 3 -x264opts open-gop=1"},
        ClipCase{"open.ts", "-c:v libx264 -preset fast -g 12 -bf 3 -x264opts open-gop=1"},
        ClipCase{"refresh.mp4", "-c:v libx264 -preset fast -g 12 -bf 0 -x264opts intra-refresh=1"},
        ClipCase{"mpeg2.ts", "-c:v mpeg2video -g 12 -bf 2 -b:v 2M"},
        ClipCase{"mpeg2.mpg", "-c:v mpeg2video -g 12 -bf 2 -b:v 2M"},
        ClipCase{"mjpeg.avi", "-c:v mjpeg -q:v 3"}, ClipCase{"xvid.avi", "-c:v libxvid -g 12 -bf 2 -q:v 3"},
        ClipCase{"mpeg4.avi", "-c:v mpeg4 -g 12 -bf 2 -q:v 3"},
        ClipCase{"h264.avi", "-c:v libx264 -preset fast -g 12 -bf 3"},
        ClipCase{"vp9.webm",
                 "-c:v libvpx-vp9 -g 12 -b:v 1M -deadline realtime -auto-alt-ref 1 -lag-in-frames 10"},
        ClipCase{"vp8.webm",
                 "-c:v libvpx -g 12 -b:v 1M -deadline realtime -auto-alt-ref 1 -lag-in-frames 10"},
        ClipCase{"hevc.mkv",
                 "-c:v libx265 -preset fast -x265-params log-level=none:keyint=12:bframes=3:open-gop=1"},
        ClipCase{"hevc.ts",
                 "-c:v libx265 -preset fast -x265-params log-level=none:keyint=12:bframes=3:open-gop=1"},
        ClipCase{"hevc10.mp4",
                 "-c:v libx265 -pix_fmt yuv420p10le -preset fast -x265-params log-level=none:keyint=12"},
        ClipCase{"prores.mov", "-c:v prores_ks"}, ClipCase{"ffv1.mkv", "-c:v ffv1 -pix_fmt bgr0"},
        ClipCase{"raw.avi", "-c:v rawvideo -pix_fmt bgr24"},
        ClipCase{"huff.avi", "-c:v huffyuv -pix_fmt yuv422p"}),
    [](const auto& test) {
        std::string name = test.param.name;
        std::replace(name.begin(), name.end(), '.', '_');
        return name;
    });

}  // namespace
}  // namespace zemora::test
