#include "input/image_list.h"

#include <limits>

#include "input/depth_gaps.h"
#include "input/no_files.h"
#include "input/object_listing.h"
#include "input/pairing.h"

namespace zemora {

namespace {

/// Depth masks that are there for some photos only are made for the others first.
Result<void> fill_mask_gaps(const CollectOptions& options, Notes& notes,
                            const MakeDepthMasks& make_depth_masks, SelectedFiles& files) {
    if (options.input_mode != setting::input_mode::video_folders ||
        options.stereo_image_input != setting::stereo_image_input::photo_and_depth_files ||
        files.left.empty() || files.left.size() == files.right.size()) {
        return {};
    }
    const Result<DepthGapPlan> plan = plan_depth_gaps(files.left, files.right, notes);
    if (!plan) {
        return plan.failure();
    }
    if (!make_depth_masks) {
        return Failure::of_run({});
    }
    if (auto made = make_depth_masks(*plan, files.left, files.right); !made) {
        return made;
    }
    files = select_files(options, notes);
    if (files.left.size() != files.right.size()) {
        notes.print(notes.messages().either(
            {"Error: The interpolation of depth masks has not led to as many files at "
             "the left as at the right!\n",
             "Fehler: Die Tiefenmaskeninterpolation hat nicht zu gleich viel Dateien "
             "links und rechts gefuehrt!\n"}));
        notes.wait(Severity::error);
    }
    return {};
}

/// Fails where no object can come of the files, or too many.
Result<void> check_expectation(const CollectOptions& options, const MessageCatalogue& messages,
                               const SelectedFiles& files) {
    const long long objects = expected_objects(options, files);
    const int objects_a_pair = options.interlaced_mode == setting::interlaced_mode::progressive ? 1 : 2;
    if (objects == 0) {
        return no_suited_files(options, messages);
    }
    if (objects > std::numeric_limits<int>::max() / objects_a_pair) {
        return too_many_pairs(objects, messages);
    }
    return {};
}

/// Gives the characters of the longest left name.
Result<int> collect_files(const CollectOptions& options, Notes& notes, const MakeDepthMasks& make_depth_masks,
                          ImageList& list) {
    SelectedFiles files = select_files(options, notes);
    if (const auto filled = fill_mask_gaps(options, notes, make_depth_masks, files); !filled) {
        return filled.failure();
    }
    if (const auto checked = check_expectation(options, notes.messages(), files); !checked) {
        return checked.failure();
    }
    ListedNames names(options, notes);
    int left_name_width = 0;
    if (list.two_files) {
        left_name_width = form_pairs(options, notes, files, list, names);
    } else {
        take_stereo_files(options, notes, files, list, names);
    }
    if (const auto stored = names.store(); !stored) {
        return stored.failure();
    }
    return left_name_width;
}

Result<int> collect_listed(const CollectOptions& options, Notes& notes, ImageList& list) {
    const Result<ListedObjects> listed = read_listed_objects(options, notes, list);
    if (!listed) {
        return listed.failure();
    }
    if (listed->named == 0) {
        return no_suited_files(options, notes.messages());
    }
    return listed->left_name_width;
}

}  // namespace

Result<ImageList> build_image_list(const CollectOptions& options, Notes& notes,
                                   const MakeDepthMasks& make_depth_masks) {
    ImageList list;
    list.two_files = takes_two_files(options.stereo_image_input);
    const Result<int> left_name_width = options.input_mode == setting::input_mode::from_list
                                            ? collect_listed(options, notes, list)
                                            : collect_files(options, notes, make_depth_masks, list);
    if (!left_name_width) {
        return left_name_width.failure();
    }
    tell_objects(options, notes, list, *left_name_width);
    tell_object_count(notes, list);
    return list;
}

}  // namespace zemora
