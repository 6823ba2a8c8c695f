#pragma once
/// How the pictures of a folder are arranged, by what the folder shows; for a call that names a folder alone.

#include <string>

#include "config/parameter_set.h"

namespace zemora {

/// What the arrangement was seen by.
enum class LayoutSign {
    marked_pairs,    ///< All names end in _l or _r, and pairs are among them.
    view_folders,    ///< No pictures but those of the folders l and r.
    stereo_names,    ///< All names end in _s.
    multi_pictures,  ///< Multi-picture files only.
    no_pictures,     ///< Nothing to be arranged.
    wide_pictures,   ///< The names do not decide; the first picture is at least twice as wide as high.
    single_views,    ///< The names do not decide, and it is not.
};

struct FolderLayout {
    LayoutSign sign = LayoutSign::single_views;
    int stereo_image_input = 2;  ///< 1 both views in one file, 2 two files.
    int input_mode = 4;          ///< 1 pairs by name, 4 consecutive files, 9 folders l and r.
    /// Whether names or kinds of the files leave no doubt.
    [[nodiscard]] bool is_certain() const { return sign < LayoutSign::wide_pictures; }
};

/// Looks at the files of `folder` (absolute) that `ImageType` accepts, and at its folders l and r.
[[nodiscard]] FolderLayout find_folder_layout(const ParameterSet& parameters, const std::string& folder);

}  // namespace zemora
