#pragma once
/// Which file names are videos.

#include <string_view>

namespace zemora {

/// Endings of videos and of scripts that stand for a video, in lower case.
inline constexpr std::string_view kVideoSuffixes[] = {
    ".avi", ".avs", ".mp4", ".mov", ".mkv", ".m4v", ".mts", ".m2ts", ".webm",
};

/// Whether the name ends with one of them, in any case.
[[nodiscard]] bool is_video_name(std::string_view name);

}  // namespace zemora
