// Disparities of the finished pair: near and far point, edges, deviation.

#include "analysis/colormap.h"
#include "driver/measuring.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

/// The finished pair has no disparity that could be measured.
bool no_disparity(Pipeline& pipeline, PairRun& pair) {
    pair.result = {};
    pair.deviation = 0.0;
    if (pair.mode == 0) {
        pipeline.voice.wait(WaitAbove::information);
        return true;
    }
    return fail_to_mount(pipeline, pair, StatusCode::failed);
}

void tell_evaluated_area(const Pipeline& pipeline) {
    const AnalysisState& analysis = pipeline.analysis;
    int valid = 0;
    for (const auto& row : analysis.CQOK5) {
        for (const int cell : row) {
            valid += cell == 1 ? 1 : 0;
        }
    }
    constexpr double kCellsPerPercent = kGridMax * kGridMax / 100.0;
    const int percent = round_half_up(valid / kCellsPerPercent);
    const Voice& voice = pipeline.voice;
    if (voice.verbose() > 0) {
        const std::string text = voice.messages().text<Msg::stereo_analyse_disparity_area_percent>(percent);
        voice.print_and_report(text);
        voice.report_html("<p>" + html_text(text) + "</p>\n");
    }
}

/// The grid of disparities in per mille of the width, the top row first.
void show_matrix(const Pipeline& pipeline) {
    const AnalysisState& analysis = pipeline.analysis;
    const Voice& voice = pipeline.voice;
    const double width = pipeline.warp.width;
    const char* title = voice.messages().either("Disparity Matrix of final image [per mille]:",
                                                "Disparitaetsmatrix des Ergebnisbilds [Promille]:");
    const auto per_mille = [&](double disparity_px) { return round_half_up(disparity_px * 1000.0 / width); };
    const int near_point = per_mille(analysis.disparity.near_point);
    const int far_point = per_mille(analysis.disparity.far_point);
    std::string text = "\n" + std::string(title) + "\n" + std::string(44, '-') + "\n\nSegment";
    for (int column = 0; column < kGridMax; ++column) {
        text += format_text("%3d  ", column);
    }
    text += '\n' + std::string(85, '-') + '\n';
    std::string html = text.substr(1);
    for (int row = kGridMax - 1; row >= 0; --row) {
        std::string line = format_text("%3d |", kGridMax - 1 - row);
        text += line;
        html += line;
        for (int column = 0; column < kGridMax; ++column) {
            const auto i = static_cast<std::size_t>(row);
            const auto j = static_cast<std::size_t>(column);
            // The cells are measured on a copy; their values are those of the copy.
            const int value = round_half_up(analysis.ErrorPixel_x[i][j] * 1000.0 / analysis.disparity_width);
            const bool valid = analysis.CQOK5[i][j] == 1;
            const std::string cell = valid ? format_text(" %4d", value) : "    x";
            text += cell;
            html += valid && (value == near_point || value == far_point)
                        ? " <span class=\"red\">" + cell.substr(1) + "</span>"
                        : cell;
        }
        text += '\n';
        html += '\n';
    }
    voice.print_and_report(text + '\n');
    voice.report_html("<p><b>" + html_text(title) + "</b></p>\n<pre>\n" + html + "</pre>\n");
}

}  // namespace

bool measure_result(Pipeline& pipeline, PairRun& pair) {
    const Voice& voice = pipeline.voice;
    AnalysisState& analysis = pipeline.analysis;
    const WarpState& warp = pipeline.warp;
    pair.output_width = warp.width;
    pair.output_height = warp.height;
    const std::string step =
        voice.messages().either("Zemora::analyse:  phase 4: EstimateDeviation           ",
                                "Zemora::Analyse:    Phase 4: EstimateDeviation           ");
    const ToneTables left_tone = analysis.Colormap_l;
    const ToneTables right_tone = analysis.Colormap_r;
    colormap_adapt(analysis, warp.pair(), nullptr, kColormapForDisparity);
    const AnalyseStatus status = run_phase(pipeline, warp.pair(), {AnalysePhase::disparity, 1, false, false},
                                           progress_of(pipeline, step));
    analysis.Colormap_l = left_tone;
    analysis.Colormap_r = right_tone;
    if (status != AnalyseStatus::done) {
        return no_disparity(pipeline, pair);
    }
    pair.result = analysis.disparity;
    pair.deviation = static_cast<double>(pair.result.far_point - pair.result.near_point) / warp.width;
    const double selection_shift_px = pair.selection.window_offset * static_cast<double>(warp.frame_width);
    const auto original = [&](double value_px) {
        return (value_px - selection_shift_px) / warp.total_scale + pair.window.pure_shift_px;
    };
    if (!pair.has_stored) {  // a record keeps its near point
        pair.original_near_px = original(pair.result.near_point);
    }
    pair.original_far_px = original(pair.result.far_point);
    tell_evaluated_area(pipeline);
    if (voice.verbose() > 1) {
        show_matrix(pipeline);
    }
    return true;
}

}  // namespace zemora
