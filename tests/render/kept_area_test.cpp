// The common image area by the transform, against the area that the pixels show.

#include "render/kept_area.h"

#include <cstdlib>
#include <vector>

#include "config/setting_values.h"
#include "tests/render/render_scene.h"

namespace zemora {
namespace {

using testing::correction;
using testing::count_differences;
using testing::Rig;
using testing::textured;

constexpr int kWidth = 480;
constexpr int kHeight = 270;

/// Corrections of the kinds that films have, of both signs.
std::vector<Correction> hard_corrections() {
    return {
        correction(0, 0, 0, 0, 0, 0),
        correction(4.3, 0, 0, 0, 0, 0),
        correction(0, 0, 0, 0, 0, -17.4),
        correction(0, 0.03, 0, 0, 0, 0),
        correction(0, 0, 0.04, 0, 0, 0),
        correction(-2.2, -0.02, -0.03, 0.05, -0.03, 9.0),
        correction(1.0, 0.01, 0.02, -0.06, 0.05, -6.0),
    };
}

struct FilmRig : Rig {
    FilmRig() : Rig(ParameterSet()), left(textured(kWidth, kHeight, 1)), right(textured(kWidth, kHeight, 2)) {
        base = plan(left, right);
        base.interpolation.kernel = 2;
        base.crop.keeps_frame = false;
    }
    Bitmap left;
    Bitmap right;
    WarpPlan base;
};

TEST(KeptArea, IsPictureAllOverAndAllButAsLargeAsThePixelsShow) {
    constexpr int kSlack = 10;  // pixels: bent edges are drawn in as far as they bend
    for (const int applied : {-1, 0, 1}) {
        for (const Correction& c : hard_corrections()) {
            FilmRig rig;
            rig.base.applied_view = applied;
            rig.base.correction = c;
            const auto area = kept_area(rig.base, {kWidth, kHeight});
            ASSERT_TRUE(area);
            WarpPlan whole = rig.base;
            whole.crop.keeps_frame = true;
            ASSERT_TRUE(rig.run(whole));
            const StereoPicture pair = rig.warped.pair();
            for (int y = area->bottom; y <= area->top; ++y) {
                for (int x = area->left; x <= area->right; ++x) {
                    ASSERT_NE(testing::colour_at(pair.left, x, y), whole.background) << x << ' ' << y;
                    ASSERT_NE(testing::colour_at(pair.right, x, y), whole.background) << x << ' ' << y;
                }
            }
            const PixelRectangle seen =
                find_common_area(pair, {0, kWidth - 1, 0, kHeight - 1}, whole.background);
            EXPECT_LE(std::abs(area->width() - seen.width()), kSlack);
            EXPECT_LE(std::abs(area->height() - seen.height()), kSlack);
        }
    }
}

TEST(KeptArea, ADecidedPartIsThatPartOfTheWholeFrame) {
    FilmRig rig;
    rig.base.correction = hard_corrections().back();
    WarpPlan whole = rig.base;
    whole.crop.keeps_frame = true;
    ASSERT_TRUE(rig.run(whole));
    const PixelRectangle part{31, 430, 17, 244};
    const Bitmap left = Bitmap::create(part.width(), part.height());
    const Bitmap right = Bitmap::create(part.width(), part.height());
    const StereoPicture frame = rig.warped.pair();
    copy(frame.left.part(part.left, part.bottom, part.width(), part.height()), left.picture());
    copy(frame.right.part(part.left, part.bottom, part.width(), part.height()), right.picture());

    WarpPlan decided = rig.base;
    decided.crop.decided = part;
    ASSERT_TRUE(rig.run(decided));
    EXPECT_EQ(rig.warped.width, part.width());
    EXPECT_EQ(rig.warped.kept, part);
    EXPECT_EQ(count_differences(rig.warped.pair().left, left.picture()), 0);
    EXPECT_EQ(count_differences(rig.warped.pair().right, right.picture()), 0);
}

struct FilmCase {
    const char* name;
    int cropp_output;
    int width;
    int height;
};

class FilmFrames : public ::testing::TestWithParam<FilmCase> {};

TEST_P(FilmFrames, OneScaleAndOneCropGiveTheWantedSizeForAllCorrections) {
    const FilmCase& wanted = GetParam();
    FilmRig rig;
    rig.base.crop.cropp_output = wanted.cropp_output;
    const std::vector<Correction> corrections = hard_corrections();
    const FilmFrameWish wish{{kWidth, kHeight}, wanted.width, wanted.height, wanted.cropp_output, 4};
    const Result<FilmFrame> frame = find_film_frame(wish, rig.base, corrections, rig.voice.messages());
    ASSERT_TRUE(frame);
    const PixelRectangle& kept = frame->kept;
    EXPECT_GE(kept.left, 0);
    EXPECT_LT(kept.right, frame->whole.width);
    EXPECT_GE(kept.bottom, 0);
    EXPECT_LT(kept.top, frame->whole.height);
    if (wanted.cropp_output == setting::cropp_output::fitted) {
        EXPECT_TRUE(kept.width() == wanted.width || kept.height() == wanted.height);
        EXPECT_LE(kept.width(), wanted.width);
        EXPECT_LE(kept.height(), wanted.height);
    } else if (wanted.width > 0) {
        EXPECT_EQ(kept.width(), wanted.width);
        EXPECT_EQ(kept.height(), wanted.height);
    } else {
        EXPECT_EQ(kept.width() % 4, 0);
        EXPECT_EQ(kept.height() % 4, 0);
        EXPECT_EQ(frame->scale, 1.0F);
    }
    if (wanted.cropp_output < setting::cropp_output::common_area) {
        return;
    }
    for (const Correction& c : corrections) {
        ASSERT_TRUE(rig.run(film_plan(rig.base, c, *frame)));
        const StereoPicture pair = rig.warped.pair();
        for (const auto& [x, y] :
             {std::pair{0, 0}, std::pair{kept.width() - 1, 0}, std::pair{0, kept.height() - 1},
              std::pair{kept.width() - 1, kept.height() - 1}}) {
            EXPECT_NE(testing::colour_at(pair.left, x, y), rig.base.background);
            EXPECT_NE(testing::colour_at(pair.right, x, y), rig.base.background);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, FilmFrames,
    ::testing::Values(FilmCase{"free_common_area", 2, 0, 0}, FilmCase{"free_frame", 0, 0, 0},
                      FilmCase{"forced_to_input", 2, 480, 268}, FilmCase{"forced_small", 2, 320, 180},
                      FilmCase{"forced_other_ratio", 2, 400, 400}, FilmCase{"forced_large", 2, 1920, 1080},
                      FilmCase{"forced_frame", 0, 320, 240}, FilmCase{"forced_blanked", 1, 320, 240},
                      FilmCase{"inside_a_box", 3, 640, 360}),
    [](const auto& instance) { return std::string(instance.param.name); });

TEST(FilmFrames, CorrectionsWithoutACommonPictureAreRefused) {
    const FilmRig rig;
    const std::vector<Correction> apart = {correction(0, 0, 0, 0, 0, 0), correction(0, 0, 0.4, 0, 0, 0)};
    EXPECT_FALSE(find_film_frame({{kWidth, kHeight}, 0, 0, 2, 4}, rig.base, apart, rig.voice.messages()));
}

}  // namespace
}  // namespace zemora
