// Pairs under the control of capture times, and the orphans that it finds.

#include <gtest/gtest.h>

#include "tests/input/collect_rig.h"

namespace zemora {
namespace {

using test::CollectRig;
using test::Names;

constexpr int kNoTime = -1;

struct SequenceRow {
    const char* name;
    int input_mode;
    std::vector<int> seconds;  ///< Of the files 1.jpg, 2.jpg and so on.
    Names objects;             ///< Numbers of the files.
};

class TimedSequences : public ::testing::TestWithParam<SequenceRow> {};

TEST_P(TimedSequences, PairsLieWithinTheTolerance) {
    const SequenceRow& row = GetParam();
    CollectRig rig(row.input_mode);
    rig.options.exif_time_tolerance = 3;
    for (std::size_t i = 0; i < row.seconds.size(); ++i) {
        const std::string name = std::to_string(i + 1) + ".jpg";
        if (row.seconds[i] == kNoTime) {
            rig.add({name});
        } else {
            rig.add_shot(name, row.seconds[i]);
        }
    }
    Names found = rig.build();
    for (std::string& object : found) {
        object = {object[0], ' ', object[6]};
    }
    EXPECT_EQ(found, row.objects) << rig.told;
    EXPECT_EQ(rig.folder.files().size(), row.seconds.size());
}

// clang-format off
const SequenceRow kSequences[] = {
    {"two_by_two_take_the_first_difference", 4, {0, 10, 60, 70, 120, 133, 180, 194}, {"1 2", "3 4", "5 6"}},
    {"two_by_two_step_over_a_surplus_file",  4, {0, 10, 20, 60, 70},                 {"1 2", "4 5"}},
    {"two_by_two_may_open_without_time",     4, {kNoTime, 0, 60, 62, 120, kNoTime, 180, 181}, {"1 2", "3 4"}},
    {"sliding_steps_over_a_pause",           5, {0, 2, 60, 61},                      {"1 2", "3 4"}},
    {"sliding_ends_at_one_without_time",     5, {0, 2, kNoTime, kNoTime, 3},         {"1 2"}},
    {"sliding_keeps_two_without_time",       5, {kNoTime, kNoTime, kNoTime},         {"1 2", "2 3"}},
    {"a_later_file_becomes_the_anchor",      7, {0, 2, 3, 60, 62, 63},               {"1 2", "1 3", "4 5", "4 6"}},
    {"combinations_break_off_by_time",       8, {0, 2, 4, 6},                        {"1 2", "2 3", "3 4"}},
    {"combinations_keep_missing_times",      8, {0, kNoTime, 2},                     {"1 2", "1 3", "2 3"}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Times, TimedSequences, ::testing::ValuesIn(kSequences),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(TimedSequenceThatEnds, NamesTheFileWithoutTime) {
    CollectRig rig(4);
    rig.options.exif_time_tolerance = 3;
    rig.add_shot("1.jpg", 0);
    rig.add_shot("2.jpg", 1);
    rig.add_shot("3.jpg", 60);
    rig.add({"4.jpg", "5.jpg", "6.jpg"});
    EXPECT_EQ(rig.build(), Names{"1.jpg 2.jpg"});
    EXPECT_TRUE(rig.has_told("ends here, without capture time:\n   " + rig.folder / "4.jpg\n")) << rig.told;
    EXPECT_NE(rig.reports.text.find("ends here"), std::string::npos);
}

TEST(TimedSequenceOfFolders, EachFolderHasItsOwnReference) {
    CollectRig rig(4);
    rig.options.include_subdirs = 1;
    rig.options.exif_time_tolerance = 3;
    const std::pair<const char*, int> shots[] = {{"A/1.jpg", 0},   {"A/2.jpg", 10},  {"B/3.jpg", 60},
                                                 {"B/4.jpg", 100}, {"B/5.jpg", 120}, {"B/6.jpg", 161}};
    for (const auto& [name, seconds] : shots) {
        rig.add_shot(name, seconds);
    }
    EXPECT_EQ(rig.build(), (Names{"A/1.jpg A/2.jpg", "B/3.jpg B/4.jpg", "B/5.jpg B/6.jpg"}));
}

TEST(TimedSequenceWithoutExiv2, MakesTheSamePairsAndNamesTheTool) {
    const std::string path = getenv("PATH");
    setenv("PATH", "/nowhere", 1);
    CollectRig rig(7);
    rig.options.exif_time_tolerance = 3;
    rig.add({"0.jpg", "1.jpg", "2.jpg"});
    EXPECT_EQ(rig.build().size(), 2U);
    EXPECT_EQ(CollectRig::count_of(rig.told, "The jpg-format is not supported"), 1) << rig.told;
    rig.add_shot("0.jpg", 0);
    rig.add_shot("1.jpg", 2);
    rig.add_shot("2.jpg", 9);
    EXPECT_EQ(rig.build(), Names{"0.jpg 1.jpg"});
    setenv("PATH", path.c_str(), 1);
}

/// Two folders of shots; the second left one of A has no partner.
void add_shots_with_orphan(const CollectRig& rig) {
    int seconds = 0;
    for (const char* name : {"1", "2", "3", "4"}) {
        rig.add_shot("A/l/" + std::string(name) + ".jpg", seconds);
        if (std::string(name) != "2") {
            rig.add_shot("A/r/" + std::string(name) + ".jpg", seconds + 100);
        }
        seconds += 30;
    }
    rig.add_shot("B/l/5.jpg", 300);
    rig.add_shot("B/r/5.jpg", 300);
}

const Names kPairsWithoutOrphan{"A/l/1.jpg A/r/1.jpg", "A/l/3.jpg A/r/3.jpg", "A/l/4.jpg A/r/4.jpg",
                                "B/l/5.jpg B/r/5.jpg"};

TEST(Orphans, AFileWithoutPartnerLeavesTheRestInStep) {
    const char* const places[] = {"A/l/2.jpg", "A/lo/2.jpg", "A/l/2_lo.jpg", "A/l/_2.jpg", "A/l/z2.jpg"};
    for (int rename = 0; rename <= 4; ++rename) {
        CollectRig rig(9);
        rig.options.include_subdirs = 1;
        rig.options.exif_time_tolerance = 5;
        rig.options.rename_orphans = rename;
        rig.parameters.verbose_mode = 2;
        add_shots_with_orphan(rig);
        EXPECT_EQ(rig.build(), kPairsWithoutOrphan) << rig.told;
        EXPECT_EQ(rig.folder.files().count(places[rename]), 1U) << places[rename] << rig.told;
        EXPECT_EQ(rig.folder.files().size(), 9U);
        EXPECT_TRUE(rig.has_told("= 70 seconds for") || rig.has_told("= -70 seconds for") ||
                    rig.has_told("= -30 seconds for"))
            << rig.told;
        EXPECT_EQ(rig.has_told("Renaming from"), rename != 0);
        EXPECT_EQ(CollectRig::count_of(rig.reports.html, "resetting time difference = "), 2)
            << rig.reports.html;
    }
}

TEST(Orphans, TheRestOfTheLongerSideAreOrphansOfTheRight) {
    CollectRig rig(3);
    rig.options.exif_time_tolerance = 5;
    rig.options.rename_orphans = 2;
    for (const int shot : {1, 2, 3, 4}) {
        rig.add_shot("r/" + std::to_string(shot) + ".jpg", 30 * shot);
    }
    rig.add_shot("l/1.jpg", 30);
    rig.add_shot("l/2.jpg", 60);
    EXPECT_EQ(rig.build(), (Names{"l/1.jpg r/1.jpg", "l/2.jpg r/2.jpg"}));
    EXPECT_EQ(rig.folder.files(), (std::set<std::string>{"l/1.jpg", "l/2.jpg", "r/1.jpg", "r/2.jpg",
                                                         "r/3_ro.jpg", "r/4_ro.jpg"}));
}

TEST(Orphans, NobodyIsOneWhileTheOtherSideIsMissing) {
    CollectRig rig(9);
    rig.options.include_subdirs = 1;
    rig.options.exif_time_tolerance = 5;
    rig.options.rename_orphans = 1;
    rig.parameters.verbose_mode = 1;
    rig.add_shot("A/l/1.jpg", 0);
    rig.add({"A/r/1.txt", "B/l/2.jpg"});
    rig.add_shot("C/l/3.jpg", 60);
    rig.add_shot("C/r/3.jpg", 60);
    const auto before = rig.folder.files();
    EXPECT_EQ(rig.build(), Names{"C/l/3.jpg C/r/3.jpg"});
    EXPECT_EQ(rig.folder.files(), before);
    EXPECT_TRUE(rig.has_told("passed over: " + rig.folder / "A\n")) << rig.told;
}

TEST(Orphans, AFolderIsNotLostToTheSurplusOfTheFolderBefore) {
    CollectRig rig(9);
    rig.options.include_subdirs = 1;
    rig.options.exif_time_tolerance = 5;
    rig.options.rename_orphans = 1;
    rig.add_shot("A/l/1.jpg", 0);
    std::filesystem::create_directories(rig.folder / "A/r");
    std::filesystem::create_symlink(rig.folder / "none", rig.folder / "A/r/0.jpg");  // is passed over
    rig.add_shot("A/r/1.jpg", 0);
    rig.add_shot("A/r/2.jpg", 30);
    rig.add_shot("B/l/3.jpg", 60);
    rig.add_shot("B/r/3.jpg", 60);
    EXPECT_EQ(rig.build(), (Names{"A/l/1.jpg A/r/1.jpg", "B/l/3.jpg B/r/3.jpg"}));
    EXPECT_EQ(rig.folder.files().count("A/ro/2.jpg"), 1U);
}

TEST(Orphans, ATypeWithoutTimesSwitchesTheControlOffOnce) {
    CollectRig rig(9);
    rig.options.exif_time_tolerance = 5;
    rig.options.rename_orphans = 1;
    rig.parameters.verbose_mode = 1;
    rig.add({"l/1.png", "l/2.png", "r/1.png", "r/2.png", "r/3.png"});
    EXPECT_EQ(rig.build(), (Names{"l/1.png r/1.png", "l/2.png r/2.png"}));
    EXPECT_EQ(CollectRig::count_of(rig.told, "doesn't support ExifTime"), 1) << rig.told;
    EXPECT_EQ(rig.folder.files().count("r/3.png"), 1U);
}

TEST(Orphans, NobodyIsOneBecauseTheFirstPairLacksATime) {
    CollectRig rig(9);
    rig.options.exif_time_tolerance = 5;
    rig.options.rename_orphans = 1;
    rig.add({"l/1.jpg"});
    rig.add_shot("r/1.jpg", 600);
    for (const int shot : {2, 3, 4}) {
        rig.add_shot("l/" + std::to_string(shot) + ".jpg", 30 * shot);
        rig.add_shot("r/" + std::to_string(shot) + ".jpg", 30 * shot + 600);
    }
    const auto before = rig.folder.files();
    EXPECT_EQ(rig.build().size(), 4U) << rig.told;
    EXPECT_EQ(rig.folder.files(), before);
}

TEST(Orphans, AMissingTimeIsToldAndThePairStays) {
    CollectRig rig(3);
    rig.options.exif_time_tolerance = 5;
    rig.add_shot("l/1.jpg", 0);
    rig.add_shot("l/2.jpg", 30);
    rig.add_shot("r/1.jpg", 0);
    rig.add({"r/2.jpg"});
    EXPECT_EQ(rig.build().size(), 2U);
    EXPECT_TRUE(rig.has_told("orphan file:\n   " + rig.folder / "r/2.jpg\n   (missing)\n")) << rig.told;
}

}  // namespace
}  // namespace zemora
