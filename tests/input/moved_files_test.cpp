#include "input/moved_files.h"

#include <gtest/gtest.h>

#include "tests/input/collect_rig.h"

namespace zemora {
namespace {

using test::CollectRig;

struct MoveRow {
    void (*move)(const ParameterSet&, const Voice&, const std::string&, FileSide);
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
    {rename_refused_file, 1, FileSide::left,   "x/l/a.jpg",    "x/lu/a.jpg"},
    {rename_refused_file, 1, FileSide::stereo, "S/a.jpg",      "su/a.jpg"},
    {rename_refused_file, 1, FileSide::left,   "r/a.jpg",      "ru/a.jpg"},
    {rename_refused_file, 1, FileSide::right,  "other/a.jpg",  "other/a.jpg"},
    {rename_refused_file, 2, FileSide::right,  "other/a.jpg",  "other/a_ru.jpg"},
    {rename_refused_file, 0, FileSide::right,  "r/a.jpg",      "r/a.jpg"},
    {move_quit_file,      0, FileSide::left,   "l/a.jpg",      "l/lq/a.jpg"},
    {move_quit_file,      0, FileSide::stereo, "a.jpg",        "sq/a.jpg"},
};
// clang-format on

TEST(MovedFiles, GoWhereTheirKindBelongs) {
    for (const MoveRow& row : kMoves) {
        CollectRig rig(9);
        rig.parameters.rename_orphans = row.value;
        rig.parameters.rename_refused = row.value;
        rig.add({row.from});
        row.move(rig.parameters, rig.voice, rig.folder / row.from, row.side);
        EXPECT_EQ(rig.folder.files(), std::set<std::string>{row.to}) << row.from;
        const bool must_tell = row.value != 0 && row.from == std::string(row.to);
        EXPECT_EQ(rig.reports.text.find("none of l, r and s") != std::string::npos, must_tell) << row.from;
    }
}

TEST(MovedFiles, NeverReplaceAnotherFile) {
    CollectRig rig(9);
    rig.parameters.rename_orphans = 1;
    rig.add({"l/a.jpg", "lo/a.jpg", "r/b.jpg"});
    test::write_text(rig.folder / "ro", "a file where the folder should be");
    rename_orphan(rig.parameters, rig.voice, rig.folder / "l/a.jpg", FileSide::left);
    EXPECT_EQ(test::read_text(rig.folder / "lo/a.jpg"), "lo/a.jpg");
    EXPECT_EQ(test::read_text(rig.folder / "l/a.jpg"), "l/a.jpg");
    EXPECT_NE(rig.reports.text.find("File exists"), std::string::npos) << rig.reports.text;
    rename_orphan(rig.parameters, rig.voice, rig.folder / "r/b.jpg", FileSide::right);
    EXPECT_NE(rig.reports.text.find("Not a directory"), std::string::npos) << rig.reports.text;
    EXPECT_EQ(rig.folder.files().count("r/b.jpg"), 1U);
}

}  // namespace
}  // namespace zemora
