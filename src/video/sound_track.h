#pragma once
/// The sound of a video by time: any part of it, in any order, straight from the file.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "config/notes.h"
#include "numerics/result.h"

namespace zemora {

struct SoundFormat {
    int sample_rate = 0;  ///< A second.
    int channels = 0;
    std::uint64_t layout = 0;  ///< Speakers, as the library's mask; 0 where unknown.
    int bits = 16;             ///< Of a sample as it is stored; 0 for a lossy codec.
};

class SoundTrack {
public:
    /// The first sound stream that can be decoded. Fails without one, with the reason.
    [[nodiscard]] static Result<std::unique_ptr<SoundTrack>> open(const std::string& path, Notes& notes);
    virtual ~SoundTrack() = default;

    [[nodiscard]] virtual const SoundFormat& format() const = 0;
    /// Samples of all channels, each in -1 to 1, channel by channel in turn. Sample 0 is heard when frame 0
    /// is seen; what lies before the start or behind the end is silence.
    virtual void read(std::int64_t first, int count, float* samples) = 0;
};

/// The same for whoever has no listener: gives an empty text, or the reason of a failure.
[[nodiscard]] std::string open_sound_track(const std::string& path, std::unique_ptr<SoundTrack>& into);

}  // namespace zemora
