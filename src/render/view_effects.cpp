#include "render/view_effects.h"

#include <algorithm>
#include <array>
#include <vector>

#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kLevels = 256;

std::size_t row_bytes(const Picture& picture) {
    return static_cast<std::size_t>(picture.width) * kPixelBytes;
}

/// The share of a level that reaches the other view: percent of it, rounded.
int leaked(int level, int percent) {
    return (level * percent + 50) / 100;
}

/// How far the deepest subtraction would fall below black; 0 or less.
int depth_below_black(const WorkingViews& pair, const std::array<std::uint8_t, kLevels>& leak) {
    int lowest = 0;
#pragma omp parallel for schedule(static) reduction(min : lowest)
    for (int y = 0; y < pair.left.height; ++y) {
        const std::uint8_t* left = pair.left.row(y);
        const std::uint8_t* right = pair.right.row(y);
        for (std::size_t i = 0; i < row_bytes(pair.left); ++i) {
            lowest = std::min({lowest, right[i] - leak[left[i]], left[i] - leak[right[i]]});
        }
    }
    return lowest;
}

/// One pass of the blur along a row: first and last pixel stay.
void blur_row(const std::uint8_t* from, std::uint8_t* to, std::size_t bytes) {
    std::copy_n(from, kPixelBytes, to);
    for (std::size_t i = kPixelBytes; i + kPixelBytes < bytes; ++i) {
        to[i] =
            static_cast<std::uint8_t>((from[i - kPixelBytes] + 2 * from[i] + from[i + kPixelBytes] + 2) >> 2);
    }
    std::copy_n(from + bytes - kPixelBytes, kPixelBytes, to + bytes - kPixelBytes);
}

/// One pass across rows.
void blur_column(const std::uint8_t* below, const std::uint8_t* row, const std::uint8_t* above,
                 std::uint8_t* to, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) {
        to[i] = static_cast<std::uint8_t>((below[i] + 2 * row[i] + above[i] + 2) >> 2);
    }
}

/// Blurs `blurred` in place, with `scratch` of the same size.
void blur(Picture blurred, Picture scratch, int rounds) {
    const std::size_t bytes = row_bytes(blurred);
    for (int round = 0; round < rounds; ++round) {
#pragma omp parallel for schedule(static)
        for (int y = 0; y < blurred.height; ++y) {
            blur_row(blurred.row(y), scratch.row(y), bytes);
        }
#pragma omp parallel for schedule(static)
        for (int y = 0; y < blurred.height; ++y) {
            if (y == 0 || y == blurred.height - 1) {
                std::copy_n(scratch.row(y), bytes, blurred.row(y));
            } else {
                blur_column(scratch.row(y - 1), scratch.row(y), scratch.row(y + 1), blurred.row(y), bytes);
            }
        }
    }
}

/// What the view has more than its blurred copy, 128 for nothing, into `blurred`.
void take_detail(ConstPicture view, Picture blurred) {
    constexpr int kNothing = 128;
    const std::size_t bytes = row_bytes(blurred);
#pragma omp parallel for schedule(static)
    for (int y = 0; y < view.height; ++y) {
        const std::uint8_t* sharp = view.row(y);
        std::uint8_t* soft = blurred.row(y);
        for (std::size_t i = 0; i < bytes; ++i) {
            soft[i] = static_cast<std::uint8_t>(std::clamp(sharp[i] - soft[i] + kNothing, 0, kLevels - 1));
        }
    }
}

/// How strongly each level is sharpened: not at all when dark, growing over a ramp, then fully.
std::array<int, kLevels> sharpening_strengths(int intensity) {
    constexpr int kRampStart = 16;
    constexpr int kRampEnd = 32;
    std::array<int, kLevels> strengths{};
    const int step = intensity / kRampStart;
    for (int level = kRampStart; level < kLevels; ++level) {
        strengths[static_cast<std::size_t>(level)] =
            level < kRampEnd ? step * (level - kRampStart) : intensity;
    }
    return strengths;
}

/// Adds the detail to the inner pixels, in scan order and in place: what has been sharpened counts in the
/// neighbourhood of the next pixel.
void add_detail(Picture view, ConstPicture detail, const std::array<int, kLevels>& strengths) {
    constexpr int kVeryDark = 72;  // sum of the 27 values round a pixel; below it stays
    constexpr int kNothing = 128;
    constexpr int kUnit = 50;  // strength of one
    std::vector<int> column_sums(static_cast<std::size_t>(view.width));
    for (int y = 1; y + 1 < view.height; ++y) {
        const std::array<const std::uint8_t*, 3> rows{view.row(y - 1), view.row(y), view.row(y + 1)};
        for (std::size_t x = 0; x < column_sums.size(); ++x) {
            int sum = 0;
            for (const std::uint8_t* row : rows) {
                const std::uint8_t* pixel = row + x * kPixelBytes;
                sum += pixel[0] + pixel[1] + pixel[2];
            }
            column_sums[x] = sum;
        }
        std::uint8_t* pixel = view.row(y) + kPixelBytes;
        const std::uint8_t* stored = detail.row(y) + kPixelBytes;
        for (std::size_t x = 1; x + 1 < column_sums.size();
             ++x, pixel += kPixelBytes, stored += kPixelBytes) {
            if (column_sums[x - 1] + column_sums[x] + column_sums[x + 1] < kVeryDark) {
                continue;
            }
            for (int channel = 0; channel < kPixelBytes; ++channel) {
                const int value = pixel[channel];
                const int more =
                    (stored[channel] - kNothing) * strengths[static_cast<std::size_t>(value)] / kUnit;
                const int sharpened = std::clamp(value + more, 0, kLevels - 1);
                column_sums[x] += sharpened - value;
                pixel[channel] = static_cast<std::uint8_t>(sharpened);
            }
        }
    }
}

}  // namespace

void reduce_ghosts(const WorkingViews& pair, int percent) {
    constexpr double kSpan = 256.0;  // levels
    const int share = std::clamp(percent, 0, 100);
    std::array<std::uint8_t, kLevels> leak{};
    for (int level = 0; level < kLevels; ++level) {
        leak[static_cast<std::size_t>(level)] = static_cast<std::uint8_t>(leaked(level, share));
    }
    const int lowest = depth_below_black(pair, leak);
    const double factor = kSpan / (kSpan - lowest);
    const double offset = (1.0 - factor) * kSpan;
    std::array<std::uint8_t, kLevels> lifted{};
    for (int level = 0; level < kLevels; ++level) {
        lifted[static_cast<std::size_t>(level)] =
            static_cast<std::uint8_t>(std::min(round_half_up(level * factor + offset), kLevels - 1));
    }
#pragma omp parallel for schedule(static)
    for (int y = 0; y < pair.left.height; ++y) {
        std::uint8_t* left = pair.left.row(y);
        std::uint8_t* right = pair.right.row(y);
        for (std::size_t i = 0; i < row_bytes(pair.left); ++i) {
            const std::uint8_t l = lifted[left[i]];
            const std::uint8_t r = lifted[right[i]];
            left[i] = static_cast<std::uint8_t>(std::max(l - leak[r], 0));
            right[i] = static_cast<std::uint8_t>(std::max(r - leak[l], 0));
        }
    }
}

Result<void> sharpen(const WorkingViews& pair, int intensity, int rounds) {
    const int width = pair.left.width;
    const int height = pair.left.height;
    const std::array<int, kLevels> strengths = sharpening_strengths(intensity);
    const std::array<Picture, 2> views{pair.left, pair.right};
    std::array<Bitmap, 2> blurred;
    {
        const Bitmap scratch = Bitmap::create(width, height);
        for (std::size_t i = 0; i < views.size(); ++i) {
            blurred[i] = Bitmap::create(width, height);
            if (!scratch || !blurred[i]) {
                return Failure::out_of_memory("w15385: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE\n");
            }
            copy(views[i], blurred[i].picture());
            blur(blurred[i].picture(), scratch.picture(), rounds);
            take_detail(views[i], blurred[i].picture());
        }
    }
    // The order within a view counts; the two views are independent.
#pragma omp parallel for schedule(static, 1)
    for (int i = 0; i < 2; ++i) {
        const auto view = static_cast<std::size_t>(i);
        add_detail(views[view], blurred[view].picture(), strengths);
    }
    return {};
}

}  // namespace zemora
