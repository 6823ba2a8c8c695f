#include "analysis/analysis_visitor.h"
#include "analysis/phases.h"
#include "analysis/stereo_analyse.h"

namespace zemora {

AnalysisState::AnalysisState(const AnalysisOptions& wanted)
    : options(wanted), tone_left(ToneTables::identity()), tone_right(ToneTables::identity()) {}

void reset_analysis(AnalysisState& state, bool keep) {
    if (!keep) {
        state.dx = {};
        state.dy = {};
    }
    state.sharpness_x = state.sharpness_y = state.sharpness = state.contrast = {};
    state.ambiguity = state.match_error = state.valid = state.valid_disparity = {};
    state.correction = {};
    state.window_px = 0.0F;
    state.disparity = {};
    state.residual_rms_px = 0.0F;
    state.ambiguous_shift = false;
    state.first_grid_spread_px = 0.0F;
    state.rejected_share = 0.0F;
    state.corner_coverage = 0;
    state.oversize_shift_px = 0.0;
    state.previous_width = 0.0F;
}

void shift_predictions(AnalysisState& state, double shift_px) {
    for (auto& row : state.dx) {
        for (float& dx : row) {
            dx -= static_cast<float>(shift_px);
        }
    }
}

phases::WorkingCopies phases::make_copies(AnalysisState& state, const StereoPicture& pair, PictureSize size) {
    for (Bitmap* bitmap : {&state.working_left, &state.working_right}) {
        if (!*bitmap || bitmap->width() < size.width || bitmap->height() < size.height) {
            *bitmap = Bitmap::create(size.width, size.height);
        }
        if (!*bitmap) {
            return {};
        }
    }
    const Picture left = state.working_left.picture(size.width, size.height);
    const Picture right = state.working_right.picture(size.width, size.height);
    const auto copy_view = [&state](ConstPicture view, Picture copy) {
        return rescale(view, copy, state.rescale_scratch, RescaleFilter::bilinear, RescaleFit::stretch)
                   .width > 0;
    };
    const bool made = copy_view(pair.left, left) && copy_view(pair.right, right);
    return {{left, right}, made};
}

AnalyseStatus analyse_phase(AnalysisState& state, const StereoPicture& pair, const PhaseRequest& request,
                            const AnalyseProgress& progress) {
    AnalyseStatus status = AnalyseStatus::done;
    switch (request.phase) {
        case AnalysePhase::shift: status = phases::measure_shift(state, pair); break;
        case AnalysePhase::first_grid: phases::measure_first_grid(state, pair, progress); break;
        case AnalysePhase::geometry: phases::measure_geometry(state, pair, request, progress); break;
        case AnalysePhase::disparity:
            status = phases::measure_disparity(state, pair, request.centre_px, progress);
            break;
    }
    const bool has_ended = request.phase == AnalysePhase::shift ? status == AnalyseStatus::done
                                                                : status != AnalyseStatus::no_memory;
    if (state.visitor != nullptr && has_ended) {
        state.visitor->visit_phase(state, request.phase, request.reduced);
    }
    return status;
}

}  // namespace zemora
