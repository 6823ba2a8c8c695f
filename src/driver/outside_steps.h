#pragma once
/// Steps of a pair that other rooms of the program fill: each is called at its place in the pipeline
/// and does the neutral thing as long as its room is empty.

#include "driver/pipeline.h"

namespace zemora {

// Steps of the run before its first pair.

// Steps of a pair.

/// Calendar seconds of now.
[[nodiscard]] long long current_seconds();

/// The previewer before a pair is loaded; false when the user abandoned the pair. There is no
/// previewer yet: the pair goes on.
[[nodiscard]] bool run_previewer(Pipeline& pipeline, PairRun& pair);
/// Views from a photo and its depth mask, and with `ExtraOutput` 9 the mask in colours; false when they
/// cannot be had. Two views stay as they are.
[[nodiscard]] bool make_depth_views(Pipeline& pipeline, PairRun& pair);
/// The viewer of a pair with its corrections; false when the user abandoned it. Sets the selection and
/// `repeat` of the pair, and its stamp anew. There is none yet: the pair goes on.
[[nodiscard]] bool run_post_viewer(Pipeline& pipeline, PairRun& pair);
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
/// Writes the record of a mounted pair into its input image(s), where the mode asks for it.
void write_stored_record(Pipeline& pipeline, const PairRun& pair);

/// Progress files of a graphical front end.
void write_progress_start(const Pipeline& pipeline, const PairRun& pair);
void write_progress_end(const Pipeline& pipeline, const PairRun& pair);

}  // namespace zemora
