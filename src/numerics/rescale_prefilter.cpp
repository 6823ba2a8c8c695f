#include "numerics/rescale_prefilter.h"

#include <algorithm>

#include "platform/cpu.h"

namespace zemora::rescale_parts {

namespace {

using rescale_kernels::kLargestPlainFactor;

/// Weighted sums over the `2 * n - 1` rows.
void sum_rows(const std::uint8_t* const* rows, int n, std::vector<std::uint16_t>& sums) {
    std::size_t start = 0;
#if defined(__x86_64__)
    if (usable_instruction_set() != InstructionSet::portable) {
        start = static_cast<std::size_t>(
            rescale_kernels::sum_rows_avx2(rows, n, static_cast<int>(sums.size()), sums.data()));
    }
#endif
    const std::uint8_t* const* middle = rows + (n - 1);
    for (std::size_t i = start; i < sums.size(); ++i) {
        sums[i] = static_cast<std::uint16_t>(n * middle[0][i]);
    }
    for (int k = 1; k < n; ++k) {
        const std::uint8_t* below = middle[-k];
        const std::uint8_t* above = middle[k];
        const auto weight = static_cast<std::uint16_t>(n - k);
        std::uint16_t* out = sums.data();
        for (std::size_t i = start; i < sums.size(); ++i) {
            out[i] = static_cast<std::uint16_t>(out[i] + weight * (below[i] + above[i]));
        }
    }
}

/// Weighted sum over the columns round `centre` of one channel of a row of `width` pixels; the edges repeat
/// outside.
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

/// Pixels `from` to below `to` of a reduced row out of the sums over the rows.
void reduce_pixels(const std::uint16_t* sums, const Prefilter& filter, int from, int to, std::uint8_t* out) {
    for (int i = from * kPixelBytes; i < to * kPixelBytes; ++i) {
        const int centre = i / kPixelBytes * filter.triangle.n;
        const std::uint32_t sum =
            sum_columns(sums + i % kPixelBytes, filter.source.width, centre, filter.triangle.n);
        out[i] = filter.triangle.normalised(sum);
    }
}

/// A reduced row out of the sums over the rows.
void reduce_row(const std::uint16_t* sums, const Prefilter& filter, std::uint8_t* out) {
    int done = 1;
#if defined(__x86_64__)
    if (usable_instruction_set() != InstructionSet::portable) {
        done = rescale_kernels::reduce_row_avx2(sums, filter.source.width, filter.triangle.n,
                                                filter.triangle.pairs.data(), out);
    }
#endif
    reduce_pixels(sums, filter, 0, 1, out);
    reduce_pixels(sums, filter, done, filter.reduced.width, out);
}

}  // namespace

Triangle::Triangle(int factor)
    : n(factor), total(static_cast<std::uint32_t>(factor) * static_cast<std::uint32_t>(factor)) {
    while (total > kLargestTotal) {
        total >>= 1U;
        ++shift;
    }
    const std::uint64_t divisor = static_cast<std::uint64_t>(total) * total;
    reciprocal = ((std::uint64_t{1} << kReciprocalBits) + divisor - 1) / divisor;
    const auto weight = [this](int tap) { return tap < n ? tap + 1 : 2 * n - 1 - tap; };
    for (int k = 0; shift == 0 && k < n; ++k) {
        pairs[static_cast<std::size_t>(k)] = weight(2 * k) | weight(2 * k + 1) << 16;
    }
}

std::uint8_t Triangle::normalised(std::uint32_t sum) const {
    const std::uint64_t value = (sum >> static_cast<std::uint32_t>(shift)) * reciprocal >> kReciprocalBits;
    return static_cast<std::uint8_t>(std::min<std::uint64_t>(value, 255));
}

void sum_all_columns(const Prefilter& filter, std::uint16_t* column_sums) {
    const ConstPicture source = filter.source;
    const Triangle& triangle = filter.triangle;
    const std::ptrdiff_t pitch = static_cast<std::ptrdiff_t>(filter.reduced.width) * kPixelBytes;
#pragma omp parallel for schedule(static)
    for (int y = 0; y < source.height; ++y) {
        for (int i = 0; i < filter.reduced.width * kPixelBytes; ++i) {
            const int centre = i / kPixelBytes * triangle.n;
            const std::uint32_t sum =
                sum_columns(source.row(y) + i % kPixelBytes, source.width, centre, triangle.n);
            column_sums[y * pitch + i] =
                static_cast<std::uint16_t>(sum >> static_cast<std::uint32_t>(triangle.shift));
        }
    }
}

ReducedRows::ReducedRows(const Prefilter& filter) : filter_(filter) {
    for (Kept& kept : kept_) {
        kept.pixels.resize(static_cast<std::size_t>(filter.reduced.width) * kPixelBytes);
    }
    if (filter.triangle.shift == 0) {
        sums_.resize(static_cast<std::size_t>(filter.source.width) * kPixelBytes);
    }
}

const std::uint8_t* ReducedRows::row(int j) {
    if (kept_[latest_].number != j) {
        latest_ = 1 - latest_;
    }
    Kept& kept = kept_[latest_];
    if (kept.number != j) {
        kept.number = j;
        if (filter_.triangle.shift == 0) {
            rows_first(j, kept.pixels.data());
        } else {
            columns_first(j, kept.pixels.data());
        }
    }
    return kept.pixels.data();
}

/// Without a shift nothing is cut between the two directions, so that the rows may be summed first, which is
/// a walk along memory. The edge rows repeat outside.
void ReducedRows::rows_first(int j, std::uint8_t* out) {
    const int n = filter_.triangle.n;
    std::array<const std::uint8_t*, 2 * kLargestPlainFactor - 1> rows{};
    for (int k = 0; k < 2 * n - 1; ++k) {
        rows[static_cast<std::size_t>(k)] =
            filter_.source.row(std::clamp(j * n + k - n + 1, 0, filter_.source.height - 1));
    }
    sum_rows(rows.data(), n, sums_);
    reduce_row(sums_.data(), filter_, out);
}

/// With a shift it comes after the horizontal direction, whose sums are there already.
void ReducedRows::columns_first(int j, std::uint8_t* out) const {
    const int n = filter_.triangle.n;
    const std::ptrdiff_t pitch = static_cast<std::ptrdiff_t>(filter_.reduced.width) * kPixelBytes;
    const auto at = [this, pitch](int row, std::ptrdiff_t i) {
        return static_cast<std::uint32_t>(filter_.column_sums[row * pitch + i]);
    };
    for (std::ptrdiff_t i = 0; i < pitch; ++i) {
        std::uint32_t sum = static_cast<std::uint32_t>(n) * at(j * n, i);
        for (int k = 1; k < n; ++k) {
            sum += static_cast<std::uint32_t>(n - k) *
                   (at(std::max(j * n - k, 0), i) + at(std::min(j * n + k, filter_.source.height - 1), i));
        }
        out[i] = filter_.triangle.normalised(sum);
    }
}

}  // namespace zemora::rescale_parts
