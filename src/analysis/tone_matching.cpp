#include "analysis/tone_matching.h"

#include <algorithm>
#include <cmath>

namespace zemora {

namespace {

constexpr int kSplit = 128;  ///< Level where the upward table gives way to the downward one.
constexpr std::int64_t kPixelsPerCount = 5000;  ///< One count is added to each bin per so many pixels.
constexpr double kSmallStep = 1e-12;

std::uint16_t entry(double value) {
    return static_cast<std::uint16_t>(std::clamp(std::floor(value + 0.5), 0.0, 65535.0));
}

/// Cumulative shares of a histogram, with a step on either end so that a neighbour always exists.
struct Cumulative {
    std::array<double, kLevels> up{};    ///< Share of the levels up to i.
    std::array<double, kLevels> down{};  ///< Share of the levels from i.

    Cumulative(const Histogram& histogram, std::int64_t added) {
        std::int64_t total = 0;
        for (const std::uint32_t count : histogram) {
            total += count + added;
        }
        std::int64_t sum = 0;
        for (std::size_t i = 0; i < up.size(); ++i) {
            const auto before = sum;
            sum += histogram[i] + added;
            up[i] = total > 0 ? static_cast<double>(sum) / static_cast<double>(total) : 1.0;
            down[i] = total > 0 ? static_cast<double>(total - before) / static_cast<double>(total) : 1.0;
        }
    }

    /// Level at which the share from below reaches `share`, between the bins.
    [[nodiscard]] double reach_up(double share) const {
        const auto* it = std::find_if(up.begin(), up.end(), [share](double c) { return c >= share; });
        const auto a = static_cast<std::size_t>(std::min<std::ptrdiff_t>(it - up.begin(), kLevels - 1));
        if (a == 0) {
            return 0.0;
        }
        const double step = up[a] - up[a - 1];
        const auto level = static_cast<double>(a);
        return step <= kSmallStep ? level - 0.5 : level - (up[a] - share) / step;
    }
    /// The same from above.
    [[nodiscard]] double reach_down(double share) const {
        std::size_t a = kLevels - 1;
        while (a > 0 && down[a] < share) {
            --a;
        }
        const double step = down[a] - (a + 1 < kLevels ? down[a + 1] : 0.0);
        const auto level = static_cast<double>(a);
        return step <= kSmallStep ? level + 0.5 : level + (down[a] - share) / step;
    }
};

/// The table read between its entries.
double read(const std::array<double, kLevels>& table, double index) {
    const int low = std::clamp(static_cast<int>(index), 0, kLevels - 1);
    const int high = std::min(low + 1, kLevels - 1);
    const double fraction = std::min(index - low, 1.0);
    return table[static_cast<std::size_t>(low)] +
           fraction * (table[static_cast<std::size_t>(high)] - table[static_cast<std::size_t>(low)]);
}

void smooth(ToneLevels& levels) {
    const ToneLevels old = levels;
    for (std::size_t i = 1; i + 1 < levels.size(); ++i) {
        levels[i] = static_cast<std::uint16_t>((old[i - 1] + 2 * old[i] + old[i + 1]) / 4);
    }
}

/// Common levels of both views at each 256th of the pixels, from below and from above.
struct MeanLevels {
    std::array<double, kLevels> up{};
    std::array<double, kLevels> down{};

    MeanLevels(const Cumulative& left, const Cumulative& right) {
        for (std::size_t l = 1; l < up.size(); ++l) {
            const double share = static_cast<double>(l) / kLevels;
            up[l] = std::max((left.reach_up(share) + right.reach_up(share)) / 2.0, 0.0);
            down[l] = (left.reach_down(share) + right.reach_down(share)) / 2.0;
        }
        up.front() = 0.0;
        up.back() = kLevels;
        down.front() = kLevels;
        down.back() = 0.0;
    }
    [[nodiscard]] ToneLevels table(const Cumulative& view) const {
        const int split = static_cast<int>((up[kSplit - 1] + down[kSplit - 1]) / 2.0);
        ToneLevels levels{};
        for (int i = 0; i < kLevels; ++i) {
            const auto k = static_cast<std::size_t>(i);
            levels[k] = entry(
                kLevels * (i < split ? read(up, kLevels * view.up[k]) : read(down, kLevels * view.down[k])));
        }
        smooth(levels);
        return levels;
    }
};

/// Table of the view `from` that gives it the tone of the view `to`.
ToneLevels match_to(const Cumulative& from, const Cumulative& to) {
    ToneLevels levels{};
    for (std::size_t i = 0; i < levels.size(); ++i) {
        levels[i] = entry(kLevels * (i < kSplit ? to.reach_up(from.up[i]) : to.reach_down(from.down[i])));
    }
    smooth(levels);
    return levels;
}

/// What a straight line is laid through.
struct Range {
    double low = 0.0;
    double high = kLevels - 1;
    double mean = 0.0;
};

std::int64_t total_of(const Histogram& histogram) {
    std::int64_t total = 0;
    for (const std::uint32_t count : histogram) {
        total += count;
    }
    return total;
}

/// Levels at which `percent` of the pixels are reached from below and from above.
Range percentiles(const Histogram& histogram, int percent) {
    constexpr std::int64_t kLeast = 99;  // of percent x pixels
    Range range;
    const std::int64_t total = total_of(histogram);
    double weighted = 0.0;
    for (std::size_t i = 0; i < histogram.size(); ++i) {
        weighted += static_cast<double>(i) * histogram[i];
    }
    range.mean = total > 0 ? weighted / static_cast<double>(total) : 0.0;
    if (percent * total <= kLeast) {
        return range;
    }
    std::int64_t sum = 0;
    std::size_t low = 0;
    for (; low + 1 < histogram.size() && 100 * (sum + histogram[low]) < percent * total; ++low) {
        sum += histogram[low];
    }
    sum = 0;
    std::size_t high = histogram.size() - 1;
    for (; high > 0 && 100 * (sum + histogram[high]) < percent * total; --high) {
        sum += histogram[high];
    }
    range.low = static_cast<double>(low);
    range.high = static_cast<double>(high);
    return range;
}

BothViews<Range> find_ranges(const BothViews<Histogram>& histograms) {
    constexpr double kMiddle = 128.0;
    BothViews<Range> ranges;
    for (int percent = 4; percent >= 1; --percent) {
        ranges = {percentiles(histograms.left, percent), percentiles(histograms.right, percent)};
        const auto spans_middle = [](const Range& r) { return r.low <= kMiddle && r.high >= kMiddle; };
        if (spans_middle(ranges.left) && spans_middle(ranges.right)) {
            break;
        }
    }
    return ranges;
}

/// Straight line that maps a range onto another; a range without extent is only moved.
struct Line {
    double slope = 1.0;
    double offset = 0.0;
    Line(const Range& from, const Range& to)
        : slope(from.high > from.low ? (to.high - to.low) / (from.high - from.low) : 1.0),
          offset(to.low - slope * from.low) {}
    [[nodiscard]] double at(double level) const { return slope * level + offset; }
};

/// Two straight pieces through the ends of `range` and (from, to).
double bent(double level, const Range& range, double from, double to) {
    const bool below = level < from;
    const double end = below ? range.low : range.high;
    return from != end ? end + (level - end) * (to - end) / (from - end) : level;
}

ToneLevels line_table(const Line& line, const Range& range, double mean_from, double mean_to) {
    ToneLevels levels{};
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const double straight =
            entry(line.at(static_cast<double>(i)) * kLevels) / static_cast<double>(kLevels);
        levels[i] = entry(bent(straight, range, mean_from, mean_to) * kLevels);
    }
    return levels;
}

}  // namespace

ToneTarget tone_target(int color_left_right) {
    if (color_left_right == setting::color_left_right::both) {
        return ToneTarget::mean;
    }
    return color_left_right > setting::color_left_right::both ? ToneTarget::left : ToneTarget::right;
}

BothViews<ToneLevels> match_histograms(const BothViews<Histogram>& histograms, ToneTarget target,
                                       std::int64_t pixels) {
    const Cumulative left(histograms.left, pixels / kPixelsPerCount);
    const Cumulative right(histograms.right, pixels / kPixelsPerCount);
    const ToneLevels same = ToneTables::identity().plane[0];
    switch (target) {
        case ToneTarget::left: return {same, match_to(right, left)};
        case ToneTarget::right: return {match_to(left, right), same};
        case ToneTarget::mean: break;
    }
    const MeanLevels common(left, right);
    return {common.table(left), common.table(right)};
}

BothViews<ToneLevels> match_lines(const BothViews<Histogram>& histograms, ToneTarget target) {
    const BothViews<Range> ranges = find_ranges(histograms);
    Range common = target == ToneTarget::left ? ranges.left : ranges.right;
    if (target == ToneTarget::mean) {
        common.low = std::floor((ranges.left.low + ranges.right.low) / 2.0);
        common.high = std::floor((ranges.left.high + ranges.right.high) / 2.0);
    }
    const Line left(ranges.left, common);
    const Line right(ranges.right, common);
    const double left_mean = left.at(ranges.left.mean);
    const double right_mean = right.at(ranges.right.mean);
    const double mean = target == ToneTarget::mean   ? (left_mean + right_mean) / 2.0
                        : target == ToneTarget::left ? left_mean
                                                     : right_mean;
    const ToneLevels same = ToneTables::identity().plane[0];
    return {target == ToneTarget::left ? same : line_table(left, common, left_mean, mean),
            target == ToneTarget::right ? same : line_table(right, common, right_mean, mean)};
}

}  // namespace zemora
