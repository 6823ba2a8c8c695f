// The iteration: what remains after the correction so far is measured and added, on the reduced
// pair until it settles and then at full size.

#include <cmath>

#include "driver/measuring.h"
#include "driver/second_opinion.h"

namespace zemora {

namespace {

constexpr int kShiftParts = 500;  // a step below the width over this leaves the shift as it is

/// What the loop carries from one round to the next.
struct Iteration {
    int number = 1;
    bool shift_frozen = false;
    int full_rounds = 0;        ///< Rounds at full size.
    double full_step_px = 0.0;  ///< What the latest of them added, mean over the picture, input pixels.
    bool settled = true;        ///< Another round would add next to nothing.
    bool has_best = false;
    Correction best;
    PairDisparities best_disparities;
};

/// Measures the warped pair. Success, or what the pair fails with.
StatusCode measure_round(Pipeline& pipeline, const PairRun& pair, const Iteration& loop) {
    const std::string step = format_text(
        pipeline.voice.messages().either({"Zemora::analyse:  phase 3: iterative correlation no. %2d",
                                          "Zemora::Analyse:    Phase 3: iterative Korrelation Nr. %2d"}),
        loop.number);
    const PhaseRequest request{AnalysePhase::geometry, loop.number, false, pair.reduced, pair.started_wide};
    const WarpedPair& warp = pipeline.warped;
    if (run_phase(pipeline, warp.pair(), request, progress_of(pipeline, step)) != AnalyseStatus::done) {
        return StatusCode::first_phase_failed;
    }
    return estimate_geometry(pipeline.analysis, warp.height, warp.width, kGeometryGrid, kGeometryGrid,
                             AnalysePhase::geometry) == EstimateStatus::done
               ? StatusCode::success
               : StatusCode::failed;
}

/// Adds what was measured to the correction. The disparities are told against the new shift.
void add_round(Pipeline& pipeline, PairRun& pair, Iteration& loop) {
    const double scale = measured_scale(pipeline, pair);
    pair.remaining = correction_of(pipeline.analysis.values, scale);
    pair.disparities = disparities_of(pipeline.analysis, scale);
    pair.residual_rms = pipeline.analysis.residual_rms;
    const int width = pair.reduced ? pipeline.input.reduced_width() : pipeline.input.width();
    if (!loop.shift_frozen &&
        std::fabs(pair.remaining.shift_px) <= static_cast<double>(width) / kShiftParts) {
        loop.shift_frozen = true;
    }
    Correction step = pair.remaining;
    if (loop.shift_frozen) {
        step.shift_px = 0.0;
    }
    pair.correction += step;
    pair.disparities.subtract(step.shift_px);
    if (pipeline.analysis.robust) {
        shift_predictions(pipeline.analysis, step.shift_px * scale);
    }
}

void show_round(const Pipeline& pipeline, const PairRun& pair) {
    Voice& voice = pipeline.voice;
    const MessageCatalogue& messages = voice.messages();
    if (pipeline.parameters.progress_output == 1 && voice.verbose() > 1) {
        voice.print(
            correction_line(messages, messages.raw(Msg::main_estimation_delta_height), pair.remaining, true));
        voice.print(correction_line(messages, messages.raw(Msg::main_estimation_start_height),
                                    pair.correction, true));
    }
    if (voice.verbose() > 1) {
        voice.print(format_text(messages.either({"   Residual error of the model: %5.2f pixels\n",
                                                 "   Restfehler des Modells: %5.2f Pixel\n"}),
                                static_cast<double>(pair.residual_rms)));
    }
}

/// A settled reduced pair gives way to the full-size one, which has not seen the pre-correction yet.
void move_to_full_size(Pipeline& pipeline, PairRun& pair) {
    const InputPair& input = pipeline.input;
    pair.reduced = false;
    pair.preset = input.has_pre_selection ? input.pre_selection : PreSelection();
}

/// With the robust fit the full-size rounds go on until they add next to nothing, or no less than before.
void judge_full_size(const Pipeline& pipeline, const PairRun& pair, Iteration& loop) {
    constexpr double kSmallStep = 0.1;  // pixels
    constexpr double kFalling = 0.7;    // of the step before
    constexpr int kMostRounds = 6;
    if (!pipeline.analysis.robust) {
        return;
    }
    const double step =
        mean_model_error(values_of(pair.remaining, 1.0), pipeline.input.height(), pipeline.input.width());
    ++loop.full_rounds;
    loop.settled = step < kSmallStep || loop.full_rounds >= kMostRounds ||
                   (loop.full_rounds > 1 && step > kFalling * loop.full_step_px);
    loop.full_step_px = step;
}

void judge_round(Pipeline& pipeline, PairRun& pair, Iteration& loop) {
    const StopVerdict verdict =
        judge_iteration(pair.remaining, pipeline.input.height(), pipeline.input.reduced_height());
    pair.status = verdict.status;
    if (verdict.worth_keeping) {
        loop.has_best = true;
        loop.best = pair.correction;
        loop.best_disparities = pair.disparities;
    }
    if (!pair.reduced) {
        judge_full_size(pipeline, pair, loop);
    } else if (pair.status != StatusCode::no_result) {
        pair.status = StatusCode::usable;
        move_to_full_size(pipeline, pair);
    }
}

bool warp_round(Pipeline& pipeline, PairRun& pair, const Iteration& loop) {
    const std::string step = format_text(
        pipeline.voice.messages().either({"Zemora::equalize: phase 3: iterative correction no.  %2d",
                                          "Zemora::Entzerrung: Phase 3: iterative Korrektur Nr.   %2d"}),
        loop.number);
    return warp_for_measuring(pipeline, pair, step) || fail_to_mount(pipeline, pair, StatusCode::failed);
}

/// Whether the loop ends here; takes the best values where the last ones do not count.
bool is_finished(const Pipeline& pipeline, PairRun& pair, const Iteration& loop) {
    const ParameterSet& p = pipeline.parameters;
    if (p.iterative_warp == loop.number && pipeline.voice.verbose() > 0) {
        pipeline.voice.print(
            pipeline.voice.messages().either({" --- LAST TRY!\n", " --- LETZTER VERSUCH!\n"}));
    }
    if (pair.status == StatusCode::success && p.iterative_min <= loop.number && loop.settled) {
        return true;
    }
    if (p.iterative_warp >= loop.number) {
        return false;
    }
    if (pair.status == StatusCode::no_result && loop.has_best) {
        pair.correction = loop.best;
        pair.disparities = loop.best_disparities;
        pair.status = StatusCode::usable;
    }
    return true;
}

}  // namespace

bool iterate_geometry(Pipeline& pipeline, PairRun& pair) {
    pair.analysed = true;
    if (pipeline.parameters.iterative_warp == 0) {
        pair.status = StatusCode::usable;
        pair.disparities.subtract(pair.correction.shift_px);
        move_to_full_size(pipeline, pair);
        const char* step =
            pipeline.voice.messages().either({"Zemora::equalize: phase 3: correction at full size     ",
                                              "Zemora::Entzerrung: Phase 3: Korrektur in voller Groesse "});
        return warp_for_measuring(pipeline, pair, step) || fail_to_mount(pipeline, pair, StatusCode::failed);
    }
    for (Iteration loop;;) {
        const StatusCode measured = measure_round(pipeline, pair, loop);
        Opinion opinion = Opinion::no_correction;
        if (measured == StatusCode::success) {
            add_round(pipeline, pair, loop);
            opinion = ask_after_round(pipeline, pair);
        } else if (loop.number == 1) {
            opinion = ask_for_start(pipeline, pair);
        }
        if (opinion == Opinion::no_correction) {
            return fail_to_mount(pipeline, pair, is_written(measured) ? StatusCode::failed : measured);
        }
        if (opinion == Opinion::start_stays) {
            judge_round(pipeline, pair, loop);
            show_round(pipeline, pair);
        }
        if (!warp_round(pipeline, pair, loop)) {
            return false;
        }
        if (opinion == Opinion::new_start) {
            loop = {};
            continue;
        }
        ++loop.number;
        pair.iteration = loop.number;
        if (is_finished(pipeline, pair, loop)) {
            return true;
        }
    }
}

}  // namespace zemora
