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

struct TimedFile {
    std::string path;
    const char* expected;  ///< Null for none.
};

/// The pictures of the table in each kind of file, and some that are no pictures.
std::vector<TimedFile> timed_files(const test::TestFolder& folder) {
    std::vector<TimedFile> files;
    for (const SourceRow& row : kSources) {
        const std::string stem = folder / std::to_string(files.size());
        test::write_bytes(stem + ".jpg", test::timed_jpeg(row.times));
        test::write_bytes(stem + ".tif", test::timed_tiff(row.times));
        test::write_bytes(stem + ".cr2", test::timed_tiff(row.times));
        test::write_bytes(stem + ".png", test::timed_png(row.times));
        for (const char* suffix : {".jpg", ".tif", ".cr2", ".png"}) {
            files.push_back({stem + suffix, row.expected});
        }
    }
    test::write_text(folder / "none.jpg", "no picture");
    files.push_back({folder / "none.jpg", nullptr});
    files.push_back({folder / "missing.jpg", nullptr});
    return files;
}

std::vector<std::string> paths_of(const std::vector<TimedFile>& files) {
    std::vector<std::string> paths;
    for (const TimedFile& file : files) {
        paths.push_back(file.path);
    }
    return paths;
}

void expect_times(CaptureClock& clock, const std::vector<TimedFile>& files) {
    for (const TimedFile& file : files) {
        const auto time = clock.time_of(file.path);
        EXPECT_EQ(time, file.expected == nullptr ? std::nullopt : parse_capture_time(file.expected))
            << file.path;
    }
    EXPECT_FALSE(clock.time_of(""));
}

TEST(CaptureClocks, FilesGiveTheTimeOfTakingWithoutExiv2) {
    const test::TestFolder folder;
    CaptureClock clock{std::string()};
    EXPECT_FALSE(clock.uses_exiv2());
    expect_times(clock, timed_files(folder));
}

TEST(CaptureClocks, BrokenDirectoriesHaveNoTime) {
    const test::TestFolder folder;
    const std::string path = folder / "broken.jpg";
    for (const auto& whole : {test::timed_jpeg({kTaken, kOutside, kOther, kOther}),
                              test::timed_png({kTaken, kOutside, kOther, kOther}),
                              test::timed_tiff({kTaken, kOutside, kOther, kOther})}) {
        for (std::size_t size = 0; size < 400; size += 3) {
            test::write_bytes(
                path,
                {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(std::min(size, whole.size()))});
            CaptureClock cut_off{std::string()};
            const auto time = cut_off.time_of(path);
            EXPECT_TRUE(!time || *time == *parse_capture_time(kTaken) ||
                        *time == *parse_capture_time(kOutside))
                << size;
            auto bytes = whole;
            bytes[size % bytes.size()] = 0xFF;
            test::write_bytes(path, bytes);
            CaptureClock damaged{std::string()};
            (void)damaged.time_of(path);
        }
    }
}

TEST(CaptureClocks, Exiv2GivesTheSameTimesOneByOneAndTogether) {
    CaptureClock one_by_one;
    if (!one_by_one.uses_exiv2()) {
        GTEST_SKIP() << "exiv2 is not installed";
    }
    const test::TestFolder folder;
    const auto files = timed_files(folder);
    expect_times(one_by_one, files);
    CaptureClock together;
    together.expect(paths_of(files));
    expect_times(together, files);
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
