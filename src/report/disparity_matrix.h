#pragma once
/// The grid of disparities of a mounted pair, for the eye.

#include <string>

#include "analysis/stereo_analyse.h"
#include "config/messages.h"

namespace zemora {

/// The matrix for console and text, and as a paragraph and preformatted text for HTML.
struct DisparityMatrix {
    std::string text;
    std::string html;
};

/// Disparities of the cells of phase 5 in per mille of the width, top row first; cells that do not count
/// are an "x". In HTML the cells at the near and the far point are red.
[[nodiscard]] DisparityMatrix disparity_matrix(const AnalysisState& analysis,
                                               const MessageCatalogue& messages);

}  // namespace zemora
