#include <gtest/gtest.h>

#include "input/file_selection.h"
#include "tests/input/collect_rig.h"

namespace zemora {
namespace {

TEST(NameRules, SuffixesOfImageTypeCountInAnyCase) {
    EXPECT_TRUE(has_listed_suffix("tif;jpg", "/x.y/a.JPG"));
    EXPECT_TRUE(has_listed_suffix("TIF; JPG;", "a.b.jpg"));
    EXPECT_TRUE(has_listed_suffix("*.tif; .jpg", "a.jpg") && has_listed_suffix("*.TIF;.jpg", "a.tif"));
    for (const char* name : {"ajpg", "a.jpeg", "a.jp", "/x.jpg/a", "a.", "a.tif;jpg"}) {
        EXPECT_FALSE(has_listed_suffix("tif;jpg;;", name)) << name;
    }
}

TEST(NameRules, OutputFoldersAreKnownWithTheirText) {
    for (const char* name : {"cl", "CLR", "ce", "ce_lrq", "ro", "sq", "cl-2", "CE_AB-2", "-2"}) {
        EXPECT_TRUE(is_output_folder_name(name, "-2")) << name;
    }
    for (const char* name : {"l", "clx", "cell", "photos-2", "cl-3", "lu2", ""}) {
        EXPECT_FALSE(is_output_folder_name(name, "-2")) << name;
    }
    EXPECT_TRUE(is_output_folder_name("cs_a_b", "/a\\b")) << "the text stands as one folder name";
    EXPECT_FALSE(is_output_folder_name("", ""));
}

TEST(NameRules, PartnersTurnTheMarkerBeforeTheSuffixOnly) {
    struct Row {
        const char* left;
        bool depth_masks;
        const char* right;
    };
    const Row rows[] = {
        {"/x_l.y/a_l.b_l.jpg", false, "/x_l.y/a_l.b_r.jpg"},
        {"/x/a_L.JPG", false, "/x/a_R.JPG"},
        {"/x/a_rgb.jpg", true, "/x/a_d.jpg"},
        {"/x/a_RGB.jpg", true, "/x/a_D.jpg"},
        {"/x/a_Rgb.jpg", true, ""},
        {"/x/a_l.jpg", true, ""},
        {"/x_l.y/a", false, ""},
        {"/x/a_l", false, ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(partner_name(row.left, row.depth_masks), row.right) << row.left;
    }
}

TEST(NameRules, DepthMasksAreInputWhereNamesSayPhotoAndMask) {
    struct Row {
        int input_mode;
        int stereo_image_input;
        const char* name;
        bool dropped;
    };
    const Row rows[] = {
        {1, 6, "a_d.jpg", false}, {10, 6, "a_D.jpg", false}, {4, 6, "a_d.jpg", true},
        {1, 1, "a_d.jpg", true},  {1, 6, "a_R.jpg", true},   {4, 1, "a_d.b.jpg", false},
    };
    for (const Row& row : rows) {
        test::CollectRig rig(row.input_mode, row.stereo_image_input);
        testing::internal::CaptureStdout();
        EXPECT_EQ(is_dropped_with_hint(rig.options, rig.voice, row.name), row.dropped) << row.name;
        rig.voice.console().flush();
        const std::string told = testing::internal::GetCapturedStdout();
        EXPECT_EQ(told.find("Hint: ") == 0 && told.find(row.name) != std::string::npos, row.dropped) << told;
    }
}

}  // namespace
}  // namespace zemora
