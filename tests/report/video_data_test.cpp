#include "report/video_data.h"

#include <gtest/gtest.h>

#include <limits>

#include "report/deep_video_page.h"
#include "report/page_texts.h"
#include "report/video_charts.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

CorrectionSeries two_frames() {
    CorrectionSeries series;
    series.analysed = {1, 6, 4};
    series.resize(6);
    series.values[1] = {10.0F, 2.0F, 0.02F, 0.0F, 0.0F, -0.0349065850F};
    series.values[5] = {-1.0F, -8.0F, 0.0F, 0.0174532925F, 0.0F, 0.0F};
    series.disparities[1] = {-20.0F, 40.0F, 5.0F, 60.0F, 0.5F};
    series.disparities[5] = {10.0F, 20.0F, 15.0F, 10.0F, 10.0F};
    return series;
}

TEST(VideoData, DisparitiesAreInPerMilleWithRangesMeansAndExtremes) {
    EXPECT_EQ(disparity_data(two_frames(), 2000),
              "var ssg = [[1,0.500000],[5,10.000000]];\n"
              "var ssg_min = -2.000000;\nvar ssg_max = 12.000000;\n"
              "var dispmin = [[1,-10.000000],[5,5.000000]];\n"
              "var dispmax = [[1,20.000000],[5,10.000000]];\n"
              "var dispfix = [[1,2.500000],[5,7.500000]];\n"
              "var deviation = [[1,30.000000],[5,5.000000]];\n"
              "var disp_min = -18.000000;\nvar disp_max = 38.000000;\n"
              "var WO_U         = 2000;\n"
              "var dispmax_mean = 15.000000;\nvar dispmax_max  = 20.000000;\n"
              "var deviation_mean = 17.500000;\nvar deviation_max  = 30.000000;\n");
}

TEST(VideoData, ErrorsAreInTheUnitsOfTheirAxes) {
    EXPECT_EQ(error_data(two_frames()),
              "var hgt = [[1,10.000000],[5,-1.000000]];\n"
              "var hgt_min = -8.000000;\nvar hgt_max = 13.000000;\n"
              "var siz = [[1,2.000000],[5,0.000000]];\n"
              "var siz_min = -1.600000;\nvar siz_max = 2.600000;\n"
              "var rot = [[1,0.000000],[5,1.000000]];\n"
              "var ver = [[1,0.000000],[5,0.000000]];\n"
              "var veh = [[1,-2.000000],[5,0.000000]];\n"
              "var rot_min = -2.600000;\nvar rot_max = 1.600000;\n"
              "var win = [[1,-2.000000],[5,8.000000]];\n"
              "var win_min = -7.600000;\nvar win_max = 10.600000;\n");
}

TEST(VideoData, OneFrameStandsTwiceAndNothingIsNoNumber) {
    CorrectionSeries series = two_frames();
    series.analysed = {1, 2, 5};
    series.values[1].height_px = std::numeric_limits<float>::infinity();
    series.disparities[1].far_px = std::numeric_limits<float>::quiet_NaN();
    const std::string text = error_data(series) + disparity_data(series, 0);
    EXPECT_TRUE(text.starts_with("var hgt = [[1,0.000000],[2,0.000000]];\n")) << text;
    EXPECT_NE(text.find("var ssg = [[1,0.500000],[2,0.500000]];\n"), std::string::npos);
    EXPECT_EQ(text.find("nan"), std::string::npos) << text;
    EXPECT_EQ(text.find("inf"), std::string::npos) << text;
    series.analysed = {2, 2, 5};
    EXPECT_TRUE(error_data(series).starts_with("var hgt = [];\nvar hgt_min = -7.000000;\n"));
}

TEST(VideoPages, AllMarksOfThePagesHaveWordsInBothLanguages) {
    const test::TestFolder folder;
    for (const Language language : {Language::english, Language::german}) {
        const MessageCatalogue messages(language);
        ASSERT_TRUE(write_deep_video_page({folder.path(), {"a.mp4"}}, messages));
        const std::string page = test::read_text(folder / kDeepVideoPageName);
        EXPECT_EQ((page + report_charts_html(language)).find("{{"), std::string::npos);
        EXPECT_EQ(page.find("<img"), std::string::npos);
        EXPECT_TRUE(page.ends_with("</p>\n</div></body></html>\n"));
    }
    EXPECT_EQ(filled_page("a {{no_such_mark}} b", Language::english), "a {{no_such_mark}} b");
    ASSERT_FALSE(write_deep_video_page({folder / "none", {}}, MessageCatalogue(Language::english)));
}

}  // namespace
}  // namespace zemora
