#pragma once
/// The page that explains the corrections of a film in charts and says how it strains the eyes of an
/// audience.

#include <string>
#include <vector>

#include "config/messages.h"
#include "numerics/result.h"

namespace zemora {

inline constexpr const char* kDeepVideoPageName = "zemora_deepvideoanalysis.html";

struct DeepVideoPage {
    std::string folder;               ///< Where the page and its data lie.
    std::vector<std::string> videos;  ///< Names of the files, left one first.
    std::string left_thumb = {};      ///< Paths of the thumbnails of `HtmlImages` 4, else empty.
    std::string right_thumb = {};
};

/// Writes the page. Its data are those of `write_video_data`, its scripts those of `write_chart_scripts`.
/// Fails for the run, with the name and the reason.
[[nodiscard]] Result<void> write_deep_video_page(const DeepVideoPage& page, const MessageCatalogue& messages);

/// The line of the HTML report that leads to the page.
[[nodiscard]] std::string deep_video_page_link(const MessageCatalogue& messages);

}  // namespace zemora
