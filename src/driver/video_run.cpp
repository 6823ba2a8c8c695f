#include "driver/video_run.h"

#include <algorithm>

#include "driver/failure.h"
#include "report/pair_report.h"

namespace zemora {

void ToneSums::add(const ToneTables& left, const ToneTables& right) {
    for (std::size_t plane = 0; plane < ToneTables::kPlanes; ++plane) {
        for (std::size_t level = 0; level < ToneTables::kLevels; ++level) {
            left_[plane][level] += left.plane[plane][level];
            right_[plane][level] += right.plane[plane][level];
        }
    }
    ++count_;
}

ToneTables ToneSums::mean(const Sums& sums) const {
    constexpr std::uint64_t kMost = 65535;
    ToneTables tables;
    for (std::size_t plane = 0; plane < ToneTables::kPlanes; ++plane) {
        for (std::size_t level = 0; level < ToneTables::kLevels; ++level) {
            tables.plane[plane][level] = static_cast<std::uint16_t>(
                std::min(sums[plane][level] / static_cast<std::uint64_t>(count_), kMost));
        }
    }
    return tables;
}

std::optional<InputViews> prepared_frame(VideoRun& run, Result<RawViews> raw) {
    Voice& notes = run.notes;
    if (!raw) {
        if (raw.failure().ends_run) {
            end_with(notes, raw.failure());
        }
        conclude_failure(notes, raw.failure());
        report_mount_failure(notes);
        notes.wait(Severity::warning);
        return std::nullopt;
    }
    return value_or_end(notes, run.pipeline.preparer.prepare(*std::move(raw), run.orders, notes));
}

Correction correction_of(const FrameValues& values) {
    return {static_cast<double>(values.height_px),      static_cast<double>(values.window_px),
            static_cast<double>(values.size),           static_cast<double>(values.rotation_rad),
            static_cast<double>(values.vergence_v_rad), static_cast<double>(values.vergence_h_rad)};
}

void run_video(Pipeline& pipeline) {
    VideoRun run(pipeline);
    set_up_video(run);
    analyse_video(run);
    settle_series(run);
    if (stops_behind_analysis(run)) {
        return;
    }
    plan_video(run);
    mount_video(run);
    conclude_video(run);
}

}  // namespace zemora
