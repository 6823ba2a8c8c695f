#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "codec/library.h"
#include "input/jpeg_check.h"
#include "input/picture_file.h"
#include "tests/support/pictures.h"

namespace zemora {
namespace {

using FileBytes = std::vector<std::uint8_t>;

/// Texture on the left, a plain right: bytes at every place of the file, and a plain end.
Bitmap textured_picture() {
    Bitmap picture = Bitmap::create(160, 128);
    std::mt19937 random(5);
    for (int y = 0; y < 128; ++y) {
        for (int x = 0; x < 3 * 160; ++x) {
            picture.picture().row(y)[x] = static_cast<std::uint8_t>(x / 2 + y / 4 + random() % 60);
        }
    }
    return picture;
}

FileBytes jpeg_file(int flags = 0) {
    return test::encoded(textured_picture(), FIF_JPEG, 85 | flags);
}

void insert(FileBytes& file, std::size_t at, const FileBytes& bytes) {
    file.insert(file.begin() + static_cast<std::ptrdiff_t>(at), bytes.begin(), bytes.end());
}

/// Place of the first marker with that code behind the first one's segment.
std::size_t place_of(const FileBytes& file, std::uint8_t code) {
    const FileBytes marker{0xFF, code};
    return static_cast<std::size_t>(std::search(file.begin(), file.end(), marker.begin(), marker.end()) -
                                    file.begin());
}

/// Something odd in the head that leaves the pixels whole.
struct OddHead {
    const char* name;
    void (*make)(FileBytes& file);
};

const OddHead kOddHeads[] = {
    {"nothing", [](FileBytes&) {}},
    {"bytes_between_segments",
     [](FileBytes& file) {
         insert(file, place_of(file, 0xDB), {7, 0xFF, 0, 9});
     }},
    {"future_jfif", [](FileBytes& file) { file[11] = 4; }},
    {"unknown_transform",
     [](FileBytes& file) {
         insert(file, place_of(file, 0xDB),
                {0xFF, 0xEE, 0, 14, 'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 77});
     }},
    {"odd_scan",
     [](FileBytes& file) {
         const std::size_t scan = place_of(file, 0xDA);
         file[scan + 2 + static_cast<std::size_t>(file[scan + 3]) - 2] = 0;  // the last coefficient
     }},
    {"fill_bytes",
     [](FileBytes& file) {
         insert(file, place_of(file, 0xDB), {0xFF, 0xFF});
     }},
    {"thumbnail",
     [](FileBytes& file) {
         FileBytes segment{0xFF, 0xE1, 0, 12, 'E', 'x', 'i', 'f', 0, 0, 0xFF, 0xD8, 0xFF, 0xD9};
         insert(file, 20, segment);
     }},
};

class OddJpegHead : public testing::TestWithParam<OddHead> {};

TEST_P(OddJpegHead, HidesNoDamageBehindIt) {
    FileBytes file = jpeg_file();
    const LoadedPicture plain = decode_picture(file, "a.jpg");
    GetParam().make(file);
    const LoadedPicture whole = decode_picture(file, "a.jpg");
    ASSERT_EQ(whole.status, LoadStatus::done) << whole.reason;
    EXPECT_EQ(test::colour_at(whole.bitmap.picture(), 9, 9), test::colour_at(plain.bitmap.picture(), 9, 9));
    const std::size_t scan = place_of(file, 0xDA);
    for (std::size_t part = 1; part < 20; ++part) {
        const std::size_t place = scan + 20 + part * (file.size() - scan - 20) / 20;
        EXPECT_NE(
            decode_picture({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(place)}, "a.jpg").status,
            LoadStatus::done)
            << "cut off at " << place;
    }
    FileBytes damaged = file;
    const std::size_t middle = scan + (file.size() - scan) / 3;
    damaged.erase(damaged.begin() + static_cast<std::ptrdiff_t>(middle),
                  damaged.begin() + static_cast<std::ptrdiff_t>(middle + (file.size() - scan) / 4));
    EXPECT_NE(decode_picture(damaged, "a.jpg").status, LoadStatus::done) << "a hole";
    damaged = file;
    insert(damaged, middle,
           FileBytes(file.begin() + static_cast<std::ptrdiff_t>(middle - 500),
                     file.begin() + static_cast<std::ptrdiff_t>(middle)));
    EXPECT_NE(decode_picture(damaged, "a.jpg").status, LoadStatus::done) << "too many pixels";
}

INSTANTIATE_TEST_SUITE_P(Table, OddJpegHead, testing::ValuesIn(kOddHeads),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(JpegShape, EndsWithItsOwnPictureWhateverFollows) {
    for (const int flags : {0, JPEG_PROGRESSIVE, JPEG_SUBSAMPLING_444}) {
        FileBytes file = jpeg_file(flags);
        const std::size_t end = file.size() - 2;
        EXPECT_EQ(jpeg_shape(file).end, end);
        const FileBytes next = file;
        file.insert(file.end(), next.begin(), next.end());
        EXPECT_EQ(jpeg_shape(file).end, end);
        EXPECT_EQ(decode_picture(file, "a.jpg").status, LoadStatus::done);
        file.resize(end);
        EXPECT_FALSE(jpeg_shape(file).end);
    }
    EXPECT_FALSE(jpeg_shape({}).end);
}

TEST(JpegShape, PaddingBeforeTheEndIsNoDamage) {
    FileBytes file = jpeg_file();
    insert(file, file.size() - 2, FileBytes(300, 0));
    EXPECT_EQ(decode_picture(file, "a.jpg").status, LoadStatus::done);
    file[file.size() - 40] = 3;
    EXPECT_NE(decode_picture(file, "a.jpg").status, LoadStatus::done);
}

/// A picture with a restart mark behind every row of blocks, as many cameras write it.
FileBytes jpeg_file_of_rows() {
    constexpr int kBlock = 8;
    const Bitmap picture = textured_picture();
    const int rows = picture.height() / kBlock;
    FileBytes file;
    for (int i = 0; i < rows; ++i) {
        const Bitmap part = LibraryBitmap::owner(
            FreeImage_Copy(LibraryBitmap::of(picture), 0, i * kBlock, picture.width(), (i + 1) * kBlock));
        const FileBytes row = test::encoded(part, FIF_JPEG, 85 | JPEG_SUBSAMPLING_444);
        const std::size_t scan = place_of(row, 0xDA);
        const std::size_t pixels = scan + 2 + static_cast<std::size_t>(row[scan + 3]);
        if (i == 0) {
            file.assign(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(pixels));
            file[place_of(file, 0xC0) + 6] = static_cast<std::uint8_t>(picture.height());
            insert(file, scan, {0xFF, 0xDD, 0, 4, 0, static_cast<std::uint8_t>(picture.width() / kBlock)});
        } else {
            insert(file, file.size(), {0xFF, static_cast<std::uint8_t>(0xD0 + (i - 1) % 8)});
        }
        file.insert(file.end(), row.begin() + static_cast<std::ptrdiff_t>(pixels), row.end() - 2);
    }
    insert(file, file.size(), {0xFF, 0xD9});
    return file;
}

TEST(JpegShape, ZerosInPlaceOfPixelsAreDamage) {
    const FileBytes whole = jpeg_file_of_rows();
    ASSERT_EQ(decode_picture(whole, "a.jpg").status, LoadStatus::done);
    const std::size_t size = whole.size() - 2;
    for (const std::size_t lost : {size / 20, size / 5, size / 2}) {
        FileBytes file = whole;
        std::fill_n(file.end() - 2 - static_cast<std::ptrdiff_t>(lost), lost, 0);
        EXPECT_NE(decode_picture(file, "a.jpg").status, LoadStatus::done) << lost;
    }
}

TEST(DamagedTiff, OfEveryCompressionIsUnreadable) {
    for (const int flags : {TIFF_LZW, TIFF_DEFLATE, TIFF_ADOBE_DEFLATE}) {
        const FileBytes whole = test::encoded(textured_picture(), FIF_TIFF, flags);
        ASSERT_EQ(decode_picture(whole, "a.tif").status, LoadStatus::done);
        FileBytes damaged = whole;
        std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(whole.size() / 4), whole.size() / 8, 0xFF);
        EXPECT_EQ(decode_picture(damaged, "a.tif").status, LoadStatus::unreadable) << flags;
    }
}

}  // namespace
}  // namespace zemora
