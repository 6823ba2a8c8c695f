#include <gtest/gtest.h>

#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

/// In how many of the three places, console, text report and page, a run tells the warning.
int places(const Workshop& workshop, const std::vector<std::string>& arguments) {
    std::vector<std::string> all{"--ReportMode=1", "--WriteDataBase=2"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const Outcome outcome = workshop.run(all);
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    EXPECT_NE(read_text(workshop.path("zemora_files.txt")).find(" OK "), std::string::npos)
        << "only a warning";
    int count = 0;
    for (const std::string& text : {outcome.text, read_text(workshop.path("zemora_report.txt")),
                                    read_text(workshop.path("zemora_report.html"))}) {
        count += text.find("left and right view may be exchanged") != std::string::npos ? 1 : 0;
    }
    return count;
}

TEST(EyeOrder, ExchangedViewsAreToldInAllThreePlacesAtEveryVerbosity) {
    Workshop workshop;
    save_pair(workshop, misaligned_views(), "foo_l.bmp", "foo_r.bmp");
    for (const char* verbosity : {"--VerboseMode=0", "--VerboseMode=1", "--VerboseMode=2"}) {
        EXPECT_EQ(places(workshop, {"foo_l.bmp", "foo_r.bmp", verbosity}), 0) << verbosity;
        EXPECT_EQ(places(workshop, {"foo_l.bmp", "foo_r.bmp", verbosity, "--InverseInput=1"}), 3)
            << verbosity;
    }
    save_pair(workshop, misaligned_views(), "bar_r.bmp", "bar_l.bmp");
    EXPECT_EQ(places(workshop, {"bar_l.bmp", "bar_r.bmp"}), 3);
    EXPECT_EQ(places(workshop, {"bar_l.bmp", "bar_r.bmp", "--RobustEstimation=0"}), 0);
    EXPECT_EQ(places(workshop, {"bar_l.bmp", "bar_r.bmp", "--EstimateGeometry=0"}), 0)
        << "nothing was measured";
}

}  // namespace
}  // namespace zemora::test
