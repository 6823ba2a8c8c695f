#include "driver/output_names.h"

#include <gtest/gtest.h>

#include <functional>

#include "driver/product_names.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using Change = std::function<void(ParameterSet&)>;

struct PathCase {
    const char* relative;
    ProductKind kind;
    Change change;
    const char* path;
};

class OutputPath : public testing::TestWithParam<PathCase> {};

TEST_P(OutputPath, FollowsTheTableOfFoldersAndTails) {
    const PathCase& c = GetParam();
    ParameterSet p;
    p.input_mode = 0;
    p.left_right_output = p.stereo_output = p.anaglyph_output = 2;
    c.change(p);
    EXPECT_EQ(output_path(p, "/out", c.relative, c.kind, 3, ".jpg").path(), c.path);
}

void nothing(ParameterSet&) {}
constexpr auto kLeft = ProductKind::left;
constexpr auto kExtra = ProductKind::extra;

// clang-format off
INSTANTIATE_TEST_SUITE_P(Kinds, OutputPath, testing::Values(
    PathCase{"foo_l.jpg", kLeft, nothing, "/out/cl/foo_cl.jpg"},
    PathCase{"foo_r.jpg", ProductKind::right, nothing, "/out/cr/foo_cr.jpg"},
    PathCase{"foo_s.tif", ProductKind::stereo, nothing, "/out/cs/foo_cs.jpg"},
    PathCase{"foo-S.jpg", ProductKind::anaglyph, nothing, "/out/ca/foo_ca.jpg"},
    PathCase{"foo.jpg", ProductKind::panorama, nothing, "/out/foo_cp.jpg"},
    PathCase{"foo_l.jpg", kLeft, [](ParameterSet& p) { p.left_right_output = 1; }, "/out/foo_cl.jpg"},
    PathCase{"foo_l.jpg", kLeft, [](ParameterSet& p) { p.video_output = 9; }, "/out/clr/foo_cl.jpg"},
    PathCase{"foo_l.jpg", kLeft, [](ParameterSet& p) { p.left_right_output = 0; p.video_output = 1; }, "/out/cl/foo_cl.jpg"},
    PathCase{"foo_l.jpg", kLeft, [](ParameterSet& p) { p.left_right_output = 3; }, "/out/foo_OS.jpg"},
    PathCase{"foo_r.jpg", ProductKind::right, [](ParameterSet& p) { p.left_right_output = 3; }, "/out/foo_OD.jpg"},
    PathCase{"foo_s.jpg", ProductKind::stereo, [](ParameterSet& p) { p.left_right_output = 3; }, "/out/cs/foo_cs.jpg"},
    PathCase{"/else/l/foo_l.jpg", kLeft, [](ParameterSet& p) { p.left_right_output = 3; }, "/else/foo_cl.jpg"},
    PathCase{"foo_l.jpg", ProductKind::stereo, [](ParameterSet& p) { p.stereo_output = 0; p.video_output = 2; }, "/out/cs/foo_cs.jpg"},
    PathCase{"foo_l.jpg", ProductKind::panorama, [](ParameterSet& p) { p.video_output = 10; }, "/out/cp/foo_cp.jpg"}));

INSTANTIATE_TEST_SUITE_P(Extra, OutputPath, testing::Values(
    PathCase{"a.jpg", kExtra, [](ParameterSet& p) { p.extra_output = 1; }, "/out/ce_lrq/a_ce.jpg"},
    PathCase{"a.jpg", kExtra, [](ParameterSet& p) { p.extra_output = 2; }, "/out/ce_ab/a_ce.jpg"},
    PathCase{"a.jpg", kExtra, [](ParameterSet& p) { p.extra_output = 3; }, "/out/ce_abq/a_ce.jpg"},
    PathCase{"a.jpg", kExtra, [](ParameterSet& p) { p.extra_output = 4; }, "/out/ce_oe/a_ce.jpg"},
    PathCase{"a.jpg", kExtra, [](ParameterSet& p) { p.extra_output = 5; }, "/out/ce_mpo/a_ce.jpg"},
    PathCase{"a.jpg", kExtra, [](ParameterSet& p) { p.extra_output = 6; }, "/out/ce_lrl/a_ce.jpg"},
    PathCase{"a.jpg", kExtra, [](ParameterSet& p) { p.extra_output = 7; }, "/out/ce_lrrl/a_ce.jpg"},
    PathCase{"a.jpg", kExtra, [](ParameterSet& p) { p.video_output = 8; }, "/out/ce_dual/a_ce.jpg"},
    PathCase{"a.jpg", kExtra, [](ParameterSet& p) { p.extra_output = 7; p.video_output = 4; }, "/out/ce_lrq/a_ce.jpg"},
    PathCase{"a.jpg", kExtra, nothing, "/out/ce/a_ce.jpg"}));

INSTANTIATE_TEST_SUITE_P(Folders, OutputPath, testing::Values(
    PathCase{"l/x/foo_l.jpg", kLeft, nothing, "/out/x/cl/foo_cl.jpg"},
    PathCase{"l/x/foo_l.jpg", kLeft, [](ParameterSet& p) { p.input_mode = 1; }, "/out/l/x/cl/foo_cl.jpg"},
    PathCase{"x/L/foo.jpg", kLeft, [](ParameterSet& p) { p.input_mode = 1; }, "/out/x/cl/foo_cl.jpg"},
    PathCase{"R/foo.jpg", ProductKind::right, nothing, "/out/cr/foo_cr.jpg"},
    PathCase{"clients/pearl/a_l.jpg", kLeft, nothing, "/out/clients/pearl/cl/a_cl.jpg"},
    PathCase{"./l/foo.jpg", kLeft, nothing, "/out/cl/foo_cl.jpg"},
    PathCase{"l.x/foo.tar_l.jpg", kLeft, nothing, "/out/l.x/cl/foo.tar_cl.jpg"},
    PathCase{"/else/x/foo_l.jpg", kLeft, nothing, "/else/x/cl/foo_cl.jpg"},
    PathCase{"/else/x/foo_l.jpg", kLeft, [](ParameterSet& p) { p.path_of_output = "/out"; }, "/out/cl/foo_cl.jpg"},
    PathCase{"/foo_l.jpg", kLeft, [](ParameterSet& p) { p.path_of_output = "~/out"; }, "/out/cl/foo_cl.jpg"},
    PathCase{"/x/foo_l.jpg", kLeft, [](ParameterSet& p) { p.path_of_output = "/out"; p.left_right_output = 3; }, "/out/foo_OS.jpg"},
    PathCase{"/foo_l.jpg", kLeft, nothing, "/cl/foo_cl.jpg"},
    PathCase{"_l.jpg", kLeft, nothing, "/out/cl/_cl.jpg"}));

INSTANTIATE_TEST_SUITE_P(Ident, OutputPath, testing::Values(
    PathCase{"a.jpg", kLeft, [](ParameterSet& p) { p.ident_output_dir = "_x"; }, "/out/cl_x/a_cl.jpg"},
    PathCase{"a.jpg", kLeft, [](ParameterSet& p) { p.ident_output_dir = "/../../x"; }, "/out/cl_.._.._x/a_cl.jpg"},
    PathCase{"a.jpg", kLeft, [](ParameterSet& p) { p.ident_output_dir = "..\\x"; }, "/out/cl.._x/a_cl.jpg"},
    PathCase{"a.jpg", kLeft, [](ParameterSet& p) { p.ident_output_dir = ".."; p.left_right_output = 1; }, "/out/_/a_cl.jpg"},
    PathCase{"y/a.jpg", kLeft, [](ParameterSet& p) { p.ident_output_dir = ".."; p.left_right_output = 1; }, "/out/y/_/a_cl.jpg"},
    PathCase{"/y/z/a.jpg", kLeft, [](ParameterSet& p) { p.ident_output_dir = ".."; p.left_right_output = 1; }, "/y/z/_/a_cl.jpg"},
    PathCase{"y/a.jpg", kLeft, [](ParameterSet& p) { p.ident_output_dir = "new"; p.left_right_output = 1; }, "/out/y/new/a_cl.jpg"}));

INSTANTIATE_TEST_SUITE_P(Fields, OutputPath, testing::Values(
    PathCase{"a.jpg", kLeft, [](ParameterSet& p) { p.interlaced_mode = 1; }, "/out/cl/a_1_cl.jpg"},
    PathCase{"a.jpg", kLeft, [](ParameterSet& p) { p.interlaced_mode = 2; }, "/out/cl/a_0_cl.jpg"},
    PathCase{"a.jpg", kLeft, [](ParameterSet& p) { p.interlaced_mode = 6; p.left_right_output = 3; }, "/out/a_1_cl.jpg"}));
// clang-format on

struct BaseCase {
    const char* left;
    const char* right;
    bool common;
    const char* left_after;
    const char* right_after;
};

class CommonBase : public testing::TestWithParam<BaseCase> {};

TEST_P(CommonBase, IsTakenWithoutTheMarkers) {
    const BaseCase& c = GetParam();
    std::string left = c.left;
    std::string right = c.right;
    EXPECT_EQ(take_common_base(ParameterSet(), left, right), c.common);
    EXPECT_EQ(left, c.left_after);
    EXPECT_EQ(right, c.right_after);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CommonBase,
    testing::Values(BaseCase{"foo_l.jpg", "foo_r.jpg", true, "foo.jpg", "foo.jpg"},
                    BaseCase{"foo_L.jpg", "foo_r.png", true, "foo.jpg", "foo.png"},
                    BaseCase{"foo_cl.jpg", "foo_cr.jpg", true, "foo.jpg", "foo.jpg"},
                    BaseCase{"l/foo.jpg", "r/foo.jpg", true, "l/foo.jpg", "r/foo.jpg"},
                    BaseCase{"foo_r.jpg", "foo_l.jpg", false, "foo_r.jpg", "foo_l.jpg"},
                    BaseCase{"foo_l.jpg", "fox_r.jpg", false, "foo_l.jpg", "fox_r.jpg"},
                    BaseCase{"foo_l.jpg", "foo_r.jpeg", false, "foo_l.jpg", "foo_r.jpeg"},
                    BaseCase{"foo_CL.jpg", "foo_CR.jpg", false, "foo_CL.jpg", "foo_CR.jpg"},
                    BaseCase{"a.jpg", "b.jpg", false, "a.jpg", "b.jpg"}));

OutputName name_of(const char* base) {
    OutputName name;
    name.folder = "/out/cl";
    name.base = base;
    name.tail = "_cl";
    name.suffix = ".jpg";
    return name;
}

struct StampCase {
    int stamp_files, projection_ratio, threshold;
    double deviation, projected;
    const char* bare;
};

class Stamps : public testing::TestWithParam<StampCase> {};

TEST_P(Stamps, StandBeforeTheKindTail) {
    const StampCase& c = GetParam();
    ParameterSet p;
    p.stamp_files = c.stamp_files;
    p.projection_ratio = c.projection_ratio;
    p.deviation_thresh = c.threshold;
    OutputName name = name_of("foo");
    stamp_name(name, p, {c.deviation, c.projected, "_2026.01.31_23.59.59"});
    EXPECT_EQ(name.bare(), c.bare);
}

INSTANTIATE_TEST_SUITE_P(Table, Stamps,
                         testing::Values(StampCase{0, 0, 999, 0.0305, 0.02, "foo_cl.jpg"},
                                         StampCase{1, 0, 999, 0.0305, 0.02, "foo_031_cl.jpg"},
                                         StampCase{1, 1, 999, 0.0304, 0.02, "foo_030_cl.jpg"},
                                         StampCase{2, 0, 999, 0.0305, 0.02, "foo_2026.01.31_23.59.59_cl.jpg"},
                                         StampCase{3, 3, 999, 0.0305, 0.0306,
                                                   "foo_031(16;10)_2026.01.31_23.59.59_cl.jpg"},
                                         StampCase{1, 2, 999, 0.03, 0.025, "foo_025(4;3)_cl.jpg"},
                                         StampCase{1, 4, 999, 0.03, 0.025, "foo_025(16;9)_cl.jpg"},
                                         StampCase{1, 5, 999, 0.03, 0.025, "foo_025(Kino)_cl.jpg"},
                                         StampCase{0, 0, 30, 0.030, 0.0, "foo_cl.jpg"},
                                         StampCase{1, 0, 29, 0.030, 0.0, "zz_foo_030_cl.jpg"}));

TEST(ViewNames, OfTheRightViewStandBesideTheLeftOne) {
    struct Row {
        const char* output;
        const char* left;
        const char* right;
        const char* left_name;
        const char* right_name;
    };
    for (const Row& row :
         {Row{"./", "a_l.jpg", "/else/a_r.jpg", "/pics/cl/a_cl.jpg", "/pics/cr/a_cr.jpg"},
          Row{"/out", "a_l.jpg", "/else/a_r.jpg", "/out/cl/a_cl.jpg", "/out/cr/a_cr.jpg"},
          Row{"/out", "/one/a_l.jpg", "/two/a_r.jpg", "/out/cl/a_cl.jpg", "/out/cr/a_cr.jpg"},
          Row{"./", "/one/l/a.jpg", "/two/r/a.jpg", "/one/cl/a_cl.jpg", "/one/cr/a_cr.jpg"},
          Row{"./", "left/a.jpg", "right/a.jpg", "/pics/left/cl/a_cl.jpg", "/pics/left/cr/a_cr.jpg"},
          Row{"out", "l/x/a.jpg", "r/x/a.jpg", "/pics/out/x/cl/a_cl.jpg", "/pics/out/x/cr/a_cr.jpg"},
          Row{"./", "a.jpg", "/else/b.jpg", "/pics/cl/a-b_cl.jpg", "/pics/cr/a-b_cr.jpg"}}) {
        ParameterSet p;
        p.input_mode = 10;
        p.stamp_files = 0;
        p.left_right_output = 2;
        p.path_of_images = "/pics";
        p.path_of_output = row.output;
        const ProductNames names =
            view_names(p, {row.left, row.right, ".jpg", ".jpg", true, 0, {}}, kLeft, ProductKind::right);
        EXPECT_EQ(names.left.path(), row.left_name);
        EXPECT_EQ(names.right.path(), row.right_name);
    }
}

TEST(CombinedName, HoldsBothBasesAndOnePrefix) {
    ParameterSet p;
    p.stamp_files = 1;
    p.deviation_thresh = 10;
    OutputName left = name_of("clients");
    OutputName right = name_of("b");
    stamp_name(left, p, {0.02, 0.02, ""});
    stamp_name(right, p, {0.02, 0.02, ""});
    combine_names(left, right);
    EXPECT_EQ(left.bare(), "zz_clients-b_020_cl.jpg");
}

TEST(CombinedName, IsForSeparateFilesWithoutCommonBase) {
    ParameterSet p;
    for (const auto& [mode, wanted] :
         {std::pair{0, true}, {1, false}, {2, false}, {3, false}, {4, true}, {9, true}, {10, true}}) {
        p.input_mode = mode;
        EXPECT_EQ(wants_combined_name(p, true, false), wanted) << mode;
        EXPECT_FALSE(wants_combined_name(p, false, false));
        EXPECT_FALSE(wants_combined_name(p, true, true));
    }
}

TEST(ExtraEnding, TurnsWithTheViewsAndFiveIsASuffix) {
    OutputName name = name_of("a");
    add_extra_ending(name, 1, false);
    EXPECT_EQ(name.bare(), "a_cl-lrq.jpg");
    add_extra_ending(name, 7, true);
    EXPECT_EQ(name.bare(), "a_cl-rllr.jpg");
    OutputName multi = name_of("a");
    add_extra_ending(multi, 5, true);
    EXPECT_EQ(multi.bare(), "a_cl.mpo");
}

TEST(GivenNames, SecondUseGetsANumberBeforeTheTail) {
    GivenNames names;
    const char* expected[] = {"foo_031_cl.jpg", "foo_031-2_cl.jpg", "foo_031-3_cl.jpg"};
    for (int i = 0; i < 3; ++i) {
        OutputName name = name_of("foo");
        name.stamp = "_031";
        EXPECT_EQ(names.give_free_name(name), i > 0);
        EXPECT_EQ(name.bare(), expected[i]);
    }
}

TEST(GivenNames, OfAnEarlierRunAreNotGivenAgainAlsoWhereTheirStampIsUnknown) {
    const auto stamped = [](const char* stamp, bool over_limit) {
        OutputName name = name_of("foo");
        name.stamp = stamp;
        name.over_limit = over_limit;
        return name;
    };
    const auto given = [](GivenNames& names, OutputName name) {
        (void)names.give_free_name(name);
        return name.bare();
    };
    GivenNames known;
    known.close(stamped("_031", false), true);
    known.close(stamped("_031", false), true);
    EXPECT_EQ(given(known, stamped("_031", false)), "foo_031-3_cl.jpg");
    EXPECT_EQ(given(known, stamped("_032", false)), "foo_032_cl.jpg");
    GivenNames unknown;
    unknown.close(stamped("_031", false), true);
    unknown.close(stamped("_000", false), false);  // may be called foo_031-2
    EXPECT_EQ(given(unknown, stamped("_031", false)), "foo_031-3_cl.jpg");
    EXPECT_EQ(given(unknown, stamped("_099", true)), "zz_foo_099-3_cl.jpg");
    EXPECT_EQ(given(unknown, name_of("bar")), "bar_cl.jpg");
}

TEST(GivenNames, OfADoubtfulNumberAreTakenOnlyWhereNoFileHasThem) {
    const test::TestFolder folder;
    OutputName name = name_of("foo");
    name.folder = folder.path();
    for (const char* expected : {"foo-3_cl.jpg", "foo-4_cl.jpg"}) {
        GivenNames names;
        names.close(name, true);
        names.note_open(name);  // may have been called foo-2 before it was to be done again
        names.close(name, true);
        OutputName again = name;
        (void)names.give_free_name(again);
        EXPECT_EQ(again.bare(), expected);
        test::write_text(folder / "foo-3_cl.jpg", "of the earlier run");
    }
}

}  // namespace
}  // namespace zemora
