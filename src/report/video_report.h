#pragma once
/// What the end of a film's run shows in charts.

#include "config/notes.h"
#include "report/deep_video_page.h"
#include "video/correction_series.h"

namespace zemora {

/// Adds the charts and the link to the page of the film to the HTML report, and writes that page, the data
/// and the scripts into its folder. `width` of the input frame, pixels. What cannot be written is told on the
/// console; the run goes on without it.
void write_video_charts(const DeepVideoPage& page, const CorrectionSeries& series, int width, Notes& notes);

}  // namespace zemora
