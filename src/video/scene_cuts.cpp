#include "video/scene_cuts.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace zemora {

namespace {

/// Samples of a part, across and down.
constexpr int kPartSamples = 3;
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

constexpr int kAcross = FrameSketch::kColumns;
constexpr int kDown = FrameSketch::kRows;
constexpr int kBlock = 8;  ///< Parts a side of a piece that is looked for.
constexpr int kPixels = kBlock * kBlock;
constexpr int kReach = 6;  ///< Parts that it may have moved.

/// How alike two coarse pictures are without regard to brightness and contrast, -1 to 1. Two even ones are
/// alike.
double likeness(const FrameSketch& a, const FrameSketch& b) {
    const auto mean = [](const FrameSketch& s) {
        double sum = 0.0;
        for (const std::uint8_t value : s.parts) {
            sum += value;
        }
        return sum / static_cast<double>(s.parts.size());
    };
    const double mean_a = mean(a);
    const double mean_b = mean(b);
    double aa = 0.0;
    double bb = 0.0;
    double ab = 0.0;
    for (std::size_t i = 0; i < a.parts.size(); ++i) {
        const double x = a.parts[i] - mean_a;
        const double y = b.parts[i] - mean_b;
        aa += x * x;
        bb += y * y;
        ab += x * y;
    }
    constexpr double kEven = 1.0 * kAcross * kDown;  // one level in each part
    return (ab + kEven) / std::sqrt((aa + kEven) * (bb + kEven));
}

/// A piece of a sketch without its mean brightness, in 1/64 level.
using Piece = std::array<int, kPixels>;

Piece piece_at(const FrameSketch& sketch, int column, int row) {
    Piece piece{};
    int sum = 0;
    for (int y = 0; y < kBlock; ++y) {
        const std::uint8_t* parts = sketch.parts.data() + (row + y) * kAcross + column;
        for (int x = 0; x < kBlock; ++x) {
            piece[static_cast<std::size_t>(y * kBlock + x)] = parts[x] * kPixels;
            sum += parts[x];
        }
    }
    for (int& value : piece) {
        value -= sum;
    }
    return piece;
}

std::int64_t difference(const Piece& a, const Piece& b) {
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += std::abs(a[i] - b[i]);
    }
    return sum;
}

/// What is left of a piece at the place of the other sketch that shows it best.
std::int64_t least_difference(const Piece& piece, const FrameSketch& other, int column, int row) {
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    for (int y = std::max(0, row - kReach); y <= std::min(kDown - kBlock, row + kReach); ++y) {
        for (int x = std::max(0, column - kReach); x <= std::min(kAcross - kBlock, column + kReach); ++x) {
            least = std::min(least, difference(piece, piece_at(other, x, y)));
        }
    }
    return least;
}

/// What no motion explains of a frame, against all that there is to see in it: near 0 within a scene, 1 and
/// more at a cut.
double unexplained(const FrameSketch& before, const FrameSketch& after) {
    constexpr std::int64_t kNoise = std::int64_t{kPixels} * kPixels;  // one level in each part
    std::int64_t left = 0;
    std::int64_t all = 0;
    for (int row = 0; row + kBlock <= kDown; row += kBlock) {
        for (int column = 0; column + kBlock <= kAcross; column += kBlock) {
            const Piece piece = piece_at(before, column, row);
            left += least_difference(piece, after, column, row);
            all += difference(piece, Piece{}) + kNoise;
        }
    }
    return static_cast<double>(left) / static_cast<double>(all);
}

}  // namespace

FrameSketch sketch_of_luma(const LumaPlane& luma) {
    constexpr int kAllAcross = kAcross * kPartSamples;
    constexpr int kAllDown = kDown * kPartSamples;
    std::array<int, kAllAcross> columns{};
    for (int i = 0; i < kAllAcross; ++i) {
        columns[static_cast<std::size_t>(i)] =
            static_cast<int>((2 * i + 1) * static_cast<std::int64_t>(luma.width) / (2 * kAllAcross));
    }
    std::array<int, std::size_t{kAcross} * kDown> sums{};
    for (int j = 0; j < kAllDown; ++j) {
        const int y = static_cast<int>((2 * j + 1) * static_cast<std::int64_t>(luma.height) / (2 * kAllDown));
        int* row = sums.data() + j / kPartSamples * kAcross;
        for (int i = 0; i < kAllAcross; ++i) {
            row[i / kPartSamples] += sample_at(luma, columns[static_cast<std::size_t>(i)], y);
        }
    }
    FrameSketch sketch;
    for (std::size_t i = 0; i < sums.size(); ++i) {
        sketch.parts[i] = static_cast<std::uint8_t>(sums[i] / (kPartSamples * kPartSamples));
    }
    return sketch;
}

bool is_cut_between(const FrameSketch& before, const FrameSketch& after) {
    constexpr double kAlike = 0.9;  // no cut so far was above 0.25, a shaking hand not below 0.8
    constexpr double kCut = 0.62;   // cuts were above 0.78, scenes below 0.46
    return likeness(before, after) < kAlike && unexplained(before, after) > kCut;
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
