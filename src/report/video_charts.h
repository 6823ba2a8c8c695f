#pragma once
/// The charts in the HTML report of a film and the scripts that draw them.

#include <string>

#include "config/messages.h"
#include "numerics/result.h"

namespace zemora {

/// Puts copies of the scripts that draw charts into the folder "javascript" of the report, so that charts are
/// drawn without a network. Fails for the run, with the name; the charts then stay empty and all else works.
[[nodiscard]] Result<void> write_chart_scripts(const std::string& report_folder,
                                               const MessageCatalogue& messages);

/// Errors and disparities as two charts, with all that draws them, for the HTML report; UTF-8. The data are
/// those of `write_video_data` in the folder of the report.
[[nodiscard]] std::string report_charts_html(Language language);

}  // namespace zemora
