#pragma once
/// The stops of a pair where a person works on it with a program of the folder "32".

#include "driver/pipeline.h"

namespace zemora {

/// What the user decided in the post viewer.
enum class ViewerDecision {
    go_on,
    repeat,   ///< Stored as it is, then shown once more.
    abandon,  ///< Nothing is stored.
    swap,     ///< The pair starts over with its views exchanged.
    failed,   ///< There is no answer, or no preview: the pair ends without stores.
};

/// The previewer before a pair is loaded: pre-selection, exchange of the views and scale go to the input.
/// False when the user abandoned the pair.
[[nodiscard]] bool run_previewer(Pipeline& pipeline, PairRun& pair);

/// The viewer of a pair with its corrections. Sets the selection, the shape, the ratio, the stamp and, where
/// nothing is stored, the status of the pair.
[[nodiscard]] ViewerDecision run_post_viewer(Pipeline& pipeline, PairRun& pair);

/// The script that sets the colours of an anaglyph (`AnaglyphType` 8), before each anaglyph. The warp's
/// colours are read anew; the anaglyph reads its own when it is made.
void adjust_anaglyph_colours(Pipeline& pipeline, const StereoPicture& views);

/// Whether that script is called.
[[nodiscard]] bool calls_colour_script(const ParameterSet& parameters);

/// Before the first pair: where that script will be called and its file is missing, the shipped example is
/// put in its place.
void provide_colour_file(const ParameterSet& parameters, const RunContext& run, Voice& voice);

/// Whether the views are mounted in another order than settings and names give: their record would not fit
/// a later run.
[[nodiscard]] bool has_exchanged_views(const Pipeline& pipeline, const PairRun& pair);
/// Whether an exchange of the views exchanges the two files of the pair; else it exchanges the halves of a
/// stereo file, or the views that are rendered from a photo and its mask.
[[nodiscard]] bool exchanges_files(const Pipeline& pipeline);

}  // namespace zemora
