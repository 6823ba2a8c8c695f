#include "analysis/measure_pair.h"

#include <algorithm>
#include <cmath>

#include "analysis/colormap.h"
#include "analysis/iteration_verdict.h"
#include "analysis/second_opinion.h"

namespace zemora {

namespace {

constexpr int kShiftParts = 500;  // a step below the width over this leaves the shift as it is

std::string measure_text(double value) {
    return format_text("%5.2f", value);
}

PairDisparities disparities_of(const AnalysisState& analysis, double scale) {
    const DisparityStatistics& d = analysis.disparity;
    PairDisparities disparities{analysis.window_px, d.near_point,    d.far_point,       d.left_edge_near,
                                d.right_edge_near,  d.top_edge_near, d.bottom_edge_near};
    disparities.scale_and_add(1.0 / scale, 0.0);
    return disparities;
}

/// What the loop carries from one round to the next.
struct Iteration {
    int number = 1;
    bool shift_frozen = false;
    int full_rounds = 0;        ///< Rounds at full size.
    double full_step_px = 0.0;  ///< What the latest of them added, mean over the picture, input pixels.
    bool settled = true;        ///< Another round would add next to nothing.
    bool follows = false;       ///< A frame that goes on from the one before.
    bool has_best = false;
    Correction best;
    PairDisparities best_disparities;
};

/// One measurement of one pair.
class PairMeasurement {
public:
    PairMeasurement(const MeasuredViews& views, const MeasureSettings& settings, MeasureTools tools,
                    Notes& notes)
        : views_(views),
          settings_(settings),
          analysis_(tools.analysis),
          warp_(tools.warp),
          notes_(notes),
          reduced_scale_(static_cast<double>(views.reduced.left.height) / views.full.left.height),
          opinion_(tools.analysis, views.reduced, reduced_scale_, notes) {
        geometry_.preset = {};
    }

    [[nodiscard]] Result<PairGeometry> run();

private:
    /// Success, or the status that the pair fails with.
    using Status = Result<StatusCode>;

    [[nodiscard]] Result<AnalyseStatus> run_phase(const StereoPicture& pair, const PhaseRequest& request,
                                                  const AnalyseProgress& progress);
    [[nodiscard]] AnalyseProgress progress_of(std::string step);
    [[nodiscard]] Status measure_shift();
    [[nodiscard]] Status measure_grid();
    [[nodiscard]] Status find_start();
    [[nodiscard]] Status measure_first();
    [[nodiscard]] Status measure_round(const Iteration& loop);
    [[nodiscard]] Status run_round(Iteration& loop);
    [[nodiscard]] Status iterate(Iteration loop);
    [[nodiscard]] Status measure_afresh();
    [[nodiscard]] Status follow(const FrameMemory& before);
    [[nodiscard]] Status warp_after(const Iteration& loop);
    [[nodiscard]] Status measure_unrepeated();
    [[nodiscard]] Status warp(const std::string& step);
    void take_values(double scale);
    void add_round(Iteration& loop);
    void judge_full_size(Iteration& loop);
    void judge_round(Iteration& loop);
    [[nodiscard]] bool is_finished(const Iteration& loop);
    void tell_oversize_shift();
    void show_first_shift();
    void show_round();

    MeasuredViews views_;
    MeasureSettings settings_;
    AnalysisState& analysis_;
    MeasuringWarp& warp_;
    Notes& notes_;
    double reduced_scale_;
    SecondOpinion opinion_;
    PairGeometry geometry_;
    bool reduced_ = true;  ///< The rounds work on the reduced pair.
    WarpedViews warped_;
};

Result<AnalyseStatus> PairMeasurement::run_phase(const StereoPicture& pair, const PhaseRequest& request,
                                                 const AnalyseProgress& progress) {
    const AnalyseStatus status = analyse_phase(analysis_, pair, request, progress);
    if (status == AnalyseStatus::no_memory) {
        return no_memory_for_correlation(analysis_);
    }
    return status;
}

AnalyseProgress PairMeasurement::progress_of(std::string step) {
    return [this, text = std::move(step)](double percent) { notes_.progress(text, percent); };
}

/// Corrects the pair at work by what is known so far.
PairMeasurement::Status PairMeasurement::warp(const std::string& step) {
    notes_.progress(step, 0.0);
    const Result<WarpedViews> warped = warp_.warp(geometry_.correction, reduced_);
    if (!warped) {
        if (warped.failure().ends_run) {
            return warped.failure();
        }
        notes_.add(warped.failure().note);
        return StatusCode::failed;
    }
    notes_.progress(step, 100.0);
    warped_ = *warped;
    return StatusCode::success;
}

/// What the analysis found, in input pixels, for a pair of `scale` pixels per input pixel.
void PairMeasurement::take_values(double scale) {
    geometry_.remaining = analysis_.correction.scaled_down(scale);
    geometry_.disparities = disparities_of(analysis_, scale);
}

// ---- The first measurement: one shift for the whole picture, then a 3 by 3 grid. ----

/// Phase 1 found views that lie too far apart.
void PairMeasurement::tell_oversize_shift() {
    notes_.print(analysis_.oversize_is_vertical
                     ? format_text("s645: y-Versatz zu gross = %f\n", analysis_.oversize_shift_px)
                     : format_text("s640: x-Versatz zu gross = %f\n", analysis_.oversize_shift_px));
}

void PairMeasurement::show_first_shift() {
    const MessageCatalogue& messages = notes_.messages();
    notes_.print(messages.raw(Msg::main_vertical_error) +
                 format_text("%5.2f", static_cast<double>(analysis_.dy[0][0])) +
                 messages.raw(Msg::main_horizontal_error) +
                 format_text("%5.2f", static_cast<double>(analysis_.dx[0][0])) +
                 messages.raw(Msg::main_unit_pixel_line_end));
    notes_.wait(Severity::must_be_seen);
}

PairMeasurement::Status PairMeasurement::measure_shift() {
    const char* step =
        notes_.messages().either({"Zemora::analyse:  phase 1: correlation                  ",
                                  "Zemora::Analyse:    Phase 1: Korrelation                  "});
    notes_.progress(step, 0.0);
    const auto status = run_phase(views_.reduced, {AnalysePhase::shift, 1, false, true}, {});
    if (!status) {
        return status.failure();
    }
    if (*status != AnalyseStatus::done) {
        return StatusCode::first_phase_failed;
    }
    notes_.progress(step, 100.0);
    if (settings_.shows_steps) {
        show_first_shift();
    }
    return StatusCode::success;
}

PairMeasurement::Status PairMeasurement::measure_grid() {
    const char* step =
        notes_.messages().either({"Zemora::analyse:  phase 2: correlation                  ",
                                  "Zemora::Analyse:    Phase 2: Korrelation                  "});
    const auto status =
        run_phase(views_.reduced, {AnalysePhase::first_grid, 1, false, true}, progress_of(step));
    if (!status) {
        return status.failure();
    }
    if (*status != AnalyseStatus::done) {
        return StatusCode::second_phase_failed;
    }
    const ConstPicture& view = views_.reduced.left;
    const EstimateStatus estimate = estimate_geometry(analysis_, view.height, view.width, kFirstGrid,
                                                      kFirstGrid, AnalysePhase::first_grid);
    return estimate == EstimateStatus::done ? StatusCode::success : StatusCode::failed;
}

/// Leaves the first correction of the pair: of the first two phases, or of the wide search where these fail.
PairMeasurement::Status PairMeasurement::find_start() {
    Status status = measure_shift();
    if (status && *status == StatusCode::success) {
        status = measure_grid();
    }
    if (!status) {
        return status;
    }
    if (*status == StatusCode::success) {
        take_values(reduced_scale_);
        geometry_.correction = geometry_.remaining;
        return status;
    }
    if (opinion_.ask_for_start(geometry_) == Opinion::new_start) {
        return StatusCode::success;
    }
    if (*status == StatusCode::first_phase_failed) {
        tell_oversize_shift();
    }
    return status;
}

PairMeasurement::Status PairMeasurement::measure_first() {
    colormap_adapt(analysis_, views_.reduced, nullptr, kColormapForGeometry);
    const Status start = find_start();
    if (!start || *start != StatusCode::success) {
        return start;
    }
    geometry_.remaining = {};
    if (settings_.most_rounds == 0) {
        notes_.print(
            "\nYou have choosen IterativeWarp = 0. That is an unsupported setting and you\n"
            "should be aware, that the results, which you get, are eventually unsatisfying!\n\n");
        return start;
    }
    const MessageCatalogue& messages = notes_.messages();
    if (notes_.verbose() > 1) {
        notes_.print(
            correction_line(messages, messages.raw(Msg::main_result_height), geometry_.correction, false));
    }
    const Status warped =
        warp(messages.either({"Zemora::equalize: phase 2: correction                  ",
                              "Zemora::Entzerrung: Phase 2: Korrektur                   "}));
    if (warped && *warped != StatusCode::success) {
        notes_.print(messages.either(
            {"c2711: 0: Should not happen any more\n", "c2711: 0: Sollte nicht mehr vorkommen\n"}));
    }
    return warped;
}

// ---- The rounds: what remains after the correction so far is measured and added. ----

PairMeasurement::Status PairMeasurement::measure_round(const Iteration& loop) {
    const std::string step =
        format_text(notes_.messages().either({"Zemora::analyse:  phase 3: iterative correlation no. %2d",
                                              "Zemora::Analyse:    Phase 3: iterative Korrelation Nr. %2d"}),
                    loop.number);
    const PhaseRequest request{AnalysePhase::geometry, loop.number, loop.follows, reduced_,
                               geometry_.started_wide || loop.follows};
    const auto status = run_phase(warped_.pair, request, progress_of(step));
    if (!status) {
        return status.failure();
    }
    if (*status != AnalyseStatus::done) {
        return StatusCode::first_phase_failed;
    }
    const ConstPicture& view = warped_.pair.left;
    return estimate_geometry(analysis_, view.height, view.width, kGeometryGrid, kGeometryGrid,
                             AnalysePhase::geometry) == EstimateStatus::done
               ? StatusCode::success
               : StatusCode::failed;
}

/// Adds what was measured to the correction. The disparities count against the new shift.
void PairMeasurement::add_round(Iteration& loop) {
    const double scale =
        static_cast<double>(reduced_ ? views_.reduced.left.height : warped_.pair.left.height) /
        views_.full.left.height;
    take_values(scale);
    geometry_.residual_rms_px = analysis_.residual_rms_px;
    const int width = reduced_ ? views_.reduced.left.width : views_.full.left.width;
    if (!loop.shift_frozen &&
        std::fabs(geometry_.remaining.shift_px) <= static_cast<double>(width) / kShiftParts) {
        loop.shift_frozen = true;
    }
    Correction step = geometry_.remaining;
    if (loop.shift_frozen) {
        step.shift_px = 0.0;
    }
    geometry_.correction += step;
    geometry_.disparities.subtract(step.shift_px);
    if (analysis_.options.robust) {
        shift_predictions(analysis_, step.shift_px * scale);
    }
}

void PairMeasurement::show_round() {
    const MessageCatalogue& messages = notes_.messages();
    if (notes_.verbose() <= 1) {
        return;
    }
    if (settings_.shows_steps) {
        notes_.print(correction_line(messages, messages.raw(Msg::main_estimation_delta_height),
                                     geometry_.remaining, true));
        notes_.print(correction_line(messages, messages.raw(Msg::main_estimation_start_height),
                                     geometry_.correction, true));
    }
    notes_.print(format_text(messages.either({"   Residual error of the model: %5.2f pixels\n",
                                              "   Restfehler des Modells: %5.2f Pixel\n"}),
                             geometry_.residual_rms_px));
}

/// With the robust fit the full-size rounds go on until they add next to nothing, or no less than before. A
/// frame that follows another starts near its end, and what one round adds there needs no other to hold.
void PairMeasurement::judge_full_size(Iteration& loop) {
    constexpr double kSmallStep = 0.1;            // pixels
    constexpr double kSmallStepOfFollower = 1.0;  // pixels
    constexpr double kFalling = 0.7;              // of the step before
    constexpr int kMostRounds = 6;
    if (!analysis_.options.robust) {
        return;
    }
    const double step = mean_model_error(geometry_.remaining.rounded_to_float(), views_.full.left.height,
                                         views_.full.left.width);
    ++loop.full_rounds;
    loop.settled = step < (loop.follows ? kSmallStepOfFollower : kSmallStep) ||
                   loop.full_rounds >= kMostRounds ||
                   (loop.full_rounds > 1 && step > kFalling * loop.full_step_px);
    loop.full_step_px = step;
}

/// A settled reduced pair gives way to the full-size one.
void PairMeasurement::judge_round(Iteration& loop) {
    const StopVerdict verdict =
        judge_iteration(geometry_.remaining, views_.full.left.height, views_.reduced.left.height);
    geometry_.status = verdict.status;
    if (verdict.worth_keeping) {
        loop.has_best = true;
        loop.best = geometry_.correction;
        loop.best_disparities = geometry_.disparities;
    }
    if (!reduced_) {
        judge_full_size(loop);
    } else if (geometry_.status != StatusCode::no_result) {
        geometry_.status = StatusCode::usable;
        reduced_ = false;
    }
}

/// Whether the loop ends here; takes the best values where the last ones do not count.
bool PairMeasurement::is_finished(const Iteration& loop) {
    if (settings_.most_rounds == loop.number && !loop.follows && notes_.verbose() > 0) {
        notes_.print(notes_.messages().either({" --- LAST TRY!\n", " --- LETZTER VERSUCH!\n"}));
    }
    if (geometry_.status == StatusCode::success && settings_.least_rounds <= loop.number && loop.settled) {
        return true;
    }
    if (settings_.most_rounds >= loop.number) {
        return false;
    }
    if (geometry_.status == StatusCode::no_result && loop.has_best) {
        geometry_.correction = loop.best;
        geometry_.disparities = loop.best_disparities;
        geometry_.status = StatusCode::usable;
    }
    return true;
}

PairMeasurement::Status PairMeasurement::warp_after(const Iteration& loop) {
    return warp(
        format_text(notes_.messages().either({"Zemora::equalize: phase 3: iterative correction no.  %2d",
                                              "Zemora::Entzerrung: Phase 3: iterative Korrektur Nr.   %2d"}),
                    loop.number));
}

/// Measures, judges and warps once.
PairMeasurement::Status PairMeasurement::run_round(Iteration& loop) {
    const Status measured = measure_round(loop);
    if (!measured) {
        return measured;
    }
    Opinion opinion = Opinion::no_correction;
    if (*measured == StatusCode::success) {
        add_round(loop);
        opinion = loop.follows ? Opinion::start_stays : opinion_.ask_after_round(geometry_, reduced_);
    } else if (loop.number == 1 && !loop.follows) {
        opinion = opinion_.ask_for_start(geometry_);
    }
    if (opinion == Opinion::no_correction) {
        return is_written(*measured) ? StatusCode::failed : *measured;
    }
    if (opinion == Opinion::start_stays) {
        judge_round(loop);
        show_round();
    } else {
        reduced_ = true;
    }
    // A frame that has settled is warped anew when the film is mounted.
    const bool is_done = loop.follows && geometry_.status == StatusCode::success && loop.settled;
    const Status warped = is_done ? StatusCode::success : warp_after(loop);
    if (warped && *warped == StatusCode::success) {
        if (opinion == Opinion::new_start) {
            loop = {};
            loop.number = 0;
        }
        ++loop.number;
    }
    return warped;
}

PairMeasurement::Status PairMeasurement::iterate(Iteration loop) {
    for (;;) {
        const Status status = run_round(loop);
        if (!status || *status != StatusCode::success) {
            return status;
        }
        if (loop.number == 1) {
            continue;  // from a new start
        }
        geometry_.rounds = loop.number;
        if (is_finished(loop)) {
            return status;
        }
    }
}

/// `IterativeWarp` 0: the first measurement is the result.
PairMeasurement::Status PairMeasurement::measure_unrepeated() {
    geometry_.status = StatusCode::usable;
    geometry_.disparities.subtract(geometry_.correction.shift_px);
    reduced_ = false;
    return warp(notes_.messages().either({"Zemora::equalize: phase 3: correction at full size     ",
                                          "Zemora::Entzerrung: Phase 3: Korrektur in voller Groesse "}));
}

PairMeasurement::Status PairMeasurement::measure_afresh() {
    const Status status = measure_first();
    if (!status || *status != StatusCode::success) {
        return status;
    }
    geometry_.measured = true;
    return settings_.most_rounds == 0 ? measure_unrepeated() : iterate({});
}

/// The frame is warped with the correction of the one before, and what is left is added.
PairMeasurement::Status PairMeasurement::follow(const FrameMemory& before) {
    constexpr int kLeastRounds = 2;  // counted behind the first one
    constexpr int kMostRounds = 4;
    colormap_adapt(analysis_, views_.reduced, nullptr, kColormapForGeometry);
    recall_frame(before, analysis_);
    geometry_.correction = before.geometry.correction;
    geometry_.agreement = before.geometry.agreement;
    geometry_.measured = true;
    reduced_ = false;
    const MeasureSettings wanted = settings_;
    settings_.least_rounds = std::min(kLeastRounds, wanted.least_rounds);
    settings_.most_rounds = std::min(kMostRounds, wanted.most_rounds);
    Iteration loop;
    loop.follows = true;
    Status status = warp_after(loop);
    if (status && *status == StatusCode::success) {
        status = iterate(loop);
    }
    settings_ = wanted;
    return status;
}

Result<PairGeometry> PairMeasurement::run() {
    Status status = StatusCode::failed;
    if (views_.before != nullptr && settings_.most_rounds > 0) {
        status = follow(*views_.before);
    }
    if (status && (*status != StatusCode::success || !is_written(geometry_.status))) {
        if (views_.before != nullptr) {
            reset_analysis(analysis_, false);
            geometry_ = {};
            reduced_ = true;
        }
        status = measure_afresh();
    }
    if (!status) {
        return status.failure();
    }
    if (*status != StatusCode::success) {
        geometry_.status = *status;
    }
    return geometry_;
}

}  // namespace

Result<PairGeometry> measure_pair(const MeasuredViews& views, const MeasureSettings& settings,
                                  MeasureTools tools, Notes& notes) {
    return PairMeasurement(views, settings, tools, notes).run();
}

Failure no_memory_for_correlation(const AnalysisState& analysis) {
    return Failure::out_of_memory(format_text("%d: FAILED TO ALLOCATE MEMORY FOR CORRELATION IMAGE\n",
                                              static_cast<int>(analysis.memory_failure)));
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
