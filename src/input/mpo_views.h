#pragma once
/// Multi-picture files that do not say so by their names.

#include <cstdint>
#include <span>
#include <string>

namespace zemora {

/// Whether a JPEG file holds two views of a stereo picture by its index (CIPA DC-007). Previews, gain maps
/// and whatever else stands behind a picture are none.
[[nodiscard]] bool holds_two_views(std::span<const std::uint8_t> content);

/// The same of a file.
[[nodiscard]] bool holds_two_views(const std::string& path);

}  // namespace zemora
