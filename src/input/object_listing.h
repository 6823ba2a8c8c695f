#pragma once
/// The objects of a run as the user sees them before the work begins.

#include "config/notes.h"
#include "input/collect_options.h"
#include "input/image_list.h"

namespace zemora {

/// Reports with `VerboseMode` above 1 a line for each object, on the console and in both reports. Left names
/// are padded to `left_name_width` characters.
void tell_objects(const CollectOptions& options, Notes& notes, const ImageList& list, int left_name_width);

/// Reports with `VerboseMode` above 0 how many objects there are.
void tell_object_count(Notes& notes, const ImageList& list);

}  // namespace zemora
