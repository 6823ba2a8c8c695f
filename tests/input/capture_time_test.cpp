#include "input/capture_time.h"

#include <gtest/gtest.h>

#include "platform/child_process.h"
#include "tests/support/test_folder.h"
#include "tests/support/timed_pictures.h"

namespace zemora {
namespace {

using test::PictureTimes;

TEST(CaptureTimeText, IsReadByItsColumns) {
    const CaptureTime whole{2014, 8, 1, 12, 0, 60};
    EXPECT_EQ(parse_capture_time("2014:08:01 12:00:60"), whole);
    EXPECT_EQ(parse_capture_time("2014-08-01T12:00:60+02:00"), whole);
    EXPECT_EQ(parse_capture_time("2014: 8: 1 12: 0:60"), whole);
    for (const char* text :
         {"", "2014:08:01 12:00:1", "    :  :     :  :  ", "                   ", "0000:00:00 00:00:00",
          "2014:13:01 12:00:10", "2014:00:01 12:00:10", "2014:08:32 12:00:10", "2014:08:01 24:00:10",
          "2014:08:01 12:60:10", "2014:08:01 12:00:61", "2014:08:01 1x:00:10", "2014:08:01 -1:00:10"}) {
        EXPECT_FALSE(parse_capture_time(text)) << text;
    }
}

TEST(CaptureTimeDifference, TakesNoYearAndCountsWholeMonths) {
    struct Row {
        const char* left;
        const char* right;
        int seconds;
    };
    constexpr int kDay = 86400;
    const Row rows[] = {
        {"2014:08:01 12:00:10", "2014:07:31 23:59:50", 43220},
        {"2014:12:31 23:59:59", "2015:01:01 00:00:01", -2},
        {"2015:01:01 00:00:01", "2014:12:31 23:59:59", 2},
        {"2014:03:01 00:00:00", "2014:02:28 00:00:00", 2 * kDay},
        {"2014:02:28 00:00:00", "2014:03:01 00:00:00", -2 * kDay},
        {"2014:04:01 00:00:00", "2014:06:01 00:00:00", -60 * kDay},
        {"2014:08:01 10:00:00", "2013:08:01 10:01:02", -62},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(difference_seconds(*parse_capture_time(row.left), *parse_capture_time(row.right)),
                  row.seconds)
            << row.left << " - " << row.right;
    }
}

const char* const kTaken = "2014:08:01 12:00:10";
const char* const kOutside = "2015:02:03 01:02:03";
const char* const kOther = "2016:07:08 11:12:13";
const char* const kZeros = "0000:00:00 00:00:00";

struct SourceRow {
    PictureTimes times;
    const char* expected;  ///< Null for none.
};
const SourceRow kSources[] = {
    {{kTaken, "", "", ""}, kTaken},
    {{kTaken, kOutside, kOther, kOther}, kTaken},
    {{"", kOutside, kOther, kOther}, kOutside},
    {{"", "", kOther, kOther}, nullptr},
    {{"", "", "", ""}, nullptr},
    {{kZeros, kOutside, kOther, kOther}, nullptr},
    {{"    :  :     :  :  ", "", kOther, ""}, nullptr},
    {{"2014:08:01 12:00:10+02:00", "", "", ""}, kTaken},
};

/// The pictures of the table as JPEG and TIFF, in the order of the table, and one that is no picture.
std::vector<std::string> timed_files(const test::TestFolder& folder) {
    std::vector<std::string> files;
    for (const SourceRow& row : kSources) {
        const std::string stem = folder / std::to_string(files.size());
        test::write_bytes(stem + ".jpg", test::timed_jpeg(row.times));
        test::write_bytes(stem + ".tif", test::timed_tiff(row.times));
        files.push_back(stem + ".jpg");
        files.push_back(stem + ".tif");
    }
    test::write_text(folder / "none.jpg", "no picture");
    files.push_back(folder / "none.jpg");
    files.push_back(folder / "missing.jpg");
    return files;
}

void expect_times_of_table(CaptureClock& clock, const std::vector<std::string>& files) {
    for (std::size_t i = 0; i < files.size(); ++i) {
        const char* expected = i / 2 < std::size(kSources) ? kSources[i / 2].expected : nullptr;
        const auto time = clock.time_of(files[i]);
        EXPECT_EQ(time, expected == nullptr ? std::nullopt : parse_capture_time(expected)) << files[i];
    }
    EXPECT_FALSE(clock.time_of(""));
}

TEST(CaptureClocks, ThePictureLibraryTakesTheTimeOfTaking) {
    const test::TestFolder folder;
    CaptureClock clock{std::string()};
    EXPECT_FALSE(clock.uses_exiv2());
    expect_times_of_table(clock, timed_files(folder));
}

TEST(CaptureClocks, Exiv2GivesTheSameTimesOneByOneAndTogether) {
    CaptureClock one_by_one;
    if (!one_by_one.uses_exiv2()) {
        GTEST_SKIP() << "exiv2 is not installed";
    }
    const test::TestFolder folder;
    const auto files = timed_files(folder);
    expect_times_of_table(one_by_one, files);
    CaptureClock together;
    together.expect(files);
    expect_times_of_table(together, files);
}

/// Writes down each call and passes it on.
std::string counting_exiv2(const test::TestFolder& folder) {
    const std::string script = folder / "counting";
    test::write_text(script, "#!/bin/sh\necho call >> '" + folder / "calls" + "'\nexec exiv2 \"$@\"\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    return script;
}

TEST(CaptureClocks, OddNamesKeepTheirTimesInOneCall) {
    if (find_program("exiv2").empty()) {
        GTEST_SKIP() << "exiv2 is not installed";
    }
    const test::TestFolder folder;
    std::vector<std::string> files;
    for (const char* name : {"-ps.jpg", " blank  inside.jpg", "Image timestamp : 1999:01:01 01:01:01.jpg",
                             "$(x);'\".jpg", "\xE4 no utf-8.jpg", "100%s.jpg", "line\nend.jpg"}) {
        const std::string second = std::to_string(10 + files.size());
        files.push_back(folder / name);
        test::write_bytes(files.back(), test::timed_jpeg({"2014:08:01 12:00:" + second, "", "", ""}));
    }
    CaptureClock clock(counting_exiv2(folder));
    clock.expect(files);
    for (std::size_t i = 0; i < files.size(); ++i) {
        const auto time = clock.time_of(files[i]);
        ASSERT_TRUE(time) << files[i];
        EXPECT_EQ(time->second, 10 + static_cast<int>(i)) << files[i];
    }
    EXPECT_EQ(test::read_text(folder / "calls"), "call\ncall\n") << "a name with a line end stands alone";
}

TEST(CaptureClocks, AFileThatBringsExiv2DownCostsOnlyItsOwnTime) {
    if (find_program("exiv2").empty()) {
        GTEST_SKIP() << "exiv2 is not installed";
    }
    const test::TestFolder folder;
    const std::vector<std::string> files{folder / "a.jpg", folder / "bad.jpg", folder / "c.jpg"};
    for (const std::string& file : files) {
        test::write_bytes(file, test::timed_jpeg({kTaken, "", "", ""}));
    }
    const std::string script = folder / "falling";
    test::write_text(script, "#!/bin/sh\ncase \"$*\" in *bad.jpg*) kill -9 $$;; esac\nexec exiv2 \"$@\"\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    CaptureClock clock(script);
    clock.expect(files);
    EXPECT_TRUE(clock.time_of(files[0]));
    EXPECT_FALSE(clock.time_of(files[1]));
    EXPECT_TRUE(clock.time_of(files[2]));
}

TEST(CaptureClocks, TheLanguageOfTheUserChangesNothing) {
    if (find_program("exiv2").empty()) {
        GTEST_SKIP() << "exiv2 is not installed";
    }
    const test::TestFolder folder;
    test::write_bytes(folder / "a.jpg", test::timed_jpeg({kTaken, "", "", ""}));
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("LANGUAGE", "de", 1);
    CaptureClock clock;
    EXPECT_TRUE(clock.time_of(folder / "a.jpg"));
    unsetenv("LC_ALL");
    unsetenv("LANGUAGE");
}

}  // namespace
}  // namespace zemora
