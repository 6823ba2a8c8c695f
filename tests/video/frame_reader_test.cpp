#include "video/frame_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/video/film_rig.h"
#include "video/frame_source.h"

namespace zemora::test {
namespace {

constexpr int kFrames = 40;

/// Two films whose pictures differ, the right one a little shorter.
struct PairRig : FilmRig {
    FilmFiles files{folder / "l.mp4", folder / "r.mp4", 2};
    PairRig() {
        const std::string coding = "-c:v libx264 -preset veryfast -g 10";
        EXPECT_TRUE(make_clip(files.left, moving_source(96, 64, kFrames), coding));
        EXPECT_TRUE(make_clip(files.right, moving_source(96, 64, kFrames - 4) + ",hflip", coding));
    }
    std::unique_ptr<FrameSource> source() {
        auto opened = FrameSource::open(files, notes);
        EXPECT_TRUE(opened) << (opened ? "" : opened.failure().note.text);
        return opened ? *std::move(opened) : nullptr;
    }
};

TEST(FrameReader, GivesTheFramesOfTheWalkInItsOrderWhicheverWayItGoes) {
    PairRig rig;
    const auto source = rig.source();
    ASSERT_TRUE(source);
    ASSERT_EQ(source->count(), kFrames - 4);
    source->set_offset(2);
    const auto left = rig.open(rig.files.left);
    const auto right = rig.open(rig.files.right);
    const std::vector<std::uint64_t> left_sums = rig.sums(*left);
    const std::vector<std::uint64_t> right_sums = rig.sums(*right);
    for (const FrameWalk walk : {FrameWalk{0, 30, 1}, FrameWalk{3, 33, 7}, FrameWalk{0, 20, -3}}) {
        FrameReader reader(*source, walk, 3, rig.notes);
        for (int i = 0; i < walk.count(); ++i) {
            Result<RawViews> views = reader.next(rig.notes);
            ASSERT_TRUE(views) << views.failure().note.text;
            const auto frame = static_cast<std::size_t>(walk.at(i));
            EXPECT_EQ(sum_of(views->left.picture()), left_sums[frame]) << "left " << frame;
            EXPECT_EQ(sum_of(views->right.picture()), right_sums[frame + 2]) << "right " << frame;
            reader.give_back(*std::move(views));
        }
    }
}

TEST(FrameReader, EndsAtAnyMoment) {
    PairRig rig;
    const auto source = rig.source();
    ASSERT_TRUE(source);
    for (int taken = 0; taken < 6; ++taken) {
        FrameReader reader(*source, {0, 30, 1}, 2, rig.notes);
        for (int i = 0; i < taken; ++i) {
            EXPECT_TRUE(reader.next(rig.notes));
        }
    }
}

}  // namespace
}  // namespace zemora::test
