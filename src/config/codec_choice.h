#pragma once
/// The codec of written videos: settled from the text of `VideoCodec`, or chosen by the user.

#include "config/rule_surroundings.h"
#include "config/video_codecs.h"

namespace zemora {

/// Brings `VideoCodec` into a form that the video writers read, for runs that may write a video
/// (`VideoMode` is set before). A text that asks for a choice becomes the chosen code with its codec
/// file. Fails for the run where the choice cannot be made or the form of the text is wrong.
[[nodiscard]] Result<void> settle_video_codec(ParameterSet& parameters, const RuleSurroundings& surroundings,
                                              Voice& voice);

/// Prints the table of codecs and reads the number of one; anything else is asked again. Null at the
/// end of input.
[[nodiscard]] const VideoCodecRow* ask_for_codec(Voice& voice);

}  // namespace zemora
