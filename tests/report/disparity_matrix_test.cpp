#include "report/disparity_matrix.h"

#include <gtest/gtest.h>

namespace zemora {
namespace {

TEST(DisparityMatrix, ShowsTheTopRowFirstAndTheExtremesInRed) {
    AnalysisState analysis{AnalysisOptions{}};
    analysis.disparity_copy_width = 500;
    analysis.valid_disparity[0][0] = analysis.valid_disparity[15][15] = analysis.valid_disparity[15][1] = 1;
    analysis.dx[0][0] = -12.3F;
    analysis.dx[15][1] = 0.25F;
    analysis.dx[15][15] = 7.0F;
    analysis.dx[8][8] = 99.0F;  // does not count
    const DisparityMatrix matrix = disparity_matrix(analysis, MessageCatalogue(Language::english));

    const std::string inner = "    x    x    x    x    x    x    x    x    x    x    x    x    x";
    const std::string title = "\nDisparity Matrix of final image [per mille]:\n" + std::string(44, '-');
    EXPECT_EQ(matrix.text.find(title + "\n\nSegment  0    1  "), 0U) << matrix.text;
    EXPECT_NE(matrix.text.find(std::string(85, '-') + "\n  0 |    x    1" + inner + "   14\n  1 |"),
              std::string::npos);
    EXPECT_TRUE(matrix.text.ends_with(" 15 |  -25" + inner + "    x    x\n\n"));
    EXPECT_NE(matrix.html.find("  0 |    x    1" + inner + " <span class=\"red\">  14</span>\n"),
              std::string::npos);
    EXPECT_TRUE(
        matrix.html.ends_with(" 15 | <span class=\"red\"> -25</span>" + inner + "    x    x\n</pre>\n"));
}

}  // namespace
}  // namespace zemora
