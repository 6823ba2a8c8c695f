#include "video/planned_sound.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zemora {

namespace {

/// The form of silence.
constexpr int kSilentRate = 8000;  // a second
constexpr int kSilentChannels = 2;

constexpr int kReversedSeconds = 2;  // read at once: each such block is a jump in the file

}  // namespace

SampleWalk sample_walk(const FrameWalk& walk, Rational input_rate, int sample_rate) {
    const bool is_backwards = walk.step < 0;
    const auto frame = static_cast<double>(is_backwards ? walk.end : walk.first);
    const double seconds = frame * input_rate.den / input_rate.num;
    return {std::llround(seconds * sample_rate) - (is_backwards ? 1 : 0), is_backwards};
}

PlannedSound::PlannedSound()
    : format_{.sample_rate = kSilentRate, .channels = kSilentChannels, .layout = 0, .bits = 16} {}

PlannedSound::PlannedSound(std::unique_ptr<SoundTrack> track, const FrameWalk& walk, Rational input_rate)
    : track_(std::move(track)),
      format_(track_->format()),
      walk_(sample_walk(walk, input_rate, format_.sample_rate)) {}

void PlannedSound::read(int count, float* samples) {
    if (track_ == nullptr) {
        std::fill_n(samples, static_cast<std::size_t>(count) * format_.channels, 0.0F);
    } else if (walk_.is_backwards) {
        read_backwards(count, samples);
    } else {
        track_->read(walk_.first + next_, count, samples);
        next_ += count;
    }
}

void PlannedSound::read_backwards(int count, float* samples) {
    const auto channels = static_cast<std::size_t>(format_.channels);
    for (std::size_t wanted = static_cast<std::size_t>(count) * channels; wanted > 0;) {
        if (reversed_taken_ == reversed_.size()) {
            const int block = kReversedSeconds * format_.sample_rate;
            reversed_.resize(static_cast<std::size_t>(block) * channels);
            track_->read(walk_.first - next_ - block + 1, block, reversed_.data());
            for (std::size_t low = 0, high = reversed_.size() - channels; low < high;
                 low += channels, high -= channels) {
                std::swap_ranges(reversed_.begin() + static_cast<std::ptrdiff_t>(low),
                                 reversed_.begin() + static_cast<std::ptrdiff_t>(low + channels),
                                 reversed_.begin() + static_cast<std::ptrdiff_t>(high));
            }
            next_ += block;
            reversed_taken_ = 0;
        }
        const std::size_t taken = std::min(wanted, reversed_.size() - reversed_taken_);
        samples = std::copy_n(reversed_.data() + reversed_taken_, taken, samples);
        reversed_taken_ += taken;
        wanted -= taken;
    }
}

}  // namespace zemora
