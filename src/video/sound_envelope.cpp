#include <algorithm>
#include <cmath>

#include "video/sound_alignment.h"
#include "video/sound_track.h"

namespace zemora {

SoundEnvelope sound_envelope(SoundTrack& track, double start_s, double seconds) {
    const int rate = track.format().sample_rate;
    const auto channels = static_cast<std::size_t>(track.format().channels);
    const auto steps = static_cast<std::int64_t>(std::floor(seconds * kEnvelopeRate));
    const auto sample_at = [&](std::int64_t step) {
        return std::llround((start_s + static_cast<double>(step) / kEnvelopeRate) * rate);
    };
    SoundEnvelope envelope;
    envelope.reserve(static_cast<std::size_t>(std::max<std::int64_t>(steps, 0)));
    std::vector<float> samples;
    for (std::int64_t block = 0; block < steps; block += kEnvelopeRate) {
        const std::int64_t block_end = std::min<std::int64_t>(block + kEnvelopeRate, steps);
        const std::int64_t first = sample_at(block);
        samples.resize(static_cast<std::size_t>(sample_at(block_end) - first) * channels);
        track.read(first, static_cast<int>(sample_at(block_end) - first), samples.data());
        for (std::int64_t step = block; step < block_end; ++step) {
            const auto from = static_cast<std::size_t>(sample_at(step) - first) * channels;
            const auto to = static_cast<std::size_t>(sample_at(step + 1) - first) * channels;
            double sum = 0.0;
            for (std::size_t i = from; i < to; ++i) {
                sum += std::fabs(samples[i]);
            }
            envelope.push_back(static_cast<float>(to > from ? sum / static_cast<double>(to - from) : 0.0));
        }
    }
    return envelope;
}

}  // namespace zemora
