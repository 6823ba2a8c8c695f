#include "video/scene_cuts.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zemora {

namespace {

/// Samples of a part, across and down.
constexpr int kPartSamples = 10;
/// A flash is over after so many frames.
constexpr int kFlashFrames = 3;

int sample_at(const LumaPlane& luma, int x, int y) {
    const std::uint8_t* at = luma.bits + y * luma.pitch + static_cast<std::ptrdiff_t>(x) * luma.step;
    if (luma.used_bits <= 8) {
        return *at;
    }
    std::uint16_t sample = 0;
    std::memcpy(&sample, at, sizeof sample);
    return std::min(sample >> (luma.used_bits - 8), 255);
}

/// How far brightness has to be moved to make one histogram the other, as a share of the whole range.
double histogram_distance(const FrameSketch& a, const FrameSketch& b) {
    double moved = 0.0;
    double sum = 0.0;
    for (std::size_t i = 0; i < a.histogram.size(); ++i) {
        moved += static_cast<double>(a.histogram[i]) - static_cast<double>(b.histogram[i]);
        sum += std::abs(moved);
    }
    return sum / static_cast<double>(a.histogram.size());
}

/// How much the histograms do not overlap, 0 to 1.
double histogram_difference(const FrameSketch& a, const FrameSketch& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.histogram.size(); ++i) {
        sum += std::abs(static_cast<double>(a.histogram[i]) - static_cast<double>(b.histogram[i]));
    }
    return sum / 2;
}

/// How alike the coarse pictures are without regard to brightness and contrast, -1 to 1. Two even ones are
/// alike.
double likeness(const FrameSketch& a, const FrameSketch& b) {
    const auto mean = [](const FrameSketch& s) {
        double sum = 0.0;
        for (const std::uint8_t value : s.mosaic) {
            sum += value;
        }
        return sum / static_cast<double>(s.mosaic.size());
    };
    const double mean_a = mean(a);
    const double mean_b = mean(b);
    double aa = 0.0;
    double bb = 0.0;
    double ab = 0.0;
    for (std::size_t i = 0; i < a.mosaic.size(); ++i) {
        const double x = a.mosaic[i] - mean_a;
        const double y = b.mosaic[i] - mean_b;
        aa += x * x;
        bb += y * y;
        ab += x * y;
    }
    constexpr double kEven = 1.0 * FrameSketch::kColumns * FrameSketch::kRows;  // one level in each part
    return (ab + kEven) / (std::sqrt(aa * bb) + kEven);
}

}  // namespace

FrameSketch sketch_of_luma(const LumaPlane& luma) {
    constexpr int kAcross = FrameSketch::kColumns * kPartSamples;
    constexpr int kDown = FrameSketch::kRows * kPartSamples;
    constexpr float kShare = 1.0F / (kAcross * kDown);
    FrameSketch sketch;
    std::array<int, std::size_t{FrameSketch::kColumns} * FrameSketch::kRows> sums{};
    for (int j = 0; j < kDown; ++j) {
        const int y = static_cast<int>((2 * j + 1) * static_cast<std::int64_t>(luma.height) / (2 * kDown));
        for (int i = 0; i < kAcross; ++i) {
            const int x =
                static_cast<int>((2 * i + 1) * static_cast<std::int64_t>(luma.width) / (2 * kAcross));
            const int value = sample_at(luma, x, y);
            sketch.histogram[static_cast<std::size_t>(value / 4)] += kShare;
            sums[static_cast<std::size_t>(j / kPartSamples * FrameSketch::kColumns + i / kPartSamples)] +=
                value;
        }
    }
    for (std::size_t i = 0; i < sums.size(); ++i) {
        sketch.mosaic[i] = static_cast<std::uint8_t>(sums[i] / (kPartSamples * kPartSamples));
    }
    return sketch;
}

bool is_cut_between(const FrameSketch& before, const FrameSketch& after) {
    // A pan keeps the histogram, light that changes keeps the coarse picture; a cut keeps neither.
    constexpr double kUnlike = 0.6;
    constexpr double kMoved = 0.02;
    constexpr double kDifferent = 0.15;
    return likeness(before, after) < kUnlike && histogram_distance(before, after) > kMoved &&
           histogram_difference(before, after) > kDifferent;
}

void SceneCuts::add(int frame, const FrameSketch& sketch) {
    if (suspect_ >= 0 && frame > suspect_ && frame <= suspect_ + kFlashFrames && frame > last_frame_ &&
        !is_cut_between(before_, sketch)) {
        cuts_[suspect_] = false;
        suspect_ = -1;
        cuts_[frame] = false;
    } else if (last_frame_ >= 0 && frame > last_frame_) {
        const bool is_cut = is_cut_between(last_, sketch);
        if (is_cut && frame > suspect_ + kFlashFrames) {
            suspect_ = frame;
            before_ = last_;
        }
        // What two neighbours say holds over what was guessed over a gap.
        if (frame == last_frame_ + 1) {
            cuts_.insert_or_assign(frame, is_cut);
        } else if (is_cut) {
            cuts_.try_emplace(frame, true);
        }
    }
    last_frame_ = frame;
    last_ = sketch;
}

std::vector<int> SceneCuts::starts() const {
    std::vector<int> starts;
    for (const auto& [frame, is_cut] : cuts_) {
        if (is_cut) {
            starts.push_back(frame);
        }
    }
    return starts;
}

}  // namespace zemora
