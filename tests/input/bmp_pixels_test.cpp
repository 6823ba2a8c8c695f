#include "input/bmp_pixels.h"

#include <gtest/gtest.h>

#include <bit>
#include <random>

#include "input/picture_file.h"
#include "tests/support/pictures.h"

namespace zemora {
namespace {

using FileBytes = std::vector<std::uint8_t>;

void put(FileBytes& file, std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i) {
        file.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

FileBytes bmp_head(int width, int height, int bits, int compression, std::uint32_t pixels) {
    FileBytes file{'B', 'M'};
    for (const std::uint32_t number :
         {0U, 0U, pixels, 40U, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)}) {
        put(file, number, 4);
    }
    put(file, 1, 2);
    put(file, static_cast<std::uint32_t>(bits), 2);
    put(file, static_cast<std::uint32_t>(compression), 4);
    for (int i = 0; i < 5; ++i) {
        put(file, 0, 4);
    }
    return file;
}

struct MaskRow {
    const char* name;
    int bits;
    std::uint32_t red, green, blue;
    int steps;  ///< Of the coarsest channel.
};

class BmpMasks : public testing::TestWithParam<MaskRow> {};

TEST_P(BmpMasks, ColoursAreTakenWhereTheMasksSay) {
    const MaskRow& row = GetParam();
    constexpr int kWidth = 5;
    for (const int height : {3, -3}) {
        FileBytes file = bmp_head(kWidth, height, row.bits, 3, 66);
        for (const std::uint32_t mask : {row.red, row.green, row.blue}) {
            put(file, mask, 4);
        }
        const auto scaled = [](int value, std::uint32_t mask) {
            const std::uint64_t greatest = mask >> std::countr_zero(mask);
            return static_cast<std::uint32_t>((value * greatest + 127) / 255) << std::countr_zero(mask);
        };
        for (int i = 0; i < 3; ++i) {
            const int y = height > 0 ? i : 2 - i;
            for (int x = 0; x < kWidth; ++x) {
                const Colour c = test::place_colour(x, y);
                put(file, scaled(c.red, row.red) | scaled(c.green, row.green) | scaled(c.blue, row.blue),
                    row.bits / 8);
            }
            file.resize((file.size() - 66 + 3) / 4 * 4 + 66);
        }
        const LoadedPicture loaded = decode_picture(file, "a.bmp");
        ASSERT_EQ(loaded.status, LoadStatus::done) << loaded.reason;
        for (int y = 0; y < 3; ++y) {
            const Colour got = test::colour_at(loaded.bitmap.picture(), 4, y);
            const Colour meant = test::place_colour(4, y);
            EXPECT_NEAR(got.red, meant.red, row.steps) << y;
            EXPECT_NEAR(got.green, meant.green, row.steps) << y;
            EXPECT_NEAR(got.blue, meant.blue, row.steps) << y;
        }
        file.pop_back();
        EXPECT_EQ(decode_picture(file, "a.bmp").status, LoadStatus::unreadable);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, BmpMasks,
                         testing::Values(MaskRow{"usual", 32, 0xFF0000, 0xFF00, 0xFF, 0},
                                         MaskRow{"red_first", 32, 0xFF, 0xFF00, 0xFF0000, 0},
                                         MaskRow{"alpha_first", 32, 0xFF000000, 0xFF0000, 0xFF00, 0},
                                         MaskRow{"ten_bits", 32, 0x3FF00000, 0xFFC00, 0x3FF, 0},
                                         MaskRow{"usual_16", 16, 0xF800, 0x7E0, 0x1F, 5},
                                         MaskRow{"twelve_of_16", 16, 0xF00, 0xF0, 0xF, 9}),
                         [](const auto& row) { return std::string(row.param.name); });

FileBytes run_file(const FileBytes& code) {
    FileBytes file = bmp_head(5, 3, 8, 1, 54 + 1024);
    for (std::uint32_t i = 0; i < 256; ++i) {
        put(file, i * 0x010101U, 4);
    }
    file.insert(file.end(), code.begin(), code.end());
    return file;
}

struct RunRow {
    const char* name;
    FileBytes code;
    const char* rows;  ///< The lowest first; empty for a damaged file.
};

class BmpRuns : public testing::TestWithParam<RunRow> {};

TEST_P(BmpRuns, GiveTheirPixels) {
    const LoadedPicture loaded = decode_picture(run_file(GetParam().code), "a.bmp");
    const std::string meant = GetParam().rows;
    ASSERT_EQ(loaded.status == LoadStatus::done, !meant.empty()) << loaded.reason;
    for (std::size_t i = 0; i < meant.size(); ++i) {
        const Colour got =
            test::colour_at(loaded.bitmap.picture(), static_cast<int>(i % 5), static_cast<int>(i / 5));
        EXPECT_EQ(got.blue, meant[i] - '0') << i;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, BmpRuns,
    testing::Values(RunRow{"runs", {5, 1, 0, 0, 5, 2, 0, 0, 5, 3, 0, 0, 0, 1}, "111112222233333"},
                    RunRow{
                        "literal", {0, 5, 1, 2, 3, 4, 5, 0, 0, 0, 5, 2, 0, 0, 5, 3, 0, 1}, "123452222233333"},
                    RunRow{"moves", {2, 1, 0, 2, 1, 1, 2, 4, 0, 1}, "110000004400000"},
                    RunRow{"beyond_the_row", {9, 1, 0, 0, 5, 2, 0, 0, 5, 3, 0, 1}, "111112222233333"},
                    RunRow{"short_rows", {1, 7, 0, 0, 0, 1}, "700000000000000"},
                    RunRow{"no_end_mark", {5, 1, 0, 0, 5, 2, 0, 0, 5, 3, 0, 0}, "111112222233333"},
                    RunRow{"cut_off", {5, 1, 0, 0, 5, 2, 0, 0, 5, 3}, ""},
                    RunRow{"cut_off_literal", {5, 1, 0, 0, 0, 5, 1, 2}, ""},
                    RunRow{"above_the_picture", {0, 2, 0, 3, 5, 1, 0, 1}, ""},
                    RunRow{"far_move", {0, 2, 0, 200, 0, 1}, ""}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(BmpPixels, BrokenFilesHarmNobody) {
    const FileBytes whole = run_file({5, 1, 0, 0, 0, 5, 1, 2, 3, 4, 5, 0, 0, 0, 5, 3, 0, 1});
    std::mt19937 random(3);
    for (int i = 0; i < 20'000; ++i) {
        FileBytes broken = whole;
        broken.resize(random() % 4 == 0 ? random() % whole.size() : whole.size());
        for (int change = 0; change < 3 && !broken.empty(); ++change) {
            const std::size_t place = change == 0 ? 10 + random() % 44 : broken.size() - 1 - random() % 18;
            if (place < broken.size() && (place < 18 || place >= 26)) {  // sizes cost memory
                broken[place] = static_cast<std::uint8_t>(random());
            }
        }
        (void)with_plain_bmp_pixels(broken);
    }
}

}  // namespace
}  // namespace zemora
