#pragma once
/// Multi-picture files that do not say so by their names.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace zemora {

/// Where the offsets of the index of a multi-picture file count from: its byte order mark, found by the
/// segments of the file. Nothing without an index; never the end of `content`.
[[nodiscard]] std::optional<std::size_t> mpo_index_origin(std::span<const std::uint8_t> content);

/// Whether a JPEG file holds two views of a stereo picture by its index (CIPA DC-007). Previews, gain maps
/// and whatever else stands behind a picture are none.
[[nodiscard]] bool holds_two_views(std::span<const std::uint8_t> content);

/// The same of a file.
[[nodiscard]] bool holds_two_views(const std::string& path);

}  // namespace zemora
