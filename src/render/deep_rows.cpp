#include "render/deep_rows.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr std::int64_t kLargestValue = 65535;
constexpr int kBlock = kKernelBlock;  ///< Pixels that share one test for borders and background.

/// A position in 1/128 pixel; the nearest pixel to it.
struct Place {
    int x;
    int y;
    int column;
    int row;
};

bool is_background(const DeepRows& view, int column, int row) {
    return view.rows.background.any() &&
           is_colour(view.rows.source.pixel(column, row), view.rows.sampler.background);
}

/// Calls `add` with each tap's weight and channels; a tap in the background is the nearest pixel.
template <class Add>
void for_deep_taps(const DeepRows& view, const Place& at, const Add& add) {
    const Axis across = axis_of(view.rows.sampler, at.x);
    const Axis up = axis_of(view.rows.sampler, at.y);
    for (int j = 0; j < up.taps; ++j) {
        const int row = std::clamp(up.first + j, 0, view.source.height - 1);
        for (int i = 0; i < across.taps; ++i) {
            const int column = std::clamp(across.first + i, 0, view.source.width - 1);
            const std::uint16_t* tap = is_background(view, column, row) ? view.source.pixel(at.column, at.row)
                                                                        : view.source.pixel(column, row);
            add(across.weight[static_cast<std::size_t>(i)] * up.weight[static_cast<std::size_t>(j)], tap);
        }
    }
}

/// The weighted mean, rounded for the kernels whose weights are no power of two.
std::int64_t normalised(const Sampler& sampler, std::int64_t sum) {
    if (sampler.kernel != Kernel::tent) {
        return sum >> 14;
    }
    const auto total = static_cast<std::int64_t>(axis_sum(sampler) * axis_sum(sampler));
    return (sum + total / 2) / total;
}

void blend(const DeepRows& view, const Place& at, std::uint16_t* target) {
    std::array<std::int64_t, kPixelBytes> sum{};
    for_deep_taps(view, at, [&sum](int weight, const std::uint16_t* tap) {
        for (std::size_t c = 0; c < sum.size(); ++c) {
            sum[c] += std::int64_t{weight} * tap[c];
        }
    });
    for (std::size_t c = 0; c < sum.size(); ++c) {
        target[c] = static_cast<std::uint16_t>(
            std::clamp<std::int64_t>(normalised(view.rows.sampler, sum[c]), 0, kLargestValue));
    }
}

void blend_linear_light(const DeepRows& view, const Place& at, std::uint16_t* target) {
    std::array<double, kPixelBytes> sum{};
    for_deep_taps(view, at, [&sum, &view](int weight, const std::uint16_t* tap) {
        for (std::size_t c = 0; c < sum.size(); ++c) {
            sum[c] += weight * view.light[tap[c]];
        }
    });
    const double per_axis = axis_sum(view.rows.sampler);
    for (std::size_t c = 0; c < sum.size(); ++c) {
        const double mean = sum[c] / (per_axis * per_axis);
        const double level = mean > 0.0 ? std::pow(mean, 1.0 / view.rows.sampler.gamma) : 0.0;
        target[c] = static_cast<std::uint16_t>(
            std::clamp<std::int64_t>(round_half_up(level * 256.0), 0, kLargestValue));
    }
}

/// 4 by 4 taps, all of them picture. The weights of an axis are at most 160 from above and 192 in all, in
/// 128: the sums stay below 65535 (160 * 160 + 32 * 32), which is less than 2^31.
void sample_plain(const AxisWeights& table, const DeepPicture& source, int x, int y, std::uint16_t* target) {
    constexpr std::size_t kRowValues = 4 * kPixelBytes;
    const auto& across = table[static_cast<std::size_t>(x & 127)];
    const auto& up = table[static_cast<std::size_t>(y & 127)];
    std::array<std::int32_t, kRowValues> columns{};
    for (int j = 0; j < 4; ++j) {
        const std::uint16_t* taps = source.pixel((x >> 7) - 1, (y >> 7) - 1 + j);
        const std::int32_t weight = up[static_cast<std::size_t>(j)];
        for (std::size_t k = 0; k < kRowValues; ++k) {
            columns[k] += weight * taps[k];
        }
    }
    for (std::size_t c = 0; c < kPixelBytes; ++c) {
        const std::int32_t sum = across[0] * columns[c] + across[1] * columns[c + 3] +
                                 across[2] * columns[c + 6] + across[3] * columns[c + 9];
        target[c] = static_cast<std::uint16_t>(std::clamp<std::int32_t>(sum >> 14, 0, kLargestValue));
    }
}

/// Whether all taps of a block of pixels lie inside the source and hold picture.
bool is_plain_block(const DeepRows& view, const std::int32_t* x, const std::int32_t* y, int count) {
    const auto [low_x, high_x] = std::minmax_element(x, x + count);
    const auto [low_y, high_y] = std::minmax_element(y, y + count);
    const int left = (*low_x >> 7) - 1;
    const int right = (*high_x >> 7) + 2;
    const int bottom = (*low_y >> 7) - 1;
    const int top = (*high_y >> 7) + 2;
    return left >= 0 && bottom >= 0 && right < view.source.width && top < view.source.height &&
           !(view.rows.background.any() && view.rows.background.touches(left, bottom, right, top));
}

/// What follows the kernel: tone tables and colour management.
void change_colours(const DeepRows& view, std::uint16_t* pixel) {
    for (std::size_t c = 0; c < kPixelBytes; ++c) {
        if (view.tone[c] != nullptr) {
            pixel[c] = apply_tone(*view.tone[c], pixel[c]);
        }
    }
    if (view.rows.colours != nullptr) {
        std::array<std::uint16_t, kPixelBytes> values = {pixel[2], pixel[1], pixel[0]};
        view.rows.colours->change(view.rows.is_left, values);
        std::reverse_copy(values.begin(), values.end(), pixel);
    }
}

void warp_deep_block(const DeepRows& view, const std::int32_t* x, const std::int32_t* y, int count,
                     std::uint16_t* target) {
    const Sampler& sampler = view.rows.sampler;
    const bool is_plain = (sampler.kernel == Kernel::bilinear || sampler.kernel == Kernel::bicubic) &&
                          !sampler.linear_light && is_plain_block(view, x, y, count);
    const AxisWeights& table = sampler.kernel == Kernel::bicubic ? bicubic_weights() : bilinear_weights();
    const Colour none = sampler.background;
    for (int i = 0; i < count; ++i, target += kPixelBytes) {
        if (is_plain) {
            sample_plain(table, view.source, x[i], y[i], target);
        } else if (!sample_deep(view, x[i], y[i], target)) {
            target[0] = deep_level(none.red);
            target[1] = deep_level(none.green);
            target[2] = deep_level(none.blue);
            continue;
        }
        change_colours(view, target);
    }
}

}  // namespace

DeepRows::DeepRows(const ViewTransform& transform, const Sampler& sampler, DeepPicture deep,
                   ConstPicture plain)
    : rows(transform, sampler, plain, {}), source(deep) {
    if (sampler.linear_light) {
        light.resize(kLargestValue + 1);
        for (std::size_t value = 0; value < light.size(); ++value) {
            light[value] = std::pow(static_cast<double>(value) / 256.0, sampler.gamma);
        }
    }
}

bool sample_deep(const DeepRows& view, int x, int y, std::uint16_t* target) {
    const Place at{x, y, (x + 64) >> 7, (y + 64) >> 7};
    if (at.column < 0 || at.row < 0 || at.column >= view.source.width || at.row >= view.source.height ||
        is_background(view, at.column, at.row)) {
        return false;
    }
    if (view.rows.sampler.kernel == Kernel::nearest) {
        std::copy_n(view.source.pixel(at.column, at.row), kPixelBytes, target);
    } else if (view.rows.sampler.linear_light) {
        blend_linear_light(view, at, target);
    } else {
        blend(view, at, target);
    }
    return true;
}

void warp_deep_row(const DeepRows& view, int row, int first, int count, std::uint16_t* target) {
    PiecePositions positions;
    for (int done = 0; done < count; done += kPiece) {
        const int piece = std::min(kPiece, count - done);
        map_piece(view.rows, row, first + done, piece, positions);
        for (int i = 0; i < piece; i += kBlock) {
            warp_deep_block(view, positions.x.data() + i, positions.y.data() + i, std::min(kBlock, piece - i),
                            target + static_cast<std::ptrdiff_t>(done + i) * kPixelBytes);
        }
    }
}

}  // namespace zemora
