#include "analysis/contour_votes.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <vector>

#include "analysis/contour_rows.h"
#include "platform/cpu.h"

namespace zemora {

namespace {

// A line is compared in pieces of so many pixels, with the rows round it.
constexpr int kHalfColumns = kContourHalfColumns;
constexpr int kHalfRows = 2;
constexpr int kRows = 2 * kHalfRows + 1;
constexpr int kWhite = kPixelBytes * 255;  ///< The three channels together.
constexpr int kRowStep = 2;
constexpr int kCoarseRowStep = 4;  ///< Of ranges above `kManyDisparities`.
constexpr int kManyDisparities = 64;
constexpr int kMostDisparities = 160;
constexpr int kBlock = 32;  ///< Pixels a side of a place that has one vote.

constexpr int kLeastRun = 10;  ///< Pixels of a surface that counts.
constexpr int kMostHole = 2;   ///< Pixels without a match inside a surface.
constexpr int kSame = 1;       ///< Disparities this near belong to one surface.
constexpr int kLeastStep = 3;  ///< Pixels of disparity between two surfaces.
constexpr int kMostStep = 80;
constexpr int kSlack = 2 * kHalfColumns + 2;  ///< Pixels that the end of a surface may be off.
constexpr int kLeastSide = 2;                 ///< Pixels left of a surface beside the strip.
constexpr int kMostStrip = 6;                 ///< Pixels of the strip that are compared with a surface.
constexpr int kClearly = 2;                   ///< One contrast is so many times the other,
constexpr int kClearlyLevels = 12;            ///< and so many levels, three channels together, above it.

using Cost = std::uint16_t;
constexpr Cost kOutside = 4000;  ///< Above every cost of a pixel.
constexpr Cost kNoCost = std::numeric_limits<Cost>::max();

static_assert(kRows * kWhite < kOutside);
static_assert(kRows * kWhite * (2 * kHalfColumns + 1) < kNoCost, "the sum over a piece has to fit");

const ContourRows& usable_rows() {
#if defined(__x86_64__)
    if (usable_instruction_set() >= InstructionSet::avx2) {
        return kContourRowsAvx2;
    }
#endif
    return kContourRowsPortable;
}

std::size_t index(int row, int width) {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(width);
}

/// A part of a line that has one disparity, or one that changes slowly.
struct Run {
    int first = 0;
    int last = 0;
};

/// A step from a larger to a smaller disparity; the first view alone sees `strip` pixels behind `last`.
struct Step {
    int last = 0;  ///< Of the surface on the left.
    int strip = 0;
};

/// One line of the first view matched with the same line of the second.
class LineMatch {
public:
    LineMatch(const ToneView& first, const ToneView& second, const DisparityRange& range)
        : first_(first),
          second_(second),
          width_(first.picture.width),
          low_(range.low),
          count_(range.high - range.low + 1),
          first_rows_(index(kRows, width_)),
          second_rows_(index(kRows, width_)),
          costs_(index(count_, width_)),
          sums_(index(count_, width_)),
          least_(index(1, width_)),
          second_least_(index(1, width_)),
          found_(index(1, width_)),
          back_(index(1, width_)) {}

    /// Calls `vote(x, sign)` for the contours of row y: +1 where the strip continues the surface on its left.
    template <class Vote>
    void vote_on_row(int y, Vote vote) {
        row_ = y - kHalfRows;
        load(first_, first_rows_);
        load(second_, second_rows_);
        for (int k = 0; k < count_; ++k) {
            compare(k);
        }
        find_matches();
        find_back();
        const std::vector<Run> runs = consistent_runs();
        for (std::size_t i = 1; i < runs.size(); ++i) {
            const Step step = step_between(runs[i - 1], runs[i]);
            const int sign = step.strip > 0 ? side_of(step) : 0;
            if (sign != 0) {
                vote(step.last + step.strip / 2, sign);
            }
        }
    }

private:
    /// The brightness, all channels together.
    void load(const ToneView& view, std::vector<std::int16_t>& rows) const {
        for (int r = 0; r < kRows; ++r) {
            const std::uint8_t* pixel = view.picture.row(row_ + r);
            std::int16_t* out = rows.data() + index(r, width_);
            for (int x = 0; x < width_; ++x, pixel += kPixelBytes) {
                out[x] = static_cast<std::int16_t>(view.mapped[pixel[0]] + view.mapped[pixel[1]] +
                                                   view.mapped[pixel[2]]);
            }
        }
    }

    /// Costs of disparity number k: of the pixels, and summed over the piece round each.
    void compare(int k) {
        const int shift = low_ + k;
        const int begin = std::clamp(-shift, 0, width_);
        const int end = std::clamp(width_ - shift, begin, width_);
        Cost* cost = costs_.data() + index(k, width_);
        Cost* sum = sums_.data() + index(k, width_);
        std::fill(cost, cost + width_, kOutside);
        std::fill(sum, sum + width_, kNoCost);
        if (begin == end) {
            return;
        }
        std::fill(cost + begin, cost + end, Cost{0});
        for (int r = 0; r < kRows; ++r) {
            rows_.add_differences(first_rows_.data() + index(r, width_) + begin,
                                  second_rows_.data() + index(r, width_) + begin + shift, end - begin,
                                  cost + begin);
        }
        rows_.sum_pieces(cost, begin + kHalfColumns, end - kHalfColumns, sum);
    }

    /// The disparity of each pixel of the first view, where no other fits nearly as well.
    void find_matches() {
        std::fill(least_.begin(), least_.end(), kNoCost);
        std::fill(second_least_.begin(), second_least_.end(), kNoCost);
        std::fill(found_.begin(), found_.end(), std::int16_t{0});
        for (int k = 0; k < count_; ++k) {
            rows_.take_least(sums_.data() + index(k, width_), k, width_, least_.data(), found_.data());
        }
        for (int k = 0; k < count_; ++k) {
            rows_.take_rival(sums_.data() + index(k, width_), k, width_, found_.data(), second_least_.data());
        }
    }

    /// The same for each pixel of the second view.
    void find_back() {
        std::vector<Cost>& least = back_least_;
        least.assign(static_cast<std::size_t>(width_), kNoCost);
        std::fill(back_.begin(), back_.end(), std::int16_t{0});
        for (int k = 0; k < count_; ++k) {
            const int shift = low_ + k;
            const int begin = std::clamp(-shift, 0, width_);
            const int end = std::clamp(width_ - shift, begin, width_);
            if (begin < end) {
                rows_.take_least(sums_.data() + index(k, width_) + begin, k, end - begin,
                                 least.data() + (begin + shift), back_.data() + (begin + shift));
            }
        }
    }

    [[nodiscard]] int found(int x) const { return found_[static_cast<std::size_t>(x)]; }

    /// A clear match that leads back.
    [[nodiscard]] bool is_sound(int x) const {
        const auto at = static_cast<std::size_t>(x);
        const int there = x + low_ + found_[at];
        // The second best is 15 % worse, and more than the noise of a piece.
        constexpr int kPercent = 100;
        constexpr int kRivalPercent = 115;
        constexpr int kNoise = 100;
        return least_[at] < kNoCost && kPercent * (second_least_[at] - kNoise) > kRivalPercent * least_[at] &&
               there >= 0 && there < width_ &&
               std::abs(back_[static_cast<std::size_t>(there)] - found_[at]) <= kSame;
    }

    [[nodiscard]] std::vector<Run> consistent_runs() const {
        std::vector<Run> runs;
        for (int x = 0; x < width_; ++x) {
            if (!is_sound(x)) {
                continue;
            }
            const bool goes_on = !runs.empty() && x - runs.back().last <= kMostHole + 1 &&
                                 std::abs(found(x) - found(runs.back().last)) <= kSame;
            if (goes_on) {
                runs.back().last = x;
            } else {
                runs.push_back({x, x});
            }
        }
        std::erase_if(runs, [](const Run& run) { return run.last - run.first + 1 < kLeastRun; });
        return runs;
    }

    /// Where the step between two surfaces lies: in the second view they touch, so in the first one as many
    /// pixels as the disparities differ stand between them. No strip where there is no such step.
    [[nodiscard]] Step step_between(const Run& left, const Run& right) const {
        const int strip = found(left.last) - found(right.first);
        const int gap = right.first - left.last - 1;
        if (strip < kLeastStep || strip > kMostStep || gap > strip + kSlack + kHalfColumns) {
            return {};
        }
        const int begin = std::max(left.last - kSlack, left.first);
        const int end = std::min(right.first + kSlack, right.last);
        const Cost* of_left = costs_.data() + index(found(left.last), width_);
        const Cost* of_right = costs_.data() + index(found(right.first), width_);
        std::int64_t cost = 0;  // of a step with its first pixel at `begin`
        for (int x = begin + strip + 1; x <= end; ++x) {
            cost += of_right[x];
        }
        cost += of_left[begin];
        Step best{begin, strip};
        std::int64_t least = std::numeric_limits<std::int64_t>::max();
        for (int last = begin; last + strip < end; ++last) {
            if (cost < least) {
                least = cost;
                best.last = last;
            }
            cost += of_left[last + 1];
            cost -= of_right[last + 1 + strip];
        }
        const bool has_sides =
            best.last - begin >= kLeastSide && end - best.last - best.strip - 1 >= kLeastSide;
        return has_sides ? best : Step{};
    }

    /// Sum of a channel over `columns` columns of the line from x on.
    [[nodiscard]] int sum_of(int channel, int x, int columns) const {
        int sum = 0;
        for (int r = 0; r < kRows; ++r) {
            for (int i = x; i < x + columns; ++i) {
                sum += first_.mapped[first_.picture.pixel(i, row_ + r)[channel]];
            }
        }
        return sum;
    }

    /// +1 where the strip continues the surface on its left, -1 where that on its right, 0 where neither.
    [[nodiscard]] int side_of(const Step& step) const {
        const int left_end = step.last + 1;
        const int right_begin = left_end + step.strip;
        const int columns = std::min({step.strip, kMostStrip, left_end, width_ - right_begin});
        int at_left = 0;
        int at_right = 0;
        for (int c = 0; c < kPixelBytes; ++c) {
            at_left += std::abs(sum_of(c, left_end - columns, columns) - sum_of(c, left_end, columns));
            at_right += std::abs(sum_of(c, right_begin - columns, columns) - sum_of(c, right_begin, columns));
        }
        const int least = kClearlyLevels * columns * kRows;
        return at_right > kClearly * at_left + least ? 1 : at_left > kClearly * at_right + least ? -1 : 0;
    }

    const ContourRows& rows_ = usable_rows();
    const ToneView& first_;
    const ToneView& second_;
    int width_;
    int low_;
    int count_;
    int row_ = 0;                                         ///< The lowest of the line.
    std::vector<std::int16_t> first_rows_, second_rows_;  ///< [row][column]
    std::vector<Cost> costs_, sums_;                      ///< [disparity][column]
    std::vector<Cost> least_, second_least_, back_least_;
    std::vector<std::int16_t> found_, back_;  ///< Number of the disparity.
};

/// The votes of the rows from `begin` on, one for each block.
ContourVotes vote_on_band(const MeasuredPair& pair, const DisparityRange& range, int begin) {
    std::vector<int> balance(static_cast<std::size_t>(pair.width / kBlock + 1));
    LineMatch in_left(pair.left, pair.right, range);
    LineMatch in_right(pair.right, pair.left, {-range.high, -range.low});
    const int row_step = range.high - range.low < kManyDisparities ? kRowStep : kCoarseRowStep;
    const int end = std::min(begin + kBlock, pair.height - kHalfRows);
    for (int y = std::max(begin, kHalfRows); y < end; y += row_step) {
        const auto vote = [&balance](int sign) {
            return [&balance, sign](int x, int side) {
                balance[static_cast<std::size_t>(x / kBlock)] += sign * side;
            };
        };
        // In order the strip of the left view lies at the left of the nearer surface and continues what is
        // at its own left; in the right view it is the other way round.
        in_left.vote_on_row(y, vote(1));
        in_right.vote_on_row(y, vote(-1));
    }
    ContourVotes votes;
    for (const int sum : balance) {
        votes.in_order += sum > 0 ? 1 : 0;
        votes.exchanged += sum < 0 ? 1 : 0;
    }
    return votes;
}

}  // namespace

ContourVotes vote_on_contours(const MeasuredPair& pair, const DisparityRange& range) {
    ContourVotes votes;
    if (range.high < range.low || range.high - range.low >= kMostDisparities) {
        return votes;
    }
    const int bands = (pair.height + kBlock - 1) / kBlock;
    std::vector<ContourVotes> of_bands(static_cast<std::size_t>(bands));
    for_each_cell(bands, CellOrder::shared_out, {}, [&](int band, CellTools&) {
        of_bands[static_cast<std::size_t>(band)] = vote_on_band(pair, range, band * kBlock);
    });
    for (const ContourVotes& band : of_bands) {
        votes.in_order += band.in_order;
        votes.exchanged += band.exchanged;
    }
    return votes;
}

}  // namespace zemora
