#include "input/moved_files.h"

#include <gtest/gtest.h>

#include "tests/input/collect_rig.h"

namespace zemora {
namespace {

using test::CollectRig;

void refuse_one(int rename_refused, Notes& notes, const std::string& file, FileSide side) {
    rename_refused_files(rename_refused, notes, {{file, side}});
}

void quit_one(int /*value*/, Notes& notes, const std::string& file, FileSide side) {
    move_quit_files(notes, {{file, side}});
}

struct MoveRow {
    void (*move)(int, Notes&, const std::string&, FileSide);
    int value;  ///< Of `RenameOrphans` or `RenameRefused`.
    FileSide side;
    const char* from;
    const char* to;
};

// clang-format off
const MoveRow kMoves[] = {
    {rename_orphan,       1, FileSide::right,  "x/R/a.jpg",    "x/ro/a.jpg"},
    {rename_orphan,       2, FileSide::right,  "r/img1.jpg",   "r/img1_ro.jpg"},
    {rename_orphan,       2, FileSide::left,   "l/two.dots.x", "l/two.dots_lo.x"},
    {rename_orphan,       3, FileSide::left,   "l/l/a.jpg",    "l/l/_a.jpg"},
    {rename_orphan,       4, FileSide::right,  "r/r/a.jpg",    "r/r/za.jpg"},
    {rename_orphan,       1, FileSide::left,   "l/deep/a.jpg", "l/deep/a.jpg"},
    {rename_orphan,       0, FileSide::left,   "l/a.jpg",      "l/a.jpg"},
    {refuse_one,          1, FileSide::left,   "x/l/a.jpg",    "x/lu/a.jpg"},
    {refuse_one,          1, FileSide::stereo, "S/a.jpg",      "su/a.jpg"},
    {refuse_one,          1, FileSide::left,   "r/a.jpg",      "ru/a.jpg"},
    {refuse_one,          1, FileSide::right,  "other/a.jpg",  "other/a.jpg"},
    {refuse_one,          2, FileSide::right,  "other/a.jpg",  "other/a_ru.jpg"},
    {refuse_one,          0, FileSide::right,  "r/a.jpg",      "r/a.jpg"},
    {quit_one,            0, FileSide::left,   "l/a.jpg",      "l/lq/a.jpg"},
    {quit_one,            0, FileSide::stereo, "a.jpg",        "sq/a.jpg"},
};
// clang-format on

TEST(MovedFiles, GoWhereTheirKindBelongs) {
    for (const MoveRow& row : kMoves) {
        CollectRig rig(9);
        rig.add({row.from});
        row.move(row.value, rig.voice, rig.folder / row.from, row.side);
        EXPECT_EQ(rig.folder.files(), std::set<std::string>{row.to}) << row.from;
        const bool must_tell = row.value != 0 && row.from == std::string(row.to);
        EXPECT_EQ(rig.reports.text.find("none of l, r and s") != std::string::npos, must_tell) << row.from;
    }
}

TEST(MovedFiles, NeverReplaceAnotherFile) {
    CollectRig rig(9);
    rig.add({"l/a.jpg", "lo/a.jpg", "r/b.jpg"});
    test::write_text(rig.folder / "ro", "a file where the folder should be");
    rename_orphan(1, rig.voice, rig.folder / "l/a.jpg", FileSide::left);
    EXPECT_EQ(test::read_text(rig.folder / "lo/a.jpg"), "lo/a.jpg");
    EXPECT_EQ(test::read_text(rig.folder / "l/a.jpg"), "l/a.jpg");
    EXPECT_NE(rig.reports.text.find("File exists"), std::string::npos) << rig.reports.text;
    rename_orphan(1, rig.voice, rig.folder / "r/b.jpg", FileSide::right);
    EXPECT_NE(rig.reports.text.find("Not a directory"), std::string::npos) << rig.reports.text;
    EXPECT_EQ(rig.folder.files().count("r/b.jpg"), 1U);
}

TEST(MovedFiles, OfAPairMoveTogetherOrStay) {
    struct Row {
        int refused;             ///< Of `RenameRefused`; 0 for a pair that the user gave up.
        const char* in_the_way;  ///< A name that is taken.
        std::set<std::string> after;
    };
    for (const Row& row :
         {Row{1, "", {"lu/a.jpg", "ru/a.jpg"}}, Row{1, "ru/a.jpg", {"l/a.jpg", "r/a.jpg"}},
          Row{1, "lu/a.jpg", {"l/a.jpg", "r/a.jpg"}}, Row{1, "ru", {"l/a.jpg", "r/a.jpg"}},
          Row{2, "r/a_ru.jpg", {"l/a.jpg", "r/a.jpg"}}, Row{0, "", {"l/lq/a.jpg", "r/rq/a.jpg"}},
          Row{0, "r/rq/a.jpg", {"l/a.jpg", "r/a.jpg"}}}) {
        CollectRig rig(9);
        rig.add({"l/a.jpg", "r/a.jpg"});
        std::set<std::string> expected = row.after;
        if (*row.in_the_way != '\0') {
            rig.add({row.in_the_way});
            expected.insert(row.in_the_way);
        }
        const std::vector<SidedFile> pair{{rig.folder / "l/a.jpg", FileSide::left},
                                          {rig.folder / "r/a.jpg", FileSide::right}};
        if (row.refused != 0) {
            rename_refused_files(row.refused, rig.voice, pair);
        } else {
            move_quit_files(rig.voice, pair);
        }
        EXPECT_EQ(rig.folder.files(), expected) << row.refused << ' ' << row.in_the_way;
        EXPECT_EQ(rig.reports.text.find("the other file of the pair cannot move") != std::string::npos,
                  *row.in_the_way != '\0')
            << rig.reports.text;
    }
}

}  // namespace
}  // namespace zemora
