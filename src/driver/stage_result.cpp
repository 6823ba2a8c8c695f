// Disparities of the finished pair: near and far point, edges, deviation.

#include <algorithm>
#include <cmath>

#include "analysis/colormap.h"
#include "analysis/eye_order.h"
#include "driver/measuring.h"
#include "numerics/rounding.h"
#include "report/disparity_matrix.h"

namespace zemora {

namespace {

/// The finished pair has no disparity that could be measured.
bool no_disparity(Pipeline& pipeline, PairRun& pair) {
    pair.result = {};
    pair.deviation = 0.0;
    if (pair.mode == 0) {
        pipeline.voice.wait(Severity::information);
        return true;
    }
    return fail_to_mount(pipeline, pair, StatusCode::failed);
}

void tell_evaluated_area(const Pipeline& pipeline) {
    const AnalysisState& analysis = pipeline.analysis;
    int valid = 0;
    for (const auto& row : analysis.valid_disparity) {
        for (const int cell : row) {
            valid += cell == 1 ? 1 : 0;
        }
    }
    constexpr double kCellsPerPercent = kGridMax * kGridMax / 100.0;
    const int percent = round_half_up(valid / kCellsPerPercent);
    Voice& voice = pipeline.voice;
    if (voice.verbose() > 0) {
        voice.tell_everywhere(voice.messages().text<Msg::stereo_analyse_disparity_area_percent>(percent));
    }
}

void show_matrix(const Pipeline& pipeline) {
    Voice& voice = pipeline.voice;
    const DisparityMatrix matrix = disparity_matrix(pipeline.analysis, voice.messages());
    voice.print_and_report(matrix.text);
    voice.report_html(matrix.html);
}

/// What is left of the vertical errors, and whether near and far look turned round, from the copies and
/// disparities that the measurement just left.
void check_result(const Pipeline& pipeline, PairRun& pair) {
    pair.heights.reset();
    pair.looks_exchanged = false;
    if (pair.geometry.measured && pipeline.parameters.robust_estimation != 0) {
        const WarpedPair& warp = pipeline.warped;
        pair.heights = check_heights(pipeline.analysis, warp.pair(), warp.plan.scale);
        pair.heights->agreement = pair.geometry.agreement;
        pair.looks_exchanged = measure_eye_order(pipeline.analysis, warp.pair()).looks_exchanged();
        pair.rejected_share = pipeline.analysis.rejected_share;
    }
}

/// The middle of the disparities that the iteration has found, pixels of the finished pair, where they reach
/// to the end of a search round 0.
double expected_centre(const Pipeline& pipeline, const PairRun& pair) {
    constexpr double kReach = 0.12;  // of the width; the search ends at 0.148
    const WarpedPair& warp = pipeline.warped;
    if (!pipeline.analysis.options.robust || !pair.geometry.measured) {
        return 0.0;
    }
    const double selection_shift_px =
        pair.selection.window_offset * static_cast<double>(warp.plan.frame.width);
    const auto finished = [&](double value_px) {
        return (value_px + pair.geometry.window.window_shift_px) * warp.plan.scale + selection_shift_px;
    };
    const double near_px = finished(pair.geometry.disparities.near_px);
    const double far_px = finished(pair.geometry.disparities.far_px);
    const bool reaches_end = std::max(std::fabs(near_px), std::fabs(far_px)) > kReach * warp.width;
    return reaches_end ? (near_px + far_px) / 2.0 : 0.0;
}

void tell_end_of_search(Voice& voice) {
    voice.tell_everywhere(voice.messages().either(
        {"Near or far point lie at the end of the search for disparities; the real ones may lie beyond it.\n",
         "Nah- oder Fernpunkt liegen am Ende der Disparitaetssuche; die wirklichen koennen dahinter "
         "liegen.\n"}));
}

}  // namespace

bool measure_result(Pipeline& pipeline, PairRun& pair) {
    Voice& voice = pipeline.voice;
    AnalysisState& analysis = pipeline.analysis;
    const WarpedPair& warp = pipeline.warped;
    pair.output_width = warp.width;
    pair.output_height = warp.height;
    if (!pair.geometry.measured &&
        !pair.has_stored) {  // the shift that the keys gave; a record keeps its near point
        pair.original_near_px = pair.geometry.window.window_shift_px;
    }
    const std::string step =
        voice.messages().either({"Zemora::analyse:  phase 4: EstimateDeviation           ",
                                 "Zemora::Analyse:    Phase 4: EstimateDeviation           "});
    const ToneTables left_tone = analysis.tone_left;
    const ToneTables right_tone = analysis.tone_right;
    colormap_adapt(analysis, warp.pair(), nullptr, kColormapForDisparity);
    PhaseRequest request{AnalysePhase::disparity, 1, false, false};
    request.centre_px = expected_centre(pipeline, pair);
    const AnalyseStatus status = run_phase(pipeline, warp.pair(), request, progress_of(pipeline, step));
    if (status == AnalyseStatus::done) {
        check_result(pipeline, pair);
    }
    analysis.tone_left = left_tone;
    analysis.tone_right = right_tone;
    if (status != AnalyseStatus::done) {
        return no_disparity(pipeline, pair);
    }
    pair.result = analysis.disparity;
    pair.deviation = static_cast<double>(pair.result.far_point - pair.result.near_point) / warp.width;
    const double selection_shift_px =
        pair.selection.window_offset * static_cast<double>(warp.plan.frame.width);
    const auto original = [&](double value_px) {
        return (value_px - selection_shift_px) / warp.plan.scale + pair.geometry.window.pure_shift_px;
    };
    if (pair.geometry.measured) {
        pair.original_near_px = original(pair.result.near_point);
    }
    pair.original_far_px = original(pair.result.far_point);
    tell_evaluated_area(pipeline);
    if (analysis.options.robust && analysis.disparity_end_reached) {
        tell_end_of_search(voice);
    }
    if (voice.verbose() > 1) {
        show_matrix(pipeline);
    }
    return true;
}

void settle_trust(PairRun& pair) {
    pair.doubts.clear();
    if (!pair.heights) {
        return;
    }
    const HeightVerdict heights = judge_heights(*pair.heights, pair.deviation).verdict;
    pair.doubts =
        doubts_of({pair.geometry.correction, pair.rejected_share, heights, pair.geometry.agreement});
    if (!pair.doubts.empty()) {
        pair.status = std::min(pair.status, StatusCode::usable);
    }
}

}  // namespace zemora
