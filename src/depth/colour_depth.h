#pragma once
/// A depth mask as hue with the brightness of its photo, to judge one against the other.

#include <string>

#include "numerics/bitmap.h"

namespace zemora {

/// Near is red, the middle green, far blue. `target` has the size of both pictures.
void colour_depth(ConstPicture colour, ConstPicture depth, Picture target);

/// "cd/<name>_cd.jpg" in the folder of `name`: the ending of a mask, a right view or a photo with mask
/// gives way to "_cd".
[[nodiscard]] std::string colour_depth_name(const std::string& name);

/// Writes the picture as JPEG of quality 100 to `path`; its folder is made. An older file of that name is
/// replaced. An empty text, or the reason of the failure.
[[nodiscard]] std::string write_colour_depth(ConstPicture colour, ConstPicture depth,
                                             const std::string& path);

}  // namespace zemora
