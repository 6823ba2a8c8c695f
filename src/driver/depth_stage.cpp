#include "driver/depth_stage.h"

#include <algorithm>
#include <utility>

#include "depth/colour_depth.h"
#include "driver/failure.h"
#include "driver/settings_input.h"
#include "input/file_selection.h"
#include "platform/paths.h"

namespace zemora {

namespace {

/// What lies so near to a side of a view that the other view may have nothing for it: no picture in either,
/// so that the common area ends there.
void blank_sides(Picture view, int strip_px, Colour background) {
    const int width = std::min(strip_px, view.width);
    fill(view.part(0, 0, width, view.height), background);
    fill(view.part(view.width - width, 0, width, view.height), background);
}

/// The mask in colours, beside each input file.
void store_colour_depth(Pipeline& pipeline, PairRun& pair, const std::string& input) {
    Notes& notes = pair.notes;
    const std::string path = colour_depth_name(input);
    const StereoPicture views = pair.input.full();
    const std::string reason = pipeline.inputs.holds(path)
                                   ? input_of_run_text(notes.messages())
                                   : write_colour_depth(views.left, views.right, path);
    if (!reason.empty()) {
        notes.tell_everywhere(printable(path) +
                              notes.messages().text<Msg::main_directory_cannot_be_created>() + "   " +
                              printable(reason) + '\n');
        notes.wait(Severity::information);
        pair.store_failed = true;
    } else if (notes.verbose() > 0) {
        notes.print("   " + printable(path) + '\n');
    }
}

}  // namespace

void make_depth_views(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    if (!holds_depth_mask(p.stereo_image_input)) {
        return;
    }
    if (p.extra_output == setting::extra_output::depth_image) {
        const bool two = pipeline.list.two_files;
        store_colour_depth(pipeline, pair, two ? pair.files.left : pair.files.stereo);
        if (two) {
            store_colour_depth(pipeline, pair, pair.files.right);
        }
    }
    const StereoPicture input = pair.input.full();
    DepthState& depth = pipeline.depth;
    for (const DepthView view : {DepthView::right, DepthView::left}) {
        if (const auto made = depth.render_view_from_depth(input.left, input.right, view); !made) {
            conclude_failure(pair.notes, made.failure());
        }
    }
    const int width = input.left.width;
    const int height = input.left.height;
    StereoPicture views{depth.view_a.picture(width, height), depth.view_b.picture(width, height)};
    if (p.cropp_output >= setting::cropp_output::common_area) {
        const int strip_px = largest_shift_px(depth_settings(p), input.right);
        for (const Bitmap* view : {&depth.view_a, &depth.view_b}) {
            blank_sides(view->picture(width, height), strip_px, pipeline.settings.render.background);
        }
    }
    if (pair.inverse_input == 1) {
        std::swap(views.left, views.right);
    }
    pair.input.replace_views(views);
}

}  // namespace zemora
