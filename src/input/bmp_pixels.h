#pragma once
/// Bitmap files whose pixels the image library reads wrongly or not at all.

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace zemora {

/// The same picture with plain pixels, for a file with a header of 40 bytes and pixels of 16 or 32 bits by
/// masks (24 bits then), or of 8 bits coded by runs (8 bits then). Nothing for any other file, and for one
/// whose pixels are not whole.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> with_plain_bmp_pixels(
    std::span<const std::uint8_t> file);

}  // namespace zemora
