#pragma once
/// The small files and previews that a graphical front end watches.

#include "driver/pipeline.h"

namespace zemora {

void write_progress_start(const Pipeline& pipeline, const PairRun& pair);
void write_progress_end(const Pipeline& pipeline, const PairRun& pair);
/// The previews "zemora_thumb_l.bmp" and "zemora_thumb_r.bmp": of the views as they were loaded, between red
/// bars, and of the finished ones, between green bars.
void write_progress_views(const Pipeline& pipeline, const PairRun& pair);
void write_progress_result(const Pipeline& pipeline, const PairRun& pair);

}  // namespace zemora
