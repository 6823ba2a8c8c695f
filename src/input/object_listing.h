#pragma once
/// The objects of a run as the user sees them before the work begins.

#include "config/parameter_set.h"
#include "config/voice.h"
#include "input/image_list.h"

namespace zemora {

/// With `VerboseMode` above 1 a line for each object, on the console and in both reports. Left names are
/// padded to `left_name_width` characters.
void tell_objects(const ParameterSet& parameters, Voice& voice, const ImageList& list, int left_name_width);

/// With `VerboseMode` above 0 how many objects there are.
void tell_object_count(Voice& voice, const ImageList& list);

}  // namespace zemora
