#include <gtest/gtest.h>

#include "input/picture_file.h"
#include "tests/support/pictures.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using FileBytes = std::vector<std::uint8_t>;

/// A TIFF file of one tile or strip of 16 by 16 pixels, uncompressed; all channels of a pixel from `pixel`.
struct TiffPlan {
    unsigned photometric = 2;  ///< 5: inks.
    unsigned bits = 8;
    unsigned sample_format = 1;  ///< 3: floating point.
    bool tiled = false;
    bool planes_apart = false;
    FileBytes pixel;  ///< One byte a channel, repeated to its depth.
};

FileBytes tiff_file(const TiffPlan& plan) {
    constexpr unsigned kSide = 16;
    const auto channels = static_cast<unsigned>(plan.pixel.size());
    const unsigned plane = kSide * kSide * plan.bits / 8;
    const unsigned chunks = plan.planes_apart ? channels : 1;
    const unsigned chunk = plane * channels / chunks;
    FileBytes file{'I', 'I', 42, 0, 8, 0, 0, 0};
    const auto put = [&](unsigned value, int size) {
        for (int i = 0; i < size; ++i) {
            file.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    };
    const unsigned entries = plan.tiled ? 12 : 11;
    const unsigned bits_at = 8 + 2 + entries * 12 + 4;
    const unsigned formats_at = bits_at + 2 * channels;
    const unsigned offsets_at = formats_at + 2 * channels;
    const unsigned sizes_at = offsets_at + 4 * chunks;
    const unsigned pixels_at = sizes_at + 4 * chunks;
    const auto entry = [&](unsigned tag, unsigned type, unsigned count, unsigned value) {
        put(tag, 2);
        put(type, 2);
        put(count, 4);
        put(value, 4);
    };
    // One or two numbers of 16 bits stand in the entry itself.
    const auto numbers_of_channels = [channels](unsigned number, unsigned place) {
        return channels > 2 ? place : channels == 2 ? number << 16U | number : number;
    };
    const unsigned offsets = chunks == 1 ? pixels_at : offsets_at;
    const unsigned chunk_sizes = chunks == 1 ? chunk : sizes_at;
    put(entries, 2);
    entry(256, 4, 1, kSide);
    entry(257, 4, 1, kSide);
    entry(258, 3, channels, numbers_of_channels(plan.bits, bits_at));
    entry(259, 3, 1, 1);
    entry(262, 3, 1, plan.photometric);
    if (!plan.tiled) {
        entry(273, 4, chunks, offsets);
    }
    entry(277, 3, 1, channels);
    if (!plan.tiled) {
        entry(278, 4, 1, kSide);
        entry(279, 4, chunks, chunk_sizes);
    }
    entry(284, 3, 1, plan.planes_apart ? 2 : 1);
    if (plan.tiled) {
        entry(322, 4, 1, kSide);
        entry(323, 4, 1, kSide);
        entry(324, 4, chunks, offsets);
        entry(325, 4, chunks, chunk_sizes);
    }
    entry(339, 3, channels, numbers_of_channels(plan.sample_format, formats_at));
    put(0, 4);
    for (unsigned i = 0; i < channels; ++i) {
        put(plan.bits, 2);
    }
    for (unsigned i = 0; i < channels; ++i) {
        put(plan.sample_format, 2);
    }
    for (unsigned i = 0; i < chunks; ++i) {
        put(pixels_at + i * chunk, 4);
    }
    for (unsigned i = 0; i < chunks; ++i) {
        put(chunk, 4);
    }
    for (unsigned i = 0; i < plane * channels; ++i) {
        file.push_back(plan.planes_apart ? plan.pixel[i / plane]
                                         : plan.pixel[i / (plan.bits / 8) % channels]);
    }
    return file;
}

struct TiffRow {
    const char* name;
    TiffPlan plan;
    LoadStatus status;
    Colour colour{};  ///< Blue, green, red.
};

class TiffForms : public testing::TestWithParam<TiffRow> {};

TEST_P(TiffForms, AreUprightWhereTheConverterReadsThem) {
    const FileBytes file = tiff_file(GetParam().plan);
    const test::TestFolder folder;
    test::write_text(folder / "a.tif", {file.begin(), file.end()});
    EXPECT_EQ(is_loaded_upright(folder / "a.tif"), GetParam().status == LoadStatus::unsupported);
}

TEST_P(TiffForms, GiveTheirColoursOrGoToTheConverter) {
    for (const bool keep_depth : {false, true}) {
        const LoadedPicture loaded = decode_picture(tiff_file(GetParam().plan), "a.tif", keep_depth);
        if (keep_depth && GetParam().status == LoadStatus::unsupported && loaded.status == LoadStatus::done) {
            continue;  // no conversion was asked for
        }
        ASSERT_EQ(loaded.status, GetParam().status) << loaded.reason;
        if (keep_depth && GetParam().plan.bits == 16 && loaded.status == LoadStatus::done) {
            EXPECT_EQ(loaded.bitmap.bits_per_pixel(), 48) << "depth was lost";
        }
        if (loaded.status == LoadStatus::done && loaded.bitmap.bits_per_pixel() == 24) {
            const Colour got = test::colour_at(loaded.bitmap.picture(), 3, 11);
            EXPECT_NEAR(got.blue, GetParam().colour.blue, 1);
            EXPECT_NEAR(got.green, GetParam().colour.green, 1);
            EXPECT_NEAR(got.red, GetParam().colour.red, 1);
        }
    }
}

const FileBytes kRgb{200, 100, 50};
const FileBytes kCmyk{0, 51, 204, 85};  // two thirds of 255, 204 and 51
constexpr Colour kOfRgb{50, 100, 200};
constexpr Colour kOfCmyk{34, 136, 170};

INSTANTIATE_TEST_SUITE_P(
    Table, TiffForms,
    testing::Values(
        TiffRow{"strip", {.pixel = kRgb}, LoadStatus::done, kOfRgb},
        TiffRow{"tile", {.tiled = true, .pixel = kRgb}, LoadStatus::done, kOfRgb},
        TiffRow{"planes", {.planes_apart = true, .pixel = kRgb}, LoadStatus::done, kOfRgb},
        TiffRow{
            "tiled_planes", {.tiled = true, .planes_apart = true, .pixel = kRgb}, LoadStatus::unsupported},
        TiffRow{"inks", {.photometric = 5, .pixel = kCmyk}, LoadStatus::done, kOfCmyk},
        TiffRow{"tiled_inks", {.photometric = 5, .tiled = true, .pixel = kCmyk}, LoadStatus::done, kOfCmyk},
        TiffRow{"planes_of_inks",
                {.photometric = 5, .planes_apart = true, .pixel = kCmyk},
                LoadStatus::done,
                kOfCmyk},
        TiffRow{"deep_inks", {.photometric = 5, .bits = 16, .pixel = kCmyk}, LoadStatus::done, kOfCmyk},
        TiffRow{"deep_tiled_inks",
                {.photometric = 5, .bits = 16, .tiled = true, .pixel = kCmyk},
                LoadStatus::unsupported},
        TiffRow{
            "inks_and_alpha", {.photometric = 5, .pixel = {0, 51, 204, 85, 255}}, LoadStatus::unsupported},
        TiffRow{"deep_grey", {.photometric = 1, .bits = 16, .pixel = {60}}, LoadStatus::done, {60, 60, 60}},
        TiffRow{"deep_white_is_zero",
                {.photometric = 0, .bits = 16, .pixel = {60}},
                LoadStatus::done,
                {195, 195, 195}},
        TiffRow{"deep_grey_and_alpha",
                {.photometric = 1, .bits = 16, .pixel = {60, 255}},
                LoadStatus::done,
                {60, 60, 60}},
        TiffRow{"tiled_deep_grey_and_alpha",
                {.photometric = 1, .bits = 16, .tiled = true, .pixel = {60, 255}},
                LoadStatus::done,
                {60, 60, 60}},
        TiffRow{"very_deep_colours", {.bits = 32, .pixel = kRgb}, LoadStatus::unsupported},
        TiffRow{"float_grey",
                {.photometric = 1, .bits = 32, .sample_format = 3, .pixel = {62}},
                LoadStatus::unsupported},
        TiffRow{"float_colours",
                {.bits = 32, .sample_format = 3, .pixel = {62, 62, 61}},
                LoadStatus::unsupported}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace zemora
