#pragma once
/// Plain text as a part of an HTML page.

#include <string>
#include <string_view>

namespace zemora {

/// The text with the five special characters of HTML escaped and every line end as "<br>" before it. Other
/// bytes stay as they are.
[[nodiscard]] std::string html_text(std::string_view text);

}  // namespace zemora
