#pragma once
/// What the settings of a run mean for the analysis.

#include <string>

#include "analysis/stereo_analyse.h"
#include "config/parameter_set.h"
#include "report/analysis_dump.h"

namespace zemora {

[[nodiscard]] AnalysisOptions analysis_options(const ParameterSet& parameters);

/// The image folder comes from the settings.
[[nodiscard]] AnalysisDumpOptions dump_options(const ParameterSet& parameters,
                                               const std::string& working_folder,
                                               const std::string& program_folder);

}  // namespace zemora
