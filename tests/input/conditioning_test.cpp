#include <gtest/gtest.h>

#include <filesystem>

#include "input/passepartout.h"
#include "tests/input/framed_scan.h"
#include "tests/input/pair_rig.h"

namespace zemora {
namespace {

using test::colour_at;
using test::place_picture;
using test::ReadResult;
using test::Rig;
using test::TestPair;

constexpr Colour kFrame{200, 30, 10};

/// A pair of two files, the right one with a wider frame.
struct FramedRig : Rig {
    FramedRig() {
        preparing.frame.tolerance = 100;
        save_scan("l.bmp", 0.08);
        save_scan("r.bmp", 0.1);
    }
    void frame(int passepartout) {
        preparing.frame.passepartout = passepartout;
        preparing.frame.colour = passe_colour_of(passepartout, kFrame);
    }
    void save_scan(const char* name, double border) const {
        test::ScanPlan plan;
        plan.width = 300;
        plan.height = 240;
        plan.border = border;
        plan.tilt_deg = 0.6;
        plan.frame = {kFrame, kFrame, kFrame, kFrame};
        plan.noise = 3;
        save(name, test::make_scan(plan).view.bitmap);
    }
    std::unique_ptr<TestPair> conditioned(int passepartout) {
        frame(passepartout);
        auto pair = pair_of(2);
        result = read(*pair);
        return pair;
    }
    void use_masks() const {
        for (const char* name : {"l", "r"}) {
            const std::string stem = folder / name;
            std::filesystem::rename(stem + "_pass_out.bmp", stem + "_pass_in.bmp");
        }
    }
    ReadResult result = ReadResult::unreadable;
};

/// Pixels of the frame's colour.
int count_frame(ConstPicture view, Colour colour) {
    int count = 0;
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            count += is_colour(view.pixel(x, y), colour) ? 1 : 0;
        }
    }
    return count;
}

int count_different(ConstPicture a, ConstPicture b) {
    int count = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            count += colour_at(a, x, y) == colour_at(b, x, y) ? 0 : 1;
        }
    }
    return count;
}

TEST(Conditioning, NoPictureHasTheColourOfBackground) {
    for (const int mode : {0, 3, 4}) {
        Rig rig;
        rig.preparing.frame.passepartout = mode;
        for (const char* name : {"l.bmp", "r.bmp"}) {
            const Bitmap picture = place_picture(40, 30);
            set_colour(picture.picture().pixel(20, 15), {0, 0, 200});  // as the rig's passepartout
            rig.save(name, picture);
        }
        const auto pair = rig.pair_of(2);
        ASSERT_EQ(rig.read(*pair), ReadResult::done);
        for (const ConstPicture view : {pair->full().left, pair->full().right}) {
            EXPECT_EQ(count_frame(view, {0, 0, 200}), 0) << mode;
            EXPECT_EQ(count_frame(view, {1, 0, 200}), 1) << mode;
        }
    }
}

TEST(Conditioning, MasksOfAPaintedFrameGiveTheSameViewsAgain) {
    FramedRig rig;
    rig.preparing.frame.writes_masks = true;
    const auto painted = rig.conditioned(1);
    ASSERT_EQ(rig.result, ReadResult::done);
    EXPECT_GT(count_frame(painted->full().left, kFrame), 300 * 240 / 4);
    rig.use_masks();
    const auto masked = rig.conditioned(5);
    ASSERT_EQ(rig.result, ReadResult::done);
    EXPECT_EQ(count_different(masked->full().left, painted->full().left), 0);
    EXPECT_EQ(count_different(masked->full().right, painted->full().right), 0);
    EXPECT_FALSE(std::filesystem::exists(rig.folder / "l_pass_out.bmp")) << "mode 5 writes no mask";
}

TEST(Conditioning, MeasuredFrameIsPaintedBlackWhateverTheColourOfTheSettings) {
    FramedRig rig;
    rig.preparing.frame.writes_masks = true;
    const auto pair = rig.conditioned(2);
    ASSERT_EQ(rig.result, ReadResult::done);
    EXPECT_EQ(colour_at(pair->full().left, 0, 0), (Colour{}));
    EXPECT_EQ(colour_at(pair->full().left, 150, 120),
              colour_at(FramedRig().conditioned(0)->full().left, 150, 120));
    const LoadedPicture mask = load_picture(rig.folder / "r_pass_out.bmp");
    ASSERT_EQ(mask.status, LoadStatus::done);
    EXPECT_EQ(count_frame(mask.bitmap.picture(), {}), count_frame(pair->full().right, {}));
    EXPECT_EQ(colour_at(mask.bitmap.picture(), 150, 120), (Colour{255, 255, 255}));
}

TEST(Conditioning, CutAfterThePercentCropAddsUpInTheRecord) {
    for (const int mode : {3, 4}) {
        FramedRig rig;
        rig.preparing.frame.writes_masks = true;
        rig.parameters.verbose_mode = 2;
        rig.preparing.cropp_input = 1;
        rig.frame(mode);
        const auto pair = rig.pair_of(2);
        pair->orders.has_pre_selection = true;
        pair->orders.pre_selection.left_start_x = 5.0F;
        pair->orders.pre_selection.left_width = 95.0F;
        pair->orders.pre_selection.left_start_y = 2.0F;
        pair->orders.pre_selection.left_height = 90.0F;
        ASSERT_EQ(rig.read(*pair), ReadResult::done);
        const InputGeometry& record = pair->views.left_geometry;
        EXPECT_NEAR(record.crop_x, 24 + 2, 4) << "counted from the file's edge";
        const LoadedPicture file = load_picture(rig.folder / "l.bmp");
        const ConstPicture region =
            file.bitmap.picture().part(record.crop_x - record.frame_x, record.crop_y - record.frame_y,
                                       record.frame_width, record.frame_height);
        EXPECT_EQ(count_different(region, pair->full().left), 0) << mode;
        const LoadedPicture mask = load_picture(rig.folder / "l_pass_out.bmp");
        EXPECT_EQ(mask.bitmap.width(), 285) << "the size before the cut";
        EXPECT_EQ(count_frame(mask.bitmap.picture(), {255, 255, 255}),
                  record.crop_width * record.crop_height);
        EXPECT_EQ(colour_at(mask.bitmap.picture(), record.crop_x - 15, record.crop_y - 5),
                  (Colour{255, 255, 255}));
        EXPECT_NE(rig.told.find("Left  images is cropped with reducing the width  from 285 to " +
                                std::to_string(record.crop_width)),
                  std::string::npos)
            << rig.told;
    }
}

TEST(Conditioning, MaskOfAStereoFileIsNamedForTheView) {
    Rig rig;
    rig.preparing.frame.passepartout = 1;
    rig.preparing.frame.writes_masks = true;
    rig.save("s.bmp", place_picture(40, 20));
    const auto pair = rig.pair_of(1);
    ASSERT_EQ(rig.read(*pair), ReadResult::done);
    EXPECT_EQ(rig.folder.files(), (std::set<std::string>{"s.bmp", "s_l_pass_out.bmp", "s_r_pass_out.bmp"}));
}

TEST(Conditioning, MasksFollowSwappedViews) {
    FramedRig rig;
    rig.preparing.frame.writes_masks = true;
    (void)rig.conditioned(1);
    rig.use_masks();
    rig.frame(5);
    const auto straight = rig.conditioned(5);
    const auto swapped = rig.pair_of(2);
    swapped->orders.exchanged = true;
    ASSERT_EQ(rig.read(*swapped), ReadResult::done);
    EXPECT_EQ(count_different(swapped->full().left, straight->full().right), 0);
}

TEST(Conditioning, MaskThatCannotBeWrittenIsTold) {
    FramedRig rig;
    rig.preparing.frame.writes_masks = true;
    std::filesystem::create_directory(rig.folder / "l_pass_out.bmp");
    (void)rig.conditioned(3);
    EXPECT_EQ(rig.result, ReadResult::done);
    EXPECT_NE(rig.told.find("l_pass_out.bmp couldn't be written"), std::string::npos) << rig.told;
    EXPECT_EQ(rig.folder.files().count("r_pass_out.bmp"), 1U);
}

TEST(Conditioning, AMissingOrUnfitMaskEndsTheRun) {
    FramedRig rig;
    const auto reason = [&rig] {
        const auto pair = rig.conditioned(5);
        EXPECT_EQ(rig.result, ReadResult::ends_run);
        EXPECT_TRUE(pair->problem.ends_run && pair->problem.note.waits);
        return pair->failure();
    };
    EXPECT_NE(reason().find("l_pass_in.bmp  cannot be opened"), std::string::npos) << reason();
    rig.save("l_pass_in.bmp", Bitmap::create(299, 240));
    EXPECT_NE(reason().find("identical size"), std::string::npos) << reason();
    test::write_text(rig.folder / "l_pass_in.bmp", "no picture");
    EXPECT_NE(reason().find("Error in "), std::string::npos) << reason();
    EXPECT_NE(reason().find("l_pass_in.bmp!"), std::string::npos) << reason();
}

}  // namespace
}  // namespace zemora
