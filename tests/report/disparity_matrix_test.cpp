#include "report/disparity_matrix.h"

#include <gtest/gtest.h>

namespace zemora {
namespace {

TEST(DisparityMatrix, ShowsTheTopRowFirstAndTheExtremesInRed) {
    AnalysisState analysis{ParameterSet{}};
    analysis.disparity_width = 500;
    analysis.CQOK5[0][0] = analysis.CQOK5[15][15] = analysis.CQOK5[15][1] = 1;
    analysis.ErrorPixel_x[0][0] = -12.3F;
    analysis.ErrorPixel_x[15][1] = 0.25F;
    analysis.ErrorPixel_x[15][15] = 7.0F;
    analysis.ErrorPixel_x[8][8] = 99.0F;  // does not count
    const DisparityMatrix matrix = disparity_matrix(analysis, MessageCatalogue(Language::english));

    std::string others;
    for (int column = 1; column < 16; ++column) {
        others += "    x";
    }
    const std::string inner = others.substr(0, 13 * 5);
    EXPECT_TRUE(matrix.text.starts_with("\nDisparity Matrix of final image [per mille]:\n" +
                                        std::string(44, '-') + "\n\nSegment  0    1  "));
    EXPECT_NE(matrix.text.find(std::string(85, '-') + "\n  0 |    x    1" + inner + "   14\n  1 |"),
              std::string::npos)
        << matrix.text;
    EXPECT_TRUE(matrix.text.ends_with(" 15 |  -25" + others + "\n\n")) << matrix.text;
    EXPECT_NE(matrix.html.find("  0 |    x    1" + inner + " <span class=\"red\">  14</span>\n"),
              std::string::npos)
        << matrix.html;
    EXPECT_TRUE(matrix.html.ends_with(" 15 | <span class=\"red\"> -25</span>" + others + "\n</pre>\n"));
}

}  // namespace
}  // namespace zemora
