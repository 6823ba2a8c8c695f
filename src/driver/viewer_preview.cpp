#include "driver/viewer_preview.h"

#include <FreeImage.h>

#include "analysis/colormap.h"
#include "driver/failure.h"
#include "numerics/bitmap_file.h"
#include "platform/paths.h"
#include "platform/screen.h"

namespace zemora {

namespace {

/// The viewer shows the shape itself, so that the user can change it.
void clear_shape(WarpState& warp) {
    warp.phantogram = warp.edge_warp = warp.vertical_ax = warp.common_trapez = warp.sym_trapez = 0.0;
    warp.trapez_scale = 1.0;
}

bool warp_preview(Pipeline& pipeline, PairRun& pair, const PreviewSize& frame) {
    WarpState& warp = pipeline.warp;
    const double scale = pair.scale * frame.scale;
    warp.total_scale = static_cast<float>(scale);
    WarpRequest request = output_request(pipeline, pair);
    request.size_step = 0;
    request.frame_height = frame.height;
    request.frame_width = frame.width;
    request.interpolation = choose_interpolation(warp, static_cast<float>(scale));
    request.correction.height = static_cast<float>(scale * pair.correction.height_px);
    request.correction.shift = static_cast<float>(scale * pair.window.pure_shift_px);
    pair.selection.mode = 0;
    const Result<void> done = warp_still(warp, request, pair.selection);
    if (!done) {
        conclude_failure(pipeline.voice, done.failure());
    }
    return done.has_value();
}

std::string save_view(Pipeline& pipeline, const Bitmap& view, const char* name) {
    const WarpState& warp = pipeline.warp;
    const std::string path = join_path(pipeline.parameters.path_of_images, name);
    if (pipeline.inputs.holds(path)) {
        return path + ": " + input_of_run_text(pipeline.voice.messages());
    }
    const Bitmap shown = Bitmap::create(warp.width, warp.height);
    if (!shown) {
        return path + ": " + pipeline.voice.messages().either({"out of memory", "kein Speicher"});
    }
    copy(view.picture(warp.width, warp.height), shown.picture());
    const std::string reason = encode_and_write(shown.handle(), FIF_BMP, BMP_DEFAULT, path);
    return reason.empty() ? reason : path + ": " + reason;
}

}  // namespace

std::optional<ViewerPreview> make_preview(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    WarpState& warp = pipeline.warp;
    ViewerPreview preview;
    const ScreenSize screen = screen_size();
    preview.frame =
        preview_size(pair.working_height, pair.working_width, p.max_viewer_size, screen.height, screen.width);
    clear_shape(warp);
    colormap_identity(pipeline.analysis);
    if (!warp_preview(pipeline, pair, preview.frame)) {
        return std::nullopt;
    }
    if (p.auto_output_contrast != 0) {  // the tone of what the first warp shows
        colormap_adapt(pipeline.analysis, warp.pair(), nullptr, p.auto_output_contrast);
        if (!warp_preview(pipeline, pair, preview.frame)) {
            return std::nullopt;
        }
    }
    preview.shown = {warp.height, warp.width, preview.frame.scale};
    return preview;
}

std::string save_preview(Pipeline& pipeline) {
    std::string reason = save_view(pipeline, pipeline.warp.left, kLeftPreview);
    return reason.empty() ? save_view(pipeline, pipeline.warp.right, kRightPreview) : reason;
}

}  // namespace zemora
