#include <gtest/gtest.h>

#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

/// A run on a pair, and the three places that it is told in.
struct Told {
    Told(const Workshop& workshop, const std::vector<std::string>& settings) {
        std::vector<std::string> all{"foo_l.bmp", "foo_r.bmp", "--ReportMode=1", "--WriteDataBase=2"};
        all.insert(all.end(), settings.begin(), settings.end());
        console = workshop.run(all);
        EXPECT_TRUE(console.tells("processed images: 1/1")) << console.text;
        text = read_text(workshop.path("zemora_report.txt"));
        page = read_text(workshop.path("zemora_report.html"));
    }
    [[nodiscard]] int places_with(const std::string& part) const {
        return (console.tells(part) ? 1 : 0) + (text.find(part) != std::string::npos ? 1 : 0) +
               (page.find(part) != std::string::npos ? 1 : 0);
    }
    Outcome console;
    std::string text, page;
};

TEST(HeightCheck, IsToldInAllThreePlacesAtEveryVerbosity) {
    Workshop workshop;
    save_pair(workshop, misaligned_views(), "foo_l.bmp", "foo_r.bmp");
    for (const char* verbosity : {"--VerboseMode=0", "--VerboseMode=1", "--VerboseMode=2"}) {
        const Told robust(workshop, {verbosity});
        EXPECT_EQ(robust.places_with("Remaining error of height"), 3) << verbosity << robust.console.text;
        EXPECT_EQ(robust.places_with("pixel of the input): good"), 3) << verbosity << robust.text;
        const Told plain(workshop, {verbosity, "--RobustEstimation=0"});
        EXPECT_EQ(plain.places_with("Remaining error"), 0) << verbosity << plain.console.text;
    }
    const Told given(workshop, {"--EstimateGeometry=0"});
    EXPECT_EQ(given.places_with("Remaining error"), 0) << "nothing was measured";
}

TEST(HeightCheck, AnUnlikelyCorrectionIsNoSuccess) {
    SceneOptions options;
    options.width = 600;
    options.height = 450;
    SceneErrors errors;
    errors.size = 0.05;
    const Scene scene(options, errors);
    Workshop workshop;
    workshop.save("foo_l.bmp", scene.render_left().picture());
    workshop.save("foo_r.bmp", scene.render_right().picture());
    const std::string doubt = "the views differ in size by more than 4 percent";
    const Told robust(workshop, {"--VerboseMode=0"});
    EXPECT_EQ(robust.places_with(doubt), 3) << robust.console.text << robust.text;
    EXPECT_NE(robust.text.find("percent.\nImages will be written under reverse!"), std::string::npos);
    EXPECT_NE(read_text(workshop.path("zemora_files.txt")).find("\"foo_r.bmp\" IM\n"), std::string::npos);
    const Told plain(workshop, {"--VerboseMode=0", "--RobustEstimation=0"});
    EXPECT_EQ(plain.places_with(doubt), 0);
    EXPECT_NE(read_text(workshop.path("zemora_files.txt")).find("\"foo_r.bmp\" OK "), std::string::npos);
}

}  // namespace
}  // namespace zemora::test
