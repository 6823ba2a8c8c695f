#pragma once
/// Steps of a pair that other rooms of the program fill: each is called at its place in the pipeline
/// and does the neutral thing as long as its room is empty.

#include "driver/pipeline.h"

namespace zemora {

/// Calendar seconds of now.
[[nodiscard]] long long current_seconds();

/// The previewer before a pair is loaded; false when the user abandoned the pair. There is no
/// previewer yet: the pair goes on.
[[nodiscard]] bool run_previewer(Pipeline& pipeline, PairRun& pair);
/// Passepartout and edges of the loaded views. Not conditioned yet.
void condition_input(Pipeline& pipeline, PairRun& pair);
/// Views from a depth mask; false when the pair cannot be had. Layouts with depth are refused so far.
[[nodiscard]] bool make_depth_views(Pipeline& pipeline, PairRun& pair);
/// Anaglyph and extra formats: not written yet.
void store_anaglyph(Pipeline& pipeline, PairRun& pair);
void store_extra(Pipeline& pipeline, PairRun& pair);
/// The line of the pair in the list of images. No list is kept yet.
void update_list_line(Pipeline& pipeline, const PairRun& pair);

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
