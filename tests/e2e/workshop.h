#pragma once
/// A place to run the real program in: a folder for pictures, one for its temporary files, and what is
/// needed to look at its results.

#include <string>
#include <vector>

#include "numerics/bitmap.h"
#include "scene.h"
#include "tests/support/test_folder.h"

namespace zemora::test {

/// What a run left behind.
struct Outcome {
    int exit_code = -1;
    std::string text;  ///< Standard output and standard error.
    [[nodiscard]] bool tells(const std::string& part) const { return text.find(part) != std::string::npos; }
};

class Workshop {
public:
    /// Variables of the environment, "NAME=value"; a later one counts.
    std::vector<std::string> environment;
    /// Shell commands in front of the program.
    std::string before;
    /// Shell commands that run the program "$@" itself.
    std::string around = "exec \"$@\"";
    /// The program that runs.
    std::string program = ZEMORA_EXECUTABLE;
    /// The program is killed without warning, and may leave files that nobody takes for pictures.
    bool is_killed = false;
    /// Settings of every run in front of the arguments: nothing waits, nothing needs another program.
    std::vector<std::string> settings{"--StopAtError=0",    "--ReportMode=0",   "--StampFiles=0",
                                      "--MetaTransfer=0",   "--ExifCopyright=", "--WriteDataBase=0",
                                      "--AnaglyphOutput=0", "--HtmlImages=0"};

    /// Runs the program in the folder, for two minutes at most.
    [[nodiscard]] Outcome run(const std::vector<std::string>& arguments) const;

    /// The runs to come have no rights of root. The folder keeps `folder_permissions` for all.
    void become_ordinary_user(unsigned folder_permissions);

    [[nodiscard]] const std::string& folder() const { return folder_.path(); }
    [[nodiscard]] std::string path(const std::string& name) const { return folder_ / name; }
    /// All files below the folder, hidden ones too.
    [[nodiscard]] std::set<std::string> files() const { return folder_.files(); }
    /// The program's folder for temporary files; empty after every run.
    [[nodiscard]] const TestFolder& temporary() const { return temporary_; }

    /// Saves by the suffix of the name; folders of the name are made.
    void save(const std::string& name, ConstPicture picture) const;
    void write(const std::string& name, const std::string& text) const;
    /// The picture of a file as 24 bits; an empty one, and a failed test, when there is none.
    [[nodiscard]] Bitmap load(const std::string& name) const;

private:
    TestFolder folder_;
    TestFolder temporary_;
};

/// Views of a generated scene, rendered once.
struct Views {
    Bitmap left;
    Bitmap right;
    SceneErrors errors;
};

/// 900 by 700, with ordinary errors of every kind.
[[nodiscard]] const Views& misaligned_views();
/// 400 by 300, without errors.
[[nodiscard]] const Views& aligned_views();

/// Saves views as a pair.
void save_pair(const Workshop& workshop, const Views& views, const std::string& left,
               const std::string& right);

/// Median of the vertical distance of matching points of two pictures, pixels, by correlating blocks
/// up to `reach_px` rows apart.
[[nodiscard]] double median_vertical_error(ConstPicture left, ConstPicture right, int reach_px);

/// Greatest difference of a channel of two pictures of one size; 256 when the sizes differ.
[[nodiscard]] int greatest_difference(ConstPicture a, ConstPicture b);
/// Mean difference over all channels, levels; 256 when the sizes differ.
[[nodiscard]] double mean_difference(ConstPicture a, ConstPicture b);

}  // namespace zemora::test
