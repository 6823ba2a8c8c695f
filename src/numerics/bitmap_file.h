#pragma once
/// Writes bitmaps as files that are whole or not there.

#include <FreeImage.h>

#include <string>

namespace zemora {

/// Encodes into memory, then writes with every byte checked: the library tells a full disk to nobody.
/// Empty, or the reason why there is no such file.
[[nodiscard]] std::string encode_and_write(FIBITMAP* picture, FREE_IMAGE_FORMAT format, int flags,
                                           const std::string& path);

}  // namespace zemora
