#include "input/depth_gaps.h"

#include <gtest/gtest.h>

#include "tests/input/collect_rig.h"

namespace zemora {
namespace {

using test::CollectRig;
using test::Names;

TEST(FrameCounters, StandBetweenTheLastSeparators) {
    struct Row {
        const char* path;
        std::int64_t value;
        int digits;
    };
    const Row rows[] = {
        {"/a_9_/x_0012_rgb.jpg", 12, 4},
        {"x_0012.jpg", 12, 4},
        {"my_film_0012.jpg", 12, 4},
        {"x_12_007.jpg", 12, 2},
        {"x_12ab_cd.jpg", 12, 4},
        {"_7.jpg", 7, 1},
        {"x7.jpg", 0, 0},
        {"a_b_c_5_.jpg", 5, 1},
        {"x.y_12", 12, 2},
        {"_", 0, 0},
        {"x_20140801120010.jpg", 0, 14},
    };
    for (const Row& row : rows) {
        const FrameCounter counter = file_counter(row.path, '_');
        EXPECT_EQ(counter.value, row.value) << row.path;
        EXPECT_EQ(counter.digits, row.digits) << row.path;
    }
}

TEST(DepthGaps, LieBetweenTheMasksThatAreThere) {
    CollectRig rig(3, 5);
    const Names photos{"p_02_rgb.jpg", "p_04_rgb.jpg", "p_06_rgb.jpg", "p_08_rgb.jpg",
                       "p_10_rgb.jpg", "p_12_rgb.jpg", "p_14_rgb.jpg"};
    struct Row {
        Names masks;
        std::vector<std::pair<int, int>> gaps;
    };
    for (const Row& row :
         {Row{{"p_02_d.jpg", "p_08_d.jpg", "p_14_d.jpg"}, {{2, 8}, {8, 14}}},
          Row{{"p_02_d.jpg", "p_04_d.jpg", "p_06_d.jpg", "p_14_d.jpg"},
              {{6, 14}}},  // of a run that was stopped
          Row{{"p_02_d.jpg", "p_06_d.jpg", "p_08_d.jpg", "p_14_d.jpg"}, {{2, 6}, {8, 14}}}}) {
        const Result<DepthGapPlan> plan = plan_depth_gaps(photos, row.masks, rig.voice);
        ASSERT_TRUE(plan);
        EXPECT_EQ(plan->photo_step, 2);
        std::vector<std::pair<int, int>> gaps;
        for (const DepthGap& gap : plan->gaps) {
            gaps.emplace_back(static_cast<int>(gap.first), static_cast<int>(gap.last));
        }
        EXPECT_EQ(gaps, row.gaps);
    }
}

TEST(DepthGaps, SequencesThatDoNotFitEndTheRun) {
    struct Row {
        Names photos;
        Names masks;
        const char* told;
    };
    const Row rows[] = {
        {{"p_01.jpg", "p_02.jpg"}, {"p_01.jpg"}, "FIRST images"},
        {{"p_01.jpg", "p_02.jpg"},
         {"p_02.jpg", "p_04.jpg"},
         "FIRST images.*left:  p_01.jpg\nright: p_02.jpg"},
        {{"p_01.jpg", "p_02.jpg"}, {"p_001.jpg", "p_003.jpg"}, "FIRST images"},
        {{"p_01.jpg", "q_01.jpg"}, {"p_01.jpg", "p_03.jpg"}, "FIRST images"},
        {{"p_01.jpg", "p_002.jpg"}, {"p_01.jpg", "p_03.jpg"}, "Wrong length of the counter in p_002.jpg"},
        {{"p_01.jpg", "p_02.jpg"}, {"p_01.jpg", "p_003.jpg"}, "Wrong length of the counter in p_003.jpg"},
        {{"p_01.jpg", "p_03.jpg"}, {"p_01.jpg", "p_04.jpg"}, "mask p_04.jpg fits none of the images"},
    };
    CollectRig rig(3, 5);
    for (const Row& row : rows) {
        const Result<DepthGapPlan> plan = plan_depth_gaps(row.photos, row.masks, rig.voice);
        ASSERT_FALSE(plan) << row.told;
        EXPECT_TRUE(plan.failure().ends_run && plan.failure().note.waits);
        EXPECT_TRUE(CollectRig::matches(plan.failure().note.text, row.told)) << plan.failure().note.text;
    }
}

TEST(DepthGaps, DifferentEndsAreToldAndTheWorkGoesOn) {
    CollectRig rig(3, 5);
    rig.messages.set_language(Language::german);
    testing::internal::CaptureStdout();
    const Result<DepthGapPlan> plan =
        plan_depth_gaps({"p_1.jpg", "p_2.jpg", "p_3.jpg", "p_4.jpg"}, {"p_1.jpg", "p_3.jpg"}, rig.voice);
    rig.console.flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Die beiden LETZTEN Bilder in den Unterverzeichnissen muessen zueinander passen:\n"
              "linker Index:  4\nrechter Index: 3\n");
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->gaps.size(), 1U);
}

}  // namespace
}  // namespace zemora
