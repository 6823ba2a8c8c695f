#include <gtest/gtest.h>

#include "input/mpo.h"
#include "platform/child_process.h"
#include "platform/safe_file.h"
#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

std::string tags_of(const std::string& path, const char* format) {
    const ChildResult tags = run_child({"exiftool", "-n", "-m", "-q", "-p", format, path});
    return {tags.output.begin(), tags.output.end()};
}

/// A profile of no use but with a head that tells its colours, and with the name "Own".
std::string profile_of(const std::string& space) {
    std::string profile(128, '\0');
    profile[8] = 2;
    profile.replace(12, 12, "mntr" + space + "XYZ ");
    profile.replace(36, 4, "acsp");
    const auto number = [](char value) { return std::string(3, '\0') + value; };
    const std::string name = "desc" + number(0) + number(4) + "Own" + std::string(1, '\0');
    constexpr char kPlace = static_cast<char>(128 + 16);
    profile += number(1) + "desc" + number(kPlace) + number(static_cast<char>(name.size())) + name;
    profile[3] = static_cast<char>(profile.size());
    return profile;
}

struct ProfileRow {
    const char* name;
    std::vector<std::string> tags;  ///< Given to the sources.
    std::vector<std::string> settings;
    const char* file;
    const char* told;  ///< Colours and name of the product's profile.
};

class ColourProfiles : public testing::TestWithParam<ProfileRow> {};

TEST_P(ColourProfiles, SayWhatThePixelsAre) {
    if (find_program("exiftool").empty()) {
        GTEST_SKIP() << "no exiftool";
    }
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.jpg", "foo_r.jpg");
    workshop.write("rgb.icc", profile_of("RGB "));
    workshop.write("inks.icc", profile_of("CMYK"));
    for (const char* name : {"foo_l.jpg", "foo_r.jpg"}) {
        std::vector<std::string> call{"exiftool", "-q", "-n", "-overwrite_original", "-Exif:Model=Twin"};
        for (std::string tag : GetParam().tags) {
            const std::size_t at = tag.find('@');
            call.push_back(at == std::string::npos ? tag : tag.replace(at, 1, workshop.folder() + '/'));
        }
        call.push_back(workshop.path(name));
        ASSERT_TRUE(run_child(call).succeeded());
    }
    std::vector<std::string> call{"foo_l.jpg", "foo_r.jpg", "--EstimateGeometry=-1", "--MetaTransfer=1"};
    call.insert(call.end(), GetParam().settings.begin(), GetParam().settings.end());
    const Outcome outcome = workshop.run(call);
    ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    EXPECT_EQ(tags_of(workshop.path(GetParam().file), "$Model|$ColorSpaceData|$ProfileDescription"),
              std::string("Twin|") + GetParam().told + '\n');
}

const std::string kViews = "--LeftRightOutput=2";
INSTANTIATE_TEST_SUITE_P(
    Table, ColourProfiles,
    testing::Values(
        ProfileRow{"none", {"-ColorSpace="}, {kViews}, "cl/foo_cl.jpg", "RGB |sRGB built-in"},
        ProfileRow{"named_srgb",
                   {"-InteropIndex=R98", "-ColorSpace=1"},
                   {kViews},
                   "cl/foo_cl.jpg",
                   "RGB |sRGB built-in"},
        ProfileRow{"wide",
                   {"-InteropIndex=R03", "-ColorSpace=65535"},
                   {kViews},
                   "cr/foo_cr.jpg",
                   "RGB |Compatible with Adobe RGB (1998)"},
        ProfileRow{"only_uncalibrated", {"-ColorSpace=65535"}, {kViews}, "cr/foo_cr.jpg", "|"},
        ProfileRow{
            "own", {"-ICC_Profile<=@rgb.icc", "-InteropIndex=R03"}, {kViews}, "cl/foo_cl.jpg", "RGB |Own"},
        ProfileRow{"of_a_printer",
                   {"-ICC_Profile<=@inks.icc", "-ColorSpace="},
                   {kViews},
                   "cl/foo_cl.jpg",
                   "RGB |sRGB built-in"},
        ProfileRow{"inks_by_formula", {}, {kViews, "--OutputFormat=8"}, "cl/foo_cl.tif", "|"},
        ProfileRow{"dome_among_inks",
                   {},
                   {"--AnaglyphOutput=2", "--PlanetariumOutput=1", "--OutputFormat=8"},
                   "ca/foo_ca.tif",
                   "RGB |sRGB built-in"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ColourProfilesOfMultiPictureFiles, StandInBothPictures) {
    if (find_program("exiftool").empty()) {
        GTEST_SKIP() << "no exiftool";
    }
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.jpg", "foo_r.jpg");
    const Outcome outcome = workshop.run(
        {"foo_l.jpg", "foo_r.jpg", "--EstimateGeometry=-1", "--MetaTransfer=1", "--ExtraOutput=5"});
    ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    std::string file;
    for (const std::string& name : workshop.files()) {
        file = name.find(".mpo") != std::string::npos ? name : file;
    }
    std::string reason;
    const auto bytes = read_file_whole(workshop.path(file), reason);
    ASSERT_TRUE(bytes) << file;
    const MpoIndex index = read_mpo_index(*bytes);
    const std::size_t second = index.origin + index.offset2;
    EXPECT_EQ(second, index.size1);
    ASSERT_EQ(second + index.size2, bytes->size());
    workshop.write("first.jpg", {bytes->begin(), bytes->begin() + static_cast<std::ptrdiff_t>(second)});
    workshop.write("second.jpg", {bytes->begin() + static_cast<std::ptrdiff_t>(second), bytes->end()});
    for (const char* name : {"first.jpg", "second.jpg"}) {
        EXPECT_EQ(tags_of(workshop.path(name), "$ProfileDescription|$YCbCrSubSampling"),
                  "sRGB built-in|2 1\n");
        EXPECT_EQ(workshop.load(name).width(), 400);
    }
}

}  // namespace
}  // namespace zemora::test
