#include "depth/depth_masks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "codec/encode.h"
#include "input/picture_file.h"
#include "platform/paths.h"
#include "tests/support/speech.h"
#include "tests/support/test_folder.h"

namespace zemora::test {

namespace {

constexpr int kWidth = 480;
constexpr int kHeight = 200;

std::uint8_t noise(int x, int y, int seed) {
    unsigned h = static_cast<unsigned>(x / 3) * 374761393U + static_cast<unsigned>(y / 3) * 668265263U +
                 static_cast<unsigned>(seed) * 1442695041U;
    h = (h ^ (h >> 13)) * 1274126177U;
    h ^= h >> 16;
    return static_cast<std::uint8_t>(h >> 24);
}

struct Frame {
    Bitmap photo = Bitmap::create(kWidth, kHeight);
    Bitmap mask = Bitmap::create(kWidth, kHeight);
};

/// A textured disc runs across a wall that moves the other way; the wall's depth is a slope.
Frame frame_at(int number) {
    Frame frame;
    const int disc_x = 150 + 4 * number;
    const int disc_y = 110 - number;
    for (int y = 0; y < kHeight; ++y) {
        std::uint8_t* photo = frame.photo.picture().row(y);
        std::uint8_t* mask = frame.mask.picture().row(y);
        for (int x = 0; x < kWidth; ++x, photo += kPixelBytes, mask += kPixelBytes) {
            const bool is_disc = std::hypot(x - disc_x, y - disc_y) < 50.0;
            const int u = is_disc ? x - disc_x + 2000 : x + 2 * number;
            const int v = is_disc ? y - disc_y + 2000 : y;
            for (int c = 0; c < kPixelBytes; ++c) {
                photo[c] =
                    static_cast<std::uint8_t>(noise(u, v, c + (is_disc ? 9 : 0)) / 2 + (is_disc ? 100 : 20));
                mask[c] = static_cast<std::uint8_t>(is_disc ? 220 : 40 + y / 4);
            }
        }
    }
    return frame;
}

std::string name_of(const std::string& folder, const char* stem, int number) {
    return folder + '/' + stem + format_text("%04d.png", number);
}

double mean_difference_of(ConstPicture a, ConstPicture b) {
    double sum = 0.0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            sum += std::abs(a.row(y)[kPixelBytes * x] - b.row(y)[kPixelBytes * x]);
        }
    }
    return sum / (static_cast<double>(a.width) * a.height);
}

/// A sequence with a mask at every tenth frame.
class MaskSequence : public testing::Test {
protected:
    static constexpr int kStep = 10;
    static constexpr int kLast = 10;

    void SetUp() override {
        for (int i = 0; i <= kLast; ++i) {
            const Frame frame = frame_at(i);
            photos_.push_back(name_of(folder_.path(), "photo_", i));
            save(frame.photo, photos_.back());
            if (i % kStep == 0) {
                masks_.push_back(name_of(folder_.path(), "mask_", i));
                save(frame.mask, masks_.back());
            }
        }
        const Result<DepthGapPlan> plan = plan_depth_gaps(photos_, masks_, talk_.voice);
        ASSERT_TRUE(plan);
        plan_ = *plan;
    }
    static void save(const Bitmap& picture, const std::string& path) {
        ASSERT_EQ(encode_and_write(picture, {PictureFormat::png}, path), "");
    }

    TestFolder folder_;
    Speech talk_;
    std::vector<std::string> photos_;
    std::vector<std::string> masks_;
    DepthGapPlan plan_;
};

TEST_F(MaskSequence, MasksBetweenFollowTheMotion) {
    ASSERT_EQ(plan_.gaps.size(), 1U);
    ASSERT_TRUE(fill_depth_gaps(plan_, photos_, masks_, talk_.voice));
    for (int i = 0; i <= kLast; ++i) {
        const LoadedPicture made = load_picture(name_of(folder_.path(), "mask_", i));
        ASSERT_EQ(made.status, LoadStatus::done) << i;
        const double error = mean_difference_of(made.bitmap.picture(), frame_at(i).mask.picture());
        EXPECT_LT(error, i % kStep == 0 ? 1e-9 : 3.0) << "grey levels, frame " << i;
    }
}

TEST_F(MaskSequence, AMissingPhotoStopsItAndAnExistingMaskStays) {
    const std::string own = name_of(folder_.path(), "mask_", 5);
    save(frame_at(0).photo, own);
    std::remove(photos_[8].c_str());
    const Result<void> filled = fill_depth_gaps(plan_, photos_, masks_, talk_.voice);
    ASSERT_FALSE(filled);
    EXPECT_TRUE(filled.failure().ends_run && filled.failure().note.waits);
    EXPECT_NE(filled.failure().note.text.find("photo_0008.png"), std::string::npos);
    EXPECT_EQ(folder_.files().size(), photos_.size() - 1 + masks_.size() + 1)
        << "a mask of a sequence with a hole";
    save(frame_at(8).photo, photos_[8]);
    ASSERT_TRUE(fill_depth_gaps(plan_, photos_, masks_, talk_.voice));
    EXPECT_EQ(mean_difference_of(load_picture(own).bitmap.picture(), frame_at(0).photo.picture()), 0.0);
}

TEST_F(MaskSequence, ASecondRunGoesOnWhereTheFirstOneWasStopped) {
    for (const int made : {1, 2, 6}) {
        masks_.push_back(name_of(folder_.path(), "mask_", made));
        save(frame_at(made).mask, masks_.back());
    }
    std::sort(masks_.begin(), masks_.end());
    const Result<DepthGapPlan> plan = plan_depth_gaps(photos_, masks_, talk_.voice);
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->gaps.size(), 2U);
    ASSERT_TRUE(fill_depth_gaps(*plan, photos_, masks_, talk_.voice));
    for (int i = 0; i <= kLast; ++i) {
        const LoadedPicture mask = load_picture(name_of(folder_.path(), "mask_", i));
        ASSERT_EQ(mask.status, LoadStatus::done) << i;
        EXPECT_LT(mean_difference_of(mask.bitmap.picture(), frame_at(i).mask.picture()), 3.0) << i;
    }
}

TEST(MotionField, FindsTheMotionOfTheDiscAndOfTheWall) {
    Speech talk;
    MotionField field(talk.voice);
    ASSERT_TRUE(field.estimate_motion_field(frame_at(3).photo.picture(), frame_at(4).photo.picture()));
    EXPECT_EQ(field.at(162, 107), (MotionVector{4, -1}));
    EXPECT_EQ(field.at(400, 30), (MotionVector{-2, 0}));
    EXPECT_EQ(field.fine_step(), 1);
}

TEST(MotionField, FastMotionWidensTheSearchWithinTheCall) {
    Speech talk;
    MotionField field(talk.voice);
    ASSERT_TRUE(field.estimate_motion_field(frame_at(0).photo.picture(), frame_at(4).photo.picture()));
    EXPECT_EQ(field.at(166, 106), (MotionVector{16, -4}));
    EXPECT_EQ(field.at(400, 30), (MotionVector{-8, 0}));
    EXPECT_GT(field.search_width(), 32);
}

TEST(MotionField, SmallAndPlainFramesGiveNoMotionAndNoHarm) {
    Speech talk;
    MotionField field(talk.voice);
    for (const auto& [width, height] :
         {std::pair{1, 1}, std::pair{59, 3}, std::pair{200, 2}, std::pair{640, 5}}) {
        const Bitmap plain = Bitmap::create(width, height);
        ASSERT_TRUE(field.estimate_motion_field(plain.picture(), plain.picture()));
        EXPECT_EQ(field.at(width - 1, height - 1), MotionVector{});
        const Bitmap target = Bitmap::create(width, height);
        project_depth_mask(field, plain.picture(), target.picture());
    }
}

TEST(MatchBlock, TheFirstOfEqualsWinsAndIsUnclear) {
    const Bitmap plain = Bitmap::create(64, 64);
    const BlockMatch match = match_block(plain.picture(), plain.picture(), 8, 20, 20, {-3, 3, -2, 2});
    EXPECT_EQ(match.vector, (MotionVector{-3, -2}));
    EXPECT_EQ(match.flags, 5);
    EXPECT_EQ(match_block(plain.picture(), plain.picture(), 8, 20, 20, {2, 1, 0, 0}).vector, MotionVector{});
}

}  // namespace

}  // namespace zemora::test
