// How a run ends when the system or the user ends it.

#include <gtest/gtest.h>

#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

#if !defined(__SANITIZE_ADDRESS__)
TEST(Endings, MissingMemoryIsToldWithEverythingBeforeIt) {
    Workshop workshop;
    save_pair(workshop, misaligned_views(), "foo_l.bmp", "foo_r.bmp");
    int ended_for_memory = 0;
    bool is_mounted = false;
    for (int megabytes = 30; megabytes < 400 && !is_mounted; megabytes += 2) {
        workshop.before = "ulimit -v " + std::to_string(megabytes * 1024) + ";";
        const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp", "--ReportMode=1"});
        if (!outcome.tells("Parameter overwritten")) {
            continue;  // not even the libraries had room
        }
        is_mounted = outcome.tells("processed images: 1/1");
        EXPECT_TRUE(outcome.exit_code == 0 || outcome.exit_code == 1) << megabytes << outcome.text;
        EXPECT_TRUE(read_text(workshop.path("zemora_report.html")).ends_with("</html>\n")) << megabytes;
        ended_for_memory += outcome.exit_code == 1 && outcome.tells("Memory allocation error") ? 1 : 0;
    }
    EXPECT_TRUE(is_mounted);
    EXPECT_GT(ended_for_memory, 0);
}

TEST(Endings, FewerThreadsThanCoresGiveTheSamePictures) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    ASSERT_EQ(workshop.run({"foo_l.bmp", "foo_r.bmp"}).exit_code, 0);
    const std::string before = read_text(workshop.path("cs/foo_cs.bmp"));
    // Threads whose stacks do not fit cannot be made.
    workshop.before = "ulimit -s 1000000; ulimit -v 1200000;";
    workshop.environment = {"OMP_NUM_THREADS=8"};
    const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_EQ(read_text(workshop.path("cs/foo_cs.bmp")), before);
}
#endif

}  // namespace
}  // namespace zemora::test
