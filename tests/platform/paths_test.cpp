#include "platform/paths.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/test_folder.h"

namespace zemora {
namespace {

struct JoinCase {
    const char* base;
    const char* path;
    const char* joined;
};

class JoinPath : public testing::TestWithParam<JoinCase> {};

TEST_P(JoinPath, TreatsOnlyWholeDotComponentsAsSpecial) {
    setenv("HOME", "/home/me", 1);
    const JoinCase& c = GetParam();
    EXPECT_EQ(join_path(c.base, c.path), c.joined) << c.base << " and " << c.path;
}

INSTANTIATE_TEST_SUITE_P(
    Table, JoinPath,
    testing::Values(JoinCase{"/a/b", "c", "/a/b/c"}, JoinCase{"/a/b", "../c", "/a/c"},
                    JoinCase{"/a/b", "../../../../c", "/c"}, JoinCase{"/a/b", "..", "/a"},
                    JoinCase{"/a/b", "../..", "/"}, JoinCase{"/a/b", ".", "/a/b"},
                    JoinCase{"/a/b", "./", "/a/b"}, JoinCase{"/a/b", "", "/a/b"},
                    JoinCase{"/a/b", "..old/x", "/a/b/..old/x"}, JoinCase{"/a/b", ".photos", "/a/b/.photos"},
                    JoinCase{"/a/b", "c..", "/a/b/c.."}, JoinCase{"/a/b", "/c//d/", "/c/d"},
                    JoinCase{"/a/b", "/..", "/"}, JoinCase{"/a/b", "c//./d/", "/a/b/c/d"},
                    JoinCase{"/a/b", "~", "/home/me"}, JoinCase{"/a/b", "~/x", "/home/me/x"},
                    JoinCase{"/a/b", "~x", "/a/b/~x"}, JoinCase{"/", "c", "/c"}, JoinCase{"", "../c", "../c"},
                    JoinCase{"a", "../..", ".."}, JoinCase{"a", "..", "."}));

struct NameCase {
    const char* path;
    const char* folder;
    const char* suffix;
    const char* without;
};

class NameParts : public testing::TestWithParam<NameCase> {};

TEST_P(NameParts, ComeFromTheBareNameOnly) {
    const NameCase& c = GetParam();
    EXPECT_EQ(folder_of(c.path), c.folder) << c.path;
    EXPECT_EQ(suffix_of(c.path), c.suffix) << c.path;
    EXPECT_EQ(without_suffix(c.path), c.without) << c.path;
}

INSTANTIATE_TEST_SUITE_P(Table, NameParts,
                         testing::Values(NameCase{"/a.b/c", "/a.b", "", "/a.b/c"},
                                         NameCase{"/a/c.tar.gz", "/a", ".gz", "/a/c.tar"},
                                         NameCase{".hidden", "", "", ".hidden"},
                                         NameCase{"/a/.hidden.jpg", "/a", ".jpg", "/a/.hidden"},
                                         NameCase{"/c.jpg", "/", ".jpg", "/c"}, NameCase{"c.", "", ".", "c"},
                                         NameCase{"a/", "a", "", "a/"}, NameCase{"", "", "", ""}));

TEST(RelativeTo, TakesARootOffAsWholeComponentsOnly) {
    EXPECT_EQ(relative_to("/a/b/c", "/a/b"), "c");
    EXPECT_EQ(relative_to("/a/bc/d", "/a/b"), "/a/bc/d");
    EXPECT_EQ(relative_to("/a/b", "/a/b"), "/a/b");
    EXPECT_EQ(relative_to("/a/b", "/"), "a/b");
}

TEST(HasDrive, KnowsDrivesFromNamesWithAColon) {
    for (const char* drive : {"X:", "c:\\pictures", "C:/x"}) {
        EXPECT_TRUE(has_drive(drive)) << drive;
    }
    for (const char* name : {"", "X", "X:y", "ab:/c", "1:/x", "/x:/y"}) {
        EXPECT_FALSE(has_drive(name)) << name;
    }
}

TEST(MakeFolders, MakesTheChainAndTellsWhyItCannot) {
    const test::TestFolder folder;
    std::string reason;
    EXPECT_TRUE(make_folders(folder / "a/b/c", reason)) << reason;
    EXPECT_TRUE(make_folders(folder / "a/b/c", reason)) << reason;
    test::write_text(folder / "file", "x");
    EXPECT_FALSE(make_folders(folder / "file/below", reason));
    EXPECT_FALSE(reason.empty());
    EXPECT_FALSE(make_folders(folder / "file", reason));
}

TEST(IsSameFile, SeesThroughLinks) {
    const test::TestFolder folder;
    test::write_text(folder / "a", "x");
    test::write_text(folder / "b", "x");
    std::filesystem::create_hard_link(folder / "a", folder / "hard");
    std::filesystem::create_symlink("a", folder / "soft");
    EXPECT_TRUE(is_same_file(folder / "a", folder / "hard"));
    EXPECT_TRUE(is_same_file(folder / "a", folder / "soft"));
    EXPECT_FALSE(is_same_file(folder / "a", folder / "b"));
    EXPECT_FALSE(is_same_file(folder / "none", folder / "none"));
}

}  // namespace
}  // namespace zemora
