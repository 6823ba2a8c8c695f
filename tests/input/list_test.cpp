#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "input/list_file.h"
#include "input/list_scan.h"
#include "tests/support/speech.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using test::read_text;
using test::TestFolder;
using test::write_text;

const std::string kValues =
    " 0 0 0 0 0 100 100 0 0 100 100 -3.25 0.5 0.125 0.0625 -0.25 1.5 12.5 0.031 -4.5 "
    "7.25 0 0 0 0 0 0 0 0 0 0 0 0 1 2";

struct LineCase {
    const char* name;
    const char* text;
    bool two_files;
    LineFault fault;
    const char* left;
    const char* right;
    const char* status;
    int items;
};

class ListLineForms : public testing::TestWithParam<LineCase> {};

TEST_P(ListLineForms, AreReadInTheirParts) {
    const LineCase& c = GetParam();
    ListLine line;
    ASSERT_EQ(parse_list_line(c.text, c.two_files, line), c.fault);
    if (c.fault == LineFault::none) {
        EXPECT_EQ(line.left, c.left);
        EXPECT_EQ(line.right, c.right);
        EXPECT_EQ(line.status, c.status);
        EXPECT_EQ(line.item_count, c.items);
    }
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Table, ListLineForms, testing::Values(
    LineCase{"pair", "\"l/a b_l.jpg\"   \"r/a b_r.jpg\"", true, LineFault::none, "l/a b_l.jpg", "r/a b_r.jpg", "", 0},
    LineCase{"windows", "\"l\\BROOK_l.jpg\"   \"r\\BROOK_r.jpg\" OK 1 2", true, LineFault::none, "l/BROOK_l.jpg", "r/BROOK_r.jpg", "OK", 3},
    LineCase{"close_quotes", "\"a.jpg\"\"b.jpg\"QU", true, LineFault::none, "a.jpg", "b.jpg", "QU", 1},
    LineCase{"words", "a_l.jpg a_r.jpg IM", true, LineFault::none, "a_l.jpg", "a_r.jpg", "IM", 1},
    LineCase{"number_garbage", "\"a.jpg\" \"b.jpg\" OK 1 2x 3", true, LineFault::none, "a.jpg", "b.jpg", "OK", 2},
    LineCase{"not_a_number", "\"a.jpg\" \"b.jpg\" OK nan 1e999 3", true, LineFault::none, "a.jpg", "b.jpg", "OK", 1},
    LineCase{"ansi", "\"M\xFChle_l.jpg\" \"M\xFChle_r.jpg\"", true, LineFault::none, "M\xFChle_l.jpg", "M\xFChle_r.jpg", "", 0},
    LineCase{"three_quotes", "\"a.jpg\" \"b.jpg OK", true, LineFault::wrong_quotes, "", "", "", 0},
    LineCase{"one_quote", "\"a.jpg b.jpg", true, LineFault::wrong_quotes, "", "", "", 0},
    LineCase{"short_right", "\"a.jpg\" \"b.jp\"", true, LineFault::wrong_quotes, "", "", "", 0},
    LineCase{"stereo", "\"s/a b.jpg\" OK 1", false, LineFault::none, "s/a b.jpg", "", "OK", 2},
    LineCase{"stereo_words", "a.jpg QU", false, LineFault::none, "a.jpg", "", "QU", 1},
    LineCase{"stereo_one_quote", "\"a.jpg OK", false, LineFault::no_name, "", "", "", 0}),
    [](const auto& row) { return std::string(row.param.name); });
// clang-format on

TEST(ListLine, ValuesComeBackAsTheyWereWritten) {
    StoredCorrectionRecord values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = (i % 2 == 0 ? 0.001234 : -1234.5) * static_cast<double>(i + 1);
    }
    values[kRecordCroppOutput] = 3.0;
    ListLine line;
    const std::string text = "\"a.jpg\"   \"b.jpg\" OK" + values_text(values);
    ASSERT_EQ(parse_list_line(text, true, line), LineFault::none);
    ASSERT_EQ(line.item_count, 36);
    EXPECT_EQ(text.substr(text.rfind(' ')), " 3");
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_NEAR(line.values[i], values[i], 5e-6 * std::abs(values[i])) << "value " << i;
    }
}

TEST(ListLine, NamesAreRelativeOnlyWhereBothLieBelowTheRoot) {
    EXPECT_EQ(names_line("/p", "/p/l/a.jpg", "/p/r/b.jpg"), "\"l/a.jpg\"   \"r/b.jpg\"");
    EXPECT_EQ(names_line("/p", "/p/a.jpg", "/pq/b.jpg"), "\"/p/a.jpg\"   \"/pq/b.jpg\"");
    EXPECT_EQ(names_line("/p", "/p/s/a.mpo", ""), "\"s/a.mpo\"");
    EXPECT_EQ(names_line("/p", "/p/~/a.mpo", ""), "\"/p/~/a.mpo\"") << "no home folder";
    EXPECT_EQ(names_line("/p", "/p/a.jpg", "/p/C:/b.jpg"), "\"/p/a.jpg\"   \"/p/C:/b.jpg\"") << "no drive";
    for (const char* odd : {"/p/a\"b.jpg", "/p/a\\b.jpg", "/p/a\nb.jpg"}) {
        EXPECT_FALSE(names_line("/p", odd, "/p/c.jpg")) << odd;
    }
}

/// A folder with a list, and the settings of a run in it.
class Listed : public testing::Test, public test::Speech {
protected:
    Listed() {
        options.path_of_images = folder.path();
        parameters.stop_at_error = 0;
        parameters.verbose_mode = 0;
        options.input_mode = 1;
        options.write_data_base = 2;
    }
    [[nodiscard]] std::string list() const { return folder / "zemora_files.txt"; }
    void set_list(const std::string& text) const { write_text(list(), text); }
    void update(const std::string& left, const std::string& right, const ListResult& result) {
        update_database_line(folder.path(), voice, list(), folder / left, right.empty() ? "" : folder / right,
                             result);
    }
    [[nodiscard]] Result<void> try_to_store(const std::string& left, const std::string& right) {
        ListedNames names(options, voice);
        names.add_pair(folder / left, folder / right);
        return names.store();
    }
    void store(const std::string& left, const std::string& right) { EXPECT_TRUE(try_to_store(left, right)); }

    TestFolder folder;
    CollectOptions options;
};

TEST_F(Listed, AResultGoesBehindTheNamesOfItsOwnLine) {
    set_list("\"11.jpg\"   \"12.jpg\"\r\n\"BROOK_l.jpg\"   \"BROOK_r.jpg\"\r\n\"1.jpg\"   \"2.jpg\"");
    update("1.jpg", "2.jpg", {"IM"});
    update("BROOK_r.jpg", "BROOK_l.jpg", {"QU"});
    EXPECT_EQ(read_text(list()),
              "\"11.jpg\"   \"12.jpg\"\r\n\"BROOK_l.jpg\"   \"BROOK_r.jpg\" QU\r\n"
              "\"1.jpg\"   \"2.jpg\" IM");
    StoredCorrectionRecord values{};
    values[kRecordHeight] = -1.5;
    update("BROOK_l.jpg", "BROOK_r.jpg", {"OK", &values});
    const std::string text = read_text(list());
    EXPECT_NE(text.find("\"BROOK_r.jpg\" OK 0 0 0 0 0 0 0 0 0 0 0 -1.5 0 "), std::string::npos) << text;
    EXPECT_EQ(text.find("QU"), std::string::npos) << "the old result goes";
}

TEST_F(Listed, OfEqualLinesTheFirstWithoutAResultIsTaken) {
    set_list("\"a.jpg\" \"b.jpg\" IM\n\"a.jpg\" \"b.jpg\"\n\"b.jpg\" \"a.jpg\"\n");
    update("a.jpg", "b.jpg", {"QU"});
    EXPECT_EQ(read_text(list()), "\"a.jpg\" \"b.jpg\" IM\n\"a.jpg\" \"b.jpg\" QU\n\"b.jpg\" \"a.jpg\"\n");
}

TEST_F(Listed, NamesAreComparedAsFiles) {
    const std::string absolute =
        '"' + folder.path() + "/x/../M\xC3\xBChle.jpg\" \"" + folder.path() + "/b.jpg\"";
    set_list(absolute + "\n\"s\\M\xFChle.JPG\"\n");
    update("M\xC3\xBChle.jpg", "b.jpg", {"IM"});
    update("s/M\xC3\xBChle.jpg", "", {"QU"});
    EXPECT_EQ(read_text(list()), absolute + " IM\n\"s\\M\xFChle.JPG\" QU\n");
}

TEST_F(Listed, AnObjectThatIsNotThereLeavesTheListAsItWas) {
    const std::string text = "\"a.jpg\"   \"b.jpg\"\n";
    set_list(text);
    testing::internal::CaptureStdout();
    update("a.jpg", "c.jpg", {"IM"});
    console.flush();
    EXPECT_NE(testing::internal::GetCapturedStdout().find("database not readable"), std::string::npos);
    EXPECT_EQ(read_text(list()), text);
}

TEST_F(Listed, AnUpdateKeepsALinkAndThePermissions) {
    write_text(folder / "real.txt", "\"a.jpg\" \"b.jpg\"\n");
    ASSERT_EQ(chmod((folder / "real.txt").c_str(), 0640), 0);
    std::filesystem::create_symlink("real.txt", list());
    update_database_line(folder.path(), voice, list_path_of(folder.path(), "zemora_files.txt"),
                         folder / "a.jpg", folder / "b.jpg", {"IM"});
    EXPECT_TRUE(std::filesystem::is_symlink(list()));
    EXPECT_EQ(read_text(folder / "real.txt"), "\"a.jpg\" \"b.jpg\" IM\n");
    EXPECT_EQ(static_cast<int>(std::filesystem::status(folder / "real.txt").permissions()), 0640);
}

TEST_F(Listed, ANewListSavesAnOldOneThatHoldsWork) {
    const std::string plain = "\"a.jpg\"   \"b.jpg\"\n";
    const std::string worked = "\"a.jpg\"   \"b.jpg\" OK" + kValues + "\n";
    const auto saved = [&](int number) {
        return folder / ("zemora_files.txt_00" + std::to_string(number) + ".txt");
    };
    set_list("\xEF\xBB\xBF\r\n" + plain.substr(0, plain.size() - 1) + " \r\n");
    store("a.jpg", "b.jpg");
    EXPECT_FALSE(std::filesystem::exists(saved(1))) << "the same names are found again";
    int number = 0;
    for (const std::string& old :
         {worked, plain + "\"c.jpg\"   \"d.jpg\"\n", std::string("\"b.jpg\"   \"a.jpg\"\n"),
          std::string("# garden\n") + plain, std::string("Shopping list\nmilk\n")}) {
        set_list(old);
        store("a.jpg", "b.jpg");
        EXPECT_EQ(read_text(saved(++number)), old);
        EXPECT_EQ(read_text(list()), plain);
    }
    EXPECT_EQ(read_text(saved(1)), worked) << "an older saved list is never replaced";
    options.write_data_base = 1;
    store("a.jpg", "b.jpg");
    EXPECT_EQ(read_text(saved(++number)), plain) << "a list of names alone is made to be edited";
}

TEST_F(Listed, ARunWithoutNamesTouchesNoList) {
    set_list("\"a.jpg\"   \"b.jpg\" QU\n");
    EXPECT_TRUE(ListedNames(options, voice).store());
    options.write_data_base = 0;
    store("c.jpg", "d.jpg");
    EXPECT_EQ(read_text(list()), "\"a.jpg\"   \"b.jpg\" QU\n");
}

TEST_F(Listed, ARunOnOneNamedPairAddsItsLineToTheListOfTheFolder) {
    options.input_mode = 0;
    set_list("\"a.jpg\"   \"b.jpg\" QU");
    store("c.jpg", "d.jpg");
    store("a.jpg", "b.jpg");
    store("c.jpg", "d.jpg");
    EXPECT_EQ(read_text(list()), "\"a.jpg\"   \"b.jpg\" QU\n\"c.jpg\"   \"d.jpg\"\n");
}

TEST_F(Listed, APictureIsNeverTakenForTheList) {
    const std::string picture("\xFF\xD8\0picture", 10);
    for (const int mode : {0, 1}) {
        options.input_mode = mode;
        for (const char* name : {"c.jpg", "d.jpg"}) {
            write_text(folder / name, picture);
            std::filesystem::remove(list());
            std::filesystem::create_symlink(name, list());
            const Result<void> stored = try_to_store("c.jpg", "d.jpg");
            ASSERT_FALSE(stored);
            EXPECT_TRUE(stored.failure().ends_run);
            EXPECT_EQ(read_text(folder / name), picture);
        }
    }
    options.input_mode = 0;
    store("a.jpg", "b.jpg");  // the list's name leads to a file that is no text
    EXPECT_EQ(read_text(folder / "d.jpg_001.txt"), picture);
    EXPECT_EQ(read_text(folder / "d.jpg"), "\"a.jpg\"   \"b.jpg\"\n");
}

/// Lists read by a run.
class ReadListed : public Listed {
protected:
    ReadListed() {
        options.input_mode = 10;
        for (const char* name : {"a_l.jpg", "a_r.jpg", "b_l.jpg", "b_r.jpg"}) {
            write_text(folder / name, "x");
        }
    }
    ImageList read(const std::string& text) {
        set_list(text);
        ImageList list;
        list.two_files = options.stereo_image_input == 2;
        testing::internal::CaptureStdout();
        const Result<ListedObjects> listed = read_listed_objects(options, voice, list);
        console.flush();
        told = testing::internal::GetCapturedStdout();
        EXPECT_TRUE(listed);
        lines = listed ? listed->named : 0;
        return list;
    }
    [[nodiscard]] bool tells(const std::string& part) const { return told.find(part) != std::string::npos; }

    int lines = 0;
    std::string told;
};

struct MarkCase {
    const char* name;
    std::string behind;
    bool taken;        ///< By a run that measures.
    bool taken_again;  ///< By a run that applies stored values.
    bool has_values;   ///< There.
    const char* told_again;
};

class MarksOfLines : public ReadListed, public testing::WithParamInterface<MarkCase> {};

TEST_P(MarksOfLines, DecideWhatIsDone) {
    const MarkCase& c = GetParam();
    const std::string text = "\"a_l.jpg\"   \"a_r.jpg\"" + c.behind + "\n";
    EXPECT_EQ(read(text).count(), c.taken ? 1 : 0) << told;
    options.applies_stored_values = true;
    const ImageList list = read(text);
    ASSERT_EQ(list.count(), c.taken_again ? 1 : 0) << told;
    EXPECT_TRUE(tells(c.told_again)) << told;
    if (c.taken_again) {
        EXPECT_EQ(list.stored(0) != nullptr, c.has_values);
    }
    EXPECT_EQ(lines, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Table, MarksOfLines,
    testing::Values(MarkCase{"none", "", true, true, false, "will be tried again: a_l.jpg <-> a_r.jpg"},
                    MarkCase{"whole", " OK" + kValues, false, true, true, ""},
                    MarkCase{"a_value_missing", " OK" + kValues.substr(0, kValues.size() - 2), false, false,
                             false, "case: 2!"},
                    MarkCase{"imperfect", " IM", false, false, false, "IMPERFECT"},
                    MarkCase{"quit", " QU", false, false, false, "QUIT"},
                    MarkCase{"word", " done", false, false, false, "case: 2!"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(ReadListed, ValuesBelongToTheirOwnObject) {
    options.applies_stored_values = true;
    const ImageList list = read("\"gone_l.jpg\" \"gone_r.jpg\" OK" + kValues + "\n\"A_L.JPG\" \"a_r.jpg\"\n" +
                                "\"b_l.jpg\" \"b_r.jpg\" OK" + kValues + "\n");
    ASSERT_EQ(list.count(), 2) << told;
    EXPECT_TRUE(tells("gone_l.jpg"));
    EXPECT_EQ(list.left(0), folder / "a_l.jpg") << "as the disk spells it";
    EXPECT_EQ(list.stored(0), nullptr);
    ASSERT_NE(list.stored(1), nullptr);
    EXPECT_EQ((*list.stored(1))[kRecordHeight], -3.25);
    EXPECT_EQ((*list.stored(1))[kRecordWindowShift], 7.25);
    EXPECT_EQ((*list.stored(1))[kRecordCroppOutput], 2.0);
}

TEST_F(ReadListed, ANameWithAZeroByteIsNoFile) {
    using namespace std::string_literals;
    write_text(folder / "s.jpg", "x");
    for (const auto& [layout, text] :
         {std::pair{2, "\"a_l.jpg\0.jpg\"   \"a_r.jpg\""s}, {1, "\"s.jpg\0.jpg\""s}}) {
        options.stereo_image_input = layout;
        EXPECT_EQ(read(text + '\n').count(), 0);
        EXPECT_TRUE(tells("zero byte")) << told;
    }
}

TEST_F(ReadListed, NamesOfOtherEncodingsLeadToTheirFiles) {
    for (const char* name : {"M\xC3\xBChle_l.jpg", "M\xC3\xBChle_r.jpg", "raw\xE4_l.jpg", "raw\xE4_r.jpg"}) {
        write_text(folder / name, "x");
    }
    const ImageList list =
        read("\"M\xFChle_l.jpg\" \"M\xFChle_r.jpg\"\n\"raw\xE4_l.jpg\" \"raw\xE4_r.jpg\"\n");
    ASSERT_EQ(list.count(), 2) << told;
    EXPECT_EQ(list.left(0), folder / "M\xC3\xBChle_l.jpg");
    EXPECT_EQ(list.right(1), folder / "raw\xE4_r.jpg");
}

TEST_F(ReadListed, AStoredSelectionGoesWhenTheOutputTakesAnotherForm) {
    options.applies_stored_values = true;
    StoredCorrectionRecord values = empty_record();
    values[kRecordRatio] = 1.5;
    values[kRecordSelectionLeft] = 0.1;
    values[kRecordSelectionRight] = 0.9;
    values[kRecordCroppOutput] = 2.0;
    const std::string text = "\"a_l.jpg\" \"a_r.jpg\" OK" + values_text(values) + "\n";
    const auto kept = [&](int crop_output, int height, int width) {
        options.shape = {crop_output, height, width};
        const ImageList list = read(text);
        return list.count() == 1 && (*list.stored(0))[kRecordSelectionRight] > 0.0;
    };
    EXPECT_TRUE(kept(2, 1000, 1000));
    EXPECT_TRUE(kept(1, 1000, 1505));
    EXPECT_TRUE(kept(1, 0, 0)) << "no form is asked for";
    EXPECT_FALSE(kept(1, 1000, 1520));
    EXPECT_FALSE(kept(1, 1000, 0));
}

TEST_F(ReadListed, StereoListsDropViewsAndMasks) {
    options.stereo_image_input = 1;
    const ImageList list = read("\"a_l.jpg\"\n\"x_d.jpg\"\n\"house_l/b.jpg\"\n\"x\"\n\"odd.jpg OK\n");
    ASSERT_EQ(list.count(), 1) << told;
    EXPECT_EQ(list.stereo(0), folder / "house_l/b.jpg") << "only the bare name counts";
    EXPECT_TRUE(tells("\"_l\", \"_L\"")) << told;
    EXPECT_TRUE(tells("depth masks")) << told;
    EXPECT_TRUE(tells("case: 7!")) << told;
}

TEST_F(ReadListed, WrongQuotesEndTheRunWithTheLineNumber) {
    set_list("\"a_l.jpg\" \"a_r.jpg\"\n\"a_l.jpg\" a_r.jpg\n");
    ImageList list;
    const Result<ListedObjects> listed = read_listed_objects(options, voice, list);
    ASSERT_FALSE(listed);
    EXPECT_TRUE(listed.failure().ends_run && listed.failure().note.waits);
    EXPECT_NE(listed.failure().note.text.find("line 2"), std::string::npos) << listed.failure().note.text;
}

}  // namespace
}  // namespace zemora
