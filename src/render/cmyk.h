#pragma once
/// Colours of print: cyan, magenta, yellow and black of a picture.

#include <array>
#include <string>

#include "numerics/bitmap.h"

namespace zemora {

/// Cyan, magenta, yellow, black; 255 is full ink.
using Inks = std::array<std::uint8_t, 4>;

/// The file of the profile `name`: a data file of the program, or an absolute path. Empty when there is none.
[[nodiscard]] std::string cmyk_profile_path(const std::string& name);

/// Full removal of under-colours: black takes what the three have in common.
[[nodiscard]] Inks inks_of(Colour colour);

/// 32 bits, marked as CMYK; empty when the memory is not there.
[[nodiscard]] Bitmap cmyk_by_formula(ConstPicture picture);

/// The same by an ICC profile, from sRGB with perceptual intent. Empty with the `reason` when the profile
/// cannot be used.
[[nodiscard]] Bitmap cmyk_by_profile(ConstPicture picture, const std::string& profile, std::string& reason);

}  // namespace zemora
