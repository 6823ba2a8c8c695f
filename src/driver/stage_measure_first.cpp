// First measurement on the reduced pair: one shift for the whole picture, then a 3 by 3 grid that
// gives height, shift and size.

#include "analysis/colormap.h"
#include "driver/measuring.h"
#include "driver/second_opinion.h"

namespace zemora {

namespace {

/// Phase 1 found views that lie too far apart.
void tell_oversize_shift(const Pipeline& pipeline) {
    const AnalysisState& analysis = pipeline.analysis;
    pipeline.voice.print(analysis.oversize_is_vertical
                             ? format_text("s645: y-Versatz zu gross = %f\n", analysis.oversize_shift)
                             : format_text("s640: x-Versatz zu gross = %f\n", analysis.oversize_shift));
}

void show_first_shift(const Pipeline& pipeline) {
    const MessageCatalogue& messages = pipeline.voice.messages();
    const AnalysisState& analysis = pipeline.analysis;
    pipeline.voice.print(messages.raw(Msg::main_vertical_error) +
                         format_text("%5.2f", static_cast<double>(analysis.ErrorPixel_y[0][0])) +
                         messages.raw(Msg::main_horizontal_error) +
                         format_text("%5.2f", static_cast<double>(analysis.ErrorPixel_x[0][0])) +
                         messages.raw(Msg::main_unit_pixel_line_end));
    pipeline.voice.console().wait_for_enter();
}

/// Success, or what the pair fails with.
StatusCode measure_shift(Pipeline& pipeline, const PairRun& pair) {
    Voice& voice = pipeline.voice;
    const char* step =
        voice.messages().either({"Zemora::analyse:  phase 1: correlation                  ",
                                 "Zemora::Analyse:    Phase 1: Korrelation                  "});
    voice.progress(step, 0.0);
    const PhaseRequest request{AnalysePhase::shift, 1, false, true};
    if (run_phase(pipeline, pipeline.input.reduced(), request, {}) != AnalyseStatus::done) {
        return StatusCode::first_phase_failed;
    }
    voice.progress(step, 100.0);
    if (pipeline.parameters.progress_output == 1) {
        show_first_shift(pipeline);
    }
    pipeline.analysis_dump.write_head(pair.left_relative, pipeline.list.two_files ? pair.right_relative : "");
    return StatusCode::success;
}

StatusCode measure_grid(Pipeline& pipeline) {
    const std::string step =
        pipeline.voice.messages().either({"Zemora::analyse:  phase 2: correlation                  ",
                                          "Zemora::Analyse:    Phase 2: Korrelation                  "});
    const PhaseRequest request{AnalysePhase::first_grid, 1, false, true};
    const InputViews& input = pipeline.input;
    if (run_phase(pipeline, input.reduced(), request, progress_of(pipeline, step)) != AnalyseStatus::done) {
        return StatusCode::second_phase_failed;
    }
    const EstimateStatus estimate =
        estimate_geometry(pipeline.analysis, input.reduced_height(), input.reduced_width(), kFirstGrid,
                          kFirstGrid, AnalysePhase::first_grid);
    return estimate == EstimateStatus::done ? StatusCode::success : StatusCode::failed;
}

/// Leaves the first correction of the pair: of the first two phases, or of the wide search where these fail.
bool find_start(Pipeline& pipeline, PairRun& pair) {
    StatusCode status = measure_shift(pipeline, pair);
    if (status == StatusCode::success) {
        status = measure_grid(pipeline);
    }
    if (status == StatusCode::success) {
        const double scale = measured_scale(pipeline, pair);
        pair.correction = correction_of(pipeline.analysis.values, scale);
        pair.disparities = disparities_of(pipeline.analysis, scale);
        return true;
    }
    if (ask_for_start(pipeline, pair) == Opinion::new_start) {
        return true;
    }
    if (status == StatusCode::first_phase_failed) {
        tell_oversize_shift(pipeline);
    }
    return fail_to_mount(pipeline, pair, status);
}

}  // namespace

bool measure_first(Pipeline& pipeline, PairRun& pair) {
    Voice& voice = pipeline.voice;
    colormap_adapt(pipeline.analysis, pipeline.input.reduced(), nullptr, kColormapForGeometry);
    pair.reduced = true;
    if (!find_start(pipeline, pair)) {
        return false;
    }
    pair.remaining = {};
    if (pipeline.parameters.iterative_warp == 0) {
        voice.print(
            "\nYou have choosen IterativeWarp = 0. That is an unsupported setting and you\n"
            "should be aware, that the results, which you get, are eventually unsatisfying!\n\n");
        return true;
    }
    if (voice.verbose() > 1) {
        voice.print(correction_line(voice.messages(), voice.messages().raw(Msg::main_result_height),
                                    pair.correction, false));
    }
    const char* step = voice.messages().either({"Zemora::equalize: phase 2: correction                  ",
                                                "Zemora::Entzerrung: Phase 2: Korrektur                   "});
    if (!warp_for_measuring(pipeline, pair, step)) {
        voice.print(voice.messages().either(
            {"c2711: 0: Should not happen any more\n", "c2711: 0: Sollte nicht mehr vorkommen\n"}));
        return fail_to_mount(pipeline, pair, StatusCode::failed);
    }
    return true;
}

}  // namespace zemora
