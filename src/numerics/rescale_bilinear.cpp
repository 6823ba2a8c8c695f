#include <algorithm>
#include <cmath>
#include <vector>

#include "numerics/rescale_kernels.h"
#include "numerics/rescale_parts.h"
#include "numerics/rescale_prefilter.h"
#include "platform/cpu.h"

namespace zemora::rescale_parts {

namespace {

using rescale_kernels::Place;

/// Below this many pixels to be read or written the threads cost more than they bring.
constexpr std::int64_t kLeastPixels = 50000;

/// Where the samples of the result lie between those of the source, which are `step` apart. The indices come
/// from rounding and the weights from the fraction.
std::vector<Place> places(int out, int in, float scale, int step) {
    std::vector<Place> all(static_cast<std::size_t>(out));
    for (int i = 0; i < out; ++i) {
        const float at = static_cast<float>(i) / scale;
        const float fraction = at - std::trunc(at);
        const int first = std::clamp(static_cast<int>(std::floor(at + 0.5F)), 0, in - 1);
        const int second = std::clamp(static_cast<int>(std::floor(at + 1.0F / scale + 0.5F)), 0, in - 1);
        all[static_cast<std::size_t>(i)] = {first * step, second * step, 1.0F - fraction, fraction};
    }
    return all;
}

/// The columns and rows of a result, for rows of `in` pixels.
struct Places {
    std::vector<Place> columns;
    std::vector<Place> rows;
    int within = 0;  ///< The columns before this one touch no last pixel of a row.

    Places(PictureSize in, PictureSize out, float scale_x, float scale_y)
        : columns(places(out.width, in.width, scale_x, kPixelBytes)),
          rows(places(out.height, in.height, scale_y, 1)) {
        const auto touches_last = [last = (in.width - 1) * kPixelBytes](const Place& column) {
            return column.first >= last || column.second >= last;
        };
        within =
            static_cast<int>(std::find_if(columns.begin(), columns.end(), touches_last) - columns.begin());
    }
};

/// Interpolates one row of the result from the two rows `lower` and `upper` of interleaved samples.
void interpolate_row(const std::uint8_t* lower, const std::uint8_t* upper, const Place& row,
                     const Places& places, std::uint8_t* out) {
    int done = 0;
#if defined(__x86_64__)
    if (usable_instruction_set() != InstructionSet::portable) {
        done = rescale_kernels::interpolate_row_avx2(lower, upper, row.second_weight, places.columns.data(),
                                                     places.within, out);
    }
#endif
    out += static_cast<std::ptrdiff_t>(done) * kPixelBytes;
    for (auto column = places.columns.begin() + done; column != places.columns.end(); ++column) {
        const float w00 = column->first_weight * row.first_weight;
        const float w10 = column->second_weight * row.first_weight;
        const float w01 = column->first_weight * row.second_weight;
        const float w11 = column->second_weight * row.second_weight;
        for (int c = 0; c < kPixelBytes; ++c) {
            const float value = w00 * static_cast<float>(lower[column->first + c]) +
                                w10 * static_cast<float>(lower[column->second + c]) +
                                w01 * static_cast<float>(upper[column->first + c]) +
                                w11 * static_cast<float>(upper[column->second + c]);
            *out++ = static_cast<std::uint8_t>(value);
        }
    }
}

void interpolate(ConstPicture source, float scale_x, float scale_y, Picture target) {
    const Places places({source.width, source.height}, {target.width, target.height}, scale_x, scale_y);
    const bool shared = static_cast<std::int64_t>(target.width) * target.height >= kLeastPixels;
#pragma omp parallel for schedule(static) if (shared)
    for (int r = 0; r < target.height; ++r) {
        const Place& row = places.rows[static_cast<std::size_t>(r)];
        interpolate_row(source.row(row.first), source.row(row.second), row, places, target.row(r));
    }
}

/// Interpolates between the rows of the reduced picture, of which each thread makes those it needs.
void interpolate_reduced(const Prefilter& filter, Picture target) {
    const PictureSize in = filter.reduced;
    const Places places(in, {target.width, target.height},
                        static_cast<float>(target.width) / static_cast<float>(in.width),
                        static_cast<float>(target.height) / static_cast<float>(in.height));
    const bool shared = static_cast<std::int64_t>(filter.source.width) * filter.source.height >= kLeastPixels;
#pragma omp parallel if (shared)
    {
        ReducedRows reduced(filter);
#pragma omp for schedule(static)
        for (int r = 0; r < target.height; ++r) {
            const Place& row = places.rows[static_cast<std::size_t>(r)];
            const std::uint8_t* lower = reduced.row(row.first);
            interpolate_row(lower, reduced.row(row.second), row, places, target.row(r));
        }
    }
}

/// Whole reduction factor of the prefilter, 1 to 255; 0 where there is none.
int prefilter_factor(PictureSize in, PictureSize out) {
    constexpr int kLargestFactor = 255;
    const int n = static_cast<int>(static_cast<float>(in.height) / static_cast<float>(out.height));
    return n <= kLargestFactor ? n : 0;
}

bool reduce(ConstPicture source, Picture target, RescaleScratch& scratch) {
    const int n = prefilter_factor({source.width, source.height}, {target.width, target.height});
    if (n == 0) {
        return false;
    }
    if (n == 1) {  // The filter would leave the picture as it is.
        interpolate(source, static_cast<float>(target.width) / static_cast<float>(source.width),
                    static_cast<float>(target.height) / static_cast<float>(source.height), target);
        return true;
    }
    Prefilter filter{
        source, Triangle(n), {std::max(source.width / n, 1), std::max(source.height / n, 1)}, nullptr};
    if (filter.triangle.shift > 0) {
        std::uint16_t* sums = scratch.room(static_cast<std::size_t>(filter.reduced.width) * kPixelBytes *
                                           static_cast<std::size_t>(source.height));
        sum_all_columns(filter, sums);
        filter.column_sums = sums;
    }
    interpolate_reduced(filter, target);
    return true;
}

}  // namespace

bool bilinear(ConstPicture source, Picture target, RescaleScratch& scratch, const Axis& x, const Axis& y) {
    if (x.scale < 1.0F && y.scale < 1.0F) {
        return reduce(source, target, scratch);
    }
    interpolate(source, x.scale, y.scale, target);
    return true;
}

}  // namespace zemora::rescale_parts
