#pragma once
/// The depth data that phones put into their photos.

#include <string>

#include "config/notes.h"
#include "driver/exiftool.h"
#include "input/picture_file.h"

namespace zemora {

/// "cd/<name>_D.jpg" in the folder of the photo, where its depth image is kept.
[[nodiscard]] std::string kept_depth_name(const std::string& photo);

/// The depth image of a photo, bright near: out of the photo where the maker is known to put it there,
/// else the file "<name>_D.jpg" beside the photo. It is kept below "cd", upright as the photo. Without one
/// the reason stands in the result; a photo of a known maker without depth is reported.
[[nodiscard]] LoadedPicture read_phone_depth(ExifTool& exiftool, const std::string& photo, Notes& notes);

}  // namespace zemora
