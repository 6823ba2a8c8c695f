#include "input/image_list.h"

#include <limits>

#include "input/depth_gaps.h"
#include "input/no_files.h"
#include "input/object_listing.h"
#include "input/pairing.h"
#include "platform/process_end.h"

namespace zemora {

namespace {

/// Depth masks that are there for some photos only are made for the others first.
void fill_mask_gaps(const ParameterSet& parameters, Voice& voice, const MakeDepthMasks& make_depth_masks,
                    SelectedFiles& files) {
    if (parameters.input_mode != setting::input_mode::video_folders ||
        parameters.stereo_image_input != setting::stereo_image_input::photo_and_depth_files ||
        files.left.empty() || files.left.size() == files.right.size()) {
        return;
    }
    const DepthGapPlan plan = plan_depth_gaps(files.left, files.right, voice);
    if (!make_depth_masks || !make_depth_masks(plan, files.left, files.right)) {
        voice.wait(Severity::error);
        end_process(kExitFailure);
    }
    files = select_files(parameters, voice);
    if (files.left.size() != files.right.size()) {
        voice.print(voice.messages().either(
            {"Error: The interpolation of depth masks has not led to as many files at "
             "the left as at the right!\n",
             "Fehler: Die Tiefenmaskeninterpolation hat nicht zu gleich viel Dateien "
             "links und rechts gefuehrt!\n"}));
        voice.wait(Severity::error);
    }
}

/// Ends the run where no object can come of the files, or too many.
void check_expectation(const ParameterSet& parameters, Voice& voice, const SelectedFiles& files) {
    const long long objects = expected_objects(parameters, files);
    const int objects_a_pair = parameters.interlaced_mode == 0 ? 1 : 2;
    if (objects == 0) {
        end_without_files(parameters, voice);
    }
    if (objects > std::numeric_limits<int>::max() / objects_a_pair) {
        end_with_too_many_pairs(voice, objects);
    }
}

/// Returns the characters of the longest left name.
int collect_files(const ParameterSet& parameters, Voice& voice, const MakeDepthMasks& make_depth_masks,
                  ImageList& list) {
    SelectedFiles files = select_files(parameters, voice);
    fill_mask_gaps(parameters, voice, make_depth_masks, files);
    check_expectation(parameters, voice, files);
    ListedNames names(parameters, voice);
    int left_name_width = 0;
    if (list.two_files) {
        left_name_width = form_pairs(parameters, voice, files, list, names);
    } else {
        take_stereo_files(parameters, voice, files, list, names);
    }
    names.store();
    return left_name_width;
}

int collect_listed(const ParameterSet& parameters, Voice& voice, ImageList& list) {
    int left_name_width = 0;
    if (read_listed_objects(parameters, voice, list, left_name_width) == 0) {
        end_without_files(parameters, voice);
    }
    return left_name_width;
}

}  // namespace

ImageList build_image_list(const ParameterSet& parameters, Voice& voice,
                           const MakeDepthMasks& make_depth_masks) {
    ImageList list;
    list.two_files = takes_two_files(parameters.stereo_image_input);
    const int left_name_width = parameters.input_mode == setting::input_mode::from_list
                                    ? collect_listed(parameters, voice, list)
                                    : collect_files(parameters, voice, make_depth_masks, list);
    tell_objects(parameters, voice, list, left_name_width);
    tell_object_count(voice, list);
    return list;
}

}  // namespace zemora
