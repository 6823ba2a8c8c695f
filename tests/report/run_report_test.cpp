#include "report/run_report.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "report/html_page.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using test::read_text;

struct Reports {
    test::TestFolder folder;
    MessageCatalogue messages{Language::english};
    ReportNames names{folder / "zemora_report.txt", folder / "zemora_report.html", false};

    /// The page after a run that told one line; it is whole at every moment.
    std::string run(const std::string& line, bool append, bool links_calculator = false) {
        RunReport report(messages);
        names.append = append;
        EXPECT_EQ(report.open(names, links_calculator), "");
        EXPECT_TRUE(read_text(names.html).ends_with(kPageEnd));
        report.text_line(line + '\n');
        report.html_line("<p>" + line + "</p>\n");
        EXPECT_EQ(read_text(names.html).find(line), std::string::npos) << "the section is not whole yet";
        report.end_section();
        EXPECT_TRUE(read_text(names.html).ends_with("<p>" + line + "</p>\n" + std::string(kPageEnd)));
        EXPECT_EQ(report.close(), "");
        return read_text(names.html);
    }
};

int count_of(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST(RunReport, NamesFollowTheReportMode) {
    struct Case {
        int report_mode, video_mode;
        const char* text_name;
        bool append;
    };
    for (const Case& expected :
         {Case{1, 0, "zemora_report.txt", false}, Case{2, 1, "zemora_report.txt", true},
          Case{3, 0, "zemora_report_2024.txt", false}, Case{4, 0, "zemora_report_garden.txt", false},
          Case{5, 0, "zemora_report_garden.txt", true}, Case{5, 1, "zemora_report_walk.in.txt", false}}) {
        const ReportNames names =
            report_names({expected.report_mode, "/pictures/garden", "_2024", expected.video_mode != 0,
                          expected.video_mode == 1 ? "films/walk.in_L.avi" : ""});
        EXPECT_EQ(names.text, std::string("/pictures/garden/") + expected.text_name);
        EXPECT_EQ(names.append, expected.append) << expected.report_mode;
    }
}

TEST(RunReport, AppendedRunsMakeOnePage) {
    Reports reports;
    reports.run("opening", true);
    const std::string page = reports.run("second", true, true);
    for (const char* once : {"<head>", "</html>", "<hr>\n", "function OpenComCalc", "<p>opening</p>"}) {
        EXPECT_EQ(count_of(page, once), 1) << once;
    }
    EXPECT_EQ(count_of(page, "<h2>Analysing Report from Zemora 0.9i</h2>"), 2);
    EXPECT_EQ(count_of(read_text(reports.names.text), "==== Analysing Report"), 2);
    EXPECT_EQ(count_of(reports.run("third", false), "opening"), 0);
}

TEST(RunReport, PageCutOffByAKillGoesOnBehindItsLastByte) {
    Reports reports;
    const std::string cut = "<html><body><p>cut</p>\n</div></body></ht";
    test::write_text(reports.names.html, cut);
    const std::string page = reports.run("next", true);
    EXPECT_TRUE(page.starts_with(cut + "<hr>\n"));
}

TEST(RunReport, WhatCannotBeOpenedIsNamedAndNothingIsLost) {
    Reports reports;
    test::write_text(reports.names.text, "old");
    reports.names.html = reports.folder / "none/zemora_report.html";
    RunReport report(reports.messages);
    EXPECT_EQ(report.open(reports.names, false), reports.names.html);
    report.text_line("not taken");
    EXPECT_EQ(report.close(), "");
    EXPECT_EQ(read_text(reports.names.text), "old");
}

TEST(RunReport, FullDiskIsToldAndLeavesAWholePage) {
    Reports reports;
    RunReport full(reports.messages);
    ASSERT_EQ(full.open({"/dev/full", reports.names.html, false}, false), "");
    EXPECT_EQ(full.close(), "/dev/full");

    const std::string before = reports.run("opening", false);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited{};
    getrlimit(RLIMIT_FSIZE, &unlimited);
    const rlimit limit{before.size() + 2000, unlimited.rlim_max};
    RunReport report(reports.messages);
    reports.names.append = true;
    ASSERT_EQ(report.open(reports.names, false), "");
    const std::string with_head = read_text(reports.names.html);
    setrlimit(RLIMIT_FSIZE, &limit);
    report.html_line(std::string(5000, 'x'));
    report.end_section();
    EXPECT_EQ(read_text(reports.names.html), with_head);
    setrlimit(RLIMIT_FSIZE, &unlimited);
    report.html_line("y");
    EXPECT_EQ(report.close(), "") << "there is room again";
    EXPECT_EQ(count_of(read_text(reports.names.html), "xy" + std::string(kPageEnd)), 1);
}

}  // namespace
}  // namespace zemora
