#pragma once
/// How the pictures of a folder are arranged, by what the folder shows; for a call that names a folder alone.

#include "input/collect_options.h"

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
    int stereo_image_input = setting::stereo_image_input::two_files;
    int input_mode = setting::input_mode::consecutive;
    /// Whether names or kinds of the files leave no doubt.
    [[nodiscard]] bool is_certain() const { return sign < LayoutSign::wide_pictures; }
};

/// Looks at the files of `options.path_of_images` that `ImageType` accepts, and at its folders l and r.
[[nodiscard]] FolderLayout find_folder_layout(const CollectOptions& options);

}  // namespace zemora
