#include "report/comfort_calculator.h"

#include <gtest/gtest.h>

#include "report/html_page.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

TEST(ComfortCalculator, PageIsFilledInBothLanguages) {
    const test::TestFolder folder;
    for (const Language language : {Language::german, Language::english}) {
        const std::string page = folder / calculator_file_name(language);
        ASSERT_EQ(write_comfort_calculator(page, language), "");
        const std::string html = test::read_text(page);
        EXPECT_EQ(html.find("{{"), std::string::npos);
        EXPECT_NE(html.find("[\xB0]:"), std::string::npos) << "the degree sign in Latin-1";
        EXPECT_TRUE(html.ends_with("</script>\n</div></body></html>\n"));
    }
    EXPECT_NE(write_comfort_calculator(folder / "none/page.html", Language::english), "");
    EXPECT_EQ(folder.files(),
              (std::set<std::string>{"comfortcalculator_de.html", "comfortcalculator_en.html"}));
}

TEST(Latin1Html, EveryCharacterIsWrittenOrReferred) {
    EXPECT_EQ(latin1_html("a\xC3\xBC\xC2\xA0\n"), "a\xFC\xA0\n");
    EXPECT_EQ(latin1_html("\xE2\x87\x92 \xF0\x9F\x98\x80"), "&#8658; &#128512;");
    // Invalid UTF-8 beside valid: Windows-1252, with the Euro at 0x80.
    EXPECT_EQ(latin1_html("\xFC \x80 \xC3\xBC \xC3"), "\xFC &#8364; \xFC \xC3");
    EXPECT_EQ(latin1_html(std::string_view("\xC2\x81\x07\0\x7F\r", 6)), "?????");
}

}  // namespace
}  // namespace zemora
