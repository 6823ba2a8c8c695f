#include "input/folder_layout.h"

#include <algorithm>
#include <array>
#include <vector>

#include "input/file_selection.h"
#include "input/mpo.h"
#include "input/mpo_views.h"
#include "input/picture_file.h"
#include "platform/directory_walk.h"

namespace zemora {

namespace {

namespace layout = setting::stereo_image_input;
namespace mode = setting::input_mode;

constexpr std::array kLayouts{
    FolderLayout{LayoutSign::marked_pairs, layout::two_files, mode::by_names},
    FolderLayout{LayoutSign::view_folders, layout::two_files, mode::view_folders},
    FolderLayout{LayoutSign::stereo_names, layout::side_by_side, mode::consecutive},
    FolderLayout{LayoutSign::multi_pictures, layout::side_by_side, mode::consecutive},
    FolderLayout{LayoutSign::no_pictures, layout::two_files, mode::consecutive},
    FolderLayout{LayoutSign::wide_pictures, layout::side_by_side, mode::consecutive},
    FolderLayout{LayoutSign::single_views, layout::two_files, mode::consecutive},
};

/// Bare names of the pictures of a folder, without what the program makes itself.
std::vector<std::string> pictures_of(const std::vector<std::string>& files, const std::string& image_type) {
    std::vector<std::string> pictures;
    std::copy_if(files.begin(), files.end(), std::back_inserter(pictures), [&](const std::string& name) {
        return has_listed_suffix(image_type, name) && !is_own_picture(name) && !is_left_over(name);
    });
    return pictures;
}

bool has_pictures_of_side(const std::string& folder, const std::vector<std::string>& folders,
                          const char* side, const std::string& image_type) {
    return std::any_of(folders.begin(), folders.end(), [&](const std::string& name) {
        return fold_case(name) == side &&
               !pictures_of(read_folder(path_in(folder, name)).files, image_type).empty();
    });
}

bool has_pair(const std::vector<std::string>& pictures) {
    return std::any_of(pictures.begin(), pictures.end(), [&](const std::string& name) {
        const std::string partner = fold_case(partner_name(name, false));
        return !partner.empty() &&
               std::any_of(pictures.begin(), pictures.end(),
                           [&](const std::string& other) { return fold_case(other) == partner; });
    });
}

bool is_wide(const std::string& path) {
    const LoadedPicture loaded = load_picture(path);
    return loaded.status == LoadStatus::done && loaded.bitmap.width() >= 2 * loaded.bitmap.height();
}

LayoutSign find_sign(const CollectOptions& options) {
    const std::string& folder = options.path_of_images;
    const FolderContents contents = read_folder(folder);
    const std::vector<std::string> pictures = pictures_of(contents.files, options.image_type);
    if (pictures.empty() && has_pictures_of_side(folder, contents.folders, "l", options.image_type) &&
        has_pictures_of_side(folder, contents.folders, "r", options.image_type)) {
        return LayoutSign::view_folders;
    }
    if (pictures.empty()) {  // subfolders may have some
        return options.include_subdirs != setting::include_subdirs::folder_alone ? LayoutSign::single_views
                                                                                 : LayoutSign::no_pictures;
    }
    const auto all = [&](const auto& is_such) {
        return std::all_of(pictures.begin(), pictures.end(), is_such);
    };
    if (all([&folder](const std::string& name) {
            return is_mpo_name(name) || holds_two_views(path_in(folder, name));
        })) {
        return LayoutSign::multi_pictures;
    }
    if (all([](const std::string& name) { return has_marker(name, "_s"); })) {
        return LayoutSign::stereo_names;
    }
    if (all([](const std::string& name) { return has_marker(name, "_l") || has_marker(name, "_r"); }) &&
        has_pair(pictures)) {
        return LayoutSign::marked_pairs;
    }
    return is_wide(path_in(folder, pictures.front())) ? LayoutSign::wide_pictures : LayoutSign::single_views;
}

}  // namespace

FolderLayout find_folder_layout(const CollectOptions& options) {
    return kLayouts[static_cast<std::size_t>(find_sign(options))];
}

}  // namespace zemora
