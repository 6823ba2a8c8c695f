#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "platform/console.h"
#include "platform/file_times.h"
#include "platform/memory_use.h"
#include "platform/process_end.h"
#include "platform/temp_folder.h"
#include "platform/user_language.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using test::TestFolder;

TEST(Console, ShowsControlCharactersAsQuestionMarks) {
    testing::internal::CaptureStdout();
    Console console;
    console.print("a\x1b[2Jb\r\a\x7f\tc\n");
    console.flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "a?[2Jb???\tc\n");
    EXPECT_EQ(printable("x\ny\tz\x01\xC3\xA4"), "x?y?z?\xC3\xA4");
}

TEST(Console, ProgressOfAPipeIsOneLineAStep) {
    testing::internal::CaptureStdout();
    Console console;
    for (const double percent : {0.0, 50.0, 99.9, 100.0}) {
        console.progress("step", percent);
    }
    console.bell();
    console.print("next\n");
    console.flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "step  100.0 %\nnext\n");
}

TEST(MemoryUse, CountsWhatIsHeldAndStaysWithinTheLimitOfTheProcess) {
    constexpr std::int64_t kMegabyte = 1 << 20;
    const MemoryUse before = memory_use();
    EXPECT_GT(before.available, 0);
    const std::vector<char> held(64 * kMegabyte, 'x');
    EXPECT_GE(memory_use().resident, before.resident + 60 * kMegabyte) << held.back();
    rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &old), 0);
    const rlimit none{1, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &none), 0);
    const std::int64_t left = memory_use().available;
    ASSERT_EQ(setrlimit(RLIMIT_AS, &old), 0);
    EXPECT_EQ(left, 0);
}

struct LanguageCase {
    const char* all;
    const char* messages;
    const char* lang;
    bool german;
};

class UserLanguage : public testing::TestWithParam<LanguageCase> {};

TEST_P(UserLanguage, ComesFromTheFirstVariableThatIsSet) {
    const LanguageCase& c = GetParam();
    const auto put = [](const char* name, const char* value) {
        value == nullptr ? unsetenv(name) : setenv(name, value, 1);
    };
    put("LC_ALL", c.all);
    put("LC_MESSAGES", c.messages);
    put("LANG", c.lang);
    EXPECT_EQ(user_speaks_german(), c.german);
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        unsetenv(name);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, UserLanguage,
                         testing::Values(LanguageCase{nullptr, nullptr, nullptr, false},
                                         LanguageCase{nullptr, nullptr, "de_AT.UTF-8", true},
                                         LanguageCase{nullptr, "en_GB", "de_DE", false},
                                         LanguageCase{"C", "de_DE", "de_DE", false},
                                         LanguageCase{"", "", "de", true},
                                         LanguageCase{"de_DE", "en", "en", true}));

TEST(FileTimes, DatesThatDoNotExistAreRefused) {
    std::int64_t seconds = 0;
    for (const LocalTime& good : {LocalTime{2024, 2, 29, 23, 59, 59}, LocalTime{2000, 12, 31, 0, 0, 0},
                                  LocalTime{1999, 1, 1, 12, 30, 1}}) {
        ASSERT_TRUE(calendar_seconds_of(good, seconds)) << good.year;
        const LocalTime back = local_time_of(seconds);
        EXPECT_EQ(back.day, good.day);
        EXPECT_EQ(back.second, good.second);
    }
    for (const LocalTime& bad :
         {LocalTime{2023, 2, 29, 0, 0, 0}, LocalTime{2023, 0, 1, 0, 0, 0}, LocalTime{2023, 13, 1, 0, 0, 0},
          LocalTime{2023, 4, 31, 0, 0, 0}, LocalTime{2023, 1, 1, 24, 0, 0}, LocalTime{2023, 1, 1, 10, 60, 0},
          LocalTime{2023, 1, 1, 10, 0, 75}, LocalTime{2023, 1, 1, -1, 0, 0}}) {
        EXPECT_FALSE(calendar_seconds_of(bad, seconds))
            << bad.month << ' ' << bad.day << ' ' << bad.hour << ':' << bad.minute;
    }
}

TEST(FileTimes, AreSetToTheSecond) {
    const TestFolder folder;
    test::write_text(folder / "a", "x");
    ASSERT_TRUE(set_file_times(folder / "a", 1'000'000'001));
    struct stat status = {};
    stat((folder / "a").c_str(), &status);
    EXPECT_EQ(status.st_mtim.tv_sec, 1'000'000'001);
    EXPECT_EQ(status.st_atim.tv_sec, 1'000'000'001);
    EXPECT_FALSE(set_file_times(folder / "none", 0));
}

enum class Ending { returns, end_process, terminate, interrupt };

class TemporaryFolder : public testing::TestWithParam<Ending> {};

TEST_P(TemporaryFolder, GoesWithTheProcessHoweverItEnds) {
    const TestFolder base;
    const pid_t child = fork();
    if (child == 0) {
        setenv("TMPDIR", base.path().c_str(), 1);
        end_well_at_signals();
        const std::string folder = temporary_folder();
        test::write_text(folder + "/a", "x");
        test::write_text(folder + "/.b", "x");
        test::write_text(base / "made", folder);
        switch (GetParam()) {
            case Ending::returns: std::exit(0);
            case Ending::end_process: end_process(0);
            case Ending::terminate: raise(SIGTERM); break;
            case Ending::interrupt: raise(SIGINT); break;
        }
        _exit(9);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const bool by_signal = GetParam() == Ending::terminate || GetParam() == Ending::interrupt;
    EXPECT_EQ(by_signal, WIFSIGNALED(status)) << status;
    EXPECT_EQ(test::read_text(base / "made").substr(0, base.path().size()), base.path());
    EXPECT_EQ(base.files(), std::set<std::string>{"made"});
    EXPECT_FALSE(std::filesystem::exists(test::read_text(base / "made")));
}

INSTANTIATE_TEST_SUITE_P(Endings, TemporaryFolder,
                         testing::Values(Ending::returns, Ending::end_process, Ending::terminate,
                                         Ending::interrupt));

TEST(TemporaryFolder, StaysWhenAForkedChildEnds) {
    const TestFolder base;
    const pid_t child = fork();
    if (child == 0) {
        setenv("TMPDIR", base.path().c_str(), 1);
        const std::string folder = temporary_folder();
        const pid_t grandchild = fork();
        if (grandchild == 0) {
            std::exit(0);
        }
        waitpid(grandchild, nullptr, 0);
        _exit(std::filesystem::is_directory(folder) ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace zemora
