#include "input/file_selection.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>

#include "platform/console.h"
#include "platform/directory_walk.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr std::size_t kShortestName = 5;  // characters

/// `IncludeSubdirs` as the way of the input forces it.
int depth_of_walk(const CollectOptions& options) {
    if (options.input_mode == setting::input_mode::by_names) {
        return 0;
    }
    const bool forced = options.input_mode == setting::input_mode::by_names_in_tree &&
                        options.include_subdirs == setting::include_subdirs::folder_alone;
    return forced ? setting::include_subdirs::tree_without_outputs : options.include_subdirs;
}

class Selector {
public:
    Selector(const CollectOptions& options, Notes& notes)
        : options_(options),
          notes_(notes),
          two_files_(takes_two_files(options.stereo_image_input)),
          goes_by_marker_(options.input_mode == setting::input_mode::by_names ||
                          options.input_mode == setting::input_mode::by_names_in_tree),
          depth_(depth_of_walk(options)) {}

    void take_named_files();
    void take_view_folders(const std::string& folder);
    /// Looks for view folders in `folder`, if it may have some, and in those below it.
    void walk_view_folders(const std::string& folder, bool may_have_views);
    void walk(const std::string& folder);
    void tell_unreadable_root();

    SelectedFiles selected;

private:
    /// Tells once of a folder that cannot be read.
    [[nodiscard]] FolderContents read(const std::string& folder);
    /// Whether the folder `name` in `folder` is looked into; reports one that is not and holds pictures.
    [[nodiscard]] bool is_walked(const std::string& folder, const std::string& name) const;
    [[nodiscard]] bool holds_pictures(const std::string& folder) const;
    [[nodiscard]] bool is_passed_over(const std::string& path) const;
    [[nodiscard]] bool is_taken(const std::string& folder, const std::string& name) const;
    [[nodiscard]] std::vector<std::string> files_of_side(const std::string& folder, char letter);

    const CollectOptions& options_;
    Notes& notes_;
    bool two_files_;
    bool goes_by_marker_;
    int depth_;
    std::set<std::string> told_unreadable_;
};

FolderContents Selector::read(const std::string& folder) {
    FolderContents contents = read_folder(folder);
    if (contents.is_readable()) {
        return contents;
    }
    if (told_unreadable_.insert(folder).second) {
        notes_.print(format_text(notes_.messages().either({"The folder %s cannot be read: %s\n",
                                                           "Der Ordner %s kann nicht gelesen werden: %s\n"}),
                                 printable(folder).c_str(), contents.reason.c_str()));
    }
    return {};
}

bool Selector::is_walked(const std::string& folder, const std::string& name) const {
    if (depth_ == 0) {
        return false;
    }
    if (depth_ != setting::include_subdirs::tree_without_outputs ||
        !is_output_folder_name(name, options_.ident_output_dir)) {
        return true;
    }
    const std::string path = path_in(folder, name);
    if (notes_.verbose() > 0 && holds_pictures(path)) {
        notes_.print(format_text(
            notes_.messages().either({"Folder of products by its name, passed over: %s\n",
                                      "Ordner fuer Ergebnisse nach seinem Namen, nicht beachtet: %s\n"}),
            printable(path).c_str()));
    }
    return false;
}

/// In the folder or below it.
bool Selector::holds_pictures(const std::string& folder) const {
    const FolderContents contents = read_folder(folder);
    return std::any_of(contents.files.begin(), contents.files.end(),
                       [this](const std::string& name) {
                           return !is_own_picture(name) && has_listed_suffix(options_.image_type, name);
                       }) ||
           std::any_of(contents.folders.begin(), contents.folders.end(),
                       [&](const std::string& name) { return holds_pictures(path_in(folder, name)); });
}

/// Left-over files, and stereo files whose names say that they are none.
bool Selector::is_passed_over(const std::string& path) const {
    const std::string name = bare_name_of(path);
    if (!is_left_over(name)) {
        return !two_files_ && is_dropped_with_hint(options_, notes_, name);
    }
    if (notes_.verbose() > 0) {
        notes_.say<Msg::files_input_temporary_file_ignored>();
        notes_.print(printable(path) + '\n');
        notes_.wait(Severity::information);
    }
    return true;
}

bool Selector::is_taken(const std::string& folder, const std::string& name) const {
    return !is_own_picture(name) && !is_passed_over(path_in(folder, name)) && name.size() >= kShortestName &&
           has_listed_suffix(options_.image_type, name);
}

void Selector::take_named_files() {
    const auto take = [&](const std::string& name, std::vector<std::string>& files) {
        std::string path = join_path(options_.path_of_images, name);
        if (!name.empty() && !is_passed_over(path)) {
            files.push_back(std::move(path));
        }
    };
    take(two_files_ ? options_.left_file_name : options_.stereo_file_name, selected.left);
    if (two_files_) {
        take(options_.right_file_name, selected.right);
    }
}

void Selector::walk(const std::string& folder) {
    const FolderContents contents = read(folder);
    const char* marker = name_marker(options_.stereo_image_input);
    for (const std::string& name : contents.files) {
        if ((!goes_by_marker_ || has_marker(name, marker)) && is_taken(folder, name)) {
            selected.left.push_back(path_in(folder, name));
        }
    }
    for (const std::string& name : contents.folders) {
        if (is_walked(folder, name)) {
            walk(path_in(folder, name));
        }
    }
}

bool is_view_folder(const std::string& name) {
    return name.size() == 1 && std::string_view("lrsLRS").find(name[0]) != std::string_view::npos;
}

/// The folder of a side is called by its small or, without that, its capital letter.
std::string side_folder(const std::string& folder, char letter) {
    for (const char name : {letter, static_cast<char>(letter - 'a' + 'A')}) {
        std::string path = path_in(folder, std::string(1, name));
        if (is_directory(path)) {
            return path;
        }
    }
    return {};
}

std::vector<std::string> Selector::files_of_side(const std::string& folder, char letter) {
    const std::string side = side_folder(folder, letter);
    std::vector<std::string> files;
    if (side.empty()) {
        return files;
    }
    for (const std::string& name : read(side).files) {
        if (is_taken(side, name)) {
            files.push_back(path_in(side, name));
        }
    }
    return files;
}

void Selector::take_view_folders(const std::string& folder) {
    const auto append = [](std::vector<std::string>& all, std::vector<std::string> files) {
        all.insert(all.end(), std::make_move_iterator(files.begin()), std::make_move_iterator(files.end()));
    };
    if (!two_files_) {
        append(selected.left, files_of_side(folder, 's'));
        return;
    }
    std::vector<std::string> left = files_of_side(folder, 'l');
    std::vector<std::string> right = files_of_side(folder, 'r');
    if (left.empty() != right.empty() && notes_.verbose() > 0) {
        notes_.print(format_text(
            notes_.messages().either({"Images on one side only (l or r), passed over: %s\n",
                                      "Bilder nur auf einer Seite (l oder r), nicht beachtet: %s\n"}),
            printable(folder).c_str()));
    }
    if (!left.empty() && !right.empty()) {
        append(selected.left, std::move(left));
        append(selected.right, std::move(right));
    }
}

void Selector::walk_view_folders(const std::string& folder, bool may_have_views) {
    const FolderContents contents = read(folder);
    if (may_have_views) {
        take_view_folders(folder);
    }
    for (const std::string& name : contents.folders) {
        if (is_walked(folder, name)) {
            const bool is_view_of_root = folder == options_.path_of_images && is_view_folder(name);
            walk_view_folders(path_in(folder, name), !is_view_of_root);
        }
    }
}

void Selector::tell_unreadable_root() {
    (void)read(options_.path_of_images);
}

}  // namespace

SelectedFiles select_files(const CollectOptions& options, Notes& notes) {
    Selector selector(options, notes);
    const std::string& root = options.path_of_images;
    switch (options.input_mode) {
        case setting::input_mode::single: selector.take_named_files(); break;
        case setting::input_mode::video_folders:
            selector.take_view_folders(root);
            if (selector.selected.left.empty()) {
                selector.tell_unreadable_root();
            }
            break;
        case setting::input_mode::view_folders: selector.walk_view_folders(root, true); break;
        default: selector.walk(root); break;
    }
    return std::move(selector.selected);
}

}  // namespace zemora
