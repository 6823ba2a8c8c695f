// The output pair: the full-size pair warped once more with kernel, tone and gamma of the output,
// the automatic frame, and the repeats that force the size.

#include <algorithm>
#include <cmath>

#include "analysis/colormap.h"
#include "driver/failure.h"
#include "driver/measuring.h"
#include "driver/viewer_exchange.h"
#include "numerics/rounding.h"
#include "render/crop.h"
#include "render/fit_to_size.h"
#include "render/framing.h"

namespace zemora {

namespace {
Sizing sizing_of(const Pipeline& pipeline, const PairRun& pair) {
    Sizing sizing;
    sizing.correction = pair.geometry.correction;
    sizing.correction.shift_px = pair.geometry.window.pure_shift_px;
    sizing.window_offset = pair.selection.window_offset;
    sizing.interpolation_mode = pipeline.render.interpolation_mode;
    return sizing;
}

/// Near, far and edges of the corrected pair in output pixels, as far as they are known before the
/// output pair itself is measured.
void lift_disparities(PairRun& pair, double scale) {
    DisparityStatistics& result = pair.result;
    const PairDisparities& d = pair.geometry.disparities;
    const auto lifted = [&](double value_px) {
        return static_cast<float>(scale * (value_px + pair.geometry.window.window_shift_px));
    };
    result.near_point = lifted(d.near_px);
    result.far_point = lifted(d.far_px);
    result.left_edge_near = lifted(d.left_edge_px);
    result.right_edge_near = lifted(d.right_edge_px);
    result.top_edge_near = lifted(d.top_edge_px);
    result.bottom_edge_near = lifted(d.bottom_edge_px);
}

/// The far point that the automatic frame looks at, in output pixels.
float far_point_for_frame(Pipeline& pipeline, PairRun& pair) {
    const WarpedPair& warp = pipeline.warped;
    const double scale = warp.plan.scale;
    const double selection_shift_px =
        pair.selection.window_offset * static_cast<double>(warp.plan.frame.width);
    if (pair.geometry.measured) {
        lift_disparities(pair, scale);
        return static_cast<float>(pair.result.far_point + selection_shift_px);
    }
    if (pair.has_stored) {
        const double near_px =
            scale * (pair.original_near_px - pair.geometry.window.pure_shift_px) + selection_shift_px;
        return static_cast<float>(near_px + pair.deviation * warp.width);
    }
    AnalysisState& analysis = pipeline.analysis;
    const ToneTables left_tone = analysis.tone_left;
    const ToneTables right_tone = analysis.tone_right;
    colormap_adapt(analysis, warp.pair(), nullptr, kColormapForDisparity);
    const bool found = run_phase(pipeline, warp.pair(), {AnalysePhase::disparity, 1, false, false}, {}) ==
                       AnalyseStatus::done;
    analysis.tone_left = left_tone;
    analysis.tone_right = right_tone;
    return found ? analysis.disparity.far_point : 0.0F;
}

/// The width that the views have to get for it, which a forced width becomes; 0 when they keep theirs.
int frame_automatically(Pipeline& pipeline, PairRun& pair, CropPlan& crop) {
    const ParameterSet& p = pipeline.parameters;
    if (p.auto_frame_floating != setting::auto_frame_floating::frame &&
        p.auto_frame_floating != setting::auto_frame_floating::frame_narrowed) {
        return 0;
    }
    const WarpedPair& warp = pipeline.warped;
    AutomaticFrameRequest request;
    request.mode = p.auto_frame_floating;
    request.floating_target = p.floating_target;
    request.win_off_reference = p.win_off_reference;
    request.output_width = p.output_width;
    request.far_point_px = far_point_for_frame(pipeline, pair);
    request.width = warp.width;
    request.height = warp.height;
    request.forced_width = crop.is_sized && crop.wish.forces_width() ? crop.wish.width : 0;
    request.reduction = final_reduction(pair.target);
    const AutomaticFrame automatic = automatic_frame(pair.frame, request, pipeline.voice);
    pair.frame = automatic.frame;
    const int width = automatic.narrowed_width;
    if (width > 0 && request.forced_width > 0) {
        crop.wish.width = width;
    }
    if (width > 0 && pair.target.final_rescale == FinalRescale::by_width) {
        pair.target.final_width = std::max(round_half_up(width * request.reduction), 1);
    }
    return width;
}

/// Output tone: of the warped pair before the final warp when the pair was measured, else of its
/// result.
void adapt_tone(Pipeline& pipeline) {
    colormap_adapt(pipeline.analysis, pipeline.warped.pair(), nullptr,
                   pipeline.parameters.auto_output_contrast);
}

void no_convergence(const Pipeline& pipeline, PairRun& pair) {
    Voice& voice = pipeline.voice;
    voice.tell_everywhere(voice.messages().text<Msg::main_no_convergence_with_crop_1>());
    voice.wait(Severity::warning);
    pair.status = StatusCode::usable;
}

/// The first of the final warps.
bool warp_first(Pipeline& pipeline, PairRun& pair, const Sizing& sizing) {
    const MeasuredFrame measured{{pair.working_width, pair.working_height},
                                 pair.common_area,
                                 pair.scale,
                                 pair.geometry.measured ? pair.geometry.correction.shift_px : 0.0};
    WarpPlan plan = output_plan(pipeline, pair);
    plan.frame = measured.frame;
    plan.scale = static_cast<float>(pair.scale);
    const SizeRepeat first = first_size(measured, sizing, plan.crop);
    plan.crop.wish.force = force_inside_target(plan.crop, first);
    const char* step =
        pipeline.voice.messages().either({"Zemora::equalize: phase 4: final correction            ",
                                          "Zemora::Entzerrung: Phase 4: Letzte Korrektur            "});
    pipeline.voice.progress(step, 0.0);
    if (!warp_views(pipeline, pipeline.input.full(), next_plan(plan, sizing, first))) {
        return fail_to_mount(pipeline, pair, StatusCode::failed);
    }
    pipeline.voice.progress(step, 100.0);
    return true;
}

/// Repeats the final warp until the size is the wanted one. `colour_round` asks for one more warp, with the
/// tone of the first result.
bool force_size(Pipeline& pipeline, PairRun& pair, const WarpPlan& plan, const Sizing& sizing,
                bool colour_round) {
    const ColourChange* colours = pipeline.colours ? &*pipeline.colours : nullptr;
    const Result<bool> reached = fit_to_size(pipeline.input.full(), plan, colour_round, sizing, colours,
                                             pipeline.warped, pipeline.voice);
    if (!reached) {
        conclude_failure(pipeline.voice, reached.failure());
        return fail_to_mount(pipeline, pair, StatusCode::failed);
    }
    if (!*reached) {
        no_convergence(pipeline, pair);
    }
    return true;  // the status stays what the iteration made it
}

}  // namespace

WarpPlan output_plan(const Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const RenderSettings& render = pipeline.render;
    WarpPlan plan;
    plan.preset = pair.geometry.preset;
    plan.shape = pair.geometry.shape;
    plan.applied_view = render.applied_view;
    plan.gamma = p.gamma_correction;
    plan.background = render.background;
    plan.tone = {true, pipeline.analysis.tone_left, pipeline.analysis.tone_right,
                 p.color_left_right <= 0 ? p.auto_output_contrast : 0,
                 p.color_left_right >= 0 ? p.auto_output_contrast : 0};
    plan.crop = {false,     render.cropp_output, render.is_shown_first, pair.target.size_flag != 0,
                 pair.wish, pair.selection};
    return plan;
}

bool warp_final(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    // Without measurement, or after a viewer, only the result shows what the picture holds.
    const bool tone_first = pair.geometry.measured && p.post_viewer_active == 0;
    const bool tone_of_result = !tone_first && p.auto_output_contrast != 0;
    if (tone_first) {
        adapt_tone(pipeline);
    } else {
        colormap_identity(pipeline.analysis);
    }
    pair.selection.mode = has_selected_window(pair.selection) ? 1 : 0;
    const Sizing sizing = sizing_of(pipeline, pair);
    // Also without any product to store: the result is measured on this warp.
    if (!warp_first(pipeline, pair, sizing)) {
        return false;
    }
    if (tone_of_result) {
        adapt_tone(pipeline);
    }
    WarpPlan plan = pipeline.warped.plan;
    plan.tone = output_plan(pipeline, pair).tone;
    const int narrowed_width = frame_automatically(pipeline, pair, plan.crop);
    if (!force_size(pipeline, pair, plan, sizing, tone_of_result)) {
        return false;
    }
    select_kept(pipeline.warped, pair.selection);
    if (narrowed_width > 0) {
        narrow_views(pipeline.warped, narrowed_width);  // where no forced width has brought them to it
    }
    return true;
}

}  // namespace zemora
