#include "input/picture_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>

#include "codec/library.h"
#include "input/targa_check.h"
#include "input/tiff_profile.h"
#include "tests/support/outside_files.h"
#include "tests/support/pictures.h"
#include "tests/support/raw_picture.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using test::TestFolder;

void write_bytes(const std::string& path, std::span<const std::uint8_t> bytes) {
    test::write_text(path, {bytes.begin(), bytes.end()});
}

struct FormRow {
    const char* name;
    FREE_IMAGE_FORMAT format;
    int flags;
    FREE_IMAGE_TYPE type;
    int bits;       ///< Of FIT_BITMAP.
    int tolerance;  ///< Levels that the form may lose.
};

// clang-format off
constexpr FormRow kForms[] = {
    {"jpeg",            FIF_JPEG,   95,                    FIT_BITMAP, 24, 12},
    {"jpeg_progressive",FIF_JPEG,   95 | JPEG_PROGRESSIVE, FIT_BITMAP, 24, 12},
    {"jpeg_grey",       FIF_JPEG,   95,                    FIT_BITMAP, 8,  12},
    {"png",             FIF_PNG,    0,                     FIT_BITMAP, 24, 0},
    {"png_alpha",       FIF_PNG,    0,                     FIT_BITMAP, 32, 0},
    {"png_palette",     FIF_PNG,    0,                     FIT_BITMAP, 8,  0},
    {"png_deep",        FIF_PNG,    0,                     FIT_RGB16,  48, 0},
    {"png_deep_grey",   FIF_PNG,    0,                     FIT_UINT16, 16, 0},
    {"tiff",            FIF_TIFF,   TIFF_NONE,             FIT_BITMAP, 24, 0},
    {"tiff_lzw",        FIF_TIFF,   TIFF_LZW,              FIT_BITMAP, 24, 0},
    {"tiff_deep",       FIF_TIFF,   TIFF_DEFLATE,          FIT_RGB16,  48, 0},
    {"bmp",             FIF_BMP,    0,                     FIT_BITMAP, 24, 0},
    {"bmp_palette",     FIF_BMP,    0,                     FIT_BITMAP, 8,  0},
    {"targa",           FIF_TARGA,  0,                     FIT_BITMAP, 24, 0},
    {"targa_rle",       FIF_TARGA,  TARGA_SAVE_RLE,        FIT_BITMAP, 24, 0},
    {"targa_rle_grey",  FIF_TARGA,  TARGA_SAVE_RLE,        FIT_BITMAP, 8,  0},
    {"gif",             FIF_GIF,    0,                     FIT_BITMAP, 8,  0},
    {"ppm",             FIF_PPMRAW, 0,                     FIT_BITMAP, 24, 0},
    {"pgm",             FIF_PGMRAW, 0,                     FIT_BITMAP, 8,  0},
    {"pgm_deep",        FIF_PGMRAW, 0,                     FIT_UINT16, 16, 0},
};
// clang-format on

constexpr int kWidth = 61;  // odd, so that rows are padded
constexpr int kHeight = 40;

/// Brightness of a place; the same in every form.
int level_at(int x, int y) {
    return (x * 3 + y * 2) % 250;
}

std::vector<std::uint8_t> file_of(const FormRow& row) {
    const Bitmap bitmap = LibraryBitmap::owner(FreeImage_AllocateT(row.type, kWidth, kHeight, row.bits));
    for (int y = 0; y < kHeight; ++y) {
        BYTE* line = FreeImage_GetScanLine(LibraryBitmap::of(bitmap), y);
        const int bytes = row.bits / 8;
        for (int x = 0; x < kWidth; ++x) {
            std::fill_n(line + x * bytes, bytes, static_cast<BYTE>(level_at(x, y)));
            if (row.type == FIT_BITMAP && row.bits == 32) {
                line[x * bytes + 3] = 255;
            }
        }
    }
    return test::encoded(bitmap, row.format, row.flags);
}

class Forms : public testing::TestWithParam<FormRow> {};

TEST_P(Forms, ArriveAs24BitsWithTheirPixels) {
    const TestFolder folder;
    write_bytes(folder / "picture.img", file_of(GetParam()));  // the content tells the type
    const LoadedPicture loaded = load_picture(folder / "picture.img");
    ASSERT_EQ(loaded.status, LoadStatus::done) << loaded.reason;
    ASSERT_EQ(loaded.bitmap.bits_per_pixel(), 24);
    ASSERT_EQ(loaded.bitmap.width(), kWidth);
    ASSERT_EQ(loaded.bitmap.height(), kHeight);
    for (int y = 0; y < kHeight; y += 3) {
        for (int x = 0; x < kWidth; x += 5) {
            const Colour c = test::colour_at(loaded.bitmap.picture(), x, y);
            for (const int value : {c.blue, c.green, c.red}) {
                ASSERT_NEAR(value, level_at(x, y), GetParam().tolerance) << x << ',' << y;
            }
        }
    }
}

TEST_P(Forms, CutOffFileIsNeverTakenForAWholeOne) {
    const TestFolder folder;
    const std::vector<std::uint8_t> whole = file_of(GetParam());
    const bool targa = GetParam().format == FIF_TARGA;
    for (const double part : {0.02, 0.3, 0.6, 0.9, 0.97}) {
        const auto size = static_cast<std::size_t>(part * static_cast<double>(whole.size()));
        write_bytes(folder / (targa ? "picture.tga" : "picture.img"), std::span(whole).first(size));
        const LoadedPicture loaded = load_picture(folder / (targa ? "picture.tga" : "picture.img"));
        EXPECT_NE(loaded.status, LoadStatus::done) << part;
        EXPECT_FALSE(loaded.reason.empty()) << part;
    }
}

INSTANTIATE_TEST_SUITE_P(Table, Forms, testing::ValuesIn(kForms),
                         [](const auto& row) { return std::string(row.param.name); });

/// A TIFF whose directory stands before its pixels, as cameras write it.
std::vector<std::uint8_t> tiff_with_directory_first(unsigned width, unsigned height) {
    const unsigned bytes = width * height * 3;
    constexpr unsigned kEntries = 9;
    constexpr unsigned kPixels = 8 + 2 + kEntries * 12 + 4 + 6;
    std::vector<std::uint8_t> file{'I', 'I', 42, 0, 8, 0, 0, 0, kEntries, 0};
    const auto put = [&](unsigned value, int size) {
        for (int i = 0; i < size; ++i) {
            file.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    };
    // Tag, type (3 short, 4 long), count, value.
    const unsigned entries[kEntries][4] = {{256, 4, 1, width}, {257, 4, 1, height}, {258, 3, 3, kPixels - 6},
                                           {259, 3, 1, 1},     {262, 3, 1, 2},      {273, 4, 1, kPixels},
                                           {277, 3, 1, 3},     {278, 4, 1, height}, {279, 4, 1, bytes}};
    for (const auto& entry : entries) {
        put(entry[0], 2);
        put(entry[1], 2);
        put(entry[2], 4);
        put(entry[3], 4);
    }
    put(0, 4);
    for (int i = 0; i < 3; ++i) {
        put(8, 2);
    }
    for (unsigned i = 0; i < bytes; ++i) {
        file.push_back(static_cast<std::uint8_t>(i));
    }
    return file;
}

TEST(LoadPicture, CutOffTiffWithItsDirectoryFirstIsUnreadableAndSilent) {
    const TestFolder folder;
    const std::vector<std::uint8_t> whole = tiff_with_directory_first(50, 40);
    write_bytes(folder / "a.tif", whole);
    ASSERT_EQ(load_picture(folder / "a.tif").status, LoadStatus::done);
    testing::internal::CaptureStderr();
    for (const double part : {0.3, 0.9}) {
        write_bytes(
            folder / "a.tif",
            std::span(whole).first(static_cast<std::size_t>(part * static_cast<double>(whole.size()))));
        EXPECT_EQ(load_picture(folder / "a.tif").status, LoadStatus::unreadable) << part;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(LoadPicture, ColourProfileOfATiffIsNotHandedOn) {
    const TestFolder folder;
    const Bitmap picture = test::place_picture(20, 10);
    std::vector<std::uint8_t> profile(300'000, 7);  // memory of this size goes back to the system when freed
    FreeImage_CreateICCProfile(LibraryBitmap::of(picture), profile.data(), static_cast<long>(profile.size()));
    write_bytes(folder / "a.tif", test::encoded(picture, FIF_TIFF, TIFF_NONE));
    ASSERT_GT(std::filesystem::file_size(folder / "a.tif"), profile.size());
    const LoadedPicture loaded = load_picture(folder / "a.tif");
    ASSERT_EQ(loaded.status, LoadStatus::done) << loaded.reason;
    EXPECT_EQ(FreeImage_GetICCProfile(LibraryBitmap::of(loaded.bitmap))->size, 0U);
    EXPECT_EQ(test::colour_at(loaded.bitmap.picture(), 3, 4), test::place_colour(3, 4));
}

TEST(TiffProfile, IsHiddenInEitherByteOrderAndBrokenDirectoriesAreLeft) {
    std::vector<std::uint8_t> low{'I',  'I', 42, 0, 8, 0, 0, 0, 1, 0, 0x73,
                                  0x87, 7,   0,  1, 0, 0, 0, 0, 0, 0, 0};
    std::vector<std::uint8_t> high{'M',  'M', 0, 42, 0, 0, 0, 8, 0, 1, 0x87,
                                   0x73, 0,   7, 0,  0, 0, 1, 0, 0, 0, 0};
    hide_tiff_profile(low);
    hide_tiff_profile(high);
    EXPECT_EQ(low[10], 0x72);
    EXPECT_EQ(high[11], 0x72);
    for (std::size_t size = 0; size < low.size(); ++size) {  // no read or write outside
        std::vector<std::uint8_t> part(high.begin(), high.begin() + static_cast<std::ptrdiff_t>(size));
        hide_tiff_profile(part);
    }
    std::vector<std::uint8_t> far{'I', 'I', 42, 0, 0xFF, 0xFF, 0xFF, 0xFF, 1, 0};
    std::vector<std::uint8_t> endless{'I',  'I',  43,   0,    8,    0,    0,    0,
                                      0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    hide_tiff_profile(far);
    hide_tiff_profile(endless);
}

TEST(LoadPicture, JpegBringsNoTint) {
    Bitmap picture = Bitmap::create(256, 256);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            std::fill_n(picture.picture().pixel(x, y), 3,
                        static_cast<std::uint8_t>(60 + (x * 7 + y * y) % 120));
        }
    }
    const LoadedPicture loaded =
        decode_picture(test::encoded(picture, FIF_JPEG, 90 | JPEG_SUBSAMPLING_422), "a.jpg");
    ASSERT_EQ(loaded.status, LoadStatus::done);
    double source = 0.0;
    std::array<double, 3> read{};
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            source += picture.picture().pixel(x, y)[0] / 65536.0;
            for (std::size_t c = 0; c < read.size(); ++c) {
                read[c] += loaded.bitmap.picture().pixel(x, y)[c] / 65536.0;
            }
        }
    }
    for (const double channel : read) {
        EXPECT_NEAR(channel, source, 0.3);
    }
}

TEST(LoadPicture, DeepPixelsAreKeptOnRequest) {
    const FormRow rows[] = {{"colours", FIF_TIFF, TIFF_DEFLATE, FIT_RGB16, 48, 0},
                            {"alpha", FIF_TIFF, TIFF_NONE, FIT_RGBA16, 64, 0},
                            {"grey", FIF_TIFF, TIFF_NONE, FIT_UINT16, 16, 0},
                            {"alpha of a PNG", FIF_PNG, 0, FIT_RGBA16, 64, 0},
                            {"grey of a PNG", FIF_PNG, 0, FIT_UINT16, 16, 0}};
    for (const FormRow& row : rows) {
        const LoadedPicture loaded = decode_picture(file_of(row), "a", true);
        ASSERT_EQ(loaded.bitmap.bits_per_pixel(), 48) << row.name;
        const auto* pixel =
            reinterpret_cast<const FIRGB16*>(FreeImage_GetScanLine(LibraryBitmap::of(loaded.bitmap), 7)) + 9;
        const int deep = level_at(9, 7) * 257;  // both bytes alike
        EXPECT_EQ(pixel->red, deep) << row.name;
        EXPECT_EQ(pixel->blue, deep) << row.name;
    }
}

struct BadRow {
    const char* name;
    const char* content;
    LoadStatus status;
};

class NotPictures : public testing::TestWithParam<BadRow> {};

TEST_P(NotPictures, AreRefusedWithAReason) {
    const TestFolder folder;
    test::write_text(folder / GetParam().name, GetParam().content);
    const LoadedPicture loaded = load_picture(folder / GetParam().name);
    EXPECT_EQ(loaded.status, GetParam().status);
    EXPECT_FALSE(loaded.reason.empty());
}

INSTANTIATE_TEST_SUITE_P(Table, NotPictures,
                         testing::Values(BadRow{"empty.jpg", "", LoadStatus::unreadable},
                                         BadRow{"text.jpg", "no picture at all\n", LoadStatus::unreadable},
                                         BadRow{"text.png", "no picture at all\n", LoadStatus::unreadable},
                                         BadRow{"text.tga", "x", LoadStatus::unreadable},
                                         BadRow{"text.tif", "II*", LoadStatus::unreadable},
                                         BadRow{"text.bmp", "BM", LoadStatus::unreadable},
                                         BadRow{"big.ppm", "P6\n60000 60000\n255\nx", LoadStatus::unreadable},
                                         BadRow{"text.txt", "plain text", LoadStatus::unsupported},
                                         BadRow{"noending", "plain text", LoadStatus::unsupported},
                                         BadRow{"a.webp", "RIFF\x10\x10\x10\x10WEBPVP8 ",
                                                LoadStatus::unsupported},
                                         BadRow{"a.psd", "8BPS\x01\x01\x01", LoadStatus::unsupported}));

TEST(LoadPicture, RawIsDevelopedUprightAndForDisplay) {
    constexpr double kDark = 0.1;  // of the greatest value
    const auto file =
        test::raw_picture(120, 80, 6, [](unsigned x, unsigned) { return x < 60 ? 6554 : 65535; });
    for (const bool keep_depth : {false, true}) {
        const LoadedPicture loaded = decode_picture(file, "a.dng", keep_depth);
        ASSERT_EQ(loaded.status, LoadStatus::done) << loaded.reason;
        ASSERT_EQ(loaded.bitmap.width(), 80);
        ASSERT_EQ(loaded.bitmap.bits_per_pixel(), 24);
        const int dark = test::colour_at(loaded.bitmap.picture(), 40, 90).green;
        EXPECT_GT(dark, 2 * kDark * 255.0) << "linear light";
        EXPECT_GT(test::colour_at(loaded.bitmap.picture(), 40, 30).green, 250);
    }
}

TEST(LoadPicture, OrientationCountsOnlyForWhatIsReadHereAsItStands) {
    const TestFolder folder;
    write_bytes(folder / "a.jpg", test::encoded(test::place_picture(20, 10), FIF_JPEG));
    test::write_text(folder / "a.webp", "RIFF\x10\x10\x10\x10WEBPVP8 ");
    write_bytes(folder / "a.dng", test::raw_picture(120, 80, 6, [](unsigned, unsigned) { return 999; }));
    EXPECT_FALSE(is_loaded_upright(folder / "a.jpg"));
    EXPECT_TRUE(is_loaded_upright(folder / "a.webp"));
    EXPECT_TRUE(is_loaded_upright(folder / "a.dng"));
    EXPECT_FALSE(is_loaded_upright(folder / "none.jpg"));
}

TEST(LoadPicture, FoldersAndMissingFilesAreUnreadable) {
    const TestFolder folder;
    std::filesystem::create_directory(folder / "folder.jpg");
    for (const char* name : {"folder.jpg", "none.jpg"}) {
        EXPECT_EQ(load_picture(folder / name).status, LoadStatus::unreadable) << name;
    }
    EXPECT_EQ(capture_time_text(folder / "none.jpg"), "");
}

TEST(JpegMetadata, BetweenTheScansItIsHiddenToo) {
    static constexpr std::uint8_t kExif[] = {0xFF, 0xE1, 0, 34, 'E', 'x', 'i', 'f', 0, 0,    'M', 'M',
                                             0,    '*',  0, 0,  0,   8,   0,   1,   1, 0x0F, 0,   2,
                                             0,    0,    0, 4,  'a', 'b', 'c', 0,   0, 0,    0,   0};
    const auto file = test::encoded(test::place_picture(64, 48), FIF_JPEG, 90 | JPEG_PROGRESSIVE);
    static constexpr std::uint8_t kScan[] = {0xFF, 0xDA};
    std::size_t scans = 0;
    for (std::size_t at = 0; at + 1 < file.size(); ++at) {
        if (!std::equal(std::begin(kScan), std::end(kScan), file.begin() + static_cast<std::ptrdiff_t>(at))) {
            continue;
        }
        ++scans;
        auto changed = file;
        changed.insert(changed.begin() + static_cast<std::ptrdiff_t>(at), std::begin(kExif), std::end(kExif));
        const LoadedPicture loaded = decode_picture(changed, "a.jpg");
        ASSERT_EQ(loaded.status, LoadStatus::done) << loaded.reason;
        EXPECT_EQ(FreeImage_GetMetadataCount(FIMD_EXIF_MAIN, LibraryBitmap::of(loaded.bitmap)), 0U) << at;
    }
    EXPECT_GT(scans, 2U);
}

TEST(TargaCheck, CountsPacketsAcrossTheEndOfTheLastRow) {
    std::vector<std::uint8_t> file(18, 0);
    file[2] = 10;  // run-length coded true colour
    file[12] = 3;
    file[14] = 2;
    file[16] = 24;
    const std::vector<std::uint8_t> packets{0x83, 1, 2, 3, 0x01, 1,
                                            2,    3, 4, 5, 6};  // four alike, two of their own
    file.insert(file.end(), packets.begin(), packets.end());
    EXPECT_FALSE(targa_is_cut_off(file));
    file.pop_back();
    EXPECT_TRUE(targa_is_cut_off(file));
    EXPECT_TRUE(targa_is_cut_off({}));
}

TEST(OddPictures, LoadOrAreRefusedWithAReasonAndInSilence) {
    // Odd and damaged pictures of many programs.
    const std::string root = test::outside_folder("odd", "ZEMORA_ODD_PICTURES");
    if (root.empty()) {
        GTEST_SKIP() << "no folder of odd pictures";
    }
    testing::internal::CaptureStderr();
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file()) {
            continue;
        }
        const std::string name = entry.path().filename();
        const LoadedPicture loaded = load_picture(entry.path());
        EXPECT_EQ(loaded.status == LoadStatus::done, static_cast<bool>(loaded.bitmap)) << name;
        EXPECT_EQ(loaded.status == LoadStatus::done, loaded.reason.empty()) << name;
        (void)capture_time_text(entry.path());
        const auto begins = [&](const char* text) { return name.rfind(text, 0) == 0; };
        const std::string suffix = entry.path().extension();
        if (begins("good_")) {
            EXPECT_EQ(loaded.status, LoadStatus::done) << name << ": " << loaded.reason;
        }
        if (begins("truncated_jpeg") || begins("truncated_image") || begins("bad_shortfile") ||
            begins("cross_scan_line_t")) {
            EXPECT_EQ(loaded.status, LoadStatus::unreadable) << name;
        }
        if (suffix == ".webp" || suffix == ".HEIC" || suffix == ".jp2") {
            EXPECT_EQ(loaded.status, LoadStatus::unsupported) << name;
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace zemora
