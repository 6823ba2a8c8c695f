// What happens to the finished views, in its order.

#include "render/finish_pair.h"

#include "config/setting_values.h"
#include "tests/render/render_scene.h"

namespace zemora {
namespace {

using testing::colour_at;
using testing::Rig;
using testing::textured;

constexpr int kWidth = 400;
constexpr int kHeight = 300;

struct FinishRig : Rig {
    FinishRig() { EXPECT_TRUE(run(plan(left, right))); }
    Finished finish() {
        Result<Finished> result = finish_pair(warped, settings, facts, voice);
        EXPECT_TRUE(result);
        return result ? std::move(*result) : Finished();
    }

    Bitmap left = textured(kWidth, kHeight, 1);
    Bitmap right = textured(kWidth, kHeight, 2);
    FinishSettings settings;
    PictureFacts facts;
};

TEST(FinishPair, CurtainsOfTheSelectionGoBeforeThoseOfTheNearestEdges) {
    namespace automatic = setting::auto_frame_floating;
    FinishRig rig;
    rig.facts.disparities.left_edge_near = -12.0F;
    rig.facts.disparities.right_edge_near = -7.0F;
    rig.facts.disparities.top_edge_near = rig.facts.disparities.bottom_edge_near = -20.0F;
    EXPECT_FALSE(rig.finish().curtains) << "not wanted";

    rig.settings.auto_frame_floating = automatic::curtains;
    const Finished by_edges = rig.finish();
    EXPECT_EQ(by_edges.curtains.left, 12);
    EXPECT_EQ(by_edges.curtains.right, 7);
    EXPECT_EQ(colour_at(by_edges.left.picture, 11, kHeight / 2), Colour{}) << "hangs in the left view";
    EXPECT_NE(colour_at(by_edges.left.picture, 12, kHeight / 2), Colour{});

    rig.settings.auto_frame_floating = automatic::curtains_alike;
    EXPECT_EQ(rig.finish().curtains.left, 20) << "of all four edges";

    rig.facts.selection.band_left = 0.1F;
    const Curtains selected = rig.finish().curtains;
    EXPECT_EQ(selected.left, kWidth / 10);
    EXPECT_EQ(selected.right, 0);
}

TEST(FinishPair, EveryStepThatSixteenBitsDoNotRepeatMakesEightOfThem) {
    const auto has_eight_bits = [](auto change) {
        FinishRig rig;
        rig.settings.wants_sixteen_bits = true;
        change(rig);
        return rig.finish().eight_bits_only;
    };
    EXPECT_FALSE(has_eight_bits([](FinishRig&) {}));
    EXPECT_FALSE(has_eight_bits([](FinishRig& rig) { rig.settings.left_turn = 4; }));
    EXPECT_TRUE(has_eight_bits([](FinishRig& rig) { rig.facts.is_developed = true; }));
    EXPECT_TRUE(has_eight_bits([](FinishRig& rig) { rig.settings.ghost_percent = 20; }));
    EXPECT_TRUE(has_eight_bits([](FinishRig& rig) { rig.settings.sharpen_intensity = 40; }));
    EXPECT_TRUE(has_eight_bits([](FinishRig& rig) { rig.facts.selection.band_right = 0.1F; }));
    EXPECT_TRUE(has_eight_bits([](FinishRig& rig) { rig.settings.image_text = "+words"; }));
    EXPECT_FALSE(has_eight_bits([](FinishRig& rig) {
        rig.settings.sharpen_intensity = 40;
        rig.settings.wants_sixteen_bits = false;
    })) << "nobody wants them";
}

TEST(FinishPair, ThumbnailsShowTheTrueViewsBeforeTheirTurning) {
    FinishRig rig;
    rig.facts.wants_thumbnails = true;
    const Thumbnails before = rig.finish().thumbnails;
    FinishRig turned;
    turned.facts.wants_thumbnails = turned.facts.is_exchanged = true;
    turned.settings.left_turn = turned.settings.right_turn = 1;
    const Finished after = turned.finish();
    EXPECT_EQ(after.width(), kHeight);
    EXPECT_TRUE(after.is_exchanged);
    ASSERT_EQ(after.thumbnails.left.width(), before.left.width());
    EXPECT_EQ(testing::count_differences(after.thumbnails.left.picture(), before.left.picture()), 0);
}

TEST(FinishPair, AnExtraFormatWithoutAProductEndsTheRun) {
    FinishRig rig;
    rig.settings.extra = static_cast<ExtraFormat>(setting::extra_output::unknown);
    const Result<Finished> result = finish_pair(rig.warped, rig.settings, rig.facts, rig.voice);
    ASSERT_FALSE(result);
    EXPECT_TRUE(result.failure().ends_run);
}

}  // namespace
}  // namespace zemora
