// The end of a pair: report, stored record, list, progress files.

#include "driver/pair_files.h"
#include "driver/pair_records.h"
#include "driver/pipeline.h"
#include "driver/progress_files.h"
#include "driver/settings_report.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kMoveAwayExit = 99;  // of a viewer: the user never wants to see the pair again

ImageReport report_of(const Pipeline& pipeline, const PairRun& pair) {
    const MountedPair& mounted = pair.mounted;
    const PairGeometry& geometry = pair.located.geometry;
    ImageReport report;
    const PreSelection& preset = pair.orders.pre_selection;
    report.mode = pair.mode;
    report.is_analysed = pair.mode != 0 || pipeline.parameters.stereo_image_input >=
                                               setting::stereo_image_input::photo_and_depth_files;
    report.status = pair.status;
    report.width = mounted.size.width;
    report.height = mounted.size.height;
    report.pre_rotation_left = preset.rotation_left;
    report.pre_rotation_right = preset.rotation_right;
    report.pre_vergence_v = preset.vergence_v;
    report.correction = geometry.correction.rounded_to_float();
    report.remaining = geometry.remaining.rounded_to_float();
    report.heights = mounted.heights;
    report.looks_exchanged = mounted.looks_exchanged;
    report.doubt = doubt_text(mounted.doubts, pair.notes.messages());
    report.original_near_px = mounted.near_input_px;
    report.original_far_px = mounted.far_input_px;
    report.near_px = mounted.disparities.near_point;
    report.far_px = mounted.disparities.far_point;
    report.left_edge_px = mounted.disparities.left_edge_near;
    report.right_edge_px = mounted.disparities.right_edge_near;
    report.left_curtain_px = mounted.finished.curtains.left;
    report.right_curtain_px = mounted.finished.curtains.right;
    report.seconds = round_half_up(std::chrono::duration<double>(pair.clock.spent()).count());
    return report;
}

/// Waits for exiftool; what failed is reported in the order of the products.
void settle_transfers(Pipeline& pipeline, PairRun& pair) {
    (void)pipeline.exiftool.settle(pair.profiles, pair.notes);
    for (TransferLog& transfer : pair.transfers) {
        const bool settled = pipeline.exiftool.settle(transfer, pair.notes);
        pair.store_failed = !settled || pair.store_failed;
    }
}

}  // namespace

void conclude_pair(Pipeline& pipeline, PairRun& pair) {
    if (pair.course == Course::unread) {
        return;
    }
    if (!pair.failure_told) {
        if (pair.status != StatusCode::abandoned) {
            write_image_report(report_options(pipeline.parameters), report_of(pipeline, pair), pair.notes);
        }
        // Exiftool was at work beside the stores and the report; what says that the pair is done waits for
        // it.
        settle_transfers(pipeline, pair);
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
