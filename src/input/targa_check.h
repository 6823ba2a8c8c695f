#pragma once
/// Whether a TARGA file is whole; the image library fills up a cut-off one without a word.

#include <cstdint>
#include <span>

namespace zemora {

/// True when the file ends before the last of the pixels that its header promises. Layout after the
/// Truevision TGA File Format Specification 2.0 (1991).
[[nodiscard]] bool targa_is_cut_off(std::span<const std::uint8_t> file);

}  // namespace zemora
