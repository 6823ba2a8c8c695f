#include "driver/measuring.h"

#include <utility>

#include "driver/failure.h"

namespace zemora {

AnalyseProgress progress_of(const Pipeline& pipeline, std::string step) {
    return
        [&voice = pipeline.voice, text = std::move(step)](double percent) { voice.progress(text, percent); };
}

AnalyseStatus run_phase(Pipeline& pipeline, const StereoPicture& pictures, const PhaseRequest& request,
                        const AnalyseProgress& progress) {
    const AnalyseStatus status = analyse_phase(pipeline.analysis, pictures, request, progress);
    if (status == AnalyseStatus::no_memory) {
        conclude_failure(pipeline.voice, no_memory_for_correlation(pipeline.analysis));
    }
    return status;
}

bool warp_views(Pipeline& pipeline, const StereoPicture& source, const WarpPlan& plan) {
    const ColourChange* colours = pipeline.colours ? &*pipeline.colours : nullptr;
    const Result<void> done = warp_pair(source, plan, colours, pipeline.warped, pipeline.voice);
    if (!done) {
        conclude_failure(pipeline.voice, done.failure());
    }
    return done.has_value();
}

Result<WarpedViews> PipelineWarp::warp(const Correction& correction, bool reduced) {
    const InputViews& input = pipeline_.input;
    const RenderSettings& render = pipeline_.render;
    WarpPlan plan;
    double scale = 1.0;
    if (reduced) {
        plan.frame = {input.reduced_width(), input.reduced_height()};
        scale = static_cast<double>(input.reduced_height()) / input.height();
    } else {
        plan.frame = pair_.wish.scaled;
        scale = static_cast<double>(plan.frame.height) / input.height();
        plan.scale = static_cast<float>(scale);
        // The reduced copies have the pre-correction in them, the full-size views not.
        pair_.geometry.preset = pair_.orders.has_pre_selection ? pair_.orders.pre_selection : PreSelection();
    }
    plan.correction = correction.scaled(scale);
    plan.preset = pair_.geometry.preset;
    plan.applied_view = render.applied_view;
    plan.background = render.background;
    const ColourChange* colours = pipeline_.colours ? &*pipeline_.colours : nullptr;
    WarpedPair& warped = pipeline_.warped;
    if (Result<void> done =
            warp_pair(reduced ? input.reduced() : input.full(), plan, colours, warped, pipeline_.voice);
        !done) {
        return done.failure();
    }
    pair_.scale = scale;
    pair_.working_height = warped.height;
    pair_.working_width = warped.width;
    pair_.common_area =
        find_common_area(warped.pair(), {0, warped.width - 1, 0, warped.height - 1}, plan.background);
    return WarpedViews{warped.pair(), scale};
}

}  // namespace zemora
