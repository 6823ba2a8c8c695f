#include <algorithm>

#include "analysis/analysis_dump.h"
#include "analysis/phases.h"
#include "analysis/stereo_analyse.h"
#include "input/passepartout.h"

namespace zemora {

AnalysisState::AnalysisState(const ParameterSet& parameters)
    : estimate_window(parameters.estimate_window),
      far_point_limit(parameters.far_point_limit),
      win_off_reference(parameters.win_off_reference),
      color_left_right(parameters.color_left_right),
      auto_gamma_adjust(parameters.auto_gamma_adjust),
      passepartout(parameters.passepartout),
      estimate_vergence_v(parameters.estimate_vergence_v),
      estimate_vergence_h(parameters.estimate_vergence_h),
      robust(parameters.robust_estimation != 0),
      passe_colour(
          passe_colour_of(parameters.passepartout, {static_cast<std::uint8_t>(parameters.passe_color_blue),
                                                    static_cast<std::uint8_t>(parameters.passe_color_green),
                                                    static_cast<std::uint8_t>(parameters.passe_color_red)})),
      Colormap_l(ToneTables::identity()),
      Colormap_r(ToneTables::identity()) {}

void reset_analysis(AnalysisState& state, bool keep) {
    if (!keep) {
        state.ErrorPixel_x = {};
        state.ErrorPixel_y = {};
    }
    state.CQX = state.CQY = state.CQZ = state.CQM = {};
    state.CQPDF = state.CQVAL = state.CQOK3 = state.CQOK5 = {};
    state.values = {};
    state.disparity = {};
    state.residual_rms = 0.0F;
    state.ambiguous_shift = false;
    state.first_grid_spread = 0.0F;
    state.rejected_share = 0.0F;
    state.corner_coverage = 0;
    state.oversize_shift = 0.0;
    state.previous_width = 0.0F;
}

void shift_predictions(AnalysisState& state, double shift_px) {
    for (auto& row : state.ErrorPixel_x) {
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
    rescale(pair.left, left, state.rescale_scratch, RescaleFilter::bilinear, RescaleFit::stretch);
    rescale(pair.right, right, state.rescale_scratch, RescaleFilter::bilinear, RescaleFit::stretch);
    return {{left, right}, true};
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
    if (state.dump != nullptr && status != AnalyseStatus::no_memory) {
        state.dump->conclude_phase(state, request.phase, request.reduced);
    }
    return status;
}

}  // namespace zemora
