#include "driver/measuring.h"

#include <utility>

#include "driver/failure.h"

namespace zemora {

AnalyseProgress progress_of(const Pipeline& pipeline, std::string step) {
    return
        [&voice = pipeline.voice, text = std::move(step)](double percent) { voice.progress(text, percent); };
}

AnalyseStatus run_phase(Pipeline& pipeline, const StereoPicture& pictures, const PhaseRequest& request,
                        const AnalyseProgress& progress) {
    const AnalyseStatus status = analyse_phase(pipeline.analysis, pictures, request, progress);
    if (status == AnalyseStatus::no_memory) {
        conclude_failure(pipeline.voice, no_memory_for_correlation(pipeline.analysis));
    }
    return status;
}

Result<WarpedViews> PipelineWarp::warp(const Correction& correction, bool reduced) {
    WarpState& warp = pipeline_.warp;
    const InputViews& input = pipeline_.input;
    WarpRequest request;
    double scale = 1.0;
    if (reduced) {
        request.source = input.reduced();
        request.frame_height = input.reduced_height();
        request.frame_width = input.reduced_width();
        scale = static_cast<double>(input.reduced_height()) / input.height();
        warp.total_scale = 1.0F;
    } else {
        request.source = input.full();
        request.frame_height = warp.scaled_height;
        request.frame_width = warp.scaled_width;
        scale = static_cast<double>(warp.scaled_height) / input.height();
        warp.total_scale = static_cast<float>(scale);
        // The reduced copies have the pre-correction in them, the full-size views not.
        const ViewOrders& orders = pair_.orders;
        warp.pre_settings = orders.has_pre_selection ? 1 : 0;
        warp.pre_rotation_left = orders.pre_selection.rotation_left;
        warp.pre_rotation_right = orders.pre_selection.rotation_right;
        warp.pre_vergence_v = orders.pre_selection.vergence_v;
    }
    const Correction& c = correction;
    request.correction = {static_cast<float>(c.height_px * scale), static_cast<float>(c.size),
                          static_cast<float>(c.rotation_rad),      static_cast<float>(c.vergence_v_rad),
                          static_cast<float>(c.vergence_h_rad),    static_cast<float>(c.shift_px * scale)};
    request.crop = 0;
    if (const Result<void> done = warp_still(warp, request, pair_.selection); !done) {
        return done.failure();
    }
    pair_.scale = scale;
    pair_.working_height = warp.height;
    pair_.working_width = warp.width;
    pair_.common_area =
        find_common_area(warp.pair(), {0, warp.width - 1, 0, warp.height - 1}, warp.passe_colour);
    return WarpedViews{warp.pair(), scale};
}

}  // namespace zemora
