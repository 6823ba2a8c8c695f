#include "input/mpo.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "input/mpo_views.h"
#include "platform/paths.h"
#include "platform/safe_file.h"
#include "tests/input/generated_mpo.h"
#include "tests/input/pair_rig.h"
#include "tests/support/outside_files.h"

namespace zemora {
namespace {

using test::FileBytes;
using test::GeneratedMpo;
using test::MpoPlan;
using test::ReadResult;
using test::Rig;

/// The messages wait for Enter; the tests do not.
[[maybe_unused]] const bool kNobodyAnswers = std::freopen("/dev/null", "r", stdin) != nullptr;

bool equal(std::span<const std::uint8_t> a, const FileBytes& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

/// Cuts a file and keeps what was said.
struct Cut {
    explicit Cut(const FileBytes& bytes, int verbose = 2) : content(bytes) {
        rig.parameters.verbose_mode = verbose;
        testing::internal::CaptureStdout();
        pictures = cut_mpo(content, rig.voice);
        rig.console.flush();
        told = testing::internal::GetCapturedStdout();
    }
    Rig rig;
    FileBytes content;
    std::optional<MpoPictures> pictures;
    std::string told;
    [[nodiscard]] bool tells(const char* text) const { return told.find(text) != std::string::npos; }
};

GeneratedMpo small_mpo(const MpoPlan& plan = {}) {
    return test::make_mpo(plan, test::place_picture(24, 20), test::place_picture(25, 20));
}

struct LayoutCase {
    const char* name;
    MpoPlan plan;
    const char* told;  ///< Empty: nothing at all.
};

class MpoLayout : public testing::TestWithParam<LayoutCase> {};

TEST_P(MpoLayout, GivesTheFirstTwoPicturesWhole) {
    const GeneratedMpo mpo = small_mpo(GetParam().plan);
    const Cut cut(mpo.bytes);
    ASSERT_TRUE(cut.pictures) << cut.told;
    EXPECT_TRUE(equal(cut.pictures->left, mpo.left));
    EXPECT_TRUE(equal(cut.pictures->right, mpo.right));
    if (*GetParam().told == '\0') {
        EXPECT_EQ(cut.told, "");
    }
    EXPECT_TRUE(cut.tells(GetParam().told)) << cut.told;
}

INSTANTIATE_TEST_SUITE_P(
    Table, MpoLayout,
    testing::Values(LayoutCase{"little endian", {}, ""}, LayoutCase{"big endian", {.big_endian = true}, ""},
                    LayoutCase{"three pictures", {.pictures = 3}, ""},
                    LayoutCase{"padding", {.padding = 77}, ""},
                    LayoutCase{"entries elsewhere", {.big_endian = true, .moved = 40}, ""},
                    LayoutCase{"directory elsewhere", {.first_directory = 20}, "i1108: "},
                    LayoutCase{"directory elsewhere", {.big_endian = true, .first_directory = 14}, "i1111: "},
                    LayoutCase{"no byte order", {.order_mark = "XYZ!"}, "temp[3] = 21\n"}),
    [](const auto& tested) { return std::to_string(tested.index); });

TEST(Mpo, AnIrregularFirstSizeIsToldWhenTheUserWantsToKnow) {
    GeneratedMpo mpo = small_mpo();
    mpo.bytes[mpo.origin + 8 + 2 + 36 + 4 + 4] ^= 1;  // lowest byte of the first size
    EXPECT_TRUE(Cut(mpo.bytes, 2).tells("MPO image not according to spec"));
    const Cut quiet(mpo.bytes, 1);
    EXPECT_EQ(quiet.told, "");
    ASSERT_TRUE(quiet.pictures);
    EXPECT_EQ(quiet.pictures->left.size(), mpo.left.size()) << "the place of the second picture rules";
}

TEST(Mpo, AnOffsetIntoTheFirstPictureDoesNotCostItsEnd) {
    GeneratedMpo mpo = small_mpo();
    mpo.bytes[mpo.origin + 8 + 2 + 36 + 4 + 16 + 8] -= 2;  // lowest byte of the second offset
    const Cut cut(mpo.bytes);
    ASSERT_TRUE(cut.pictures) << cut.told;
    EXPECT_EQ(cut.pictures->left.size(), mpo.left.size());
    EXPECT_TRUE(equal(cut.pictures->right, mpo.right));
}

TEST(Mpo, AnImpossibleSecondPictureIsTold) {
    const auto refused = [](const FileBytes& bytes) {
        const Cut cut(bytes);
        return !cut.pictures && cut.tells("i1218: jpg-header of second image couldn't be found\n");
    };
    const GeneratedMpo good = small_mpo();
    const auto size2 = static_cast<int>(good.right.size());
    EXPECT_TRUE(refused(small_mpo({.wrong_size2 = 1}).bytes)) << "one byte beyond the end";
    EXPECT_TRUE(refused(small_mpo({.wrong_size2 = 3 - size2}).bytes));
    EXPECT_TRUE(refused(small_mpo({.wrong_size2 = -1 - size2}).bytes)) << "four gigabytes";
    EXPECT_TRUE(refused({}));
    EXPECT_TRUE(refused(good.left));
    EXPECT_TRUE(refused(FileBytes(5000, 0xFF)));
    FileBytes plain_second = good.bytes;
    plain_second[good.left.size() + 3] = 0xE0;  // starts without Exif
    EXPECT_TRUE(refused(plain_second));
}

TEST(Mpo, EveryTruncationIsRefused) {
    const GeneratedMpo mpo = small_mpo({.padding = 3});
    Rig rig;
    testing::internal::CaptureStdout();
    for (std::size_t size = 0; size < mpo.bytes.size(); ++size) {
        const FileBytes start(mpo.bytes.begin(), mpo.bytes.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(cut_mpo(start, rig.voice)) << size;
    }
    rig.console.flush();
    (void)testing::internal::GetCapturedStdout();
}

TEST(Mpo, NoMutationOfTheHeadBreaksTheReader) {
    const GeneratedMpo mpo = small_mpo();
    std::mt19937 random(20);
    Rig rig;
    int cut = 0;
    testing::internal::CaptureStdout();
    for (int round = 0; round < 4000; ++round) {
        FileBytes bytes = mpo.bytes;
        for (unsigned count = 1 + random() % 4; count > 0; --count) {
            bytes[random() % (mpo.origin + 120)] = static_cast<std::uint8_t>(random());
        }
        if (random() % 8 == 0) {
            bytes.resize(random() % bytes.size());
        }
        const auto pictures = cut_mpo(bytes, rig.voice);
        if (pictures) {
            ++cut;
            ASSERT_LE(pictures->left.size(), bytes.size());
            ASSERT_LE(pictures->right.data() + pictures->right.size(), bytes.data() + bytes.size());
            (void)decode_picture({pictures->left.begin(), pictures->left.end()}, "l.jpg");
            (void)decode_picture({pictures->right.begin(), pictures->right.end()}, "r.jpg");
        }
    }
    rig.console.flush();
    (void)testing::internal::GetCapturedStdout();
    EXPECT_GT(cut, 1000);
    EXPECT_LT(cut, 4000);
}

TEST(Mpo, OnlyTwoSpellingsOfTheSuffixCount) {
    EXPECT_TRUE(is_mpo_name("/p/a.mpo"));
    EXPECT_TRUE(is_mpo_name("/p/a.jpg.MPO"));
    EXPECT_TRUE(is_mpo_name("/p/a.Mpo"));
    EXPECT_FALSE(is_mpo_name("/p.mpo/a.jpg"));
    EXPECT_FALSE(is_mpo_name("/p/mpo"));
}

TEST(Mpo, CutPicturesHaveTheirFolders) {
    const auto names = [](const char* file, int mode) {
        const MpoCutNames cut = mpo_cut_names(file, mode == 9);
        return cut.left + " " + cut.right;
    };
    EXPECT_EQ(names("/p/s/pic.mpo", 9), "/p/l/pic_mpo_l.jpg /p/r/pic_mpo_r.jpg");
    EXPECT_EQ(names("/p/S/pic.MPO", 9), "/p/l/pic_mpo_l.jpg /p/r/pic_mpo_r.jpg");
    EXPECT_EQ(names("/p/pics/a.b.mpo", 9), "/p/pics/l/a.b_mpo_l.jpg /p/pics/r/a.b_mpo_r.jpg");
    EXPECT_EQ(names("/p/s/pic.mpo", 4), "/p/s/l/pic_mpo_l.jpg /p/s/r/pic_mpo_r.jpg");
}

/// A pair that is read from s/pic.mpo in its folder.
struct MpoRig : Rig {
    explicit MpoRig(bool keeps_cut_pictures) {
        reading.keeps_cut_pictures = keeps_cut_pictures;
        reading.has_view_folders = true;
        std::filesystem::create_directory(folder / "s");
        write(small_mpo().bytes);
        pair = pair_of(1);
    }
    void write(const FileBytes& bytes) const {
        test::write_text(folder / "s/pic.mpo", {bytes.begin(), bytes.end()});
    }
    ReadResult read_mpo() { return read(*pair, {{}, {}, folder / "s/pic.mpo"}); }
    std::unique_ptr<test::TestPair> pair;
};

/// Whether the view is the picture of places from column `first` on, as far as JPEG keeps it.
bool shows_places(ConstPicture view) {
    const Colour a = test::colour_at(view, 20, 15);
    const Colour b = test::place_colour(20, 15);
    return std::abs(a.blue - b.blue) < 12 && std::abs(a.green - b.green) < 12 && std::abs(a.red - b.red) < 12;
}

TEST(MpoInput, ViewsComeWithoutLeavingAFile) {
    MpoRig rig(false);
    ASSERT_EQ(rig.read_mpo(), ReadResult::done) << rig.pair->failure();
    EXPECT_EQ(rig.pair->width(), 24) << "of the narrower view";
    EXPECT_TRUE(shows_places(rig.pair->full().left));
    EXPECT_TRUE(shows_places(rig.pair->full().right));
    EXPECT_EQ(rig.folder.files(), std::set<std::string>{"s/pic.mpo"});
    EXPECT_FALSE(std::filesystem::exists(rig.folder / "l"));
}

TEST(MpoInput, CutFilesStayWhereTheGeometryIsKept) {
    MpoRig rig(true);
    const GeneratedMpo mpo = small_mpo();
    for (int round = 0; round < 2; ++round) {  // the second time they are there
        ASSERT_EQ(rig.read_mpo(), ReadResult::done);
        EXPECT_EQ(rig.told, "");
        EXPECT_EQ(test::read_text(rig.folder / "l/pic_mpo_l.jpg"),
                  std::string(mpo.left.begin(), mpo.left.end()));
        EXPECT_EQ(test::read_text(rig.folder / "r/pic_mpo_r.jpg"),
                  std::string(mpo.right.begin(), mpo.right.end()));
    }
}

TEST(MpoInput, AFileOfTheUserIsNeverReplacedByACut) {
    MpoRig rig(true);
    std::filesystem::create_directory(rig.folder / "l");
    test::write_text(rig.folder / "l/pic_mpo_l.jpg", "mine");
    std::filesystem::create_directory(rig.folder / "r");
    std::filesystem::create_symlink("nowhere", rig.folder / "r/pic_mpo_r.jpg");
    ASSERT_EQ(rig.read_mpo(), ReadResult::done);
    EXPECT_NE(rig.told.find("l/pic_mpo_l.jpg is not from this mpo-file"), std::string::npos) << rig.told;
    EXPECT_NE(rig.told.find("r/pic_mpo_r.jpg is not from this mpo-file"), std::string::npos) << rig.told;
    EXPECT_EQ(test::read_text(rig.folder / "l/pic_mpo_l.jpg"), "mine");
    EXPECT_TRUE(std::filesystem::is_symlink(rig.folder / "r/pic_mpo_r.jpg"));
    EXPECT_TRUE(shows_places(rig.pair->full().left));
}

TEST(MpoInput, AFolderThatCannotBeMadeIsToldAndTheViewsCome) {
    MpoRig rig(true);
    test::write_text(rig.folder / "l", "a file");
    ASSERT_EQ(rig.read_mpo(), ReadResult::done);
    EXPECT_NE(rig.told.find("The left file "), std::string::npos) << rig.told;
    EXPECT_EQ(rig.folder.files().count("r/pic_mpo_r.jpg"), 1U);
}

TEST(MpoInput, DamagedSecondPictureIsUnreadableAndLeavesNothing) {
    MpoRig rig(true);
    GeneratedMpo mpo = small_mpo();
    std::fill(mpo.bytes.end() - 200, mpo.bytes.end(), std::uint8_t{0});  // no end, no pixels
    rig.write(mpo.bytes);
    EXPECT_EQ(rig.read_mpo(), ReadResult::unreadable);
    EXPECT_NE(rig.pair->failure().find("pic.mpo"), std::string::npos) << rig.pair->failure();
    EXPECT_EQ(rig.folder.files().size(), 1U);
    std::filesystem::remove(rig.folder / "s/pic.mpo");
    EXPECT_EQ(rig.read_mpo(), ReadResult::unreadable);
    EXPECT_NE(rig.told.find("couldn't be opened"), std::string::npos) << rig.told;
}

TEST(MpoInput, InverseInputExchangesTheViewsOnce) {
    MpoRig rig(false);
    const GeneratedMpo mpo =
        test::make_mpo({}, test::place_picture(24, 20), Bitmap::create(24, 20));  // the second is black
    rig.write(mpo.bytes);
    rig.pair->orders.exchanged = true;
    ASSERT_EQ(rig.read_mpo(), ReadResult::done);
    EXPECT_TRUE(shows_places(rig.pair->full().right));
    EXPECT_FALSE(shows_places(rig.pair->full().left));
}

TEST(MpoInput, FilesOfCamerasAreRead) {
    const std::string root = test::outside_folder("mpo", "ZEMORA_MPO_FILES");
    if (root.empty()) {
        GTEST_SKIP() << "no folder of multi-picture files";
    }
    int read = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        const std::string path = entry.path().string();
        if (!is_mpo_name(path)) {
            continue;
        }
        Rig rig;
        const auto pair = rig.pair_of(1);
        const ReadResult result = rig.read(*pair, {{}, {}, path});
        const bool broken = path.find("/broken/") != std::string::npos;
        EXPECT_TRUE(broken || result == ReadResult::done) << path << ": " << pair->failure() << rig.told;
        RecordProperty(bare_name_of(path), result == ReadResult::done ? "read" : pair->failure());
        read += result == ReadResult::done ? 1 : 0;
    }
    EXPECT_GT(read, 0);
}

TEST(MpoViews, AreFoundInWholeFilesAndNeverBeyondTheEndOfCutOnes) {
    for (const bool big_endian : {false, true}) {
        MpoPlan plan;
        plan.big_endian = big_endian;
        const FileBytes whole =
            test::make_mpo(plan, test::place_picture(24, 20), test::place_picture(24, 20)).bytes;
        EXPECT_TRUE(holds_two_views(whole));
        for (std::size_t size = 0; size < 400; ++size) {
            const FileBytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_FALSE(holds_two_views(cut)) << size;
        }
    }
}

}  // namespace
}  // namespace zemora
