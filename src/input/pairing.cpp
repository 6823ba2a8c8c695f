#include "input/pairing.h"

#include <algorithm>

#include "input/pair_former.h"
#include "platform/console.h"
#include "platform/paths.h"

namespace zemora {

namespace mode = setting::input_mode;

namespace {

long long expected_in_step(const CollectOptions& options, const SelectedFiles& files) {
    const auto left = static_cast<long long>(files.left.size());
    const auto right = static_cast<long long>(files.right.size());
    if (left == 0 || right == 0) {
        return 0;
    }
    if (options.input_mode == mode::video_folders && left == 1 &&
        lower_case(suffix_of(files.left[0])) != ".avs") {
        return 1;
    }
    // With the control by time a surplus file is an orphan, without it nobody's.
    return options.exif_time_tolerance != 0 ? std::max(left, right) : std::min(left, right);
}

void form_marked_pairs(const std::vector<std::string>& files, PairFormer& former) {
    const bool depth_masks =
        former.options.stereo_image_input == setting::stereo_image_input::photo_and_depth_files;
    for (const std::string& left : files) {
        former.tell_folder(folder_of(left));
        std::string right = partner_name(left, depth_masks);
        if (right.empty()) {
            former.notes.say<Msg::files_input_name_convention_violated>();
            former.notes.print(printable(left) + '\n');
            former.notes.wait(Severity::information);
        } else {
            former.add(left, std::move(right));
        }
    }
}

}  // namespace

long long expected_objects(const CollectOptions& options, const SelectedFiles& files) {
    const auto count = static_cast<long long>(files.left.size());
    if (!takes_two_files(options.stereo_image_input)) {
        return count;
    }
    switch (options.input_mode) {
        case mode::single: return files.right.empty() ? 0 : count;
        case mode::video_folders:
        case mode::view_folders: return expected_in_step(options, files);
        case mode::consecutive: return count / 2;
        case mode::sliding:
        case mode::alternating:
        case mode::first_with_later: return std::max(count - 1, 0LL);
        case mode::all_with_all: return count_all_pairs(files.left);
        default: return count;
    }
}

int form_pairs(const CollectOptions& options, Notes& notes, const SelectedFiles& files, ImageList& list,
               ListedNames& names) {
    PairFormer former(options, notes, list, names);
    if (!files.left.empty()) {
        former.start_in(folder_of(files.left[0]));
    }
    switch (options.input_mode) {
        case mode::single:
            former.tell_folder(folder_of(files.left[0]));
            former.add(files.left[0], files.right[0]);
            break;
        case mode::video_folders:
        case mode::view_folders:
            form_pairs_in_lockstep(files, expected_objects(options, files), former);
            break;
        case mode::consecutive:
        case mode::sliding:
        case mode::alternating:
        case mode::first_with_later: form_pairs_of_sequence(files.left, former); break;
        case mode::all_with_all: form_all_pairs(files.left, former); break;
        default: form_marked_pairs(files.left, former); break;
    }
    return former.left_name_width();
}

void take_stereo_files(const CollectOptions& options, Notes& notes, const SelectedFiles& files,
                       ImageList& list, ListedNames& names) {
    NameFinder finder;
    for (const std::string& file : files.left) {
        const FoundName found = find_and_tell(finder, notes, file);
        const std::string& path = found.is_there() ? found.path : file;
        names.add_stereo(path);
        add_stereo_object(options.interlaced_mode, notes, path, nullptr, list);
    }
}

}  // namespace zemora
