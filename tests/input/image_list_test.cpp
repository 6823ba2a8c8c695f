#include "input/image_list.h"

#include <gtest/gtest.h>

#include "tests/input/collect_rig.h"

namespace zemora {
namespace {

using test::CollectRig;
using test::Names;

struct ModeRow {
    const char* name;
    int input_mode;
    int stereo_image_input;
    int include_subdirs;
    Names files;
    Names objects;
};

class Modes : public ::testing::TestWithParam<ModeRow> {};

TEST_P(Modes, MakeTheseObjects) {
    const ModeRow& row = GetParam();
    CollectRig rig(row.input_mode, row.stereo_image_input);
    rig.options.include_subdirs = row.include_subdirs;
    rig.add(row.files);
    EXPECT_EQ(rig.build(), row.objects) << rig.told;
}

const Names kTwoFolders{"A/1.jpg", "A/2.jpg", "A/3.jpg", "B/4.jpg", "B/5.jpg"};
const Names kSeven{"1.jpg", "2.jpg", "3.jpg", "4.jpg", "5.jpg", "6.jpg", "7.jpg"};

// clang-format off
const ModeRow kModes[] = {
    {"marked_without_subfolders", 1, 2, 1, {"b_l.jpg", "b_r.jpg", "a_L.JPG", "a_R.JPG", "s/c_l.jpg", "s/c_r.jpg"},
     {"a_L.JPG a_R.JPG", "b_l.jpg b_r.jpg"}},
    {"marker_in_the_middle_of_a_name", 1, 2, 0, {"x_l.y_l.jpg", "x_l.y_r.jpg", "z_l.y.jpg"}, {"x_l.y_l.jpg x_l.y_r.jpg"}},
    {"partner_in_other_case", 1, 2, 0, {"a_l.jpg", "A_R.jpg"}, {"a_l.jpg A_R.jpg"}},
    {"marked_tree_without_output", 2, 2, 0, {"a_l.jpg", "a_r.jpg", "B/b_l.jpg", "B/b_r.jpg", "CL/c_l.jpg", "CL/c_r.jpg"},
     {"a_l.jpg a_r.jpg", "B/b_l.jpg B/b_r.jpg"}},
    {"photo_and_mask", 1, 5, 0, {"a_rgb.jpg", "a_d.jpg", "b_RGB.jpg", "b_D.jpg"}, {"a_rgb.jpg a_d.jpg", "b_RGB.jpg b_D.jpg"}},
    {"photo_and_mask_in_one", 1, 6, 0, {"a_d.jpg", "b.jpg"}, {"a_d.jpg"}},
    {"marked_stereo", 1, 1, 0, {"a_s.jpg", "b_S.png", "c.jpg", "d_s.tif"}, {"a_s.jpg", "b_S.png"}},
    {"odd_last_file", 4, 2, 0, kSeven, {"1.jpg 2.jpg", "3.jpg 4.jpg", "5.jpg 6.jpg"}},
    {"stereo_files_of_a_tree", 4, 1, 1, {"b.jpg", "a/c.jpg", "a_l.jpg", "e_D.jpg"}, {"b.jpg", "a/c.jpg"}},
    {"own_pictures_are_no_input", 4, 1, 0, {"a.jpg", "zemora_thumb_a.jpg", "x_pass_in.bmp"}, {"a.jpg"}},
    {"pieces_of_the_analysis_are_no_input", 1, 2, 0,
     {"segment_01_200_200_00_l.jpg", "segment_01_200_200_00_r.jpg", "segment_1_l.jpg", "segment_1_r.jpg"},
     {"segment_1_l.jpg segment_1_r.jpg"}},
    {"two_by_two_not_across_folders", 4, 2, 1, kTwoFolders, {"A/1.jpg A/2.jpg", "B/4.jpg B/5.jpg"}},
    {"sliding_not_across_folders", 5, 2, 1, kTwoFolders, {"A/1.jpg A/2.jpg", "A/2.jpg A/3.jpg", "B/4.jpg B/5.jpg"}},
    {"single_file_folder_passed", 4, 2, 1, {"A/1.jpg", "B/2.jpg", "B/3.jpg"}, {"B/2.jpg B/3.jpg"}},
    {"alternating_keeps_its_sides", 6, 2, 0, {"1.jpg", "2.jpg", "3.jpg"}, {"1.jpg 2.jpg", "2.jpg 3.jpg"}},
    {"first_with_all", 7, 2, 1, kTwoFolders, {"A/1.jpg A/2.jpg", "A/1.jpg A/3.jpg", "B/4.jpg B/5.jpg"}},
    {"all_with_all", 8, 2, 1, kTwoFolders, {"A/1.jpg A/2.jpg", "A/1.jpg A/3.jpg", "A/2.jpg A/3.jpg", "B/4.jpg B/5.jpg"}},
    {"output_folders_passed", 5, 2, 1, {"1.jpg", "2.jpg", "ce_lrq/3.jpg", "ce_lrq/4.jpg"}, {"1.jpg 2.jpg"}},
    {"output_folders_wanted", 5, 2, 2, {"1.jpg", "2.jpg", "cl/3.jpg", "cl/4.jpg"}, {"1.jpg 2.jpg", "cl/3.jpg cl/4.jpg"}},
    {"view_folders", 3, 2, 0, {"l/b.jpg", "l/A.jpg", "R/c.jpg", "R/d.jpg", "R/e.jpg"}, {"l/A.jpg R/c.jpg", "l/b.jpg R/d.jpg"}},
    {"stereo_folder", 3, 1, 0, {"s/a.jpg", "s/b.txt", "c.jpg"}, {"s/a.jpg"}},
    {"view_folders_of_a_tree", 9, 2, 1,
     {"l/1.jpg", "r/1.jpg", "A/l/2.jpg", "A/L.jpg", "A/r/2.jpg", "B/l/3.jpg", "cs/l/4.jpg", "cs/r/4.jpg", "D/l/5.jpg", "D/r/5.txt",
      "E/e/l/6.jpg", "E/e/r/6.jpg"},
     {"l/1.jpg r/1.jpg", "A/l/2.jpg A/r/2.jpg", "E/e/l/6.jpg E/e/r/6.jpg"}},
    {"surplus_stays_in_its_folder", 9, 2, 1,
     {"A/l/1.jpg", "A/r/1.jpg", "A/r/2.jpg", "B/l/3.jpg", "B/l/4.jpg", "B/r/3.jpg", "C/l/5.jpg", "C/r/5.jpg"},
     {"A/l/1.jpg A/r/1.jpg", "B/l/3.jpg B/r/3.jpg", "C/l/5.jpg C/r/5.jpg"}},
    {"view_folders_of_one_folder", 9, 2, 0, {"l/1.jpg", "r/1.jpg", "A/l/2.jpg", "A/r/2.jpg"}, {"l/1.jpg r/1.jpg"}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(ImageList, Modes, ::testing::ValuesIn(kModes),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ImageListModes, NamedFilesAreTakenWhateverTheirSuffixAndCase) {
    CollectRig rig(0);
    rig.add({"x/left.AVI", "Right.dat"});
    rig.options.left_file_name = "x/left.AVI";
    rig.options.right_file_name = "right.dat";
    EXPECT_EQ(rig.build(), Names{"x/left.AVI Right.dat"});
    rig.add({"RIGHT.dat"});
    EXPECT_EQ(rig.build(), Names{}) << "nobody can know which is meant";
    EXPECT_TRUE(rig.has_told("more than one file")) << rig.told;
}

TEST(ImageListModes, AFileThatCannotBeReadCostsItsPairsAndIsToldOnce) {
    CollectRig rig(8);
    rig.add({"1.jpg", "3.jpg"});
    std::filesystem::create_symlink(rig.folder / "nowhere", rig.folder / "gone_l.jpg");
    EXPECT_EQ(rig.build(), Names{"1.jpg 3.jpg"});
    rig.options.input_mode = 1;
    rig.add({"a_l.jpg", "b_l.jpg", "b_r.jpg"});
    EXPECT_EQ(rig.build(), Names{"b_l.jpg b_r.jpg"});
    EXPECT_EQ(CollectRig::count_of(rig.told, "Warning: File"), 1) << rig.told;
    EXPECT_TRUE(rig.has_told("a_r.jpg")) << rig.told;
}

TEST(ImageListModes, AMarkerInMixedCaseHurtsTheConvention) {
    CollectRig rig(1, 5);
    rig.add({"a_Rgb.jpg", "a_d.jpg"});
    EXPECT_EQ(rig.build(), Names{});
    EXPECT_TRUE(rig.has_told("Name convention hurt: " + rig.folder / "a_Rgb.jpg")) << rig.told;
}

TEST(ImageListModes, LeftOverFilesArePassedOverAndStay) {
    CollectRig rig(1);
    rig.parameters.verbose_mode = 1;
    rig.add({"zemora_temp_a_l.jpg", "zemora_temp_a_r.jpg", "ZEMORATEMP_b_l.jpg", "c_l.jpg", "c_r.jpg"});
    EXPECT_EQ(rig.build(), Names{"c_l.jpg c_r.jpg"});
    EXPECT_TRUE(
        rig.has_told("Temporary File ignored (will be deleted): " + rig.folder / "zemora_temp_a_l.jpg"))
        << rig.told;
    EXPECT_EQ(rig.folder.files().size(), 5U);
}

TEST(ImageListModes, FoldersPassedOverForTheirNameAreToldWhenTheyHoldPictures) {
    for (const int mode : {4, 9}) {
        CollectRig rig(mode);
        rig.options.include_subdirs = 1;
        rig.parameters.verbose_mode = 1;
        rig.add(
            {"l/1.jpg", "r/1.jpg", "ca/2024/1.jpg", "cl/a.txt", "cl/zemora_thumb_a.jpg", "deeper/RO/1.png"});
        (void)rig.build();
        for (const char* name : {"ca", "deeper/RO"}) {
            EXPECT_TRUE(rig.has_told("passed over: " + rig.folder.path() + '/' + name + '\n')) << rig.told;
        }
        EXPECT_EQ(CollectRig::count_of(rig.told, "by its name"), 2) << rig.told;
    }
}

TEST(ImageListModes, FieldsOfInterlacedPairs) {
    struct Row {
        int interlaced_mode;
        Names objects;
    };
    const Row rows[] = {
        {1, {"1 2", "1 2", "3 4", "3 4", "5 6", "5 6"}},
        {2, {"1 2", "3 2", "3 4", "5 4", "5 6"}},
        {3, {"1 2", "1 4", "3 4", "3 6", "5 6"}},
    };
    for (const Row& row : rows) {
        CollectRig rig(4);
        rig.options.interlaced_mode = row.interlaced_mode;
        rig.options.inverse_input = 1;  // has no meaning here
        rig.options.image_type = "1;2;3;4;5;6";
        rig.add({"img.1", "img.2", "img.3", "img.4", "img.5", "img.6"});
        Names found = rig.build();
        for (std::string& object : found) {
            object = {object[4], ' ', object[10]};
        }
        EXPECT_EQ(found, row.objects) << row.interlaced_mode;
    }
}

TEST(ImageListModes, InverseInputExchangesTheViews) {
    CollectRig rig(1);
    rig.options.inverse_input = 1;
    rig.add({"a_l.jpg", "a_r.jpg"});
    EXPECT_EQ(rig.build(), Names{"a_r.jpg a_l.jpg"});
}

TEST(ImageListModes, StereoFilesHaveNoFieldsOfOtherTimes) {
    CollectRig rig(4, 1);
    rig.add({"a.jpg", "b.jpg"});
    rig.options.interlaced_mode = 4;
    EXPECT_EQ(rig.build(), (Names{"a.jpg", "a.jpg", "b.jpg", "b.jpg"}));
    rig.options.interlaced_mode = 2;
    EXPECT_EQ(rig.build(), Names{});
    EXPECT_TRUE(rig.has_told("not supported")) << rig.told;
}

TEST(ImageListListing, ShowsTheObjectsInColumnsOnAllChannels) {
    CollectRig rig(6);
    rig.parameters.verbose_mode = 2;
    rig.add({"1<.jpg", "\xC3\xA4\xC3\xB6.jpg", "long.jpg"});
    EXPECT_EQ(rig.build().size(), 2U);
    const std::string lines = "   1 1<.jpg   <---> long.jpg\n   2 \xC3\xA4\xC3\xB6.jpg   <---> long.jpg\n";
    EXPECT_TRUE(rig.has_told(lines)) << rig.told;
    EXPECT_NE(rig.reports.text.find(lines), std::string::npos) << rig.reports.text;
    EXPECT_NE(rig.reports.html.find("monospace\">   1 1&lt;.jpg   &lt;---&gt; long.jpg</span><br>\n"),
              std::string::npos)
        << rig.reports.html;
    EXPECT_TRUE(rig.has_told("\nIn total 2 object/objects found for mounting.\n\n")) << rig.told;
}

TEST(ImageListListing, TellsFoldersAsTheyChange) {
    CollectRig rig(5);
    rig.parameters.verbose_mode = 1;
    rig.options.include_subdirs = 1;
    rig.add({"1.jpg", "2.jpg", "B/4.jpg", "B/5.jpg"});
    EXPECT_EQ(rig.build().size(), 2U);
    EXPECT_EQ(
        CollectRig::count_of(rig.told, "Collecting images in PathofImages: " + rig.folder.path() + '\n'), 1);
    EXPECT_EQ(CollectRig::count_of(rig.told, "subdirectory: B\n"), 1) << rig.told;
}

TEST(ImageListListing, TheListHoldsAlternatingPairsByTurns) {
    const std::pair<int, const char*> rows[] = {
        {5, "\"1.jpg\"   \"2.jpg\"\n\"2.jpg\"   \"3.jpg\"\n\"3.jpg\"   \"4.jpg\"\n"},
        {6, "\"1.jpg\"   \"2.jpg\"\n\"3.jpg\"   \"2.jpg\"\n\"3.jpg\"   \"4.jpg\"\n"},
    };
    for (const auto& [input_mode, lines] : rows) {
        CollectRig rig(input_mode);
        rig.options.write_data_base = 1;
        rig.options.list_of_images = "list.txt";
        rig.add({"1.jpg", "2.jpg", "3.jpg", "4.jpg"});
        (void)rig.build();
        EXPECT_EQ(test::read_text(rig.folder / "list.txt"), lines);
    }
}

/// Runs that have nothing to mount tell why and end.
struct EndRow {
    const char* name;
    int input_mode;
    int stereo_image_input;
    Names files;
    const char* told;
};
const EndRow kEnds[] = {
    {"empty_folder", 1, 2, {}, "cannot find suited.*InputMode = 1.*ImageType = jpg;png.*_l.*_r"},
    {"one_side_only", 3, 2, {"l/a.jpg", "l/b.jpg", "r/c.txt"}, "cannot find suited.*PathofImages"},
    {"one_side_of_a_tree", 9, 2, {"l/a.jpg"}, "cannot find suited.*/l, .*/r"},
    {"no_stereo", 4, 1, {"a_l.jpg"}, "NOT to be assumed.*cannot find suited.*file format"},
    {"named_view_as_stereo", 0, 1, {}, "NOT to be assumed.*settings of StereoFileName"},
    {"left_name_empty", 0, 2, {}, "cannot find suited.*settings of Left/Right"},
    {"single_file", 5, 2, {"a.jpg"}, "cannot find suited"},
};

class RunsThatEnd : public ::testing::TestWithParam<EndRow> {};

TEST_P(RunsThatEnd, TellWhyAndFail) {
    const EndRow& row = GetParam();
    CollectRig rig(row.input_mode, row.stereo_image_input);
    rig.options.stereo_file_name = "x_l.jpg";
    rig.options.left_file_name.clear();
    rig.add(row.files);
    EXPECT_TRUE(rig.build().empty());
    EXPECT_TRUE(rig.failure.ends_run && rig.failure.note.waits);
    const std::string told = rig.told + rig.failure.note.text;
    EXPECT_TRUE(CollectRig::matches(told, row.told)) << told;
}

INSTANTIATE_TEST_SUITE_P(ImageList, RunsThatEnd, ::testing::ValuesIn(kEnds),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(RunsThatEndAtOnce, AMissingImageFolderIsToldByNameAndReason) {
    CollectRig rig(2);
    rig.options.path_of_images = rig.folder / "nowhere";
    EXPECT_TRUE(rig.build().empty());
    EXPECT_TRUE(rig.failure.ends_run);
    const std::string told = rig.told + rig.failure.note.text;
    EXPECT_TRUE(CollectRig::matches(told, "nowhere cannot be read: No such file.*cannot find suited"))
        << told;
}

}  // namespace
}  // namespace zemora
