#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "platform/child_process.h"
#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

using Names = std::set<std::string>;

/// Runs over a folder of pictures.
class Batch : public testing::Test {
protected:
    void add(const std::string& left, const std::string& right) const {
        save_pair(workshop, aligned_views(), left, right);
    }
    /// A view in which nothing can be measured.
    void add_empty_view(const std::string& name) const {
        const Bitmap grey = Bitmap::create(400, 300);
        fill(grey.picture(), {128, 128, 128});
        workshop.save(name, grey.picture());
    }
    [[nodiscard]] Outcome run(const std::vector<std::string>& settings) const {
        std::vector<std::string> all{"--PathofImages=" + workshop.folder(), "--StereoOutput=2",
                                     "--LeftRightOutput=0"};
        all.insert(all.end(), settings.begin(), settings.end());
        return workshop.run(all);
    }
    /// The stereo pictures that are there.
    [[nodiscard]] Names products() const {
        Names names;
        for (const std::string& name : workshop.files()) {
            if (name.find("cs/") != std::string::npos) {
                names.insert(name);
            }
        }
        return names;
    }

    Workshop workshop;
};

TEST_F(Batch, TheCommandsAfterTheRunGetTheNameOfTheExtraFile) {
    add("a_l.jpg", "a_r.jpg");
    workshop.around = "\"$@\"; for i in $(seq 100); do [ -s told ] && break; sleep 0.05; done";
    for (const std::string mark : {"#CS#", "#CM#"}) {
        const Outcome outcome =
            workshop.run({"a_l.jpg", "a_r.jpg", "--StereoOutput=0", "--LeftRightOutput=0", "--ExtraOutput=2",
                          "--DoPostZemora=printf '%s|%s' " + mark + " #CA# > " + workshop.path("told")});
        EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
        EXPECT_EQ(read_text(workshop.path("told")), workshop.path("ce_ab/a_ce-ab.jpg") + '|');
        std::filesystem::remove(workshop.path("told"));
    }
}

TEST_F(Batch, AWholeTreeOfViewFoldersIsMountedBesideItsInputs) {
    add("l/IMG 1.jpg", "r/IMG 1.jpg");
    add("day 2/L/M\xC3\xBChle 10.JPG", "day 2/R/M\xC3\xBChle 10.JPG");
    add("day 2/L/m\xC3\xBChle 9.jpeg", "day 2/R/m\xC3\xBChle 9.jpeg");
    add("day 3/l/lonely.jpg", "day 3/x/lonely.jpg");
    const std::vector<std::string> settings{"--InputMode=9", "--IncludeSubdirs=1", "--ImageType=JPG;jpeg",
                                            "--WriteDataBase=2"};
    Outcome outcome = run(settings);
    EXPECT_TRUE(outcome.tells("processed images: 3/3")) << outcome.text;
    const Names expected{"cs/IMG 1_cs.jpg", "day 2/cs/M\xC3\xBChle 10_cs.jpg",
                         "day 2/cs/m\xC3\xBChle 9_cs.jpg"};
    EXPECT_EQ(products(), expected);
    EXPECT_EQ(read_text(workshop.path("zemora_files.txt")).find("\"l/IMG 1.jpg\"   \"r/IMG 1.jpg\" OK "), 0U);
    outcome = run(settings);
    EXPECT_TRUE(outcome.tells("processed images: 3/3")) << "outputs are no input: " << outcome.text;
    EXPECT_EQ(products(), expected);
}

TEST_F(Batch, PairsThatCannotBeMountedMoveAwayOnce) {
    add("l/a.jpg", "r/a.jpg");
    add("l/b.jpg", "r/b.jpg");
    add_empty_view("r/b.jpg");
    workshop.write("l/c.jpg", "no picture");
    workshop.write("r/c.jpg", "no picture");
    const Outcome outcome =
        run({"--InputMode=9", "--RenameRefused=1", "--WriteDataBase=2", "--VerboseMode=2"});
    EXPECT_TRUE(outcome.tells("processed images: 1/3")) << outcome.text;
    const Names files = workshop.files();
    for (const char* name : {"lu/b.jpg", "ru/b.jpg", "l/a.jpg", "r/a.jpg", "l/c.jpg", "r/c.jpg"}) {
        EXPECT_TRUE(files.contains(name)) << name;
    }
    EXPECT_FALSE(files.contains("l/b.jpg"));
    EXPECT_TRUE(outcome.tells("lu/b.jpg")) << outcome.text;
}

TEST_F(Batch, AFileWithoutPartnerStandsAsideAndTheRestStaysInStep) {
    if (find_program("exiftool").empty()) {
        GTEST_SKIP() << "no exiftool";
    }
    for (const char* name : {"1.jpg", "2.jpg", "3.jpg"}) {
        add(std::string("l/") + name, std::string("r/") + name);
    }
    std::filesystem::remove(workshop.path("r/2.jpg"));
    const auto set_time = [&](const std::string& name, const std::string& time) {
        ASSERT_TRUE(run_child({"exiftool", "-q", "-overwrite_original", "-DateTimeOriginal=" + time,
                               workshop.path(name)})
                        .succeeded());
    };
    set_time("l/1.jpg", "2024:05:01 10:00:00");
    set_time("r/1.jpg", "2024:05:01 10:00:07");
    set_time("l/2.jpg", "2024:05:01 10:01:00");
    set_time("l/3.jpg", "2024:05:01 10:02:00");
    set_time("r/3.jpg", "2024:05:01 10:02:08");
    const Outcome outcome = run({"--InputMode=9", "--ExifTimeTolerance=3", "--RenameOrphans=1"});
    EXPECT_TRUE(outcome.tells("processed images: 2/2")) << outcome.text;
    EXPECT_EQ(products(), (Names{"cs/1_cs.jpg", "cs/3_cs.jpg"}));
    EXPECT_TRUE(workshop.files().contains("lo/2.jpg")) << outcome.text;
}

TEST_F(Batch, AFolderAloneIsAskedAboutOnATerminalAndLookedAtInAPipe) {
    for (const char* name : {"1.jpg", "2.jpg", "3.jpg"}) {
        workshop.save(std::string("holiday/") + name, aligned_views().left.picture());
    }
    workshop.save("holiday/4.jpg", aligned_views().right.picture());
    // The program talks to a terminal of its own; `timeout` would keep it from reading there.
    workshop.around = "shift 2; printf 'x\\n3\\n2\\n' | script -qec \"$*\" /dev/null";
    const Outcome outcome = workshop.run({"holiday", "--LeftRightOutput=0", "--StereoOutput=2"});
    EXPECT_TRUE(outcome.tells("A complete directory will be processed!")) << outcome.text;
    EXPECT_TRUE(outcome.tells("1/2")) << outcome.text;
    EXPECT_TRUE(products().contains("holiday/cs/3-4_cs.jpg")) << outcome.text;
    workshop.around = "shift 2; script -qec \"$*\" /dev/null < /dev/null";
    EXPECT_EQ(workshop.run({"holiday"}).exit_code, 1) << "no answer is the end";
    std::filesystem::remove_all(workshop.path("holiday/cs"));
    workshop.around = "\"$@\" < /dev/null";
    const Outcome piped = workshop.run({"holiday", "--LeftRightOutput=0", "--StereoOutput=2"});
    EXPECT_TRUE(piped.tells("in turn (L-R-L-R)")) << piped.text;
    EXPECT_TRUE(products().contains("holiday/cs/3-4_cs.jpg")) << piped.text;
}

TEST_F(Batch, TwoFoldersAreWorkedThroughInStep) {
    add("trip/l/a.jpg", "trip/r/a.jpg");
    const Outcome outcome = workshop.run({"trip/l/", "trip/r/", "--LeftRightOutput=0", "--StereoOutput=2"});
    EXPECT_TRUE(outcome.tells("Two complete directories will be processed!")) << outcome.text;
    EXPECT_EQ(products(), (Names{"trip/cs/a_cs.jpg"})) << outcome.text;
}

TEST_F(Batch, APipeGetsOneLineForEachPairAndPhase) {
    for (const char letter : {'a', 'b'}) {
        add(std::string(1, letter) + "_l.jpg", std::string(1, letter) + "_r.jpg");
    }
    const Outcome outcome = run({"--InputMode=1", "--VerboseMode=1"});
    const auto count = [&](const std::string& part) {
        int found = 0;
        for (std::size_t at = outcome.text.find(part); at != std::string::npos;
             at = outcome.text.find(part, at + 1)) {
            ++found;
        }
        return found;
    };
    for (const char* line :
         {"\n1/2  Zemora::analyse:  phase 2: correlation", "\n2/2  Zemora::analyse:  phase 2: correlation",
          "\n2/2  Zemora::equalize: phase 4: final correction"}) {
        EXPECT_EQ(count(line), 1) << line << outcome.text;
    }
    EXPECT_EQ(outcome.text.find('\r'), std::string::npos);
    EXPECT_EQ(run({"--InputMode=1", "--VerboseMode=0"}).text.find("Zemora::"), std::string::npos);
}

TEST_F(Batch, ATerminalShowsPairPhaseAndTimeLeftInOneLine) {
    if (find_program("script").empty()) {
        GTEST_SKIP() << "no script to give the program a terminal";
    }
    for (const char letter : {'a', 'b'}) {
        add(std::string(1, letter) + "_l.jpg", std::string(1, letter) + "_r.jpg");
    }
    workshop.environment = {"TERM=xterm"};
    workshop.around =
        "export SHELL=/bin/sh; "
        "c=; for a in \"$@\"; do c=\"$c '$a'\"; done; exec script -qec \"$c\" /dev/null < /dev/null";
    const Outcome outcome = run({"--InputMode=1", "--VerboseMode=1"});
    EXPECT_TRUE(outcome.tells("\r1/2  Zemora::analyse:  phase 2")) << outcome.text;
    EXPECT_TRUE(outcome.tells("\r2/2  Zemora::analyse:  phase 2")) << outcome.text;
    EXPECT_TRUE(outcome.tells(" left\x1b[K")) << outcome.text;
}

TEST_F(Batch, ASequenceGetsItsList) {
    for (const char* name : {"f001.jpg", "f002.jpg"}) {
        add(std::string("l/") + name, std::string("r/") + name);
    }
    const Outcome outcome = run({"--InputMode=3", "--WriteDataBase=1"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_EQ(read_text(workshop.path("zemora_files.txt")),
              "\"l/f001.jpg\"   \"r/f001.jpg\"\n\"l/f002.jpg\"   \"r/f002.jpg\"\n");
}

TEST_F(Batch, ARunThatFindsNothingLeavesWholeReports) {
    std::filesystem::create_directory(workshop.path("empty"));
    EXPECT_EQ(workshop.run({"--PathofImages=" + workshop.path("empty"), "--InputMode=1", "--ReportMode=1"})
                  .exit_code,
              1);
    const std::string page = read_text(workshop.path("empty/zemora_report.html"));
    EXPECT_NE(page.find("</html>"), std::string::npos) << page;
}

TEST_F(Batch, AFolderThatCannotBeReadIsSaidAsSuch) {
    const Outcome outcome = workshop.run({"--PathofImages=" + workshop.path("gone"), "--InputMode=1"});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_TRUE(outcome.tells("gone")) << outcome.text;
    EXPECT_TRUE(outcome.tells("No such file or directory")) << outcome.text;
}

}  // namespace
}  // namespace zemora::test
