#pragma once
/// How many frames the H.264 encoder of another system keeps back, from its settings.

#include <string>

#include "config/voice.h"

namespace zemora {

/// What such an encoder keeps apart from the parameter file.
struct EncoderSettings {
    std::string preset = "slow";
    std::string tuning = "none";
    int encoding_type = 0;
    int zero_latency = 0;
};

struct EncoderLatency {
    int b_adapt = 0;
    int bframes = 0;
    int no_mbtree = 0;
    int rc_lookahead = 0;
    int sliced_threads = 0;
    int threads = 0;
    int sync_lookahead = 0;
    int frames = 0;  ///< Frames that come out late.
};

/// Threads of the encoder on a machine with that many processors.
[[nodiscard]] int encoder_threads(int processors);

/// What the encoder makes of its settings when it works with so many threads.
[[nodiscard]] EncoderLatency encoder_latency(const EncoderSettings& settings, int threads);

/// Sets `EncoderLatency`, and moves `LastFrameIndex` by it. Without settings of an encoder that keeps
/// frames back (null, as here: the writers drain their encoders) there is no latency.
void settle_encoder_latency(ParameterSet& parameters, Voice& voice, const EncoderSettings* settings);

}  // namespace zemora
