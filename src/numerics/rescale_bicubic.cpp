#include <algorithm>
#include <vector>

#include "numerics/rescale_parts.h"

namespace zemora::rescale_parts {

namespace {

constexpr int kOne = 128;       ///< Kernel positions and weights: one sample, weight 1.
constexpr int kSumBits = 14;    ///< Two passes with weights of 7 bits.
constexpr int kMostTaps = 100;  ///< A side, of the wide kernel.

/// Cubic convolution with the parameter -1 at a position of 0 to 256 (R. G. Keys, "Cubic Convolution
/// Interpolation for Digital Image Processing", 1981), rounded.
int kernel(int u) {
    return u <= kOne ? ((u - 256) * u * u + 2105344) >> kSumBits
                     : (((640 - u) * u - 131072) * u + 8396800) >> kSumBits;
}

/// Weights of consecutive source samples for each sample of the result.
class Taps {
public:
    struct Run {
        int first = 0;  ///< Source sample of the first weight.
        int count = 0;
        int start = 0;  ///< Index of the first weight.
    };

    Taps(const Axis& axis, bool wide) : samples_(axis.in) {
        runs_.resize(static_cast<std::size_t>(axis.out));
        for (int i = 0; i < axis.out; ++i) {
            taps_.clear();
            if (wide) {
                place_wide(axis, i);
            } else {
                place_four(axis, i);
            }
            close(runs_[static_cast<std::size_t>(i)]);
        }
    }
    [[nodiscard]] const Run& run(int i) const { return runs_[static_cast<std::size_t>(i)]; }
    [[nodiscard]] const std::int16_t* weights(const Run& run) const { return weights_.data() + run.start; }

private:
    struct Tap {
        int sample = 0;
        int weight = 0;
    };

    void place_four(const Axis& axis, int i) {
        const float at = static_cast<float>(i) / axis.scale;
        const int p = static_cast<int>(at);
        const int f = static_cast<int>(at * 128.0F) - kOne * p;
        taps_ = {{p - 1, kernel(kOne + f)},
                 {p, kernel(f)},
                 {p + 1, kernel(kOne - f)},
                 {p + 2, kernel(2 * kOne - f)}};
    }

    /// Kernel stretched over the source samples that fall on one sample of the result.
    void place_wide(const Axis& axis, int i) {
        const std::int64_t a = axis.in_span;
        const std::int64_t b = axis.out_span;
        const int p = static_cast<int>(i * a / b);
        const std::int64_t m = i * a % b;
        add_side(a, b, b - m, p + 1, 1);
        const std::size_t left = taps_.size();
        add_side(a, b, m, p, -1);
        balance(left);
    }

    /// Taps from `sample` on in one direction; `distance` is that of the first, in 1/b samples.
    void add_side(std::int64_t a, std::int64_t b, std::int64_t distance, int sample, int direction) {
        for (int j = 0; j < kMostTaps; ++j) {
            const std::int64_t u = ((distance + j * b) * kOne + a / 2) / a;
            if (u > 2 * kOne) {
                return;
            }
            const std::int64_t weight = (kernel(static_cast<int>(u)) * b + a / 2) / a;
            taps_.push_back({sample + direction * j, static_cast<int>(weight)});
        }
    }

    /// Brings the sum of the weights to `kOne`; `left` is the index of the first tap on the left.
    void balance(std::size_t left) {
        const auto total = [this] {
            int sum = 0;
            for (const Tap& tap : taps_) {
                sum += tap.weight;
            }
            return sum;
        };
        if (taps_.empty()) {
            return;
        }
        const int each = (kOne - total()) / static_cast<int>(taps_.size());
        for (Tap& tap : taps_) {
            tap.weight += each;
        }
        const int rest = kOne - total();
        if (left > 0) {
            taps_[0].weight += rest >> 1;
        }
        if (left < taps_.size()) {
            taps_[left].weight += rest - (rest >> 1);
        }
    }

    /// Adds up the taps that the picture's edge brings onto one sample and appends their weights.
    void close(Run& run) {
        int first = samples_ - 1;
        int last = 0;
        for (Tap& tap : taps_) {
            tap.sample = std::clamp(tap.sample, 0, samples_ - 1);
            first = std::min(first, tap.sample);
            last = std::max(last, tap.sample);
        }
        first = std::min(first, last);
        run = {first, last - first + 1, static_cast<int>(weights_.size())};
        weights_.resize(weights_.size() + static_cast<std::size_t>(run.count), 0);
        for (const Tap& tap : taps_) {
            std::int16_t& weight = weights_[static_cast<std::size_t>(run.start + tap.sample - first)];
            weight = static_cast<std::int16_t>(weight + tap.weight);
        }
    }

    int samples_;
    std::vector<Tap> taps_;
    std::vector<Run> runs_;
    std::vector<std::int16_t> weights_;
};

/// One source row to the scratch: sums of 0 to 65535. A run of weights covers interleaved pixels.
void filter_row(const std::uint8_t* row, const Taps& taps, int out_width, std::vector<std::int16_t>& planes,
                int in_width, std::uint16_t* out) {
    for (int c = 0; c < kPixelBytes; ++c) {
        std::int16_t* plane = planes.data() + static_cast<std::ptrdiff_t>(c) * in_width;
        for (int x = 0; x < in_width; ++x) {
            plane[x] = row[x * kPixelBytes + c];
        }
    }
    for (int i = 0; i < out_width; ++i) {
        const Taps::Run& run = taps.run(i);
        const std::int16_t* weights = taps.weights(run);
        for (int c = 0; c < kPixelBytes; ++c) {
            const std::int16_t* samples =
                planes.data() + static_cast<std::ptrdiff_t>(c) * in_width + run.first;
            int sum = 0;
            for (int k = 0; k < run.count; ++k) {
                sum += weights[k] * samples[k];
            }
            *out++ = static_cast<std::uint16_t>(std::clamp(sum, 0, 65535));
        }
    }
}

/// One result row from the rows of the scratch. The absolute weights of a sample add up to less than
/// 2^10 and samples are below 2^16, so that a sum stays below 2^26.
void filter_columns(const std::uint16_t* samples, std::ptrdiff_t pitch, const Taps& taps, int row,
                    std::vector<int>& sums, std::uint8_t* out) {
    const Taps::Run& run = taps.run(row);
    const std::int16_t* weights = taps.weights(run);
    int* sum = sums.data();
    std::fill(sums.begin(), sums.end(), 1 << (kSumBits - 1));
    for (int k = 0; k < run.count; ++k) {
        const std::uint16_t* from = samples + (run.first + k) * pitch;
        const int weight = weights[k];
        for (std::ptrdiff_t i = 0; i < pitch; ++i) {
            sum[i] += weight * from[i];
        }
    }
    for (std::ptrdiff_t i = 0; i < pitch; ++i) {
        out[i] = static_cast<std::uint8_t>(std::clamp(sum[i] >> kSumBits, 0, 255));
    }
}

}  // namespace

void bicubic(ConstPicture source, Picture target, RescaleScratch& scratch, const Axis& x, const Axis& y) {
    const bool wide = x.scale < 1.0F && y.scale < 1.0F;
    const Taps columns(x, wide);
    const Taps rows(y, wide);
    const std::ptrdiff_t pitch = static_cast<std::ptrdiff_t>(target.width) * kPixelBytes;
    std::uint16_t* samples =
        scratch.room(static_cast<std::size_t>(pitch) * static_cast<std::size_t>(source.height));
#pragma omp parallel
    {
        std::vector<std::int16_t> planes(static_cast<std::size_t>(source.width) * kPixelBytes);
#pragma omp for schedule(static)
        for (int r = 0; r < source.height; ++r) {
            filter_row(source.row(r), columns, target.width, planes, source.width, samples + r * pitch);
        }
        std::vector<int> sums(static_cast<std::size_t>(pitch));
#pragma omp for schedule(static)
        for (int r = 0; r < target.height; ++r) {
            filter_columns(samples, pitch, rows, r, sums, target.row(r));
        }
    }
}

}  // namespace zemora::rescale_parts
