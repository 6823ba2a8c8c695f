#include "platform/safe_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <thread>

#include "platform/file_times.h"
#include "platform/paths.h"
#include "platform/process_end.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using test::TestFolder;

std::vector<std::uint8_t> bytes_of(std::size_t count) {
    return std::vector<std::uint8_t>(count, std::uint8_t{'n'});
}

/// Runs `body` in a process of its own; true when it returned true.
template <class Body>
bool in_child(const Body& body) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(body() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(WriteFileWhole, ReplacesAnOlderFileAndLeavesNothingBeside) {
    const TestFolder folder;
    test::write_text(folder / "a.jpg", "old");
    EXPECT_EQ(write_file_whole(folder / "a.jpg", bytes_of(100'000)), "");
    EXPECT_EQ(test::read_text(folder / "a.jpg"), std::string(100'000, 'n'));
    EXPECT_EQ(write_file_whole(folder / "empty", {}), "");
    EXPECT_EQ(folder.files(), (std::set<std::string>{"a.jpg", "empty"}));
}

TEST(WriteFileWhole, NamesAreTakenAsTheyAre) {
    const TestFolder folder;
    for (const char* name :
         {"-n.jpg", "a b'\"$(touch x);.jpg", "new\nline.jpg", "\xC3\xA4.jpg", "%s%n.jpg"}) {
        EXPECT_EQ(write_file_whole(folder / name, bytes_of(3)), "") << name;
        EXPECT_EQ(test::read_text(folder / name), "nnn") << name;
    }
    EXPECT_EQ(folder.files().size(), 5U);
}

TEST(WriteFileWhole, FullDiskKeepsTheOldFile) {
    const TestFolder folder;
    test::write_text(folder / "a.jpg", "old");
    EXPECT_TRUE(in_child([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        return !write_file_whole(folder / "a.jpg", bytes_of(5000)).empty();
    }));
    EXPECT_EQ(test::read_text(folder / "a.jpg"), "old");
    EXPECT_EQ(folder.files(), std::set<std::string>{"a.jpg"});
}

TEST(WriteFileWhole, RefusesFoldersPipesAndMissingFolders) {
    const TestFolder folder;
    std::filesystem::create_directory(folder / "taken.jpg");
    mkfifo((folder / "pipe").c_str(), 0600);
    for (const char* name : {"taken.jpg", "pipe", "none/a.jpg"}) {
        EXPECT_NE(write_file_whole(folder / name, bytes_of(10)), "") << name;
    }
    EXPECT_EQ(folder.files(), std::set<std::string>{"pipe"});
}

TEST(WriteFileWhole, UnwritableFolderIsTold) {
    const TestFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms{0555});
    EXPECT_TRUE(in_child([&] {
        constexpr uid_t kNobody = 65534;
        return (geteuid() != 0 || setuid(kNobody) == 0) &&
               !write_file_whole(folder / "a.jpg", bytes_of(10)).empty();
    }));
    EXPECT_TRUE(folder.files().empty());
}

TEST(WriteFileWhole, PermissionsFollowTheUsersMaskFromManyThreads) {
    const TestFolder folder;
    const mode_t before = umask(027);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&folder, t] {
            for (int i = 0; i < 50; ++i) {
                EXPECT_EQ(
                    write_file_whole(folder / (std::to_string(t) + '-' + std::to_string(i)), bytes_of(10)),
                    "");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(umask(before), mode_t{027});
    const auto names = folder.files();
    EXPECT_EQ(names.size(), 200U);
    for (const std::string& name : names) {
        struct stat status = {};
        stat((folder / name).c_str(), &status);
        EXPECT_EQ(status.st_mode & 0777U, 0640U) << name;
    }
}

TEST(WriteFileWhole, ASignalNeverLeavesAHiddenFile) {
    const TestFolder folder;
    for (int round = 0; round < 150; ++round) {
        const pid_t child = fork();
        if (child == 0) {
            end_well_at_signals();
            for (;;) {
                (void)write_file_whole(folder / "picture", bytes_of(10));
            }
        }
        while (!file_exists(folder / "picture")) {
        }
        usleep(static_cast<useconds_t>(200 + 37 * (round % 40)));
        kill(child, SIGINT);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT);
        ASSERT_EQ(folder.files(), std::set<std::string>{"picture"}) << round;
    }
}

TEST(WriteFileWhole, SweepsOnlyWhatAKilledRunHasLeft) {
    const TestFolder folder;
    const pid_t gone = fork();
    if (gone == 0) {
        _exit(0);
    }
    waitpid(gone, nullptr, 0);
    const std::string dead = ".zemora-" + std::to_string(gone);
    const std::string alive = ".zemora-" + std::to_string(getppid()) + "-0";
    for (const std::string& name :
         {dead + "-0", dead + "-17", dead + "-5", dead + "-", dead, dead + "-1.jpg", dead + "-x", alive,
          std::string(".zemora-0-0"), std::string(".zemora--1-0")}) {
        test::write_text(folder / name, "user");
        ASSERT_TRUE(set_file_times(folder / name, name == dead + "-5" ? std::time(nullptr) : 1'000'000'000));
    }
    std::filesystem::create_directory(folder / (dead + "-8"));
    std::filesystem::create_symlink("picture", folder / (dead + "-9"));
    std::set<std::string> expected = folder.files();
    EXPECT_EQ(write_file_whole(folder / "picture", bytes_of(10)), "");
    expected.erase(dead + "-0");
    expected.erase(dead + "-17");
    expected.insert("picture");
    EXPECT_EQ(folder.files(), expected) << "the young one may be of another machine";
    EXPECT_TRUE(std::filesystem::is_directory(folder / (dead + "-8")));
}

TEST(ReadFileWhole, GivesPlainFilesAndReasonsForOthers) {
    const TestFolder folder;
    test::write_text(folder / "a", std::string("x\0y", 3));
    mkfifo((folder / "pipe").c_str(), 0600);
    std::string reason;
    const auto bytes = read_file_whole(folder / "a", reason);
    ASSERT_TRUE(bytes) << reason;
    EXPECT_EQ(bytes->size(), 3U);
    for (const char* name : {"none", "pipe", ".", "a/b"}) {
        reason.clear();
        EXPECT_FALSE(read_file_whole(folder / name, reason)) << name;
        EXPECT_FALSE(reason.empty()) << name;
    }
}

}  // namespace
}  // namespace zemora
