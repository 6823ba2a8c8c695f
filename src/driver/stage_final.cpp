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
#include "render/framing.h"
#include "render/size_step.h"

namespace zemora {

namespace {

constexpr int kForcedRounds = 6;  // size tests: the final warp and at most five repeats

/// The perspective terms come into force with the final warps.
void load_shape(Pipeline& pipeline) {
    const ParameterSet& p = pipeline.parameters;
    WarpState& warp = pipeline.warp;
    warp.phantogram = p.phantogram;
    warp.edge_warp = p.edge_warp;
    warp.vertical_ax = p.vertical_ax;
    warp.common_trapez = p.common_trapez;
    warp.sym_trapez = p.sym_trapez;
    warp.trapez_scale = p.trapez_scale;
}

/// One final warp at the present scale of the warp state.
bool warp_once(Pipeline& pipeline, PairRun& pair, const SizeRepeat& repeat, const std::string& step) {
    WarpState& warp = pipeline.warp;
    WarpRequest request = output_request(pipeline, pair);
    const double scale = warp.total_scale;
    request.frame_height = warp.frame_height;
    request.frame_width = warp.frame_width;
    request.height_done = repeat.height_done ? 1 : 0;
    request.width_done = repeat.width_done ? 1 : 0;
    request.ratio_height = repeat.ratio_height;
    request.ratio_width = repeat.ratio_width;
    const double selection_shift_px = pair.selection.window_offset * request.frame_width;
    request.correction.height = static_cast<float>(scale * pair.correction.height_px);
    request.correction.shift = static_cast<float>(scale * pair.window.pure_shift_px - selection_shift_px);
    const SizeStep coming =
        size_step({request.frame_height, request.frame_width, request.size_step, request.height_done,
                   request.width_done, request.ratio_height, request.ratio_width},
                  warp.force_size, warp.aspect, warp.last_scale_step);
    request.interpolation = choose_interpolation(warp, static_cast<float>(scale * coming.factor));
    pair.final_interpolation = request.interpolation;
    pipeline.voice.progress(step, 0.0);
    if (const Result<void> done = warp_still(warp, request, pair.selection); !done) {
        conclude_failure(pipeline.voice, done.failure());
        return fail_to_mount(pipeline, pair, StatusCode::failed);
    }
    pipeline.voice.progress(step, 100.0);
    return true;
}

/// Near, far and edges of the corrected pair in output pixels, as far as they are known before the
/// output pair itself is measured.
void lift_disparities(PairRun& pair, double scale) {
    DisparityStatistics& result = pair.result;
    const PairDisparities& d = pair.disparities;
    const auto lifted = [&](double value_px) {
        return static_cast<float>(scale * (value_px + pair.window.window_shift_px));
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
    WarpState& warp = pipeline.warp;
    const double scale = warp.total_scale;
    const double selection_shift_px = pair.selection.window_offset * static_cast<double>(warp.frame_width);
    if (pair.analysed) {
        lift_disparities(pair, scale);
        return static_cast<float>(pair.result.far_point + selection_shift_px);
    }
    if (pair.has_stored) {
        const double near_px =
            scale * (pair.original_near_px - pair.window.pure_shift_px) + selection_shift_px;
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

bool has_forced_width(const WarpState& warp) {
    return warp.latest_size_step != 0 && warp.work_width > 0 &&
           (warp.force_size == kForceWidth || warp.force_size == kForceBothWidthLarger ||
            warp.force_size == kForceBothHeightLarger);
}

/// The width that the views have to get for it; 0 when they keep theirs.
int frame_automatically(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    if (p.auto_frame_floating != setting::auto_frame_floating::frame &&
        p.auto_frame_floating != setting::auto_frame_floating::frame_narrowed) {
        return 0;
    }
    WarpState& warp = pipeline.warp;
    AutomaticFrameRequest request;
    request.mode = p.auto_frame_floating;
    request.floating_target = p.floating_target;
    request.win_off_reference = p.win_off_reference;
    request.output_width = p.output_width;
    request.far_point_px = far_point_for_frame(pipeline, pair);
    request.width = warp.width;
    request.height = warp.height;
    request.forced_width = has_forced_width(warp) ? warp.work_width : 0;
    request.reduction = final_reduction(pair.target);
    const AutomaticFrame automatic = automatic_frame(pair.frame, request, pipeline.voice);
    pair.frame = automatic.frame;
    const int width = automatic.narrowed_width;
    if (width > 0 && request.forced_width > 0) {
        warp.work_width = width;
    }
    if (width > 0 && pair.target.final_rescale == FinalRescale::by_width) {
        pair.target.final_width = std::max(round_half_up(width * request.reduction), 1);
    }
    return width;
}

/// Output tone: of the warped pair before the final warp when the pair was measured, else of its
/// result.
void adapt_tone(Pipeline& pipeline) {
    colormap_adapt(pipeline.analysis, pipeline.warp.pair(), nullptr,
                   pipeline.parameters.auto_output_contrast);
}

void no_convergence(const Pipeline& pipeline, PairRun& pair) {
    Voice& voice = pipeline.voice;
    voice.tell_everywhere(voice.messages().text<Msg::main_no_convergence_with_crop_1>());
    voice.wait(Severity::warning);
    pair.status = StatusCode::usable;
}

/// Repeats the final warp until the size is the wanted one. `colour_round` asks for one more warp,
/// with the tone of the first result.
bool force_size(Pipeline& pipeline, PairRun& pair, bool colour_round) {
    const char* step =
        pipeline.voice.messages().either({"Zemora::equalize: phase 4: force size/color            ",
                                          "Zemora::Entzerrung: Phase 4: Bildgroesse/-farbe erzwingen"});
    for (int round = 0; round < kForcedRounds; ++round) {
        const SizeRepeat repeat = check_forced_size(pipeline.warp, pair.target.size_flag);
        if (!repeat.needed() && !(round == 0 && colour_round)) {
            return true;  // the status stays what the iteration made it
        }
        if (round == kForcedRounds - 1) {
            break;
        }
        if (!warp_once(pipeline, pair, repeat, step)) {
            return false;
        }
    }
    no_convergence(pipeline, pair);
    return true;
}

/// What is left of the frame's width once the window and its shift by the user are in place. The measured
/// area lost the shift of the views, which the final warp takes only in part.
double kept_width(const PairRun& pair) {
    const double selection_shift_px = static_cast<double>(pair.selection.window_offset) * pair.working_width;
    const double warped_shift_px = pair.scale * pair.window.pure_shift_px - selection_shift_px;
    const double measured_shift_px = pair.analysed ? pair.scale * pair.correction.shift_px : 0.0;
    return std::max(pair.common_area.width() + std::fabs(measured_shift_px) - std::fabs(warped_shift_px),
                    1.0);
}

/// Target over present size before the final warp: of the selected window, of the whole frame where nothing
/// is cropped, or of what is kept of it.
SizeRepeat first_size(const Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const SelectionBox& selection = pair.selection;
    double height = std::max(pair.common_area.height(), 1);
    double width = std::max(pair.common_area.width(), 1);
    if (selection.mode != 0) {
        height = (static_cast<double>(selection.top) - selection.bottom) * pair.working_height;
        width = (static_cast<double>(selection.right) - selection.left) * pair.working_width;
    } else if (p.cropp_output < setting::cropp_output::common_area) {
        height = pair.working_height;
        width = pair.working_width;
    } else if (p.post_viewer_active != 0) {
        width = kept_width(pair);
    }
    SizeRepeat first;
    first.height_done = first.width_done = false;
    first.ratio_height = p.work_height / height;
    first.ratio_width = p.work_width / width;
    return first;
}

/// `CroppOutput` 3 with a window: the side that needs the smaller factor is forced, so that all of the window
/// stays inside the target.
void force_side_of_window(WarpState& warp, const PairRun& pair, const SizeRepeat& first) {
    const bool single = warp.force_size == kForceWidth || warp.force_size == kForceHeight;
    if (warp.cropp_output == 3 && pair.selection.mode != 0 && single && warp.work_height > 0 &&
        warp.work_width > 0) {
        warp.force_size = first.ratio_height <= first.ratio_width ? kForceHeight : kForceWidth;
    }
}

}  // namespace

WarpRequest output_request(Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    const Correction& c = pair.correction;
    WarpRequest request;
    request.source = pipeline.input.full();
    request.size_step = pair.target.size_flag;
    request.correction.size = static_cast<float>(c.size);
    request.correction.rotation = static_cast<float>(c.rotation_rad);
    request.correction.vergence_v = static_cast<float>(c.vergence_v_rad);
    request.correction.vergence_h = static_cast<float>(c.vergence_h_rad);
    request.tone_left = &pipeline.analysis.tone_left;
    request.tone_right = &pipeline.analysis.tone_right;
    request.tone_mode_left = p.color_left_right <= 0 ? p.auto_output_contrast : 0;
    request.tone_mode_right = p.color_left_right >= 0 ? p.auto_output_contrast : 0;
    request.use_tone = true;
    request.gamma = p.gamma_correction;
    return request;
}

bool warp_final(Pipeline& pipeline, PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    WarpState& warp = pipeline.warp;
    load_shape(pipeline);
    // Without measurement, or after a viewer, only the result shows what the picture holds.
    const bool tone_first = pair.analysed && p.post_viewer_active == 0;
    const bool tone_of_result = !tone_first && p.auto_output_contrast != 0;
    if (tone_first) {
        adapt_tone(pipeline);
    } else {
        colormap_identity(pipeline.analysis);
    }
    pair.selection.mode = has_selected_window(pair.selection) ? 1 : 0;
    warp.total_scale = static_cast<float>(pair.scale);
    warp.frame_height = pair.working_height;
    warp.frame_width = pair.working_width;
    const SizeRepeat first = first_size(pipeline, pair);
    force_side_of_window(warp, pair, first);
    // Also without any product to store: the result is measured on this warp.
    if (!warp_once(pipeline, pair, first,
                   pipeline.voice.messages().either(
                       {"Zemora::equalize: phase 4: final correction            ",
                        "Zemora::Entzerrung: Phase 4: Letzte Korrektur            "}))) {
        return false;
    }
    if (tone_of_result) {
        adapt_tone(pipeline);
    }
    const int narrowed_width = frame_automatically(pipeline, pair);
    if (!force_size(pipeline, pair, tone_of_result)) {
        return false;
    }
    if (narrowed_width > 0) {
        narrow_views(warp, narrowed_width);  // where no forced width has brought them to it
    }
    return true;
}

}  // namespace zemora
