#pragma once
/// How far two recordings of the same sound lie apart. `sound_envelope` alone reads
/// one of them.

#include <optional>
#include <vector>

#include "numerics/rational.h"

namespace zemora {

class SoundTrack;

/// Loudness of a track in steps of 1/`kEnvelopeRate` second.
using SoundEnvelope = std::vector<float>;
inline constexpr int kEnvelopeRate = 1000;

struct SoundOffset {
    double seconds = 0.0;  ///< Above 0: what the left one records at t, the right one records at t + seconds.
    int frames = 0;        ///< The nearest number of frames.
    double residual_seconds = 0.0;  ///< Of the sound when the views are shifted by that.
};

/// None where the two have nothing in common that is sure.
[[nodiscard]] std::optional<SoundOffset> find_sound_offset(const SoundEnvelope& left,
                                                           const SoundEnvelope& right, Rational rate);

/// The mean magnitude of all channels, from the time `start_s` of the track on for `seconds`.
[[nodiscard]] SoundEnvelope sound_envelope(SoundTrack& track, double start_s, double seconds);

}  // namespace zemora
