#pragma once
/// The input files of a pair that is not mounted.

#include "driver/pipeline.h"

namespace zemora {

/// The files of a pair that cannot be mounted get other names (`RenameRefused`, `InputMode` 9).
void rename_refused(const Pipeline& pipeline, const PairRun& pair);
/// The files of a pair that the user gave up for good move away.
void move_quit_pair(const Pipeline& pipeline, const PairRun& pair);

}  // namespace zemora
