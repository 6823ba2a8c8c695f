// Views from a photo and its depth mask, which take the places of the two.

#include "depth/colour_depth.h"
#include "driver/outside_steps.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr int kFirstDepthLayout = 5;  // of `StereoImageInput`
constexpr int kColourDepth = 9;       // of `ExtraOutput`

/// The mask in colours, beside each input file.
void store_colour_depth(Pipeline& pipeline, PairRun& pair, const std::string& input) {
    const Voice& voice = pipeline.voice;
    const std::string path = colour_depth_name(input);
    const StereoPicture views = pipeline.input.full();
    const std::string reason =
        pipeline.inputs.holds(path) ? input_of_run_text(voice.messages())
                                    : write_colour_depth(views.left, views.right, path);
    if (!reason.empty()) {
        voice.tell_everywhere(printable(path) + voice.messages().text<Msg::main_directory_cannot_be_created>() +
                              "   " + printable(reason) + '\n');
        voice.wait(WaitAbove::information);
        pair.store_failed = true;
    } else if (voice.verbose() > 0) {
        voice.print("   " + printable(path) + '\n');
    }
}

}  // namespace

bool make_depth_views(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    if (p.stereo_image_input < kFirstDepthLayout) {
        return true;
    }
    if (p.extra_output == kColourDepth) {
        const bool two = pipeline.list.two_files;
        store_colour_depth(pipeline, pair, two ? pair.files.left : pair.files.stereo);
        if (two) {
            store_colour_depth(pipeline, pair, pair.files.right);
        }
    }
    const StereoPicture input = pipeline.input.full();
    DepthState& depth = pipeline.depth;
    if (!depth.render_view_from_depth(input.left, input.right, DepthView::right) ||
        !depth.render_view_from_depth(input.left, input.right, DepthView::left)) {
        end_run_without_picture_memory(pipeline.voice.console(), "d71: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE\n");
    }
    const int width = input.left.width;
    const int height = input.left.height;
    pipeline.input.replace_views({depth.view_a.picture(width, height), depth.view_b.picture(width, height)});
    return true;
}

}  // namespace zemora
