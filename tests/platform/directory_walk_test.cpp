#include "platform/directory_walk.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/child_process.h"
#include "platform/move_file.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

using test::TestFolder;
using Names = std::vector<std::string>;

TEST(FolderReading, SortsWithoutCaseAndKeepsToPlainFilesAndFolders) {
    const TestFolder folder;
    for (const char* name : {"b.jpg", "A.jpg", "a.jpg", "\xC3\x96.jpg", "\xC3\xB6.jpg", ".hidden", "x\ny"}) {
        test::write_text(folder / name, "");
    }
    for (const char* name : {"sub", "Other", ".git"}) {
        std::filesystem::create_directory(folder / name);
    }
    std::filesystem::create_symlink(folder / "a.jpg", folder / "link.jpg");
    std::filesystem::create_symlink(folder / "sub", folder / "loop");
    std::filesystem::create_symlink(folder / "nowhere", folder / "broken.jpg");
    ASSERT_EQ(mkfifo((folder / "pipe.jpg").c_str(), 0600), 0);
    const FolderContents contents = read_folder(folder.path());
    EXPECT_TRUE(contents.is_readable()) << contents.reason;
    EXPECT_EQ(contents.files,
              (Names{"A.jpg", "a.jpg", "b.jpg", "link.jpg", "x\ny", "\xC3\x96.jpg", "\xC3\xB6.jpg"}));
    EXPECT_EQ(contents.folders, (Names{"Other", "sub"}));
}

TEST(FolderReading, AFolderThatCannotBeReadIsNotAnEmptyOne) {
    const TestFolder folder;
    EXPECT_EQ(read_folder(folder / "missing").reason, "No such file or directory");
    test::write_text(folder / "file", "");
    EXPECT_EQ(read_folder(folder / "file").reason, "Not a directory");
    std::filesystem::create_directory(folder / "closed");
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    std::filesystem::permissions(folder / "closed", std::filesystem::perms::none);
    const auto is_refused = [&] {
        constexpr uid_t kNobody = 65534;
        return (geteuid() != 0 || setuid(kNobody) == 0) &&
               read_folder(folder / "closed").reason == "Permission denied";
    };
    EXPECT_EXIT(_exit(is_refused() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

struct FindRow {
    const char* wanted;
    NameMatch match;
    const char* found;
};

TEST(NameFinding, TakesTheExactNameThenTheOnlyOneInOtherCase) {
    const TestFolder folder;
    for (const char* name : {"Photos/A_L.JPG", "Photos/twin.jpg", "Photos/TWIN.jpg", "Photos/Twin.png",
                             "Photos/\xC3\x84.jpg", "Photos/~", "Two/x", "two/X"}) {
        std::filesystem::create_directories(std::filesystem::path(folder / name).parent_path());
        test::write_text(folder / name, "");
    }
    const FindRow rows[] = {
        {"Photos/A_L.JPG", NameMatch::exact, "Photos/A_L.JPG"},
        {"photos/a_l.jpg", NameMatch::other_case, "Photos/A_L.JPG"},
        {"PHOTOS/twin.jpg", NameMatch::other_case, "Photos/twin.jpg"},
        {"Photos/Twin.JPG", NameMatch::several, ""},
        {"Photos/TWIN.PNG", NameMatch::other_case, "Photos/Twin.png"},
        {"photos/\xC3\xA4.JPG", NameMatch::other_case, "Photos/\xC3\x84.jpg"},
        {"photos/~", NameMatch::other_case, "Photos/~"},
        {"TWO/x", NameMatch::several, ""},
        {"Photos/none.jpg", NameMatch::none, ""},
        {"none/a.jpg", NameMatch::none, ""},
    };
    NameFinder finder;
    for (const FindRow& row : rows) {
        const FoundName found = finder.find(folder / row.wanted);
        EXPECT_EQ(found.match, row.match) << row.wanted;
        EXPECT_EQ(found.path, *row.found == '\0' ? "" : folder / row.found) << row.wanted;
    }
}

TEST(PathsInFolders, TakeEachNameAsItStands) {
    EXPECT_EQ(path_in("/a", "~"), "/a/~");
    EXPECT_EQ(path_in("/", "b c"), "/b c");
    EXPECT_EQ(path_in("/a", "..x"), "/a/..x");
}

TEST(MovingFiles, NeverReplaces) {
    const TestFolder folder;
    test::write_text(folder / "a", "a");
    test::write_text(folder / "b", "b");
    std::filesystem::create_symlink(folder / "nowhere", folder / "link");
    for (const char* taken : {"b", "link"}) {
        const MoveOutcome outcome = move_without_replacing(folder / "a", folder / taken);
        EXPECT_EQ(outcome.result, MoveResult::target_exists) << taken << ' ' << outcome.reason;
    }
    EXPECT_EQ(test::read_text(folder / "a") + test::read_text(folder / "b"), "ab");
    EXPECT_EQ(move_without_replacing(folder / "a", folder / "none/a").result, MoveResult::failed);
    EXPECT_TRUE(move_without_replacing(folder / "a", folder / "c").is_done());
    EXPECT_EQ(folder.files(), (std::set<std::string>{"b", "c", "link"}));
}

TEST(Children, SpeakPlainlyWhereTheirWordsAreRead) {
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    const auto language = [](bool plain) {
        const ChildResult result =
            run_child({"sh", "-c", "echo $LC_ALL; env | grep -c ^LC_ALL="}, false, plain);
        return std::string(result.output.begin(), result.output.end());
    };
    EXPECT_EQ(language(true), "C\n1\n");
    EXPECT_EQ(language(false), "de_DE.UTF-8\n1\n");
    unsetenv("LC_ALL");
}

}  // namespace
}  // namespace zemora
