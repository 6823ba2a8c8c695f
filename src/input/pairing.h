#pragma once
/// From the selected files to the objects of the run: which file goes with which, the control by capture
/// time, the check of the files.

#include "config/notes.h"
#include "input/collect_options.h"
#include "input/file_selection.h"
#include "input/image_list.h"
#include "input/list_file.h"

namespace zemora {

/// How many pairs or stereo files `InputMode` 0 to 9 can make of the selected ones. 0 means that there is
/// nothing to mount.
[[nodiscard]] long long expected_objects(const CollectOptions& options, const SelectedFiles& files);

/// Forms the pairs of `InputMode` 0 to 9 with two files and adds them to `list` and `names`. Returns the
/// characters of the longest left name without its folder.
int form_pairs(const CollectOptions& options, Notes& notes, const SelectedFiles& files, ImageList& list,
               ListedNames& names);

/// Adds the stereo files of `InputMode` 0 to 4 and 9 to `list` and `names`.
void take_stereo_files(const CollectOptions& options, Notes& notes, const SelectedFiles& files,
                       ImageList& list, ListedNames& names);

}  // namespace zemora
