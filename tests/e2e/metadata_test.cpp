#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

/// A slow program in the place of exiftool: at the end of each request it keeps the list of that moment, and
/// it fails for the files whose name holds "refused".
constexpr const char* kSlowExiftool = R"sh(#!/bin/sh
while read -r line; do
  case $line in
    *refused*_c*) status=1 ;;
    False) exit ;;
    -execute)
      sleep 0.2
      cat zemora_files.txt >> "$HOME/seen"
      [ -z "$status" ] || echo 'Error: the disk is full' >&2
      printf '%s\n' "$output" | sed "s/\${status}/${status:-0}/"
      printf '%s\n' "$errors" >&2
      status=
      ;;
  esac
  case $last in
    -echo3) output=$line ;;
    -echo4) errors=$line ;;
  esac
  last=$line
done
)sh";

class MetadataOfARun : public testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directory(workshop.path("bin"));
        workshop.write("bin/exiftool", kSlowExiftool);
        std::filesystem::permissions(workshop.path("bin/exiftool"), std::filesystem::perms::owner_all);
        workshop.environment = {"PATH=" + workshop.path("bin") + ":/usr/bin:/bin"};
        workshop.settings = {"--StopAtError=0",  "--StampFiles=0",      "--ReportMode=1",
                             "--MetaTransfer=1", "--WriteDataBase=2",   "--AnaglyphOutput=0",
                             "--HtmlImages=0",   "--EstimateGeometry=1"};
    }
    Workshop workshop;
};

TEST_F(MetadataOfARun, AreWrittenBeforeTheListSaysThatAPairIsDone) {
    save_pair(workshop, aligned_views(), "pair_l.jpg", "pair_r.jpg");
    const Outcome outcome = workshop.run({"--PathofImages=" + workshop.folder(), "--InputMode=1"});
    ASSERT_TRUE(outcome.tells("processed images: 1/1")) << outcome.text;
    const std::string seen = read_text(workshop.path("seen"));
    EXPECT_NE(seen.find("pair_r.jpg"), std::string::npos);
    EXPECT_EQ(seen.find("OK"), std::string::npos) << seen;
    EXPECT_NE(read_text(workshop.path("zemora_files.txt")).find("OK"), std::string::npos);
}

TEST_F(MetadataOfARun, ThatCouldNotBeWrittenLeaveThePairOpenForALaterRun) {
    save_pair(workshop, aligned_views(), "pair_l.jpg", "pair_r.jpg");
    save_pair(workshop, aligned_views(), "refused_l.jpg", "refused_r.jpg");
    const Outcome outcome = workshop.run({"--PathofImages=" + workshop.folder(), "--InputMode=1"});
    EXPECT_EQ(outcome.exit_code, 0);
    const std::string list = read_text(workshop.path("zemora_files.txt"));
    EXPECT_NE(list.find("\"pair_r.jpg\" OK"), std::string::npos) << list;
    EXPECT_EQ(list.find("refused_r.jpg\" "), std::string::npos) << list;
    const std::string sentence = workshop.path("cl/refused_cl.jpg") + ": Error: the disk is full";
    EXPECT_TRUE(outcome.tells(sentence)) << outcome.text;
    EXPECT_NE(read_text(workshop.path("zemora_report.txt")).find(sentence), std::string::npos);
    EXPECT_NE(read_text(workshop.path("zemora_report.html")).find(sentence), std::string::npos);
}

}  // namespace
}  // namespace zemora::test
