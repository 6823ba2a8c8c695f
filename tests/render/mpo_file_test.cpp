#include "render/mpo_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "input/mpo.h"
#include "input/mpo_sizes.h"
#include "input/picture_file.h"
#include "platform/safe_file.h"
#include "render/extra_output.h"
#include "tests/render/render_scene.h"
#include "tests/support/outside_files.h"
#include "tests/support/pictures.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using testing::count_differences;
using testing::noisy;
using testing::Rig;
using Bytes = std::span<const std::uint8_t>;

FileBytes jpeg_of(const Bitmap& picture, int flags) {
    return test::encoded(picture, FIF_JPEG, flags);
}

std::uint32_t u32(Bytes bytes, std::size_t at) {
    return bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16 | std::uint32_t{bytes[at + 3]} << 24;
}
std::uint32_t u16_high_first(Bytes bytes, std::size_t at) {
    return static_cast<std::uint32_t>(bytes[at] << 8 | bytes[at + 1]);
}
bool has_text(Bytes bytes, std::string_view text) {
    return std::search(bytes.begin(), bytes.end(), text.begin(), text.end(), [](std::uint8_t a, char b) {
               return a == static_cast<std::uint8_t>(b);
           }) != bytes.end();
}

/// A joined file and what was said meanwhile.
struct Joined {
    explicit Joined(const MpoMetadata& metadata, int left_flags = JPEG_QUALITYGOOD,
                    int right_flags = JPEG_QUALITYGOOD)
        : left(jpeg_of(noisy(61, 43, 1), left_flags)), right(jpeg_of(noisy(61, 43, 2), right_flags)) {
        Rig rig;
        ::testing::internal::CaptureStdout();
        file = join_as_mpo(left, right, metadata, rig.voice).value_or(FileBytes());
        rig.console.flush();
        told = ::testing::internal::GetCapturedStdout();
    }
    FileBytes left;
    FileBytes right;
    FileBytes file;
    std::string told;
    [[nodiscard]] std::size_t exif_size() const { return u16_high_first(file, 4); }
};

MpoMetadata plain_metadata() {
    MpoMetadata metadata;
    metadata.width = 61;
    metadata.height = 43;
    return metadata;
}

Bitmap decoded(Bytes jpeg) {
    return decode_picture({jpeg.begin(), jpeg.end()}, "x.jpg").bitmap;
}

TEST(MpoFile, TheIndexLeadsToBothPicturesWhichAreThoseGiven) {
    struct Row {
        int left_flags;
        int right_flags;
    };
    // The coarsest tables are full of bytes 255; a progressive file has many scans.
    for (const Row& row :
         {Row{90, 75}, Row{1, 2}, Row{JPEG_PROGRESSIVE | 80, JPEG_SUBSAMPLING_444 | JPEG_OPTIMIZE | 100}}) {
        const Joined mpo(plain_metadata(), row.left_flags, row.right_flags);
        ASSERT_FALSE(mpo.file.empty());
        const Bytes file = mpo.file;
        const std::size_t index = 6 + mpo.exif_size() + 6;  // its TIFF header
        ASSERT_EQ(u16_high_first(file, index - 8), 0xFFE2U);
        const std::uint32_t size1 = u32(file, index + 54);
        const std::uint32_t size2 = u32(file, index + 70);
        const std::size_t start2 = index + u32(file, index + 74);
        EXPECT_EQ(start2, size1);
        ASSERT_EQ(start2 + size2, file.size());
        EXPECT_EQ(u16_high_first(file, start2), 0xFFD8U);
        EXPECT_EQ(u16_high_first(file, size1 - 2), 0xFFD9U);
        const Bitmap first = decoded(file.first(size1));
        const Bitmap second = decoded(file.subspan(start2));
        ASSERT_TRUE(first && second);
        EXPECT_EQ(count_differences(first.picture(), decoded(mpo.left).picture()), 0);
        EXPECT_EQ(count_differences(second.picture(), decoded(mpo.right).picture()), 0);
    }
}

TEST(MpoFile, BothIndexesHoldTheNumbersThatDisplaysRead) {
    const Joined mpo(plain_metadata());
    const Bytes file = mpo.file;
    const std::size_t first = 6 + mpo.exif_size() + 6;
    const std::size_t second = u32(file, first + 54) + first;
    struct Row {
        const char* meaning;
        std::size_t at;  ///< In the file.
        std::uint32_t value;
    };
    for (const Row& row : {
             Row{"byte order", first, 0x002A4949},
             Row{"number of pictures", first + 10 + 12 + 8, 2},
             Row{"place of the entries", first + 10 + 24 + 8, 50},
             Row{"next directory", first + 46, 82},
             Row{"attribute of the first", first + 50, 0x20020002},
             Row{"offset of the first", first + 58, 0},
             Row{"attribute of the second", first + 66, 0x00020002},
             Row{"number of the first view", first + 84 + 8, 1},
             Row{"base view", first + 84 + 12 + 8, 1},
             Row{"place of the angle", first + 84 + 24 + 8, 136},
             Row{"angle of the first", first + 136, 0},
             Row{"its divisor", first + 140, 1},
             Row{"place of the base", first + 84 + 36 + 8, 144},
             Row{"base of the first", first + 144, 77},
             Row{"its divisor", first + 148, 1000},
             Row{"byte order of the second", second, 0x002A4949},
             Row{"version of the second", second + 10 + 8, 0x30303130},
             Row{"number of the second view", second + 10 + 12 + 8, 2},
             Row{"base view of the second", second + 10 + 24 + 8, 1},
             Row{"place of its angle", second + 10 + 36 + 8, 74},
             Row{"angle", second + 74, 22},
             Row{"its divisor", second + 78, 10},
             Row{"base", second + 82, 77},
             Row{"its divisor", second + 86, 1000},
         }) {
        EXPECT_EQ(u32(file, row.at), row.value) << row.meaning;
    }
    EXPECT_EQ(u16_high_first(file, first - 6), 190U);
    EXPECT_EQ(u16_high_first(file, second - 6), 126U);
}

TEST(MpoFile, OnlyTheSizeOfTheFirstPictureIsSettled) {
    const test::TestFolder folder;
    const std::string path = folder / "x.mpo";
    const FileBytes whole = Joined(plain_metadata()).file;
    const std::size_t size_place = 6 + u16_high_first(whole, 4) + 6 + 54;
    FileBytes stale = whole;
    stale[size_place] ^= 0x55;
    FileBytes astray = stale;
    astray[size_place + 20] ^= 0x55;  // the offset of the second picture
    struct Row {
        const char* name;
        FileBytes before;
        FileBytes after;
    };
    for (const Row& row :
         {Row{"right", whole, whole}, Row{"stale", stale, whole}, Row{"astray", astray, astray},
          Row{"one picture", jpeg_of(noisy(20, 10, 1), 80), jpeg_of(noisy(20, 10, 1), 80)}}) {
        ASSERT_TRUE(write_file_whole(path, row.before).empty());
        EXPECT_EQ(settle_first_size(path, std::nullopt), "") << row.name;
        std::string reason;
        EXPECT_EQ(read_file_whole(path, reason), row.after) << row.name;
    }
    for (std::size_t size = 0; size < 600; ++size) {
        ASSERT_TRUE(write_file_whole(path, Bytes(stale).first(size)).empty());
        EXPECT_EQ(settle_first_size(path, std::nullopt), "") << size;
    }
    EXPECT_NE(settle_first_size(folder / "missing.mpo", std::nullopt), "");
}

TEST(MpoFile, WhatIsNoWholeJpegIsRefused) {
    Rig rig;
    const FileBytes whole = jpeg_of(noisy(20, 10, 1), 80);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes part = Bytes(whole).first(size);
        ASSERT_FALSE(join_as_mpo(whole, part, plain_metadata(), rig.voice)) << size;
        ASSERT_FALSE(join_as_mpo(part, whole, plain_metadata(), rig.voice)) << size;
    }
    EXPECT_TRUE(join_as_mpo(whole, whole, plain_metadata(), rig.voice));
}

TEST(MpoFile, TheBuiltInExifHoldsWhatIsKnownOfTheSource) {
    const test::TestFolder folder;
    const std::string path = folder / "x.mpo";
    MpoMetadata known = plain_metadata();
    known.capture_time = "2013:05:25 16:38:10";
    known.exposure_time = ExifFraction{100'000, 30'000'000};
    known.f_number = ExifFraction{37, 10};
    known.copyright = "(c) 2024 a very long line";
    struct Row {
        MpoMetadata metadata;
        const char* time;
        ExifFraction exposure;
        ExifFraction f_number;
        std::string copyright;
    };
    for (const Row& row :
         {Row{plain_metadata(), "1970:01:01 00:00:00", {1000, 1000}, {100, 100}, std::string(20, '\0')},
          Row{known, "2013:05:25 16:38:10", {1, 300}, {37, 10}, "(c) 2024 a very long"}}) {
        const Joined mpo(row.metadata);
        ASSERT_EQ(mpo.exif_size(), 190U);
        ASSERT_TRUE(write_file_whole(path, mpo.file).empty());
        EXPECT_EQ(capture_time_text(path), row.time);
        EXPECT_EQ(exif_fraction(path, ExifFractionTag::exposure_time), row.exposure);
        EXPECT_EQ(exif_fraction(path, ExifFractionTag::f_number), row.f_number);
        EXPECT_EQ(std::string(mpo.file.begin() + 4 + 92, mpo.file.begin() + 4 + 112), row.copyright);
        EXPECT_EQ(std::string(mpo.file.begin() + 4 + 82, mpo.file.begin() + 4 + 92),
                  std::string("Zemora\0\0\0\0", 10));
        EXPECT_EQ(u32(mpo.file, 4 + 42 + 8), 61U);
        EXPECT_EQ(u32(mpo.file, 4 + 54 + 8), 43U);
        EXPECT_EQ(mpo.told, "");
    }
}

/// What differs between generated segments.
struct SegmentPlan {
    const char* order = "II*";
    const char* name = "Exif";
    bool has_exif_directory = true;
    bool has_size = true;
    bool has_thumbnail = true;
    std::uint32_t model_place = 0;  ///< 0: where it is.
    std::uint32_t model_count = 8;
    std::uint32_t thumbnail_place = 0;
    std::uint32_t exif_place = 0;
};

constexpr std::uint32_t kMakePlace = 8 + 2 + 5 * 12 + 4;
constexpr std::uint32_t kModelPlace = kMakePlace + 10;
constexpr std::uint32_t kRightsPlace = kModelPlace + 8;
constexpr std::uint32_t kExifPlace = kRightsPlace + 10;
constexpr std::uint32_t kExifEntries = 4;
constexpr std::uint32_t kTimePlace = kExifPlace + 2 + kExifEntries * 12 + 4;
constexpr std::uint32_t kExposurePlace = kTimePlace + 20;
constexpr std::uint32_t kThumbnailPlace = kExposurePlace + 8;

/// A segment like those of cameras: two directories, then a thumbnail with its own.
FileBytes make_segment(const SegmentPlan& plan) {
    const auto chosen = [](std::uint32_t planned, std::uint32_t usual) {
        return planned != 0 ? planned : usual;
    };
    const std::uint16_t exif_tag = plan.has_exif_directory ? 0x8769 : 0x9999;
    const std::uint16_t width_tag = plan.has_size ? 0xA002 : 0xA998;
    const std::uint16_t height_tag = plan.has_size ? 0xA003 : 0xA999;
    const std::array<TiffEntry, 5> picture = {
        TiffEntry{0x010F, TiffType::text, 9, kMakePlace},
        TiffEntry{0x0110, TiffType::text, plan.model_count, chosen(plan.model_place, kModelPlace)},
        TiffEntry{0x0112, TiffType::number16, 1, 6}, TiffEntry{0x8298, TiffType::text, 9, kRightsPlace},
        TiffEntry{exif_tag, TiffType::number32, 1, chosen(plan.exif_place, kExifPlace)}};
    const std::array<TiffEntry, kExifEntries> taking = {
        TiffEntry{0x829A, TiffType::fraction, 1, kExposurePlace},
        TiffEntry{0x9003, TiffType::text, 20, kTimePlace}, TiffEntry{width_tag, TiffType::number16, 1, 4000},
        TiffEntry{height_tag, TiffType::number32, 1, 3000}};
    const std::array<TiffEntry, 1> thumbnail = {TiffEntry{0x0103, TiffType::number16, 1, 6}};
    TiffBytes bytes;
    bytes.number16(0);
    bytes.text(plan.name, 6);
    bytes.text(plan.order, 4);
    bytes.number32(8);
    bytes.directory(picture, plan.has_thumbnail ? chosen(plan.thumbnail_place, kThumbnailPlace) : 0);
    bytes.text("Maker of cameras", 10);
    bytes.text("Model 7", 8);
    bytes.text("old owner", 10);
    bytes.directory(taking, 0);
    bytes.text("2011:12:13 14:15:16", 20);
    bytes.number32(1);
    bytes.number32(125);
    if (plan.has_thumbnail) {
        bytes.directory(thumbnail, 0);
        bytes.text("THUMBNAIL", 200);
    }
    FileBytes segment = bytes.take();
    segment[0] = static_cast<std::uint8_t>(segment.size() >> 8);
    segment[1] = static_cast<std::uint8_t>(segment.size());
    return segment;
}

/// A file that begins with these segments behind APP1 markers.
std::string write_source(const test::TestFolder& folder, const std::vector<FileBytes>& segments) {
    FileBytes file = {0xFF, 0xD8};
    for (const FileBytes& segment : segments) {
        file.insert(file.end(), {0xFF, 0xE1});
        file.insert(file.end(), segment.begin(), segment.end());
    }
    const FileBytes jpeg = jpeg_of(noisy(20, 10, 1), 80);
    file.insert(file.end(), jpeg.begin() + 2, jpeg.end());
    EXPECT_TRUE(write_file_whole(folder / "source.jpg", file).empty());
    return folder / "source.jpg";
}

struct SourceCase {
    const char* name;
    SegmentPlan plan;
    const char* copyright;
    std::size_t size;  ///< Of the segment; 190 is that of the built-in one.
    const char* told;
};

constexpr std::size_t kCutSize = 8 + kThumbnailPlace + 20;

class MpoSource : public ::testing::TestWithParam<SourceCase> {};

TEST_P(MpoSource, HandsItsExifOnWhereItIsSound) {
    const test::TestFolder folder;
    MpoMetadata metadata = plain_metadata();
    metadata.copyright = GetParam().copyright;
    metadata.source = write_source(folder, {make_segment(GetParam().plan)});
    const Joined mpo(metadata);
    ASSERT_FALSE(mpo.file.empty());
    EXPECT_EQ(mpo.exif_size(), GetParam().size);
    EXPECT_EQ(mpo.told, GetParam().told);
    EXPECT_FALSE(has_text(mpo.file, "THUMB"));
    EXPECT_TRUE(decoded(mpo.file));
}

constexpr const char* kUnreadable = "w7499: cannot read FFE1 from original file\n";
INSTANTIATE_TEST_SUITE_P(
    Sources, MpoSource,
    ::testing::Values(
        SourceCase{"sound", {}, "", kCutSize, ""}, SourceCase{"copyright", {}, "me", kCutSize, ""},
        SourceCase{"no_thumbnail", {.has_thumbnail = false}, "", 8 + kThumbnailPlace, ""},
        SourceCase{"no_thumbnail_copyright", {.has_thumbnail = false}, "me", kCutSize, ""},
        SourceCase{"high_byte_first", {.order = "MM"}, "", 190, kUnreadable},
        SourceCase{"other_segment", {.name = "http:"}, "", 190, kUnreadable},
        SourceCase{"data_behind_cut", {.model_place = kThumbnailPlace + 20}, "", 190, kUnreadable},
        SourceCase{"data_into_cut", {.model_place = kThumbnailPlace - 7}, "", 190, kUnreadable},
        SourceCase{"data_up_to_cut", {.model_place = kThumbnailPlace - 8}, "", kCutSize, ""},
        SourceCase{"count_too_large", {.model_count = 0xFFFFFFFF}, "", 190, kUnreadable},
        SourceCase{"offset_too_large", {.model_place = 0xFFFFFFFF}, "", 190, kUnreadable},
        SourceCase{"directory_outside", {.exif_place = 60000}, "", 190, kUnreadable},
        SourceCase{"thumbnail_outside", {.thumbnail_place = 60000}, "", 190, kUnreadable},
        SourceCase{"thumbnail_at_start", {.thumbnail_place = 8}, "", 190, kUnreadable},
        SourceCase{"no_exif_directory",
                   {.has_exif_directory = false},
                   "",
                   kCutSize,
                   "w7573: Error: no Exif pointer found\n"},
        SourceCase{"no_size",
                   {.has_size = false},
                   "",
                   kCutSize,
                   "w7554: Error: no ExifImageWidth found\nw7570: Error: no ExifImageHeight found\n"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(MpoExif, ASourceSegmentIsKeptButForWhatIsNewInThePicture) {
    Rig rig;
    MpoMetadata metadata = plain_metadata();
    metadata.copyright = "new owner";
    FileBytes wanted = make_segment({});
    const auto put = [&](std::size_t place, std::string_view text) {
        std::copy(text.begin(), text.end(), wanted.begin() + static_cast<std::ptrdiff_t>(8 + place));
    };
    using namespace std::string_view_literals;
    put(kMakePlace, "Zemora\0\0\0"sv);
    put(8 + 2 + 2 * 12 + 8, "\1\0\0\0"sv);    // orientation
    put(8 + 2 + 3 * 12 + 4, "\x14\0\0\0"sv);  // size of the copyright
    const std::uint32_t room = kThumbnailPlace;
    put(8 + 2 + 3 * 12 + 8, {reinterpret_cast<const char*>(&room), 4});
    put(8 + 2 + 5 * 12, "\0\0\0\0"sv);                             // no further directory
    put(kExifPlace + 2 + 2 * 12 + 2, "\4\0\1\0\0\0\x3D\0\0\0"sv);  // width
    put(kExifPlace + 2 + 3 * 12 + 2, "\4\0\1\0\0\0\x2B\0\0\0"sv);  // height
    put(kThumbnailPlace, "new owner\0\0\0\0\0\0\0\0\0\0\0"sv);
    wanted.resize(kCutSize);
    wanted[0] = kCutSize >> 8;
    wanted[1] = kCutSize & 255;
    EXPECT_EQ(changed_exif_segment(make_segment({}), metadata, rig.voice), wanted);
}

TEST(MpoExif, OnlyTheFirstSegmentOfTheSourceCounts) {
    const test::TestFolder folder;
    MpoMetadata metadata = plain_metadata();
    metadata.source = write_source(folder, {make_segment({.name = "http:"}), make_segment({})});
    EXPECT_EQ(Joined(metadata).told, kUnreadable);
    metadata.source = write_source(folder, {});
    EXPECT_EQ(Joined(metadata).told, "w7458: cannot read FFE1 from original file\n");
    metadata.source = folder / "missing.jpg";
    EXPECT_EQ(Joined(metadata).told, "w7458: cannot read FFE1 from original file\n");
}

TEST(MpoExif, DamagedSegmentsNeverBreakTheFile) {
    Rig rig;
    MpoMetadata metadata = plain_metadata();
    metadata.copyright = "new owner";
    std::mt19937 random(7);
    int kept = 0;
    ::testing::internal::CaptureStdout();
    for (int i = 0; i < 20000; ++i) {
        FileBytes segment = make_segment({.has_thumbnail = i % 3 != 0});
        for (unsigned n = random() % 6; n > 0; --n) {
            static constexpr std::array<std::uint8_t, 4> kHard = {0, 1, 0x7F, 0xFF};
            segment[random() % segment.size()] =
                random() % 2 == 0 ? kHard[random() % 4] : static_cast<std::uint8_t>(random());
        }
        if (random() % 4 == 0) {
            segment.resize(random() % segment.size());
        }
        if (const auto changed = changed_exif_segment(segment, metadata, rig.voice)) {
            ++kept;
            ASSERT_EQ(u16_high_first(*changed, 0), changed->size());
            ASSERT_LE(changed->size(), segment.size() + 21);
        }
    }
    rig.console.flush();
    (void)::testing::internal::GetCapturedStdout();
    EXPECT_GT(kept, 1000);
}

TEST(ExtraOutput, AMultiPictureFileTakesTheExifOfItsSource) {
    const test::TestFolder folder;
    const SourceFiles sources{write_source(folder, {make_segment({})}), {}};
    struct Row {
        int transfer;
        std::size_t exif_size;
    };
    for (const Row& row : {Row{1, kCutSize}, Row{0, 190}}) {
        ParameterSet set;
        set.extra_output = 5;
        set.meta_transfer = row.transfer;
        set.frame_top = 7;
        set.frame_left_right = 4;
        Rig rig(set);
        rig.warped.left = noisy(60, 40, 1);
        rig.warped.right = noisy(60, 40, 2);
        rig.warped.width = 60;
        rig.warped.height = 40;
        ASSERT_EQ(rig.write_extra(folder / "x.mpo", sources).code, 0);
        std::string reason;
        const auto file = read_file_whole(folder / "x.mpo", reason);
        ASSERT_TRUE(file) << reason;
        EXPECT_EQ(u16_high_first(*file, 4), row.exif_size);
        EXPECT_EQ(capture_time_text(folder / "x.mpo"), "2011:12:13 14:15:16");
        EXPECT_EQ(exif_fraction(folder / "x.mpo", ExifFractionTag::exposure_time), (ExifFraction{1, 125}));
        const auto cut = cut_mpo(*file, rig.voice);
        ASSERT_TRUE(cut);
        for (const Bytes view : {cut->left, cut->right}) {
            const Bitmap picture = decoded(view);
            EXPECT_EQ(picture.width(), 68);
            EXPECT_EQ(picture.height(), 47);
        }
    }
}

TEST(MpoExif, FilesOfCamerasHandTheirTimeOn) {
    const std::string root = test::outside_folder("mpo", "ZEMORA_MPO_FILES");
    if (root.empty()) {
        GTEST_SKIP() << "no folder of multi-picture files";
    }
    const test::TestFolder folder;
    int kept = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file()) {
            continue;
        }
        MpoMetadata metadata = plain_metadata();
        metadata.source = entry.path();
        metadata.capture_time = capture_time_text(metadata.source);
        const Joined mpo(metadata);
        ASSERT_TRUE(write_file_whole(folder / "x.mpo", mpo.file).empty());
        Rig rig;
        EXPECT_TRUE(cut_mpo(mpo.file, rig.voice)) << entry.path();
        EXPECT_EQ(capture_time_text(folder / "x.mpo"),
                  metadata.capture_time.empty() ? "1970:01:01 00:00:00" : metadata.capture_time)
            << entry.path();
        kept += mpo.told.empty() ? 1 : 0;
    }
    EXPECT_GT(kept, 0);
}

}  // namespace
}  // namespace zemora
