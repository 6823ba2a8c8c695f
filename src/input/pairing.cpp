#include "input/pairing.h"

#include <algorithm>

#include "input/pair_former.h"
#include "platform/paths.h"

namespace zemora {

namespace {

// Values of `InputMode`.
enum Mode {
    kNamedFiles = 0,
    kMarkedInFolder = 1,
    kMarkedInTree = 2,
    kViewFolders = 3,
    kConsecutive = 4,
    kSliding = 5,
    kSlidingAlternating = 6,
    kFirstWithAll = 7,
    kAllWithAll = 8,
    kViewFoldersInTree = 9,
};

long long expected_in_step(const ParameterSet& parameters, const SelectedFiles& files) {
    const auto left = static_cast<long long>(files.left.size());
    const auto right = static_cast<long long>(files.right.size());
    if (left == 0 || right == 0) {
        return 0;
    }
    if (parameters.input_mode == kViewFolders && left == 1 &&
        lower_case(suffix_of(files.left[0])) != ".avs") {
        return 1;
    }
    // With the control by time a surplus file is an orphan, without it nobody's.
    return parameters.exif_time_tolerance != 0 ? std::max(left, right) : std::min(left, right);
}

void form_marked_pairs(const std::vector<std::string>& files, PairFormer& former) {
    const bool depth_masks =
        former.parameters.stereo_image_input == setting::stereo_image_input::photo_and_depth_files;
    for (const std::string& left : files) {
        former.tell_folder(folder_of(left));
        std::string right = partner_name(left, depth_masks);
        if (right.empty()) {
            former.voice.say<Msg::files_input_name_convention_violated>();
            former.voice.print(printable(left) + '\n');
            former.voice.wait(Severity::information);
        } else {
            former.add(left, std::move(right));
        }
    }
}

}  // namespace

long long expected_objects(const ParameterSet& parameters, const SelectedFiles& files) {
    const auto count = static_cast<long long>(files.left.size());
    if (!takes_two_files(parameters.stereo_image_input)) {
        return count;
    }
    switch (parameters.input_mode) {
        case kNamedFiles: return files.right.empty() ? 0 : count;
        case kViewFolders:
        case kViewFoldersInTree: return expected_in_step(parameters, files);
        case kConsecutive: return count / 2;
        case kSliding:
        case kSlidingAlternating:
        case kFirstWithAll: return std::max(count - 1, 0LL);
        case kAllWithAll: return count_all_pairs(files.left);
        default: return count;
    }
}

int form_pairs(const ParameterSet& parameters, Voice& voice, const SelectedFiles& files, ImageList& list,
               ListedNames& names) {
    PairFormer former(parameters, voice, list, names);
    if (!files.left.empty()) {
        former.start_in(folder_of(files.left[0]));
    }
    switch (parameters.input_mode) {
        case kNamedFiles:
            former.tell_folder(folder_of(files.left[0]));
            former.add(files.left[0], files.right[0]);
            break;
        case kViewFolders:
        case kViewFoldersInTree:
            form_pairs_in_lockstep(files, expected_objects(parameters, files), former);
            break;
        case kConsecutive:
        case kSliding:
        case kSlidingAlternating:
        case kFirstWithAll: form_pairs_of_sequence(files.left, former); break;
        case kAllWithAll: form_all_pairs(files.left, former); break;
        default: form_marked_pairs(files.left, former); break;
    }
    return former.left_name_width();
}

void take_stereo_files(const ParameterSet& parameters, Voice& voice, const SelectedFiles& files,
                       ImageList& list, ListedNames& names) {
    NameFinder finder;
    for (const std::string& file : files.left) {
        const FoundName found = find_and_tell(finder, voice, file);
        const std::string& path = found.is_there() ? found.path : file;
        names.add_stereo(path);
        add_stereo_object(parameters, voice, path, nullptr, list);
    }
}

}  // namespace zemora
