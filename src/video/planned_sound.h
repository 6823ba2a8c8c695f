#pragma once
/// The sound that belongs to the pictures of a written film: the sample at the time t of the film is what was
/// recorded at that time of the walk, at normal speed, with its samples reversed when the walk goes
/// backwards.

#include <cstdint>
#include <memory>

#include "numerics/rational.h"
#include "video/frame_walk.h"
#include "video/sound_track.h"

namespace zemora {

/// Where a walk through frames starts, and which way it goes, in samples.
struct SampleWalk {
    std::int64_t first = 0;  ///< Sample of the source for sample 0 of the film.
    bool is_backwards = false;
};
[[nodiscard]] SampleWalk sample_walk(const FrameWalk& walk, Rational input_rate, int sample_rate);

class PlannedSound {
public:
    /// Silence.
    PlannedSound();
    PlannedSound(std::unique_ptr<SoundTrack> track, const FrameWalk& walk, Rational input_rate);

    [[nodiscard]] const SoundFormat& format() const { return format_; }
    /// The next samples of the film, all channels in turn.
    void read(int count, float* samples);

private:
    void read_backwards(int count, float* samples);

    std::unique_ptr<SoundTrack> track_;
    SoundFormat format_;
    SampleWalk walk_;
    std::int64_t next_ = 0;           ///< Sample of the film.
    std::vector<float> reversed_;     ///< A block that was read at once, turned round.
    std::size_t reversed_taken_ = 0;  ///< Floats of it.
};

}  // namespace zemora
