#pragma once
/// The anaglyph bent to a ring for the dome of a planetarium.

#include <string>

#include "numerics/bitmap.h"

namespace zemora {

/// The dome picture, 3000 by 3000 pixels of 32 bits: the canvas stands three times round the zenith, its
/// bottom outside and opaque. What lies between the copies is 0, alpha too. Empty when the memory is not
/// there.
[[nodiscard]] Bitmap dome_picture(ConstPicture canvas);

/// Saves it as TIFF. Empty, or the reason why there is no such file.
[[nodiscard]] std::string save_dome(const Bitmap& dome, const std::string& path);

}  // namespace zemora
