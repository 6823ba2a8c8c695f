#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

using Names = std::set<std::string>;

class HostileNames : public testing::TestWithParam<const char*> {};

TEST_P(HostileNames, AreNamesAndNothingElse) {
    const std::string base = GetParam();
    Workshop workshop;
    workshop.settings = {"--StopAtError=0", "--StampFiles=0",
                         "--EstimateGeometry=3"};  // metadata, record, list and reports
    const std::string left = base + "_l.jpg";
    const std::string right = base + "_r.jpg";
    save_pair(workshop, aligned_views(), left, right);
    const Outcome outcome = workshop.run({"--StereoOutput=0", "--", left, right});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    EXPECT_FALSE(outcome.tells("No success")) << outcome.text;
    const bool listed = base.find_first_of("\"\n\r") == std::string::npos;
    Names expected{left,
                   right,
                   "ca/" + base + "_ca.jpg",
                   "cl/" + base + "_cl.jpg",
                   "cr/" + base + "_cr.jpg",
                   "zemora_report.html",
                   "zemora_report.txt"};
    if (listed) {
        expected.insert("zemora_files.txt");
        EXPECT_TRUE(workshop.run({"--InputMode=10", "--ReportMode=0"}).tells("\"OK\" found in ListofImages"));
    } else {
        EXPECT_TRUE(outcome.tells("cannot stand in ListofImages")) << outcome.text;
    }
    EXPECT_EQ(workshop.files(), expected);
    EXPECT_NE(read_text(workshop.path(left)).find("Zemora_OK_V1.0"), std::string::npos);
    EXPECT_NE(read_text(workshop.path("cl/" + base + "_cl.jpg")).find("nearpoint="), std::string::npos);
    const std::string html = read_text(workshop.path("zemora_report.html"));
    EXPECT_EQ(html.find("<b>x"), std::string::npos);
    EXPECT_EQ(outcome.text.find('\x1b'), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Table, HostileNames,
                         testing::Values("two  blanks ", "it's \"quoted\"", "$(touch x)`touch y`",
                                         ";touch x;&|", "-dash", "--StopAtError=3",
                                         "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F", "latin\xE4", "new\nline",
                                         "carriage\rreturn", "100%d%s%n%f", "star*?[a]", "<b>x&amp;<i>",
                                         "escape\x1b[2J", "a.b.c", ".hidden", "comma,semi;colon:", "#CS#"));

TEST(Safety, LongestNameThatTheFileSystemTakesIsToldOrStored) {
    Workshop workshop;
    const std::string base(245, 'n');
    save_pair(workshop, aligned_views(), base + "_l.bmp", base + "_r.bmp");
    const Outcome outcome = workshop.run({base + "_l.bmp", base + "_r.bmp", "--EstimateGeometry=-1"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_EQ(workshop.files().size(), 5U) << outcome.text;
    const Outcome stamped =
        workshop.run({base + "_l.bmp", base + "_r.bmp", "--EstimateGeometry=-1", "--StampFiles=3"});
    EXPECT_EQ(stamped.exit_code, 0);
    EXPECT_TRUE(stamped.tells("cannot be created")) << stamped.text;
    EXPECT_EQ(workshop.files().size(), 5U);
}

TEST(Safety, FullDiskLeavesNothingHalfWritten) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    std::filesystem::create_directory(workshop.path("cl"));
    workshop.write("cl/foo_cl.bmp", "older picture");
    workshop.before = "ulimit -f 200;";  // blocks of 512 or 1024 bytes: less than one view
    const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=-1"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    for (const char* name : {"cl/foo_cl.bmp", "cr/foo_cr.bmp", "cs/foo_cs.bmp"}) {
        EXPECT_TRUE(outcome.tells(workshop.path(name))) << name << outcome.text;
    }
    EXPECT_TRUE(outcome.tells("cannot be created")) << outcome.text;
    EXPECT_TRUE(outcome.tells("File too large")) << outcome.text;
    EXPECT_EQ(workshop.files(), (Names{"foo_l.bmp", "foo_r.bmp", "cl/foo_cl.bmp"}));
    EXPECT_EQ(read_text(workshop.path("cl/foo_cl.bmp")), "older picture");
}

TEST(Safety, ReportThatCannotBeWrittenIsTold) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    workshop.before = "ulimit -f 0;";
    const Outcome outcome =
        workshop.run({"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=-1", "--ReportMode=1"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("zemora_report")) << outcome.text;
    EXPECT_TRUE(outcome.tells("could not be written completely")) << outcome.text;
}

TEST(Safety, RecordIsNotWrittenForAPairThatCouldNotBeStored) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.jpg", "foo_r.jpg");
    workshop.write("cl", "no folder");
    const std::string before = read_text(workshop.path("foo_l.jpg"));
    const Outcome outcome = workshop.run({"foo_l.jpg", "foo_r.jpg", "--EstimateGeometry=3"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("cl/foo_cl.jpg")) << outcome.text;
    EXPECT_TRUE(outcome.tells("cannot be created")) << outcome.text;
    EXPECT_EQ(read_text(workshop.path("foo_l.jpg")), before);
    EXPECT_EQ(read_text(workshop.path("cl")), "no folder");
    EXPECT_TRUE(workshop.files().count("cs/foo_cs.jpg")) << "the other products are stored";
}

TEST(Safety, FolderInThePlaceOfAnOutputStays) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    std::filesystem::create_directories(workshop.path("cs/foo_cs.bmp/kept"));
    const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=-1"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_TRUE(outcome.tells("cs/foo_cs.bmp cannot be created")) << outcome.text;
    EXPECT_TRUE(std::filesystem::is_directory(workshop.path("cs/foo_cs.bmp/kept")));
}

TEST(Safety, UnwritableFolderIsTold) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    workshop.become_ordinary_user(0555);
    const Outcome outcome = workshop.run({"foo_l.bmp", "foo_r.bmp", "--EstimateGeometry=-1"});
    if (outcome.exit_code == 126 || outcome.exit_code == 127) {
        GTEST_SKIP() << "the program cannot be started as another user: " << outcome.text;
    }
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("cs/foo_cs.bmp cannot be created")) << outcome.text;
    EXPECT_TRUE(outcome.tells("Permission denied")) << outcome.text;
    EXPECT_EQ(workshop.files().size(), 2U);
    const Outcome report = workshop.run({"foo_l.bmp", "foo_r.bmp", "--ReportMode=1"});
    EXPECT_EQ(report.exit_code, 1) << report.text;
    EXPECT_TRUE(report.tells("zemora_report.txt cannot be opened")) << report.text;
}

class OutputOverInput : public testing::TestWithParam<const char*> {};

TEST_P(OutputOverInput, IsRefusedAndTheInputStays) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_cl.bmp", "foo_cr.bmp");
    std::filesystem::create_directory(workshop.path("cl"));
    const std::string how = GetParam();
    if (how == "hard link") {
        std::filesystem::create_hard_link(workshop.path("foo_cr.bmp"), workshop.path("cl/foo_cl.bmp"));
    } else if (how == "symbolic link") {
        std::filesystem::create_symlink("../foo_cr.bmp", workshop.path("cl/foo_cl.bmp"));
    }
    const std::string left = read_text(workshop.path("foo_cl.bmp"));
    const std::string right = read_text(workshop.path("foo_cr.bmp"));
    const Outcome outcome =
        workshop.run({"foo_cl.bmp", "foo_cr.bmp", "--EstimateGeometry=-1", "--AutoOutputContrast=5",
                      how == "name" ? "--LeftRightOutput=1" : "--LeftRightOutput=2"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
    EXPECT_TRUE(outcome.tells("input of this run")) << outcome.text;
    EXPECT_EQ(read_text(workshop.path("foo_cl.bmp")), left);
    EXPECT_EQ(read_text(workshop.path("foo_cr.bmp")), right);
}

INSTANTIATE_TEST_SUITE_P(Ways, OutputOverInput, testing::Values("name", "hard link", "symbolic link"));

struct EndSignal {
    const char* name;
    int exit_code;  ///< That a shell gives the number of the signal.
};

class Interrupted : public testing::TestWithParam<EndSignal> {};

TEST_P(Interrupted, RunLeavesNoTemporaryFolderAndHasSaidWhatItDidSoFar) {
    Workshop workshop;
    save_pair(workshop, aligned_views(), "foo_l.bmp", "foo_r.bmp");
    workshop.write("foo_l.xyz", "a format that only the converter knows");
    // The converter runs while the temporary folder stands.
    workshop.write("converter", "#!/bin/sh\ntouch started\nsleep 3 >/dev/null\n");
    std::filesystem::permissions(workshop.path("converter"), std::filesystem::perms::owner_all);
    // A shell makes background programs ignore SIGINT; the program gets its usual meaning back.
    workshop.around =
        "env --default-signal=INT \"$@\" > log & pid=$!; for i in $(seq 200); do [ -e started ] && break; "
        "sleep 0.05; done; ls \"" +
        workshop.temporary().path() + "\"; kill -" + GetParam().name +
        " $(ps -o pid= --ppid $pid); wait $pid; code=$?; cat log; exit $code";
    const Outcome outcome =
        workshop.run({"foo_l.xyz", "foo_r.bmp", "--PathofIrfanView=" + workshop.path("converter")});
    EXPECT_EQ(outcome.exit_code, GetParam().exit_code) << outcome.text;
    EXPECT_TRUE(outcome.tells("zemora-")) << outcome.text;
    EXPECT_TRUE(outcome.tells("   foo_l.xyz\n")) << outcome.text;
}

INSTANTIATE_TEST_SUITE_P(Signals, Interrupted,
                         testing::Values(EndSignal{"TERM", 143}, EndSignal{"INT", 130},
                                         EndSignal{"HUP", 129}));

}  // namespace
}  // namespace zemora::test
