#pragma once
/// What the settings of a run mean for its reports and for the test images.

#include "config/parameter_set.h"
#include "render/test_images.h"
#include "report/pair_report.h"
#include "report/run_report.h"

namespace zemora {

[[nodiscard]] ReportOptions report_options_of(const ParameterSet& parameters);

[[nodiscard]] ReportSource report_source_of(const ParameterSet& parameters, const std::string& time_stamp);

[[nodiscard]] AlignmentOptions alignment_options_of(const ParameterSet& parameters);

}  // namespace zemora
