#pragma once
/// What the remaining error of height of a mounted pair means for those who look at it, and what helps.

#include <string>

#include "analysis/height_check.h"
#include "config/messages.h"

namespace zemora {

/// Whether the pair can be looked at with ease.
enum class HeightVerdict { good, visible, unusable, unchecked };

/// What the measured facts point at where the verdict is not good.
enum class HeightCause { none, depth, pattern, sharpness, distortion, unclear };

struct HeightJudgement {
    HeightVerdict verdict = HeightVerdict::unchecked;
    HeightCause cause = HeightCause::none;
};

/// `depth`: deviation of the finished pair as a fraction of its width.
[[nodiscard]] HeightJudgement judge_heights(const HeightCheck& check, double depth);

/// Behind the median and its unit: the limit that 95 % of the picture stay below, and the verdict.
[[nodiscard]] std::string height_remark(const HeightCheck& check, HeightVerdict verdict,
                                        const MessageCatalogue& messages);

/// One sentence with its line end; empty where the verdict is good.
[[nodiscard]] std::string height_remedy(HeightCause cause, const MessageCatalogue& messages);

}  // namespace zemora
