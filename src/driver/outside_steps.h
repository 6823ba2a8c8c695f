#pragma once
/// Steps of a pair that work on the files round it: its input files, its record, its line of the list, the
/// progress files of a front end; and its depth views.

#include "driver/pipeline.h"

namespace zemora {

/// Calendar seconds of now.
[[nodiscard]] long long current_seconds();

/// Views from a photo and its depth mask, and with `ExtraOutput` 9 the mask in colours; false when they
/// cannot be had. Two views stay as they are.
[[nodiscard]] bool make_depth_views(Pipeline& pipeline, PairRun& pair);
/// The files of a pair that cannot be mounted get other names (`RenameRefused`, `InputMode` 9).
void rename_refused(const Pipeline& pipeline, const PairRun& pair);
/// The files of a pair that the user gave up for good move away.
void move_quit_pair(const Pipeline& pipeline, const PairRun& pair);
/// The result of the pair in its line of `ListofImages` (`WriteDataBase` 2).
void update_list_line(const Pipeline& pipeline, const PairRun& pair);

/// The record of the input image into `pair.stored`; false, with the reason told, when it does not
/// count.
[[nodiscard]] bool read_stored_record(Pipeline& pipeline, PairRun& pair);
/// The values of a mounted pair in their stored form.
[[nodiscard]] StoredCorrectionRecord record_of(const Pipeline& pipeline, const PairRun& pair);
/// Writes the record of a mounted pair into its input image(s), where the mode asks for it. Views that the
/// user exchanged have none.
void write_stored_record(Pipeline& pipeline, const PairRun& pair);

/// Progress files of a graphical front end.
void write_progress_start(const Pipeline& pipeline, const PairRun& pair);
void write_progress_end(const Pipeline& pipeline, const PairRun& pair);
/// Its previews "zemora_thumb_l.bmp" and "zemora_thumb_r.bmp": of the views as they were loaded, between red
/// bars, and of the finished ones, between green bars.
void write_progress_views(const Pipeline& pipeline);
void write_progress_result(const Pipeline& pipeline);

}  // namespace zemora
