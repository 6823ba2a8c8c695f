#pragma once
/// The sound stream of a written film, which follows its pictures. Functions give an empty text, or the
/// reason of a failure.

#include <memory>
#include <string>

#include "numerics/rational.h"
#include "video/film_output.h"
#include "video/planned_sound.h"

namespace zemora {

class SoundOutput {
public:
    virtual ~SoundOutput() = default;
    /// Writes the sound before `frames` pictures of the rate.
    [[nodiscard]] virtual std::string write_until(std::int64_t frames, Rational rate) = 0;
    /// Writes what is left in the encoder.
    [[nodiscard]] virtual std::string finish() = 0;
};

/// Encodes the samples as AAC.
[[nodiscard]] std::string add_aac_sound(PlannedSound sound, FilmOutput& output,
                                        std::unique_ptr<SoundOutput>& into);

/// Copies the sound of a video packet by packet; leaves `into` empty where its form does not fit an MP4 file.
[[nodiscard]] std::string add_copied_sound(const std::string& path, FilmOutput& output,
                                           std::unique_ptr<SoundOutput>& into);

}  // namespace zemora
