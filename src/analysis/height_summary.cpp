// From the tiles of the height check to its figures.

#include <algorithm>
#include <cmath>

#include "analysis/height_check.h"

namespace zemora {

namespace {

constexpr double kIsolatedSpreads = 6.0;
constexpr double kLeastSpread = 0.1;       ///< Pixels; what the measurement itself spreads.
constexpr double kSigmaOfMedian = 1.4826;  ///< Standard deviation over median deviation, normal distribution.
constexpr std::size_t kNeighbours = 8;
constexpr int kStandBy = 2;  ///< Neighbours of the same height that make a sample count.
constexpr double kMost = 0.95;

double median_of(std::vector<double> values) {
    if (values.empty()) {
        return 0.0;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    const double upper = *middle;
    return values.size() % 2 != 0 ? upper : (upper + *std::max_element(values.begin(), middle)) / 2.0;
}

/// dy of the samples that lie nearest to a sample, itself left out.
std::vector<double> neighbours_of(const std::vector<HeightSample>& samples, const HeightSample& sample) {
    std::vector<const HeightSample*> others;
    for (const HeightSample& other : samples) {
        if (&other != &sample) {
            others.push_back(&other);
        }
    }
    const auto distance = [&sample](const HeightSample* other) {
        const int rows = other->row - sample.row;
        const int columns = other->column - sample.column;
        return rows * rows + columns * columns;
    };
    std::stable_sort(others.begin(), others.end(),
                     [&](const HeightSample* a, const HeightSample* b) { return distance(a) < distance(b); });
    others.resize(std::min(others.size(), kNeighbours));
    std::vector<double> heights;
    for (const HeightSample* other : others) {
        heights.push_back(other->dy);
    }
    return heights;
}

}  // namespace

HeightCheck summarise_heights(const std::vector<HeightSample>& samples) {
    std::vector<std::vector<double>> neighbours;
    std::vector<double> apart;
    for (const HeightSample& sample : samples) {
        neighbours.push_back(neighbours_of(samples, sample));
        apart.push_back(std::abs(sample.dy - median_of(neighbours.back())));
    }
    HeightCheck check;
    check.rough_input_px = median_of(apart);
    const double limit = kIsolatedSpreads * std::max(kSigmaOfMedian * check.rough_input_px, kLeastSpread);
    std::vector<double> heights;
    for (std::size_t k = 0; k < samples.size(); ++k) {
        const auto stand_by = std::count_if(neighbours[k].begin(), neighbours[k].end(),
                                            [&](double dy) { return std::abs(dy - samples[k].dy) <= limit; });
        if (apart[k] > limit && stand_by < kStandBy) {
            ++check.isolated;
        } else {
            heights.push_back(std::abs(samples[k].dy));
        }
    }
    check.matched = static_cast<int>(heights.size());
    check.median_input_px = median_of(heights);
    if (!heights.empty()) {
        std::sort(heights.begin(), heights.end());
        const double place = kMost * static_cast<double>(heights.size() - 1);
        const auto below = static_cast<std::size_t>(place);
        const std::size_t above = std::min(below + 1, heights.size() - 1);
        check.most_input_px =
            heights[below] + (place - static_cast<double>(below)) * (heights[above] - heights[below]);
    }
    return check;
}

}  // namespace zemora
