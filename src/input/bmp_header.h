#pragma once
/// Bitmap files with the longer headers that the image library refuses.

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace zemora {

/// The same picture with the header of 40 bytes, for a file with one of 52 to 124 bytes (versions 2
/// to 5); nothing for any other file. Colour spaces and transparency masks go.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> with_short_bmp_header(
    std::span<const std::uint8_t> file);

}  // namespace zemora
