#pragma once
/// How far two recordings of the same sound lie apart. Pure numbers.

#include <optional>
#include <vector>

#include "numerics/rational.h"

namespace zemora {

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

}  // namespace zemora
