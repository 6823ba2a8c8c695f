#include "video/sound_alignment.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "numerics/fourier.h"

namespace zemora {

namespace {

constexpr int kSmoothedSteps = 5;       // to both sides: echoes and distances blur by some milliseconds
constexpr int kLevelSteps = 250;        // to both sides: slower changes are no mark in time
constexpr double kQuietShare = 0.05;    // of the mean loudness; what is quieter is all the same
constexpr double kLoudestMark = 4.0;    // standard deviations: one bang does not decide alone
constexpr int kShortestOverlap = 1000;  // steps
constexpr int kOverlapPart = 4;         // at least this part of the shorter one
/// How far the best place has to stand out, in the standard deviation of all places. Recordings of different
/// events reach 5 at the most, with other places that are nearly as good.
constexpr double kSureness = 9.0;
/// The same where it stands alone, as in short recordings of one event.
constexpr double kSurenessAlone = 5.5;
/// Another place that is as good as this share of the best one: it stands not alone, or is one of several.
constexpr double kAloneShare = 0.6;
constexpr double kRivalShare = 0.9;
constexpr int kPeakSteps = 150;  // to both sides

/// Means over `steps` to both sides, of what is there.
std::vector<double> running_mean(const std::vector<double>& values, int steps) {
    const auto count = static_cast<int>(values.size());
    std::vector<double> sums(values.size() + 1);
    for (std::size_t i = 0; i < values.size(); ++i) {
        sums[i + 1] = sums[i] + values[i];
    }
    std::vector<double> means(values.size());
    for (int i = 0; i < count; ++i) {
        const int from = std::max(i - steps, 0);
        const int to = std::min(i + steps + 1, count);
        means[static_cast<std::size_t>(i)] =
            (sums[static_cast<std::size_t>(to)] - sums[static_cast<std::size_t>(from)]) / (to - from);
    }
    return means;
}

/// What marks a moment whatever the gain: the loudness on a logarithmic scale against that around it, in
/// standard deviations. Empty for silence.
std::vector<float> marks_of(const SoundEnvelope& envelope) {
    std::vector<double> values(envelope.begin(), envelope.end());
    double sum = 0.0;
    for (const double value : values) {
        sum += value;
    }
    const double quiet = kQuietShare * sum / static_cast<double>(std::max<std::size_t>(values.size(), 1));
    if (!(quiet > 0.0)) {
        return {};
    }
    values = running_mean(values, kSmoothedSteps);
    for (double& value : values) {
        value = std::log(value + quiet);
    }
    const std::vector<double> level = running_mean(values, kLevelSteps);
    double squares = 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] -= level[i];
        squares += values[i] * values[i];
    }
    const double deviation = std::sqrt(squares / static_cast<double>(values.size()));
    if (!(deviation > 0.0)) {
        return {};
    }
    std::vector<float> marks;
    for (const double value : values) {
        marks.push_back(static_cast<float>(std::clamp(value / deviation, -kLoudestMark, kLoudestMark)));
    }
    return marks;
}

/// Sums of the squares before each place.
std::vector<double> sums_of_squares(const std::vector<float>& values) {
    std::vector<double> sums(values.size() + 1);
    for (std::size_t i = 0; i < values.size(); ++i) {
        sums[i + 1] = sums[i] + static_cast<double>(values[i]) * values[i];
    }
    return sums;
}

/// How well the two agree for each lag that leaves enough of both.
class Agreement {
public:
    Agreement(const std::vector<float>& left, const std::vector<float>& right);

    [[nodiscard]] bool is_empty() const { return scores_.empty(); }
    [[nodiscard]] int first() const { return first_; }
    [[nodiscard]] int end() const { return first_ + static_cast<int>(scores_.size()); }
    /// The correlation coefficient times the root of the overlap: chance gives all lags the same deviation.
    [[nodiscard]] double at(int lag) const { return scores_[static_cast<std::size_t>(lag - first_)]; }
    [[nodiscard]] int best() const;
    /// The best one that is no part of the peak at `peak`.
    [[nodiscard]] double best_but(int peak) const;
    /// The standard deviation of chance, from the median of all.
    [[nodiscard]] double chance() const;

private:
    int first_ = 0;
    std::vector<double> scores_;
};

Agreement::Agreement(const std::vector<float>& left, const std::vector<float>& right) {
    const auto left_count = static_cast<int>(left.size());
    const auto right_count = static_cast<int>(right.size());
    const int shorter = std::min(left_count, right_count);
    const int overlap_wanted = std::max(kShortestOverlap, shorter / kOverlapPart);
    if (shorter < overlap_wanted) {
        return;
    }
    const std::vector<double> sums = cross_correlation(left, right);
    const std::vector<double> left_squares = sums_of_squares(left);
    const std::vector<double> right_squares = sums_of_squares(right);
    first_ = overlap_wanted - left_count;
    const auto count = static_cast<int>(sums.size());
    for (int lag = first_; lag <= right_count - overlap_wanted; ++lag) {
        const auto from = static_cast<std::size_t>(std::max(0, -lag));
        const auto to = static_cast<std::size_t>(std::min(left_count, right_count - lag));
        const double energy = (left_squares[to] - left_squares[from]) *
                              (right_squares[static_cast<std::size_t>(static_cast<int>(to) + lag)] -
                               right_squares[static_cast<std::size_t>(static_cast<int>(from) + lag)]);
        const double sum = sums[static_cast<std::size_t>((lag + count) % count)];
        scores_.push_back(energy > 0.0 ? sum / std::sqrt(energy) * std::sqrt(static_cast<double>(to - from))
                                       : 0.0);
    }
}

int Agreement::best() const {
    return first_ + static_cast<int>(std::max_element(scores_.begin(), scores_.end()) - scores_.begin());
}

double Agreement::best_but(int peak) const {
    double best = 0.0;
    for (int lag = first_; lag < end(); ++lag) {
        if (std::abs(lag - peak) > kPeakSteps) {
            best = std::max(best, at(lag));
        }
    }
    return best;
}

double Agreement::chance() const {
    constexpr double kDeviationOfMedian = 1.4826;  // of the magnitudes of a normal distribution
    std::vector<double> magnitudes;
    for (const double score : scores_) {
        magnitudes.push_back(std::fabs(score));
    }
    const auto middle = magnitudes.begin() + static_cast<std::ptrdiff_t>(magnitudes.size() / 2);
    std::nth_element(magnitudes.begin(), middle, magnitudes.end());
    return kDeviationOfMedian * *middle;
}

}  // namespace

std::optional<SoundOffset> find_sound_offset(const SoundEnvelope& left, const SoundEnvelope& right,
                                             Rational rate) {
    const Agreement agreement(marks_of(left), marks_of(right));
    if (agreement.is_empty()) {
        return std::nullopt;
    }
    int lag = agreement.best();
    const double score = agreement.at(lag);
    const double rival = agreement.best_but(lag);
    const double wanted = rival > kAloneShare * score ? kSureness : kSurenessAlone;
    if (score < wanted * agreement.chance()) {
        return std::nullopt;
    }
    if (rival > kRivalShare * score) {
        // What repeats itself fits at many places; views that fit as they stand are left so.
        const bool has_zero = agreement.first() <= 0 && agreement.end() > 0;
        if (!has_zero || agreement.at(0) < kRivalShare * score) {
            return std::nullopt;
        }
        lag = 0;
    }
    SoundOffset offset;
    offset.seconds = static_cast<double>(lag) / kEnvelopeRate;
    offset.frames = static_cast<int>(std::floor(offset.seconds * rate.value() + 0.5));
    offset.residual_seconds = offset.seconds - offset.frames / rate.value();
    return offset;
}

}  // namespace zemora
