#pragma once
/// The values of a pair where a later run finds them: in its input files and in its line of the list.

#include "driver/pipeline.h"

namespace zemora {

/// The record of the input image into `pair.stored`; false, with the reason reported, when it does not count.
[[nodiscard]] bool read_stored_record(Pipeline& pipeline, PairRun& pair);
/// The values of a mounted pair in their stored form.
[[nodiscard]] StoredCorrectionRecord record_of(const Pipeline& pipeline, const PairRun& pair);
/// Writes the record of a mounted pair into its input image(s), where the mode asks for it. Views that the
/// user exchanged have none.
void write_stored_record(Pipeline& pipeline, const PairRun& pair);
/// The result of the pair in its line of `ListofImages` (`WriteDataBase` 2).
void update_list_line(const Pipeline& pipeline, const PairRun& pair);

}  // namespace zemora
