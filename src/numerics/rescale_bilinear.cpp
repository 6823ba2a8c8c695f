#include <algorithm>
#include <cmath>
#include <vector>

#include "numerics/rescale_parts.h"

namespace zemora::rescale_parts {

namespace {

/// Where a result sample lies between two source samples. The indices come from rounding and the
/// weight from the fraction.
struct Place {
    int first = 0;
    int second = 0;
    float fraction = 0.0F;
};

std::vector<Place> places(int out, int in, float scale) {
    std::vector<Place> all(static_cast<std::size_t>(out));
    for (int i = 0; i < out; ++i) {
        const float at = static_cast<float>(i) / scale;
        Place& place = all[static_cast<std::size_t>(i)];
        place.fraction = at - std::trunc(at);
        place.first = std::clamp(static_cast<int>(std::floor(at + 0.5F)), 0, in - 1);
        place.second = std::clamp(static_cast<int>(std::floor(at + 1.0F / scale + 0.5F)), 0, in - 1);
    }
    return all;
}

/// Interpolates one row of the result from the two rows `lower` and `upper` of interleaved samples.
template <class Sample>
void interpolate_row(const Sample* lower, const Sample* upper, float fy, const std::vector<Place>& columns,
                     std::uint8_t* out) {
    for (const Place& column : columns) {
        const float fx = column.fraction;
        const float w00 = (1.0F - fx) * (1.0F - fy);
        const float w10 = fx * (1.0F - fy);
        const float w01 = (1.0F - fx) * fy;
        const float w11 = fx * fy;
        const auto first = static_cast<std::ptrdiff_t>(column.first) * kPixelBytes;
        const auto second = static_cast<std::ptrdiff_t>(column.second) * kPixelBytes;
        for (int c = 0; c < kPixelBytes; ++c) {
            const float value =
                w00 * static_cast<float>(lower[first + c]) + w10 * static_cast<float>(lower[second + c]) +
                w01 * static_cast<float>(upper[first + c]) + w11 * static_cast<float>(upper[second + c]);
            *out++ = static_cast<std::uint8_t>(value);
        }
    }
}

/// Rows of interleaved samples, `pitch` samples apart.
template <class Sample>
void interpolate(const Sample* samples, std::ptrdiff_t pitch, PictureSize in, float scale_x, float scale_y,
                 Picture target) {
    const std::vector<Place> columns = places(target.width, in.width, scale_x);
    const std::vector<Place> rows = places(target.height, in.height, scale_y);
    constexpr int kLeastPixels = 50000;  // below, the threads cost more than they bring
#pragma omp parallel for schedule(static) if (target.width * target.height >= kLeastPixels)
    for (int r = 0; r < target.height; ++r) {
        const Place& row = rows[static_cast<std::size_t>(r)];
        interpolate_row(samples + row.first * pitch, samples + row.second * pitch, row.fraction, columns,
                        target.row(r));
    }
}

/// Triangular weights n, n-1, ..., 1 on either side of the centre. Their total n x n is brought
/// below 256 by a shift, so that row sums fit into 16 bits: 255 x n x n >> shift is at most 65025.
struct Triangle {
    int n = 1;
    int shift = 0;
    std::uint32_t total = 1;
    std::uint64_t reciprocal = 0;

    explicit Triangle(int factor)
        : n(factor), total(static_cast<std::uint32_t>(factor) * static_cast<std::uint32_t>(factor)) {
        while (total > kLargestTotal) {
            total >>= 1U;
            ++shift;
        }
        const std::uint64_t divisor = static_cast<std::uint64_t>(total) * total;
        reciprocal = ((std::uint64_t{1} << kReciprocalBits) + divisor - 1) / divisor;
    }
    /// The weighted sum of both directions, brought back to the range of a byte: divided by the
    /// squared total, as a product with the rounded-up reciprocal. Shifted sums are below 2^24 and
    /// the divisor is below 2^16, so that 40 bits make it exact. A total that lost bits to the shift
    /// is too small: white comes out above 255 and has to be limited.
    [[nodiscard]] std::uint16_t normalised(std::uint32_t sum) const {
        const std::uint64_t value =
            (sum >> static_cast<std::uint32_t>(shift)) * reciprocal >> kReciprocalBits;
        return static_cast<std::uint16_t>(std::min<std::uint64_t>(value, 255));
    }

    static constexpr std::uint32_t kReciprocalBits = 40;
    static constexpr std::uint32_t kLargestTotal = 255;
};

/// sum[k] = weighted sum over the rows round `centre`; the edge rows repeat outside.
void sum_rows(ConstPicture source, int centre, int n, std::vector<std::uint16_t>& sum) {
    const std::size_t samples = sum.size();
    const std::uint8_t* middle = source.row(centre);
    for (std::size_t i = 0; i < samples; ++i) {
        sum[i] = static_cast<std::uint16_t>(n * middle[i]);
    }
    for (int k = 1; k < n; ++k) {
        const std::uint8_t* below = source.row(std::max(centre - k, 0));
        const std::uint8_t* above = source.row(std::min(centre + k, source.height - 1));
        const auto weight = static_cast<std::uint16_t>(n - k);
        std::uint16_t* out = sum.data();
        for (std::size_t i = 0; i < samples; ++i) {
            out[i] = static_cast<std::uint16_t>(out[i] + weight * (below[i] + above[i]));
        }
    }
}

/// Weighted sum over the columns round `centre` of one channel of a row of `width` pixels.
template <class Sample>
std::uint32_t sum_columns(const Sample* row, int width, int centre, int n) {
    const auto at = [row](int column) { return static_cast<std::uint32_t>(row[column * kPixelBytes]); };
    std::uint32_t sum = static_cast<std::uint32_t>(n) * at(centre);
    if (centre - n + 1 >= 0 && centre + n - 1 < width) {
        for (int k = 1; k < n; ++k) {
            sum += static_cast<std::uint32_t>(n - k) * (at(centre - k) + at(centre + k));
        }
        return sum;
    }
    for (int k = 1; k < n; ++k) {
        sum += static_cast<std::uint32_t>(n - k) *
               (at(std::max(centre - k, 0)) + at(std::min(centre + k, width - 1)));
    }
    return sum;
}

/// Prefilter for factors without shift: nothing is cut between the two directions, so that the rows
/// may be summed first, which is a walk along memory.
void prefilter_rows_first(ConstPicture source, const Triangle& triangle, PictureSize reduced,
                          std::uint16_t* out) {
#pragma omp parallel
    {
        std::vector<std::uint16_t> sum(static_cast<std::size_t>(source.width) * kPixelBytes);
#pragma omp for schedule(static)
        for (int j = 0; j < reduced.height; ++j) {
            sum_rows(source, j * triangle.n, triangle.n, sum);
            std::uint16_t* row = out + static_cast<std::ptrdiff_t>(j) * reduced.width * kPixelBytes;
            for (int i = 0; i < reduced.width; ++i) {
                for (int c = 0; c < kPixelBytes; ++c) {
                    *row++ = triangle.normalised(
                        sum_columns(sum.data() + c, source.width, i * triangle.n, triangle.n));
                }
            }
        }
    }
}

/// Prefilter with the shift after the horizontal direction; `between` holds a row for each source row.
void prefilter_columns_first(ConstPicture source, const Triangle& triangle, PictureSize reduced,
                             std::uint16_t* between, std::uint16_t* out) {
    const std::ptrdiff_t pitch = static_cast<std::ptrdiff_t>(reduced.width) * kPixelBytes;
#pragma omp parallel for schedule(static)
    for (int y = 0; y < source.height; ++y) {
        for (int i = 0; i < reduced.width * kPixelBytes; ++i) {
            const int centre = i / kPixelBytes * triangle.n;
            const std::uint32_t sum =
                sum_columns(source.row(y) + i % kPixelBytes, source.width, centre, triangle.n);
            between[y * pitch + i] =
                static_cast<std::uint16_t>(sum >> static_cast<std::uint32_t>(triangle.shift));
        }
    }
#pragma omp parallel for schedule(static)
    for (int j = 0; j < reduced.height; ++j) {
        const int centre = j * triangle.n;
        for (std::ptrdiff_t i = 0; i < pitch; ++i) {
            std::uint32_t sum = static_cast<std::uint32_t>(triangle.n) * between[centre * pitch + i];
            for (int k = 1; k < triangle.n; ++k) {
                sum += static_cast<std::uint32_t>(triangle.n - k) *
                       (static_cast<std::uint32_t>(between[std::max(centre - k, 0) * pitch + i]) +
                        between[std::min(centre + k, source.height - 1) * pitch + i]);
            }
            out[j * pitch + i] = triangle.normalised(sum);
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
    const PictureSize out{target.width, target.height};
    const int factor = prefilter_factor({source.width, source.height}, out);
    if (factor == 0) {
        return false;
    }
    const Triangle triangle(factor);
    const PictureSize reduced{std::max(source.width / triangle.n, 1),
                              std::max(source.height / triangle.n, 1)};
    const auto pitch = static_cast<std::size_t>(reduced.width) * kPixelBytes;
    const std::size_t needed = pitch * static_cast<std::size_t>(reduced.height + source.height);
    if (scratch.samples.size() < needed) {
        scratch.samples.resize(needed);
    }
    std::uint16_t* samples = scratch.samples.data();
    if (triangle.shift == 0) {
        prefilter_rows_first(source, triangle, reduced, samples);
    } else {
        std::uint16_t* between = samples + pitch * static_cast<std::size_t>(reduced.height);
        prefilter_columns_first(source, triangle, reduced, between, samples);
    }
    interpolate(samples, static_cast<std::ptrdiff_t>(pitch), reduced,
                static_cast<float>(out.width) / static_cast<float>(reduced.width),
                static_cast<float>(out.height) / static_cast<float>(reduced.height), target);
    return true;
}

}  // namespace

bool bilinear(ConstPicture source, Picture target, RescaleScratch& scratch, const Axis& x, const Axis& y) {
    if (x.scale < 1.0F && y.scale < 1.0F) {
        return reduce(source, target, scratch);
    }
    interpolate(source.bits, source.pitch, {source.width, source.height}, x.scale, y.scale, target);
    return true;
}

}  // namespace zemora::rescale_parts
