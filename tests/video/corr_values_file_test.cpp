#include "video/corr_values_file.h"

#include <gtest/gtest.h>

#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using test::read_text;
using test::TestFolder;
using test::write_text;

/// Keeps what was said as one text.
class Heard : public Notes {
public:
    explicit Heard(Language language = Language::english)
        : Notes(messages_, verbosity_), messages_(language) {}
    void add(Note note) override { text += note.text; }
    void progress(std::string_view /*step*/, double /*percent*/) override {}
    std::string text;

private:
    MessageCatalogue messages_;
    int verbosity_ = 1;
};

CorrectionSeries example() {
    CorrectionSeries series;
    series.analysed = {1, 9, 5};
    series.resize(9);
    series.values[1] = {-3.25F, 12.5F, 0.001F, -0.0025F, 0.5F, 0.0F, 4.0F, -4.0F};
    series.values[6] = {123.5F, -1234.56789F, 0.0F, 0.0F, 0.0F, -0.25F, 0.0F, 0.00004F};
    return series;
}

TEST(CorrValues, AreWrittenInTheirColumnsAndReadBack) {
    const TestFolder folder;
    const std::string path = folder / kCorrValuesName;
    Heard heard;
    ASSERT_TRUE(write_corr_values(path, example(), heard.messages()));
    EXPECT_EQ(
        read_text(path),
        "    1 -3.25000000  0.00100000 -0.00250000  0.50000000  0.00000000   12.5000    4.0000   -4.0000\n"
        "    6 123.50000000  0.00000000  0.00000000  0.00000000 -0.25000000 -1234.5679    0.0000    "
        "0.0000\n");
    const auto read = read_corr_values(path, 9, heard);
    ASSERT_TRUE(read);
    ASSERT_EQ(read->size(), 2U);
    EXPECT_EQ((*read)[0].frame, 1);
    EXPECT_FLOAT_EQ((*read)[0].values.rotation_rad, -0.0025F);
    EXPECT_EQ((*read)[0].values.curtain_left_px, 0.0F);
    EXPECT_FLOAT_EQ((*read)[1].values.window_px, -1234.5679F);
    EXPECT_FLOAT_EQ((*read)[1].values.vergence_h_rad, -0.25F);
    EXPECT_EQ(heard.text, "");
    EXPECT_EQ(folder.files(), std::set<std::string>{kCorrValuesName});
}

TEST(CorrValues, LinesThatCannotCountAreNamedAndTheOthersHold) {
    const TestFolder folder;
    const std::string path = folder / "values";
    write_text(path,
               "\xEF\xBB\xBF# by hand\r\n"
               "0 1 0 0 0 0 2\r\n"
               "\n"
               "3 1,5 0 0 0 0 2\n"
               "4 1 0 0 0 nan 2\n"
               "5 1 0 0 0 0\n"
               "6 1 0 0 0 0 1e39\n"
               "7 +1 -0.5 .5 5e-1 0 2 3 4 and more\n"
               "7 1 0 0 0 0 2\n"
               "-1 1 0 0 0 0 2\n"
               "99999999999 1 0 0 0 0 2\n"
               "8.5 1 0 0 0 0 2\n"
               "9 1 0 0 0 0 8");
    Heard heard;
    const auto read = read_corr_values(path, 10, heard);
    ASSERT_TRUE(read);
    ASSERT_EQ(read->size(), 3U) << heard.text;
    EXPECT_FLOAT_EQ((*read)[1].values.size, -0.5F);
    EXPECT_EQ((*read)[2].frame, 9);
    EXPECT_FLOAT_EQ((*read)[2].values.window_px, 8.0F);
    for (const int line : {4, 5, 6, 7, 12}) {
        EXPECT_NE(heard.text.find(path + ", line " + std::to_string(line) +
                                  " is left out: it does not hold a frame number and six values\n"),
                  std::string::npos)
            << line << heard.text;
    }
    EXPECT_NE(heard.text.find(", line 9 is left out: its frame does not come behind"), std::string::npos);
    EXPECT_NE(heard.text.find(", line 10 is left out: its frame is not in the film"), std::string::npos);
    EXPECT_NE(heard.text.find(", line 11 is left out: its frame is not in the film"), std::string::npos);
}

TEST(CorrValues, AFileThatIsNoneFailsWithItsName) {
    const TestFolder folder;
    Heard heard(Language::german);
    const auto reason_for = [&](const std::string& path) {
        const auto read = read_corr_values(path, 10, heard);
        EXPECT_FALSE(read);
        EXPECT_TRUE(read || (read.failure().ends_run && read.failure().file == path));
        return read ? std::string() : read.failure().note.text;
    };
    const std::string missing = folder / kCorrValuesName;
    EXPECT_EQ(reason_for(missing),
              "Die Datei " + missing + " kann nicht benutzt werden: No such file or directory\n");
    EXPECT_NE(reason_for(folder.path()).find(folder.path()), std::string::npos);
    std::string many;
    for (int i = 0; i < 30; ++i) {
        many += "word\n";
    }
    write_text(folder / "words", many);
    EXPECT_NE(reason_for(folder / "words").find("keine Zeile"), std::string::npos);
    EXPECT_NE(heard.text.find("Zeile 20 entfaellt"), std::string::npos);
    EXPECT_EQ(heard.text.find("Zeile 21"), std::string::npos);
    EXPECT_NE(heard.text.find("30 Zeilen entfallen insgesamt"), std::string::npos);
    write_text(folder / "long", std::string(2'000'000, ' '));
    EXPECT_NE(reason_for(folder / "long").find("zu lang"), std::string::npos);
    const Result<void> unwritten = write_corr_values(folder / "no/where", example(), heard.messages());
    ASSERT_FALSE(unwritten);
    EXPECT_NE(unwritten.failure().note.text.find(folder / "no/where"), std::string::npos);
}

}  // namespace
}  // namespace zemora
