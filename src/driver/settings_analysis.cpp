#include "driver/settings_analysis.h"

#include "driver/settings_input.h"

namespace zemora {

AnalysisOptions analysis_options(const ParameterSet& p) {
    AnalysisOptions options;
    options.estimate_window = p.estimate_window;
    options.far_point_limit = p.far_point_limit;
    options.win_off_reference = p.win_off_reference;
    options.color_left_right = p.color_left_right;
    options.auto_gamma_adjust = p.auto_gamma_adjust;
    options.has_passepartout = p.passepartout != setting::passepartout::none;
    options.estimate_vergence_v = p.estimate_vergence_v;
    options.estimate_vergence_h = p.estimate_vergence_h;
    options.robust = p.robust_estimation != 0;
    options.passe_colour = prepare_options_of(p).frame.colour;
    return options;
}

AnalysisDumpOptions dump_options(const ParameterSet& p, const std::string& working_folder,
                                 const std::string& program_folder) {
    return {p.gnu_error_output, p.image_segment_output, p.matrix_output,
            working_folder,     p.path_of_images,       program_folder};
}

}  // namespace zemora
