#include "driver/measuring.h"

#include <utility>

#include "driver/failure.h"

namespace zemora {

namespace {

std::string measure_text(double value) {
    return format_text("%5.2f", value);
}

}  // namespace

double measured_scale(const Pipeline& pipeline, const PairRun& pair) {
    const int measured = pair.reduced ? pipeline.input.reduced_height() : pair.working_height;
    return static_cast<double>(measured) / pipeline.input.height();
}

AnalyseProgress progress_of(const Pipeline& pipeline, std::string step) {
    return
        [&voice = pipeline.voice, text = std::move(step)](double percent) { voice.progress(text, percent); };
}

AnalyseStatus run_phase(Pipeline& pipeline, const StereoPicture& pictures, const PhaseRequest& request,
                        const AnalyseProgress& progress) {
    const AnalyseStatus status = analyse_phase(pipeline.analysis, pictures, request, progress);
    if (status == AnalyseStatus::no_memory) {
        end_run_without_picture_memory(pipeline.voice.console(),
                                       format_text("%d: FAILED TO ALLOCATE MEMORY FOR CORRELATION IMAGE\n",
                                                   static_cast<int>(pipeline.analysis.memory_failure)));
    }
    return status;
}

Correction correction_of(const CorrectionValues& values, double scale) {
    return {values.height / scale, values.shift / scale, values.size,
            values.rotation,       values.vergence_v,    values.vergence_h};
}

CorrectionValues values_of(const Correction& c, double scale) {
    return {static_cast<float>(c.height_px * scale),
            static_cast<float>(c.shift_px * scale),
            static_cast<float>(c.size),
            static_cast<float>(c.rotation_rad),
            static_cast<float>(c.vergence_v_rad),
            static_cast<float>(c.vergence_h_rad),
            0.0F};
}

PairDisparities disparities_of(const AnalysisState& analysis, double scale) {
    const DisparityStatistics& d = analysis.disparity;
    PairDisparities disparities{analysis.values.window, d.near_point,    d.far_point,       d.left_edge_near,
                                d.right_edge_near,      d.top_edge_near, d.bottom_edge_near};
    disparities.scale_and_add(1.0 / scale, 0.0);
    return disparities;
}

bool warp_views(Pipeline& pipeline, const StereoPicture& source, const WarpPlan& plan) {
    const ColourChange* colours = pipeline.colours ? &*pipeline.colours : nullptr;
    const Result<void> done = warp_pair(source, plan, colours, pipeline.warped, pipeline.voice);
    if (!done) {
        conclude_failure(pipeline.voice, done.failure());
    }
    return done.has_value();
}

bool warp_for_measuring(Pipeline& pipeline, PairRun& pair, const std::string& step) {
    const InputPair& input = pipeline.input;
    WarpPlan plan;
    double scale = 1.0;
    if (pair.reduced) {
        plan.frame = {input.reduced_width(), input.reduced_height()};
        scale = measured_scale(pipeline, pair);
    } else {
        plan.frame = pair.wish.scaled;
        scale = static_cast<double>(plan.frame.height) / input.height();
        plan.scale = static_cast<float>(scale);
    }
    plan.correction = pair.correction.scaled(scale);
    plan.preset = pair.preset;
    plan.applied_view = pipeline.render.applied_view;
    plan.background = pipeline.render.background;
    pipeline.voice.progress(step, 0.0);
    if (!warp_views(pipeline, pair.reduced ? input.reduced() : input.full(), plan)) {
        return false;
    }
    pipeline.voice.progress(step, 100.0);
    const WarpedPair& warped = pipeline.warped;
    pair.scale = scale;
    pair.working_height = warped.height;
    pair.working_width = warped.width;
    pair.common_area =
        find_common_area(warped.pair(), {0, warped.width - 1, 0, warped.height - 1}, plan.background);
    return true;
}

std::string correction_line(const MessageCatalogue& messages, const char* label, const Correction& c,
                            bool with_shift) {
    std::string line = label + measure_text(c.height_px);
    if (with_shift) {
        line += messages.raw(Msg::main_estimation_shift) + measure_text(c.shift_px);
    }
    line += messages.raw(Msg::main_label_size) + measure_text(100.0 * c.size);
    line += messages.raw(Msg::main_label_rotation) + measure_text(c.rotation_rad / kRadiansPerDegree);
    line += messages.raw(Msg::main_label_vergence_v) + measure_text(c.vergence_v_rad / kRadiansPerDegree);
    line += messages.raw(Msg::main_label_vergence_h) + measure_text(c.vergence_h_rad / kRadiansPerDegree);
    return line + '\n';
}

}  // namespace zemora
