#pragma once
/// The series of a film as script data, which the charts of the report and of the page of the film read.

#include <string>

#include "config/messages.h"
#include "numerics/result.h"
#include "video/correction_series.h"

namespace zemora {

inline constexpr const char* kDisparityDataName = "zemora_dispdata.dat";
inline constexpr const char* kErrorDataName = "zemora_errordata.dat";

/// Sum of errors in pixels, disparities and deviation in per mille of the width, their ranges, means and
/// extremes, over the analysed frames. `width` of the input frame, pixels. Every number is finite.
[[nodiscard]] std::string disparity_data(const CorrectionSeries& series, int width);
/// The corrections that are applied to the analysed frames, in pixels, percent and degrees, and their ranges.
[[nodiscard]] std::string error_data(const CorrectionSeries& series);

/// Writes both into the folder of the report. Fails for the run, with the name and the reason.
[[nodiscard]] Result<void> write_video_data(const std::string& folder, const CorrectionSeries& series,
                                            int width, const MessageCatalogue& messages);

}  // namespace zemora
