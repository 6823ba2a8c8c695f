#pragma once
/// Output files get the times at which their pictures were taken.

#include <string>

#include "config/notes.h"

namespace zemora {

/// Gives `other_path` the access and modification time of "DateTimeOriginal" of `image_path`, taken as
/// local time of the machine. False, with the failure reported, when it cannot be had.
bool copy_capture_time(const std::string& image_path, const std::string& other_path, Notes& notes);

}  // namespace zemora
