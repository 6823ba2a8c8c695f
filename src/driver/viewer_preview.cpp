#include "driver/viewer_preview.h"

#include "analysis/colormap.h"
#include "codec/encode.h"
#include "driver/failure.h"
#include "driver/warp_output.h"
#include "platform/paths.h"
#include "platform/screen.h"
#include "render/crop.h"

namespace zemora {

namespace {

/// The viewer shows the shape itself, so that the user can change it.
bool warp_preview(Pipeline& pipeline, PairRun& pair, const PreviewSize& frame) {
    const double scale = pair.located.scale * frame.scale;
    pair.located.selection.mode = 0;
    WarpPlan plan =
        output_plan(pair.located, wish_of(pipeline, pair), pipeline.settings.render, pipeline.bench.analysis);
    plan.shape = {};
    plan.crop.is_sized = false;
    plan.frame = {frame.width, frame.height};
    plan.scale = static_cast<float>(scale);
    plan.interpolation = interpolation_for(pipeline.settings.render.interpolation_mode, plan.scale);
    plan.correction = pair.located.geometry.correction;
    plan.correction.height_px = scale * pair.located.geometry.correction.height_px;
    plan.correction.shift_px = scale * pair.located.geometry.window.pure_shift_input_px;
    const ColourChange* colours = pipeline.settings.colours ? &*pipeline.settings.colours : nullptr;
    if (const Result<void> done =
            warp_pair(pair.input.full(), plan, colours, pipeline.bench.warped, pair.notes);
        !done) {
        conclude_failure(pair.notes, done.failure());
        return false;
    }
    select_kept(pipeline.bench.warped, pair.located.selection);
    return true;
}

std::string save_view(Pipeline& pipeline, const Bitmap& view, const char* name) {
    const WarpedPair& warp = pipeline.bench.warped;
    const std::string path = join_path(pipeline.parameters.path_of_images, name);
    if (pipeline.inputs.holds(path)) {
        return path + ": " + input_of_run_text(pipeline.voice.messages());
    }
    const Bitmap shown = Bitmap::create(warp.width, warp.height);
    if (!shown) {
        return path + ": " + pipeline.voice.messages().either({"out of memory", "kein Speicher"});
    }
    copy(view.picture(warp.width, warp.height), shown.picture());
    const std::string reason = encode_and_write(shown, {PictureFormat::bmp}, path);
    return reason.empty() ? reason : path + ": " + reason;
}

}  // namespace

std::optional<ViewerPreview> make_preview(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const WarpedPair& warp = pipeline.bench.warped;
    ViewerPreview preview;
    const ScreenSize screen = screen_size();
    preview.frame = preview_size(pair.located.working.height, pair.located.working.width, p.max_viewer_size,
                                 screen.height, screen.width);
    colormap_identity(pipeline.bench.analysis);
    if (!warp_preview(pipeline, pair, preview.frame)) {
        return std::nullopt;
    }
    if (p.auto_output_contrast != 0) {  // the tone of what the first warp shows
        colormap_adapt(pipeline.bench.analysis, warp.pair(), nullptr, p.auto_output_contrast);
        if (!warp_preview(pipeline, pair, preview.frame)) {
            return std::nullopt;
        }
    }
    preview.shown = {warp.height, warp.width, preview.frame.scale};
    return preview;
}

std::string save_preview(Pipeline& pipeline) {
    std::string reason = save_view(pipeline, pipeline.bench.warped.left, kLeftPreview);
    return reason.empty() ? save_view(pipeline, pipeline.bench.warped.right, kRightPreview) : reason;
}

}  // namespace zemora
