#include "input/passepartout.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "config/setting_values.h"
#include "numerics/rounding.h"
#include "platform/cpu.h"

namespace zemora {

namespace {

/// Below this many pixels the threads cost more than they bring.
bool worth_sharing(ConstPicture picture) {
    constexpr std::int64_t kLeastPixels = 100000;
    return static_cast<std::int64_t>(picture.width) * picture.height >= kLeastPixels;
}

void protect_row(std::uint8_t* pixels, int count, Colour colour) {
    const std::uint8_t bytes[] = {colour.blue, colour.green, colour.red};
    int done = 0;
#if defined(__x86_64__)
    if (usable_instruction_set() != InstructionSet::portable) {
        done = passepartout_kernels::protect_row_avx2(pixels, count, bytes);
    }
#endif
    passepartout_kernels::protect_row_portable(pixels + static_cast<std::ptrdiff_t>(done) * kPixelBytes,
                                               count - done, bytes);
}

/// Mean of a row or a column of pixels that are `step` bytes apart.
Colour mean_of(const std::uint8_t* pixel, std::ptrdiff_t step, int count) {
    std::array<std::int64_t, kPixelBytes> sum{};
    for (int i = 0; i < count; ++i, pixel += step) {
        for (std::size_t c = 0; c < sum.size(); ++c) {
            sum[c] += pixel[c];
        }
    }
    const auto mean = [count](std::int64_t channel) {
        return static_cast<std::uint8_t>(round_half_up(static_cast<double>(channel) / count));
    };
    return {mean(sum[0]), mean(sum[1]), mean(sum[2])};
}

/// How far the frame reaches from each edge, for each row and column. The middle column and row belong
/// to no edge.
struct FrameReach {
    std::vector<int> left;   ///< For each row: pixels of frame from the left edge.
    std::vector<int> right;  ///< From the right edge.
    std::vector<int> lower;  ///< For each column: rows of frame from the lowest row on.
    std::vector<int> upper;
};

class FrameScan {
public:
    FrameScan(ConstPicture picture, Colour colour, bool measured, int tolerance)
        : picture_(picture), colour_(colour), measured_(measured), tolerance_(tolerance) {}

    [[nodiscard]] FrameReach run() const {
        const int last_x = picture_.width - 1;
        const int last_y = picture_.height - 1;
        FrameReach reach;
        reach.left = scan_rows(0, 1, picture_.width / 2);
        reach.right = scan_rows(last_x, -1, last_x - picture_.width / 2);
        reach.lower = scan_columns(0, 1, picture_.height / 2);
        reach.upper = scan_columns(last_y, -1, last_y - picture_.height / 2);
        return reach;
    }

private:
    /// Each row from column `first` on, in direction `step`, over at most `limit` pixels.
    [[nodiscard]] std::vector<int> scan_rows(int first, int step, int limit) const {
        const Colour c =
            measured_ ? mean_of(picture_.pixel(first, 0), picture_.pitch, picture_.height) : colour_;
        std::vector<int> reach(static_cast<std::size_t>(picture_.height), 0);
#pragma omp parallel for schedule(static) if (worth_sharing(picture_))
        for (int y = 0; y < picture_.height; ++y) {
            const std::uint8_t* pixel = picture_.pixel(first, y);
            int count = 0;
            while (count < limit && colour_distance(pixel, c) <= tolerance_) {
                ++count;
                pixel += step * kPixelBytes;
            }
            reach[static_cast<std::size_t>(y)] = count;
        }
        return reach;
    }

    /// The same for each column, all of them row by row.
    [[nodiscard]] std::vector<int> scan_columns(int first, int step, int limit) const {
        const Colour c = measured_ ? mean_of(picture_.row(first), kPixelBytes, picture_.width) : colour_;
        std::vector<int> reach(static_cast<std::size_t>(picture_.width), 0);
        bool any = true;
        for (int count = 0; count < limit && any; ++count) {
            const std::uint8_t* pixel = picture_.row(first + step * count);
            any = false;
            for (int& column : reach) {
                if (column == count && colour_distance(pixel, c) <= tolerance_) {
                    ++column;
                    any = true;
                }
                pixel += kPixelBytes;
            }
        }
        return reach;
    }

    ConstPicture picture_;
    Colour colour_;
    bool measured_;
    int tolerance_;
};

}  // namespace

Colour passe_colour_of(int passepartout, Colour chosen) {
    return passepartout == setting::passepartout::measured_painted ? Colour{} : chosen;
}

void passepartout_kernels::protect_row_portable(std::uint8_t* pixels, int count, const std::uint8_t* colour) {
    const Colour kept_free{colour[0], colour[1], colour[2]};
    const int change = colour[0] < kBlueFallsFrom ? 1 : -1;
    const auto other_blue = static_cast<std::uint8_t>(colour[0] + change);
    for (int x = 0; x < count; ++x, pixels += kPixelBytes) {
        if (is_colour(pixels, kept_free)) {
            pixels[0] = other_blue;
        }
    }
}

void protect_from_colour(Picture picture, Colour colour) {
#pragma omp parallel for schedule(static) if (worth_sharing(picture))
    for (int y = 0; y < picture.height; ++y) {
        protect_row(picture.row(y), picture.width, colour);
    }
}

void paint_frame(Picture picture, Colour colour, bool measured, int tolerance) {
    const FrameReach reach = FrameScan(picture, colour, measured, tolerance).run();
    const int deepest_lower =
        picture.width > 0 ? *std::max_element(reach.lower.begin(), reach.lower.end()) : 0;
    const int deepest_upper =
        picture.width > 0 ? *std::max_element(reach.upper.begin(), reach.upper.end()) : 0;
#pragma omp parallel for schedule(dynamic, 16) if (worth_sharing(picture))
    for (int y = 0; y < picture.height; ++y) {
        protect_row(picture.row(y), picture.width, colour);
        const int left = reach.left[static_cast<std::size_t>(y)];
        const int right = reach.right[static_cast<std::size_t>(y)];
        fill(picture.part(0, y, left, 1), colour);
        fill(picture.part(picture.width - right, y, right, 1), colour);
        const int from_top = picture.height - 1 - y;
        if (y >= deepest_lower && from_top >= deepest_upper) {
            continue;
        }
        for (int x = left; x < picture.width - right; ++x) {
            const auto column = static_cast<std::size_t>(x);
            if (y < reach.lower[column] || from_top < reach.upper[column]) {
                set_colour(picture.pixel(x, y), colour);
            }
        }
    }
}

void paint_by_mask(Picture picture, ConstPicture mask, Colour colour) {
#pragma omp parallel for schedule(static) if (worth_sharing(picture))
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (is_colour(mask.pixel(x, y), {})) {
                set_colour(picture.pixel(x, y), colour);
            }
        }
    }
}

void draw_mask(ConstPicture picture, Colour colour, Picture mask) {
    constexpr int kWhite = 255;
#pragma omp parallel for schedule(static) if (worth_sharing(picture))
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            std::memset(mask.pixel(x, y), is_colour(picture.pixel(x, y), colour) ? 0 : kWhite, kPixelBytes);
        }
    }
}

}  // namespace zemora
