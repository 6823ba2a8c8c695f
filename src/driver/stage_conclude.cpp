// The end of a pair: report, stored record, list, progress files.

#include "driver/measuring.h"
#include "driver/outside_steps.h"
#include "driver/pipeline.h"
#include "driver/settings_report.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kMoveAwayExit = 99;  // of a viewer: the user never wants to see the pair again

ImageReport report_of(const Pipeline& pipeline, const PairRun& pair) {
    ImageReport report;
    const PreSelection& preset = pair.orders.pre_selection;
    report.mode = pair.mode;
    report.is_analysed = pair.mode != 0 || pipeline.parameters.stereo_image_input >=
                                               setting::stereo_image_input::photo_and_depth_files;
    report.status = pair.status;
    report.width = pair.output_width;
    report.height = pair.output_height;
    report.pre_rotation_left = preset.rotation_left;
    report.pre_rotation_right = preset.rotation_right;
    report.pre_vergence_v = preset.vergence_v;
    report.correction = pair.geometry.correction.rounded_to_float();
    report.remaining = pair.geometry.remaining.rounded_to_float();
    report.heights = pair.heights;
    report.looks_exchanged = pair.looks_exchanged;
    report.doubt = doubt_text(pair.doubts, pipeline.voice.messages());
    report.original_near_px = pair.original_near_px;
    report.original_far_px = pair.original_far_px;
    report.near_px = pair.result.near_point;
    report.far_px = pair.result.far_point;
    report.left_edge_px = pair.result.left_edge_near;
    report.right_edge_px = pair.result.right_edge_near;
    report.left_curtain_px = pair.curtains.left;
    report.right_curtain_px = pair.curtains.right;
    const auto spent = std::chrono::steady_clock::now() - pair.start;
    report.seconds = round_half_up(std::chrono::duration<double>(spent).count());
    return report;
}

}  // namespace

void conclude_pair(Pipeline& pipeline, PairRun& pair) {
    if (!pair.failure_told) {
        if (pair.status != StatusCode::abandoned) {
            write_image_report(report_options(pipeline.parameters), report_of(pipeline, pair),
                               pipeline.voice);
        }
        // Exiftool was at work beside the stores and the report; what says that the pair is done waits for
        // it.
        pair.store_failed = !pipeline.exiftool.settle_transfers() || pair.store_failed;
        if (pair.status == StatusCode::success && !pair.store_failed) {
            write_stored_record(pipeline, pair);
        }
        if (!is_written(pair.status) && pair.status != StatusCode::abandoned) {
            rename_refused(pipeline, pair);
        } else if (!pair.store_failed) {
            update_list_line(pipeline, pair);
        }
    }
    if (pair.status == StatusCode::abandoned && pair.viewer_exit_code == kMoveAwayExit) {
        move_quit_pair(pipeline, pair);
    }
    write_progress_end(pipeline, pair);
}

}  // namespace zemora
