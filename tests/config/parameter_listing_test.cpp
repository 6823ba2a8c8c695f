#include "config/parameter_listing.h"

#include <gmock/gmock.h>

#include <sstream>

#include "config/parameter_table.h"
#include "tests/config/config_rig.h"

namespace zemora {
namespace {

using ::testing::HasSubstr;

std::string listing(const ParameterSet& parameters, ListingForm form = ListingForm::console) {
    return parameter_listing(parameters, MessageCatalogue(Language::english), form);
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(ParameterListing, NamesEachSettingOfTheFileOnceInOneColumn) {
    const auto lines = lines_of(listing(ParameterSet{}, ListingForm::report));
    ASSERT_GT(lines.size(), 5U);
    EXPECT_EQ(lines[1], "List of input parameters read from external file");
    EXPECT_EQ(lines[3], "VerboseMode          =      1");
    std::map<std::string, int> found;
    for (const std::string& line : lines) {
        if (line.size() >= 23 && line.substr(21, 2) == "= ") {
            ++found[line.substr(0, line.find(' '))];
        }
    }
    for (const ParameterRow& row : kParameterRows) {
        EXPECT_EQ(found[std::string(row.key)], row.missing == MissingKey::noted ? 1 : 0) << row.key;
    }
}

TEST(ParameterListing, ShowsWholeNumbersRealsAndTexts) {
    ParameterSet p;
    p.frame_central = -4096;
    p.use_height = -1000.0F;
    p.video_framerate = 29.97;
    p.image_text = "a\x1b[2Jb";
    const std::string text = listing(p);
    EXPECT_THAT(text, HasSubstr("\nFrameCentral         =  -4096\n"));
    EXPECT_THAT(text, HasSubstr("\nUseHeight            = -1000.00\n"));
    EXPECT_THAT(text, HasSubstr("\nVideoFramerate       =  29.97\n"));
    EXPECT_THAT(text, HasSubstr("\nImageText            = a?[2Jb\n"));
    EXPECT_THAT(text, HasSubstr("\nIdentOutputDir       = \n"));
    EXPECT_THAT(text, HasSubstr("\nListofImages         = zemora_files.txt\n\nInputMode "));
}

TEST(ParameterListing, FormsDifferInOneOrderAndInTheLastText) {
    ParameterSet p;
    const auto console = lines_of(listing(p, ListingForm::console));
    const auto report = lines_of(listing(p, ListingForm::report));
    ASSERT_EQ(console.size(), report.size() + 1);
    std::vector<std::string> differing;
    for (std::size_t i = 0; i + 4 < report.size(); ++i) {
        if (console[i] != report[i]) {
            differing.push_back(console[i].substr(0, console[i].find(' ')));
        }
    }
    EXPECT_EQ(differing, (std::vector<std::string>{"AutoFrameFloating", "FloatingTarget"}));
    const std::string batch = "REM Insert your batch commands here.\nREM Hier Batchkommandos eintragen.\n\n";
    EXPECT_TRUE(listing(p).ends_with("\nDoPostZemora         = \n" + batch));
    EXPECT_TRUE(listing(p, ListingForm::report).ends_with("\nDoPostZemora         = " + batch));
    p.do_post_zemora = "ls";
    EXPECT_TRUE(listing(p).ends_with("\nDoPostZemora         = \nls\n\n"));
    p.do_post_zemora.clear();
    EXPECT_TRUE(listing(p).ends_with("\nDoPostZemora         = \n\n"));
}

struct KeptReport : ReportSink {
    void text_line(std::string_view text) override { kept += text; }
    void html_line(std::string_view /*html*/) override {}
    std::string kept;
};

TEST(ParameterListing, AppearsFromVerboseMode2OnAndWaitsOnTheConsole) {
    (void)!std::freopen("/dev/null", "r", stdin);
    for (const int level : {1, 2}) {
        ParameterSet p;
        p.verbose_mode = level;
        p.stop_at_error = 3;
        Console console;
        MessageCatalogue messages(Language::german);
        Voice voice(console, messages, p);
        KeptReport report;
        voice.set_report(&report);
        ::testing::internal::CaptureStdout();
        list_parameters(p, voice);
        report_parameters(p, voice);
        console.flush();
        const std::string told = ::testing::internal::GetCapturedStdout();
        EXPECT_EQ(testing::count_of(told, "Liste der Eingabeparameter"), level - 1);
        EXPECT_EQ(testing::count_of(told, std::string(kWaitingLine)), level - 1);
        EXPECT_EQ(testing::count_of(report.kept, "Liste der Eingabeparameter"), level - 1);
    }
}

}  // namespace
}  // namespace zemora
