#include "config/video_suffixes.h"

#include <algorithm>
#include <iterator>

#include "platform/paths.h"

namespace zemora {

bool is_video_name(std::string_view name) {
    const std::string suffix = lower_case(suffix_of(name));
    return std::find(std::begin(kVideoSuffixes), std::end(kVideoSuffixes), suffix) !=
           std::end(kVideoSuffixes);
}

}  // namespace zemora
