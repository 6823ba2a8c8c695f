// Photos with depth masks, from files to stereo pairs.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "numerics/turn.h"
#include "tests/e2e/workshop.h"
#include "tests/input/generated_mpo.h"

namespace zemora::test {
namespace {

using Names = std::set<std::string>;

constexpr int kWidth = 400;
constexpr int kHeight = 300;
const std::vector<std::string> kDepthSettings{
    "--EstimateGeometry=0", "--DeviationTarget=40", "--StereoOutput=0", "--AutoOutputContrast=0",
    "--OutputFormat=3",     "--WindowOffset=0",     "--CroppOutput=0"};

std::vector<std::string> with(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), kDepthSettings.begin(), kDepthSettings.end());
    return arguments;
}

/// Near in the middle, far around.
Bitmap mask_picture(std::uint8_t near, std::uint8_t far) {
    Bitmap mask = Bitmap::create(kWidth, kHeight);
    fill(mask.picture(), {far, far, far});
    fill(mask.picture().part(150, 100, 100, 100), {near, near, near});
    return mask;
}

/// Columns that the block at (x, y) of the left view is to be moved by to match the right view.
int disparity_at(ConstPicture left, ConstPicture right, int x, int y) {
    constexpr int kReach = 24;
    constexpr int kBlock = 24;
    int best = 0;
    long least = -1;
    for (int shift = -kReach; shift <= kReach; ++shift) {
        long sum = 0;
        for (int row = y; row < y + kBlock; ++row) {
            for (int column = x; column < x + kBlock; ++column) {
                sum += std::abs(left.pixel(column, row)[1] - right.pixel(column + shift, row)[1]);
            }
        }
        if (least < 0 || sum < least) {
            least = sum;
            best = shift;
        }
    }
    return best;
}

/// White stays in the window, black is moved by the parallax of 4 % of the width.
void expect_depth(const Workshop& workshop, const std::string& left, const std::string& right) {
    const Bitmap a = workshop.load(left);
    const Bitmap b = workshop.load(right);
    ASSERT_EQ(a.width(), kWidth) << "nothing is cut off";
    EXPECT_EQ(disparity_at(a.picture(), b.picture(), 190, 140), 0) << left;
    EXPECT_EQ(disparity_at(a.picture(), b.picture(), 60, 40), 16) << left;
}

std::string bytes_of(const Bitmap& picture) {
    const FileBytes bytes = encoded(picture, FIF_JPEG, 95);
    return {bytes.begin(), bytes.end()};
}

TEST(DepthLayouts, PhotoAndMaskInTwoFilesOrOneBecomeAPair) {
    Workshop workshop;
    const Bitmap& photo = aligned_views().left;
    const Bitmap mask = mask_picture(255, 0);
    workshop.save("a_rgb.png", photo.picture());
    workshop.save("a_d.png", mask.picture());
    Outcome outcome = workshop.run(with(
        {"--InputMode=1", "--StereoImageInput=5", "--ExtraOutput=9", "--ImageType=png", "--ReportMode=1"}));
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_NE(read_text(workshop.path("zemora_report.txt")).find("Far point disparity"), std::string::npos);
    expect_depth(workshop, "cl/a_cl.bmp", "cr/a_cr.bmp");
    const Bitmap judged = workshop.load("cd/a_cd.jpg");
    const std::uint8_t* near = judged.picture().pixel(200, 150);
    const std::uint8_t* far = judged.picture().pixel(30, 30);
    EXPECT_GT(near[2], near[0]) << "red is near";
    EXPECT_GT(far[0], far[2]) << "blue is far";

    const Bitmap both = Bitmap::create(2 * kWidth, kHeight);
    copy(photo.picture(), both.picture().part(0, 0, kWidth, kHeight));
    copy(mask.picture(), both.picture().part(kWidth, 0, kWidth, kHeight));
    workshop.save("two/b.png", both.picture());
    outcome = workshop.run(
        with({"--InputMode=4", "--StereoImageInput=6", "--PathofImages=two", "--ImageType=png"}));
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    expect_depth(workshop, "two/cl/b_cl.bmp", "two/cr/b_cr.bmp");
}

/// A photo and a mask of half its size.
void save_photo_and_small_mask(const Workshop& workshop) {
    workshop.save("a_rgb.png", aligned_views().left.picture());
    const Bitmap mask = Bitmap::create(kWidth / 2, kHeight / 2);
    fill(mask.picture(), {0, 0, 0});
    fill(mask.picture().part(75, 50, 50, 50), {255, 255, 255});
    workshop.save("a_d.png", mask.picture());
}

TEST(DepthLayouts, NamedFilesBecomeAPairAndAMaskOfAnotherSizeIsScaled) {
    Workshop workshop;
    save_photo_and_small_mask(workshop);
    Outcome outcome = workshop.run(with({"a_rgb.png", "a_d.png", "--StereoImageInput=5"}));
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    expect_depth(workshop, "cl/a_cl.bmp", "cr/a_cr.bmp");
    const Bitmap both = Bitmap::create(2 * kWidth, kHeight);
    copy(aligned_views().left.picture(), both.picture().part(0, 0, kWidth, kHeight));
    copy(mask_picture(255, 0).picture(), both.picture().part(kWidth, 0, kWidth, kHeight));
    workshop.save("b.png", both.picture());
    outcome = workshop.run(with({"b.png", "--StereoImageInput=6"}));
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    expect_depth(workshop, "cl/b_cl.bmp", "cr/b_cr.bmp");
}

TEST(DepthLayouts, InverseInputExchangesTheRenderedViews) {
    Workshop workshop;
    save_photo_and_small_mask(workshop);
    for (const auto& call : {std::vector<std::string>{"a_rgb.png", "a_d.png", "--StereoImageInput=5"},
                             {"--InputMode=1", "--StereoImageInput=5", "--ImageType=png"}}) {
        ASSERT_EQ(workshop.run(with(call)).exit_code, 0);
        const Bitmap left = workshop.load("cl/a_cl.bmp");
        const Bitmap right = workshop.load("cr/a_cr.bmp");
        std::vector<std::string> inverse = call;
        inverse.emplace_back("--InverseInput=1");
        ASSERT_EQ(workshop.run(with(inverse)).exit_code, 0);
        EXPECT_EQ(greatest_difference(workshop.load("cl/a_cl.bmp").picture(), right.picture()), 0);
        EXPECT_EQ(greatest_difference(workshop.load("cr/a_cr.bmp").picture(), left.picture()), 0);
    }
}

TEST(DepthLayouts, WhatOnlyOneViewShowsAtTheSidesIsCut) {
    Workshop workshop;
    const Bitmap photo = aligned_views().left.clone();
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            photo.picture().pixel(x, y)[1] |= 64;  // nothing black in it
        }
    }
    workshop.save("a_rgb.png", photo.picture());
    const Bitmap mask = mask_picture(255, 120);
    // Rows of other depths at the sides: a ragged edge.
    fill(mask.picture().part(0, 200, kWidth, 60), {0, 0, 0});
    workshop.save("a_d.png", mask.picture());
    std::vector<std::string> call = with({"a_rgb.png", "a_d.png", "--StereoImageInput=5"});
    call.emplace_back("--CroppOutput=2");
    const Outcome outcome = workshop.run(call);
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    int blank = 0;
    for (const char* name : {"cl/a_cl.bmp", "cr/a_cr.bmp"}) {
        const Bitmap view = workshop.load(name);
        EXPECT_EQ(view.width(), kWidth - 2 * 8) << name;
        for (int y = 0; y < view.height(); ++y) {
            for (int x = 0; x < view.width(); ++x) {
                const std::uint8_t* pixel = view.picture().pixel(x, y);
                blank += pixel[0] + pixel[1] + pixel[2] < 3 ? 1 : 0;
            }
        }
    }
    EXPECT_EQ(blank, 0) << outcome.text;
}

TEST(DepthLayouts, MissingMasksOfASequenceAreMadeAndAMissingPhotoIsNamed) {
    Workshop workshop;
    const Bitmap& photo = aligned_views().left;
    for (const char* name : {"l/p_01.png", "l/p_02.png", "l/p_03.png"}) {
        workshop.save(name, photo.picture());
    }
    workshop.save("r/p_01.png", mask_picture(255, 0).picture());
    workshop.save("r/p_03.png", mask_picture(255, 0).picture());
    const auto arguments = with({"--InputMode=3", "--StereoImageInput=5", "--ImageType=png"});
    const Outcome outcome = workshop.run(arguments);
    EXPECT_TRUE(outcome.tells("In total 3 object")) << outcome.text;
    EXPECT_LT(mean_difference(workshop.load("r/p_02.png").picture(), mask_picture(255, 0).picture()), 0.5);
    EXPECT_TRUE(outcome.tells("less than 480 pixels wide")) << outcome.text;
    Workshop gap;
    for (const char* name : {"l/p_01.png", "l/p_02.png", "l/p_04.png", "l/p_05.png"}) {
        gap.save(name, photo.picture());
    }
    gap.save("r/p_01.png", mask_picture(255, 0).picture());
    gap.save("r/p_04.png", mask_picture(255, 0).picture());
    const Outcome stopped = gap.run(arguments);
    EXPECT_EQ(stopped.exit_code, 1) << stopped.text;
    EXPECT_TRUE(stopped.tells("p_03.png")) << stopped.text;
    EXPECT_EQ(gap.files().size(), 6U) << "nothing is left behind";
}

/// A photo with a map of `width` x `height` in the trailer of that maker's files.
std::string samsung_photo(const Bitmap& photo, const FileBytes& map, std::uint32_t width,
                          std::uint32_t height) {
    FileBytes blocks;
    FileBytes directory{'S', 'E', 'F', 'H'};
    NumberWriter listed(directory, false);
    listed.u32(101);
    listed.u32(2);
    const auto block = [&](std::uint32_t type, const std::string& name, const FileBytes& data) {
        NumberWriter written(blocks, false);
        written.u16(0);
        written.u16(type);
        written.u32(static_cast<std::uint32_t>(name.size()));
        blocks.insert(blocks.end(), name.begin(), name.end());
        blocks.insert(blocks.end(), data.begin(), data.end());
    };
    FileBytes extra(96);
    const auto put = [&](std::size_t at, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i) {
            extra[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
    };
    put(32, 0xffff0001U);
    put(36, width);
    put(40, height);
    block(0x0ab1, "DualShot_DepthMap_1", map);
    const std::size_t first = blocks.size();
    block(0x0ab3, "DualShot_Extra_Info", extra);
    const auto entry = [&](std::uint32_t type, std::size_t from, std::size_t to) {
        listed.u16(0);
        listed.u16(type);
        listed.u32(static_cast<std::uint32_t>(blocks.size() - from));
        listed.u32(static_cast<std::uint32_t>(to - from));
    };
    entry(0x0ab1, 0, first);
    entry(0x0ab3, first, blocks.size());
    const auto length = static_cast<std::uint32_t>(directory.size());
    listed.u32(length);
    std::string file = bytes_of(photo);
    file.append(blocks.begin(), blocks.end());
    file.append(directory.begin(), directory.end());
    return file + "SEFT";
}

void set_maker(const Workshop& workshop, const std::string& file, const std::string& maker) {
    const std::string call = "exiftool -q -overwrite_original -m '-EXIF:Make=" + maker +
                             "' '-EXIF:Orientation#=1' '" + workshop.path(file) + "'";
    ASSERT_EQ(std::system(call.c_str()), 0) << call;
}

/// Runs over one photo with depth data.
Outcome run_phone(const Workshop& workshop, const std::string& file) {
    return workshop.run(with({"--InputMode=0", "--StereoImageInput=7", "--StereoFileName=" + file}));
}

TEST(PhoneDepth, TheMapOfEachMakerIsFoundScaledAndKept) {
    const Bitmap& photo = aligned_views().left;
    const Bitmap mask = mask_picture(255, 0);
    Workshop workshop;
    const GeneratedMpo mpo = make_mpo({}, photo, mask);
    workshop.write("apple.jpg", {mpo.bytes.begin(), mpo.bytes.end()});
    set_maker(workshop, "apple.jpg", "Apple");
    Outcome outcome = run_phone(workshop, "apple.jpg");
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    expect_depth(workshop, "cl/apple_cl.bmp", "cr/apple_cr.bmp");
    EXPECT_TRUE(workshop.files().contains("cd/apple_D.jpg"));

    // Half the size, and dark near.
    FileBytes map;
    for (int y = kHeight / 2 - 1; y >= 0; --y) {
        for (int x = 0; x < kWidth / 2; ++x) {
            map.push_back(static_cast<std::uint8_t>(255 - mask.picture().pixel(2 * x, 2 * y)[0]));
        }
    }
    workshop.write("sam.jpg", samsung_photo(photo, map, kWidth / 2, kHeight / 2));
    set_maker(workshop, "sam.jpg", "samsung");
    outcome = run_phone(workshop, "sam.jpg");
    ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
    expect_depth(workshop, "cl/sam_cl.bmp", "cr/sam_cr.bmp");

    workshop.write("other.jpg", bytes_of(photo));
    workshop.write("other_D.jpg", bytes_of(mask));
    for (int run = 0; run < 2; ++run) {
        outcome = run_phone(workshop, "other.jpg");
        ASSERT_EQ(outcome.exit_code, 0) << outcome.text;
        expect_depth(workshop, "cl/other_cl.bmp", "cr/other_cr.bmp");
        EXPECT_FALSE(workshop.files().contains("other_D.jpg")) << "it is kept below cd";
    }
}

TEST(PhoneDepth, APhotoWithoutDepthIsSkippedWithTheReason) {
    struct Row {
        const char* maker;
        const char* told;
    };
    for (const Row& row : {Row{"Apple", "does not contain a depth mask"},
                           Row{"samsung", "does not contain a depth mask"}, Row{"Other", "other_D.jpg"}}) {
        Workshop workshop;
        workshop.write("other.jpg", bytes_of(aligned_views().left));
        set_maker(workshop, "other.jpg", row.maker);
        const Outcome outcome = run_phone(workshop, "other.jpg");
        EXPECT_TRUE(outcome.tells(row.told)) << outcome.text;
        EXPECT_EQ(workshop.files(), Names{"other.jpg"});
    }
}

}  // namespace
}  // namespace zemora::test
