#pragma once
/// The colour profile of a TIFF file, kept from the image library.

#include <cstdint>
#include <span>

namespace zemora {

/// Renames the colour profile's entry in the first directory of a TIFF file (classic or big) to a tag
/// that nobody knows. The image library reads a profile from memory that the TIFF library below it
/// has given back already; profiles are transferred by other means.
void hide_tiff_profile(std::span<std::uint8_t> file);

}  // namespace zemora
