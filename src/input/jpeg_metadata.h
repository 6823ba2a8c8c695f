#pragma once
/// The metadata of a JPEG file, kept from the image library.

#include <cstdint>
#include <span>

namespace zemora {

/// Renames the segments with Exif, XMP, profile and IPTC data to one that nobody reads.
/// The image library follows damaged Exif directories out of its memory; metadata is read and transferred
/// by other means. Files of other kinds stay as they are.
void hide_jpeg_metadata(std::span<std::uint8_t> file);

}  // namespace zemora
