#pragma once
/// Whether a pair whose measurement has settled may be reported as success.

#include <string>
#include <vector>

#include "config/messages.h"
#include "numerics/pair_geometry.h"
#include "report/height_judgement.h"

namespace zemora {

/// What speaks against a success.
enum class Doubt { size, angle, rejected, pattern, height };

/// What is known of a pair that was measured and checked.
struct TrustFacts {
    Correction correction;
    double rejected_share = 0.0;  ///< Of the cells with a match that the fit did not believe, 0 to 1.
    HeightVerdict heights = HeightVerdict::good;
    double agreement = 1.0;  ///< Of the picture with the correction, 0 to 1, where the wide search was asked.
};

/// In the order in which they are reported. A difference in size above 4 %, a rotation or a vergence above 5
/// degrees, more than a quarter of the matches rejected, a correction that less than half of the picture
/// fits, a remaining error of height that cannot be used.
[[nodiscard]] std::vector<Doubt> doubts_of(const TrustFacts& facts);

/// The line that tells them, with its line end; empty without doubts.
[[nodiscard]] std::string doubt_text(const std::vector<Doubt>& doubts, const MessageCatalogue& messages);

}  // namespace zemora
