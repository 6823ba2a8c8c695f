#include <algorithm>
#include <cmath>

#include "analysis/tone_matching.h"

namespace zemora {

namespace {

constexpr int kDarkest = 1;  ///< Levels that the counted range is spread over.
constexpr int kBrightest = 245;
constexpr double kLowPercent = 0.75;
constexpr double kHighPercent = 99.25;
constexpr double kFull = 65536.0;  ///< Entries per unit of light.

std::uint16_t entry(double value) {
    return static_cast<std::uint16_t>(std::clamp(std::floor(value + 0.5), 0.0, kFull - 1.0));
}

/// Share of the pixels up to each level, percent; 0 throughout for an empty histogram.
std::array<double, kLevels> cumulative_percent(const Histogram& histogram) {
    double total = 0.0;
    for (const std::uint32_t count : histogram) {
        total += count;
    }
    std::array<double, kLevels> percent{};
    double sum = 0.0;
    for (std::size_t i = 0; total > 0.0 && i < percent.size(); ++i) {
        sum += histogram[i];
        percent[i] = 100.0 * sum / total;
    }
    return percent;
}

/// One end of the softly bent line: a cubic t ((A t + B) t + C) that leaves 0 at t = 0 and meets the
/// line g t + a at the level one half with the same slope.
struct SoftEnd {
    double cubic = 0.0;
    double square = 0.0;
    double linear = 0.0;

    /// `gentle`: the line reaches the end of the range so near that a parabola does.
    SoftEnd(double g, double a, bool gentle) {
        const double d = 2.0 * a - 1.0;
        if (gentle) {
            square = -4.0 * g * g * a / (d * d);
            linear = -(2.0 * a + 1.0) * g / d;
        } else {
            square = 4.0 * (a + 1.0) * g * g / (d * d);
            cubic = 4.0 * g * g * g * (2.0 * a + 1.0) / (d * d * d);
        }
    }
    [[nodiscard]] double at(double t) const { return t * ((cubic * t + square) * t + linear); }
};

}  // namespace

StretchLine stretch_line(const BothViews<Histogram>& histograms, ToneTarget target) {
    const auto left = cumulative_percent(histograms.left);
    const auto right = cumulative_percent(histograms.right);
    std::array<double, kLevels> percent = target == ToneTarget::right ? right : left;
    for (std::size_t i = 0; target == ToneTarget::mean && i < percent.size(); ++i) {
        percent[i] = (left[i] + right[i]) / 2.0;
    }
    int low = 0;
    while (low < kLevels && percent[static_cast<std::size_t>(low)] < kLowPercent) {
        ++low;
    }
    int high = kLevels - 2;
    while (high >= 0 && percent[static_cast<std::size_t>(high)] > kHighPercent) {
        --high;
    }
    low = std::max(low, kDarkest);
    high = std::min(high, kBrightest);
    if (high <= low) {
        return {};
    }
    const double span = high - low;
    return {(kBrightest - kDarkest) / span, (high - static_cast<double>(kBrightest) * low) / span, true};
}

void stretch_hard(ToneLevels& levels, const StretchLine& line) {
    for (std::uint16_t& level : levels) {
        level = entry(level * line.slope + line.offset * kLevels);
    }
}

void stretch_soft(ToneLevels& levels, const StretchLine& line) {
    constexpr double kNearEnd = 0.05;
    const double g = line.slope;
    const double a = line.offset / kLevels;
    if (a >= 0.0 || a + g <= static_cast<double>(kBrightest) / kLevels) {
        return;
    }
    const SoftEnd dark(g, a, -a / g <= kNearEnd);
    const SoftEnd bright(g, 1.0 - g - a, (1.0 - a) / g >= 1.0 - kNearEnd);
    for (std::uint16_t& level : levels) {
        const double t = level / kFull;
        const double y = t < (0.5 - a) / g ? dark.at(t) : 1.0 - bright.at(1.0 - t);
        level = entry(y * kFull);
    }
}

double gamma_coefficient(const Histogram& histogram) {
    double s1 = 0.0;
    double s2 = 0.0;
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < histogram.size(); ++i) {
        const double t = static_cast<double>(i) / kLevels;
        s1 += histogram[i] * t;
        s2 += histogram[i] * t * t;
        total += histogram[i];
    }
    const std::uint64_t whole_half = total / 2;
    const auto half = static_cast<double>(whole_half);
    return s2 != s1 ? (half - s1) / (s2 - s1) : 0.0;
}

void bend(ToneLevels& levels, double g) {
    for (std::uint16_t& level : levels) {
        const double u = level / kFull;
        level = entry((g * u * u + (1.0 - g) * u) * kFull);
    }
}

}  // namespace zemora
