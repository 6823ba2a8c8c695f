#include "driver/measure_output.h"

#include <algorithm>
#include <cmath>

#include "analysis/colormap.h"
#include "analysis/eye_order.h"
#include "numerics/rounding.h"
#include "report/disparity_matrix.h"

namespace zemora {

namespace {

void report_evaluated_area(const AnalysisState& analysis, Notes& notes) {
    int valid = 0;
    for (const auto& row : analysis.valid_disparity) {
        for (const int cell : row) {
            valid += cell == 1 ? 1 : 0;
        }
    }
    constexpr double kCellsPerPercent = kGridMax * kGridMax / 100.0;
    const int percent = round_half_up(valid / kCellsPerPercent);
    if (notes.verbose() > 0) {
        notes.tell_everywhere(notes.messages().text<Msg::stereo_analyse_disparity_area_percent>(percent));
    }
}

void report_matrix(const AnalysisState& analysis, Notes& notes) {
    const DisparityMatrix matrix = disparity_matrix(analysis, notes.messages());
    notes.print_and_report(matrix.text);
    notes.report_html(matrix.html);
}

void report_end_of_search(Notes& notes) {
    notes.tell_everywhere(notes.messages().either(
        {"Near or far point lie at the end of the search for disparities; the real ones may lie beyond it.\n",
         "Nah- oder Fernpunkt liegen am Ende der Disparitaetssuche; die wirklichen koennen dahinter "
         "liegen.\n"}));
}

/// Lengths of the input as lengths of the output, and back.
struct OutputPixels {
    OutputPixels(const LocatedPair& located, const WarpPlan& plan)
        : scale(plan.scale),
          selection_shift_px(located.selection.window_offset * static_cast<double>(plan.frame.width)),
          window(located.geometry.window) {}

    /// Of a disparity against the shift of the correction.
    [[nodiscard]] double in_output_px(double value_input_px) const {
        return (value_input_px + window.window_shift_input_px) * scale + selection_shift_px;
    }
    /// Of a disparity of the uncorrected pair.
    [[nodiscard]] double in_input_px(double value_output_px) const {
        return (value_output_px - selection_shift_px) / scale + window.pure_shift_input_px;
    }

    double scale;
    double selection_shift_px;
    WindowPlacement window;
};

/// The middle of the disparities that the measurement has found, in pixels of the output, where they reach
/// to the end of a search round 0.
double expected_centre(const AnalysisState& analysis, const LocatedPair& located, const WarpedPair& warped) {
    constexpr double kReach = 0.12;  // of the width; the search ends at 0.148
    if (!analysis.options.robust || !located.geometry.measured) {
        return 0.0;
    }
    const OutputPixels pixels(located, warped.plan);
    const double near_px = pixels.in_output_px(located.geometry.disparities.near_px);
    const double far_px = pixels.in_output_px(located.geometry.disparities.far_px);
    const bool reaches_end = std::max(std::fabs(near_px), std::fabs(far_px)) > kReach * warped.width;
    return reaches_end ? (near_px + far_px) / 2.0 : 0.0;
}

/// What is left of the vertical errors, and whether near and far look turned round, from the copies and
/// disparities that the phase has just left.
void check_output(const LocatedPair& located, const AnalysisState& analysis, const WarpedPair& warped,
                  MountedPair& mounted) {
    mounted.heights = check_heights(analysis, warped.pair(), warped.plan.scale);
    mounted.heights->agreement = located.geometry.agreement;
    mounted.looks_exchanged = measure_eye_order(analysis, warped.pair()).looks_exchanged();
}

/// The phase on the output pair, with the tone that suits it.
AnalyseStatus measure_disparity(const LocatedPair& located, const MountSettings& settings, Workbench& bench,
                                MountedPair& mounted, Notes& notes) {
    AnalysisState& analysis = bench.analysis;
    const ToneTables left_tone = analysis.tone_left;
    const ToneTables right_tone = analysis.tone_right;
    colormap_adapt(analysis, bench.warped.pair(), nullptr, kColormapForDisparity);
    PhaseRequest request{AnalysePhase::disparity, 1, false, false};
    request.centre_px = expected_centre(analysis, located, bench.warped);
    const std::string step =
        notes.messages().either({"Zemora::analyse:  phase 4: EstimateDeviation           ",
                                 "Zemora::Analyse:    Phase 4: EstimateDeviation           "});
    const AnalyseStatus status = analyse_phase(analysis, bench.warped.pair(), request,
                                               [&](double percent) { notes.progress(step, percent); });
    if (status == AnalyseStatus::done && located.geometry.measured && settings.is_checked) {
        check_output(located, analysis, bench.warped, mounted);
    }
    analysis.tone_left = left_tone;
    analysis.tone_right = right_tone;
    return status;
}

void take_disparity(const LocatedPair& located, const AnalysisState& analysis, const WarpedPair& warped,
                    MountedPair& mounted) {
    const OutputPixels pixels(located, warped.plan);
    const DisparityStatistics& d = mounted.disparities = analysis.disparity;
    mounted.deviation = static_cast<double>(d.far_point - d.near_point) / warped.width;
    if (located.geometry.measured) {
        mounted.near_input_px = pixels.in_input_px(d.near_point);
    }
    mounted.far_input_px = pixels.in_input_px(d.far_point);
}

}  // namespace

Result<MountedPair> measure_output(const LocatedPair& located, const MountSettings& settings,
                                   Workbench& bench, Notes& notes) {
    const AnalysisState& analysis = bench.analysis;
    MountedPair mounted;
    mounted.size = {bench.warped.width, bench.warped.height};
    mounted.image_ratio = static_cast<double>(bench.warped.width) / bench.warped.height;
    // Of the uncorrected pair: from its record, else what the keys shift it by.
    mounted.near_input_px = located.source == GeometrySource::record
                                ? located.near_input_px
                                : located.geometry.window.window_shift_input_px;
    const AnalyseStatus status = measure_disparity(located, settings, bench, mounted, notes);
    if (status == AnalyseStatus::no_memory) {
        return no_memory_for_correlation(analysis);
    }
    if (status != AnalyseStatus::done) {
        const bool is_needed = located.source != GeometrySource::keys;
        if (!is_needed) {
            notes.wait(Severity::information);
        }
        mounted.status = is_needed ? StatusCode::failed : StatusCode::success;
        return {std::move(mounted)};
    }
    mounted.status = StatusCode::success;
    take_disparity(located, analysis, bench.warped, mounted);
    report_evaluated_area(analysis, notes);
    if (analysis.options.robust && analysis.disparity_end_reached) {
        report_end_of_search(notes);
    }
    if (notes.verbose() > 1) {
        report_matrix(analysis, notes);
    }
    return {std::move(mounted)};
}

}  // namespace zemora
