#include "video/mask_keys.h"

#include <gtest/gtest.h>

namespace zemora {
namespace {

MaskTrack track_of(int frames) {
    MaskTrack track;
    track.masks.resize(static_cast<std::size_t>(frames));
    track.is_key.resize(static_cast<std::size_t>(frames));
    return track;
}

void set_key(MaskTrack& track, std::size_t frame, const MaskFrame& mask) {
    track.masks[frame] = mask;
    track.is_key[frame] = 1;
}

TEST(MaskKeys, MoveSmoothlyFromKeyToKeyAndRestOutside) {
    MaskTrack track = track_of(8);
    set_key(track, 2, {0.0F, 1.0F, 0.2F, 0.8F});
    set_key(track, 6, {0.32F, 0.68F, 0.2F, 0.4F, 5, 6});
    interpolate_mask_keys(track);
    const float shares[] = {0, 0, 0, 5 / 32.0F, 0.5F, 27 / 32.0F, 1, 1};  // 3 t^2 - 2 t^3 at quarters
    for (std::size_t frame = 0; frame < 8; ++frame) {
        EXPECT_NEAR(track.masks[frame].left, 0.32F * shares[frame], 1e-6) << frame;
        EXPECT_NEAR(track.masks[frame].right, 1.0F - 0.32F * shares[frame], 1e-6) << frame;
        EXPECT_NEAR(track.masks[frame].low, 0.2F, 1e-6) << frame;
        EXPECT_NEAR(track.masks[frame].high, 0.8F - 0.4F * shares[frame], 1e-6) << frame;
    }
    EXPECT_EQ(track.masks[7].shift_x, 0);
}

TEST(MaskKeys, OneKeyHoldsForAllAndNoneChangesNothing) {
    MaskTrack track = track_of(3);
    interpolate_mask_keys(track);
    EXPECT_EQ(track.masks[1].right, 1.0F);
    set_key(track, 1, {0.25F, 0.5F, 0.0F, 1.0F});
    interpolate_mask_keys(track);
    EXPECT_EQ(track.masks[0].left, 0.25F);
    EXPECT_EQ(track.masks[2].right, 0.5F);
}

TEST(WindowByZoom, MovesByTheShareOfTheWidthAndRemembersTheExtremes) {
    MaskTrack track = track_of(5);
    track.masks[1] = {0.25F, 0.75F, 0.0F, 1.0F};    // twice
    track.masks[2] = {0.375F, 0.625F, 0.0F, 1.0F};  // four times
    track.masks[3] = track.masks[2];
    track.masks[4] = {0.5F, 0.5F, 0.0F, 1.0F};
    CorrectionSeries series;
    series.resize(5);
    series.values[2].window_px = 3.0F;
    const ZoomShift shift = shift_window_by_zoom(series, track, 1, 99, 5.0, 2000);
    const float expected[] = {0, 10, 33, 30, 0};
    for (std::size_t frame = 0; frame < 5; ++frame) {
        EXPECT_FLOAT_EQ(series.values[frame].window_px, expected[frame]) << frame;
    }
    EXPECT_EQ(shift.smallest.frame, 4);
    EXPECT_DOUBLE_EQ(shift.smallest.zoom, 1.0);
    EXPECT_EQ(shift.largest.frame, 2);
    EXPECT_DOUBLE_EQ(shift.largest.window_before_px, 3.0);
    EXPECT_DOUBLE_EQ(shift.largest.window_px, 33.0);
}

}  // namespace
}  // namespace zemora
