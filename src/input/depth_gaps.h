#pragma once
/// Depth masks that exist only for some frames of a sequence: which ones have to be interpolated.

#include <cstdint>
#include <string>
#include <vector>

#include "config/notes.h"
#include "numerics/result.h"

namespace zemora {

/// The counter of a frame's name and its length in characters.
struct FrameCounter {
    std::int64_t value = 0;
    int digits = 0;
};

/// The text between the last two `separator` of the bare name ("a_0012_rgb.jpg"). Where those are no digits
/// but the text from the last one to the last "." is ("my_film_0012.jpg"), and with a single separator, that
/// text; 0 with 0 digits without one.
[[nodiscard]] FrameCounter file_counter(const std::string& path, char separator);

/// The path with its counter replaced by `value`, in as many digits.
[[nodiscard]] std::string with_counter(const std::string& path, std::int64_t value);

/// Two masks, by their counters, with photos between them that have none.
struct DepthGap {
    std::int64_t first = 0;
    std::int64_t last = 0;
};

/// The photos come every `photo_step`. The gaps are those between the masks that are there, whoever made
/// them: a run that was stopped goes on.
struct DepthGapPlan {
    std::int64_t photo_step = 0;
    std::vector<DepthGap> gaps;
};

/// Fails for the run where the sequences do not fit together.
[[nodiscard]] Result<DepthGapPlan> plan_depth_gaps(const std::vector<std::string>& photos,
                                                   const std::vector<std::string>& masks, Notes& notes);

}  // namespace zemora
