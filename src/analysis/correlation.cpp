#include "analysis/correlation.h"

#include <algorithm>
#include <cmath>

#include "analysis/correlation_kernels.h"
#include "analysis/correlation_patch.h"
#include "platform/cpu.h"

// With L and R the mapped channels, zero where a pixel takes no part, and masks m that are 1 where
// it does, the sum over the tile is
//   sum m_L m_R (L - R)^2 = sum L^2 m_R + sum m_L R^2 - 2 sum L R.
// Without excluded pixels the first two are running sums; each run of excluded pixels takes its
// share off again. The third is the kernel's, whose (L - 128) R is made good with the sum of R.
// A strip of tile rows has so few pixels that its sum fits into 31 bits; on the way to it the
// arithmetic may wrap round at 2^32.

namespace zemora {

namespace {

using correlation_kernels::CrossKernel;
using correlation_kernels::Strip;
using correlation_patch::Buffer;
using correlation_patch::Patch;
using correlation_patch::PixelRun;
using correlation_patch::Sampling;

const CrossKernel& kernel() {
#if defined(__x86_64__)
    switch (usable_instruction_set()) {
        case InstructionSet::avx512: return correlation_kernels::kAvx512;
        case InstructionSet::avx2: return correlation_kernels::kAvx2;
        case InstructionSet::portable: break;
    }
#endif
    return correlation_kernels::kPortable;
}

constexpr int kPixel = 4;  ///< Bytes of a pixel in a patch.

/// Sum of the squares of the channels of a pixel of the region.
std::uint32_t squares(const std::uint8_t* pixel) {
    return static_cast<std::uint32_t>(pixel[0] * pixel[0] + pixel[1] * pixel[1] + pixel[2] * pixel[2]);
}

/// The same of the tile, whose values are stored less 128.
std::uint32_t tile_squares(const std::uint8_t* pixel) {
    constexpr std::uint8_t kSign = 0x80;
    const std::uint8_t values[] = {static_cast<std::uint8_t>(pixel[0] ^ kSign),
                                   static_cast<std::uint8_t>(pixel[1] ^ kSign),
                                   static_cast<std::uint8_t>(pixel[2] ^ kSign)};
    return squares(values);
}

/// The same over a row of the tile. All four bytes of a pixel are taken; the fourth, a 0, adds 128^2.
std::uint32_t tile_row_squares(const std::uint8_t* row, int columns) {
    std::uint32_t sum = 0;
    for (int k = 0; k < columns * kPixel; ++k) {
        const auto value = static_cast<std::int16_t>(static_cast<std::int8_t>(row[k]) + 128);
        sum += static_cast<std::uint32_t>(value * value);
    }
    return sum - static_cast<std::uint32_t>(columns) * 128 * 128;
}

/// out[j] -= high[j] - low[j]
void take_off(std::uint32_t* out, const std::uint32_t* high, const std::uint32_t* low, int count) {
    for (int j = 0; j < count; ++j) {
        out[j] -= high[j] - low[j];
    }
}

/// Rows first to end - 1 of the tile.
struct StripRows {
    int first = 0;
    int end = 0;
};

}  // namespace

ToneView::ToneView(ConstPicture view, const ToneTables& tables) : picture(view), grey(tables.plane[0]) {
    for (std::size_t i = 0; i < grey.size(); ++i) {
        mapped[i] = static_cast<std::uint8_t>(grey[i] >> 8U);
    }
}

void ErrorSurface::reshape(const TileSearch& search) {
    rows_ = search.search_rows / search.step_y + 1;
    columns_ = search.search_columns / search.step_x + 1;
    step_y_ = search.step_y;
    step_x_ = search.step_x;
    errors_.assign(static_cast<std::size_t>(rows_) * static_cast<std::size_t>(columns_), kNoOverlap);
}

bool ErrorSurface::is_local_minimum(int i, int j, int reach) const {
    for (int row = i - reach; row <= i + reach; ++row) {
        for (int column = j - reach; column <= j + reach; ++column) {
            if (!valid(row, column) || at(row, column) < at(i, j)) {
                return false;
            }
        }
    }
    return true;
}

/// The work of one call. All arrays over the displacements are [offset row][offset column].
struct Correlator::Work {
    Patch tile;
    Patch region;
    Buffer<std::uint8_t> kernel_work;
    Buffer<std::uint32_t> window_sums;  ///< [region row][offset column] of R^2 - 256 R.
    Buffer<std::uint32_t> line;         ///< Along one row.
    Buffer<std::uint32_t> terms;        ///< The same.
    Buffer<std::uint32_t> cross;
    Buffer<std::uint32_t> errors;  ///< Of one strip.
    Buffer<std::uint32_t> counts;
    Buffer<std::int64_t> sums;  ///< Of all strips.
    // Running sums along each row of the tile, from right to left and continued on both sides by
    // the offsets, so that they are read forward with growing displacement.
    Buffer<std::uint32_t> tile_square_sums;
    Buffer<std::uint32_t> tile_pixel_sums;
    Buffer<std::uint32_t> region_square_sums;  ///< Running sums along each row of the region.

    void sum_windows(const Sampling& s);
    void sum_tile_rows(const Sampling& s);
    void sum_region_rows(const Sampling& s);
    void start_counts(const Sampling& s);
    void start_errors(const Sampling& s, StripRows rows);
    void take_off_region_runs(const Sampling& s, StripRows rows);
    void take_off_tile_runs(const Sampling& s, StripRows rows);
    void add_strip(const Sampling& s, StripRows rows);
    void normalise(const Sampling& s, const OverlapRule& rule, const TileSearch& search,
                   ErrorSurface& surface);

    [[nodiscard]] const std::uint8_t* tile_row(const Sampling& s, int r) const {
        return tile.row(s.padded_row(r));
    }
};

void Correlator::Work::sum_windows(const Sampling& s) {
    std::uint32_t* out = window_sums.ensure(static_cast<std::ptrdiff_t>(s.region_rows()) * s.offset_columns);
    std::uint32_t* term = terms.ensure(s.region_columns() + correlation_kernels::kColumnBlock);
    std::uint32_t* prefix = line.ensure(s.region_columns() + 1);
    const auto square_terms = kernel().square_terms;
    prefix[0] = 0;
    for (int r = 0; r < s.region_rows(); ++r) {
        square_terms(region.row(r), s.region_columns(), term);
        std::uint32_t sum = 0;
        for (int c = 0; c < s.region_columns(); ++c) {
            sum += term[c];
            prefix[c + 1] = sum;
        }
        for (int j = 0; j < s.offset_columns; ++j) {
            *out++ = prefix[j + s.tile_columns] - prefix[j];
        }
    }
}

void Correlator::Work::sum_tile_rows(const Sampling& s) {
    const int length = s.tile_columns + 2 * s.offset_columns - 1;
    const std::ptrdiff_t size = static_cast<std::ptrdiff_t>(s.tile_rows) * length;
    std::uint32_t* square_sums = tile_square_sums.ensure(size);
    std::uint32_t* pixel_sums = tile_pixel_sums.ensure(size);
    auto run = tile.excluded().begin();
    std::uint32_t* part = line.ensure(s.tile_columns);
    for (int r = 0; r < s.tile_rows; ++r, square_sums += length, pixel_sums += length) {
        std::fill(part, part + s.tile_columns, 1U);
        for (; run != tile.excluded().end() && run->row == r; ++run) {
            std::fill(part + run->first, part + run->last + 1, 0U);
        }
        std::uint32_t square_sum = 0;
        std::uint32_t pixel_sum = 0;
        for (int k = -(s.offset_columns - 1); k < s.tile_columns + s.offset_columns; ++k) {
            const int back = s.tile_columns + s.offset_columns - 1 - k;
            square_sums[back] = square_sum;
            pixel_sums[back] = pixel_sum;
            if (k >= 0 && k < s.tile_columns) {
                square_sum += tile_squares(tile_row(s, r) + static_cast<std::ptrdiff_t>(k) * kPixel);
                pixel_sum += part[k];
            }
        }
    }
}

void Correlator::Work::sum_region_rows(const Sampling& s) {
    std::uint32_t* sums_out =
        region_square_sums.ensure(static_cast<std::ptrdiff_t>(s.region_rows()) * (s.region_columns() + 1));
    for (int r = 0; r < s.region_rows(); ++r) {
        std::uint32_t sum = 0;
        for (int c = 0; c < s.region_columns(); ++c) {
            *sums_out++ = sum;
            sum += squares(region.row(r) + static_cast<std::ptrdiff_t>(c) * kPixel);
        }
        *sums_out++ = sum;
    }
}

/// Every displacement starts with the pixels of the tile that take part at all.
void Correlator::Work::start_counts(const Sampling& s) {
    std::int64_t pixels = static_cast<std::int64_t>(s.tile_rows) * s.tile_columns;
    for (const PixelRun& run : tile.excluded()) {
        pixels -= run.last - run.first + 1;
    }
    std::uint32_t* out = counts.ensure(s.out_size());
    std::fill(out, out + s.out_size(), static_cast<std::uint32_t>(pixels));
    std::int64_t* sum = sums.ensure(s.out_size());
    std::fill(sum, sum + s.out_size(), 0);
}

/// The strip's sum as if no pixel were excluded.
void Correlator::Work::start_errors(const Sampling& s, StripRows rows) {
    std::uint32_t tile_sum = 0;
    for (int r = rows.first; r < rows.end; ++r) {
        tile_sum += tile_row_squares(tile_row(s, r), s.tile_columns);
    }
    std::uint32_t* column = line.ensure(s.offset_columns);
    std::fill(column, column + s.offset_columns, tile_sum);
    const auto window = [&](int row) {
        return window_sums.data() + static_cast<std::ptrdiff_t>(row) * s.offset_columns;
    };
    for (int r = rows.first; r + 1 < rows.end; ++r) {
        for (int j = 0; j < s.offset_columns; ++j) {
            column[j] += window(r)[j];
        }
    }
    std::uint32_t* out = errors.ensure(s.out_size());
    const std::uint32_t* product = cross.data();
    for (int i = 0; i < s.offset_rows; ++i, out += s.out_pitch(), product += s.out_pitch()) {
        const std::uint32_t* entering = window(rows.end - 1 + i);
        const std::uint32_t* leaving = window(rows.first + i);
        for (int j = 0; j < s.offset_columns; ++j) {
            column[j] += entering[j];
            out[j] = column[j] - 2 * product[j];
            column[j] -= leaving[j];
        }
    }
}

void Correlator::Work::take_off_region_runs(const Sampling& s, StripRows rows) {
    const std::ptrdiff_t length = s.tile_columns + 2 * s.offset_columns - 1;
    const int end = s.tile_columns + s.offset_columns - 1;
    for (const PixelRun& run : region.excluded()) {
        for (int i = std::max(0, run.row - rows.end + 1);
             i <= std::min(s.offset_rows - 1, run.row - rows.first); ++i) {
            const std::ptrdiff_t from = (run.row - i) * length + end;
            const std::ptrdiff_t out = static_cast<std::ptrdiff_t>(i) * s.out_pitch();
            take_off(errors.data() + out, tile_square_sums.data() + from - run.last - 1,
                     tile_square_sums.data() + from - run.first, s.offset_columns);
            take_off(counts.data() + out, tile_pixel_sums.data() + from - run.last - 1,
                     tile_pixel_sums.data() + from - run.first, s.offset_columns);
        }
    }
}

void Correlator::Work::take_off_tile_runs(const Sampling& s, StripRows rows) {
    for (const PixelRun& run : tile.excluded()) {
        if (run.row < rows.first || run.row >= rows.end) {
            continue;
        }
        for (int i = 0; i < s.offset_rows; ++i) {
            const std::uint32_t* row = region_square_sums.data() +
                                       static_cast<std::ptrdiff_t>(run.row + i) * (s.region_columns() + 1);
            take_off(errors.data() + static_cast<std::ptrdiff_t>(i) * s.out_pitch(), row + run.last + 1,
                     row + run.first, s.offset_columns);
        }
    }
}

void Correlator::Work::add_strip(const Sampling& s, StripRows rows) {
    Strip strip{};
    strip.tile = reinterpret_cast<const std::int8_t*>(tile_row(s, rows.first));
    strip.tile_pitch = tile.pitch();
    strip.region = region.row(rows.first);
    strip.region_pitch = region.pitch();
    strip.tile_rows = rows.end - rows.first;
    strip.tile_columns = s.tile_columns;
    strip.offset_rows = s.offset_rows;
    strip.offset_columns = s.offset_columns;
    const CrossKernel& best = kernel();
    strip.work = kernel_work.ensure(static_cast<std::ptrdiff_t>(best.work_bytes(strip)));
    best.cross(strip, cross.ensure(s.out_size()), s.out_pitch());
    start_errors(s, rows);
    take_off_region_runs(s, rows);
    take_off_tile_runs(s, rows);
    std::int64_t* sum = sums.data();
    const std::uint32_t* error = errors.data();
    for (std::ptrdiff_t k = 0; k < s.out_size(); ++k) {
        sum[k] += error[k];
    }
}

/// Mean errors, with a weight of 2 in the middle column of the search falling to 1 at its ends.
void Correlator::Work::normalise(const Sampling& s, const OverlapRule& rule, const TileSearch& search,
                                 ErrorSurface& surface) {
    const double half = search.search_columns / 2.0;
    const std::int64_t sampled =
        static_cast<std::int64_t>(search.tile_rows / search.step_y) * (search.tile_columns / search.step_x);
    const double least = search.search_rows != 0 ? rule.least_share * static_cast<double>(sampled) : 0.0;
    for (int j = 0; j < s.offset_columns; ++j) {
        const double from_middle = j * search.step_x - half;
        const double weight = half > 0.0 ? 2.0 - from_middle * from_middle / (half * half) : 2.0;
        for (int i = 0; i < s.offset_rows; ++i) {
            const std::ptrdiff_t k = static_cast<std::ptrdiff_t>(i) * s.out_pitch() + j;
            const double count = std::floor(counts.data()[k] * weight + 0.5);
            if (count >= least && count > 0.0) {
                surface.set(i, j, static_cast<float>(static_cast<double>(sums.data()[k]) / count));
            }
        }
    }
}

Correlator::Correlator() : work_(std::make_unique<Work>()) {}
Correlator::Correlator(Correlator&&) noexcept = default;
Correlator& Correlator::operator=(Correlator&&) noexcept = default;
Correlator::~Correlator() = default;

void Correlator::correlate(const ToneView& first, const ToneView& second, const OverlapRule& rule,
                           const TileSearch& search, ErrorSurface& surface) {
    surface.reshape(search);
    const Sampling sampling(first.picture, search);
    if (sampling.tile_rows <= 0 || sampling.tile_columns <= 0) {
        return;
    }
    work_->tile.copy_tile(first, rule.passe_colour, sampling);
    work_->region.copy_region(second, rule.passe_colour, sampling);
    work_->sum_windows(sampling);
    if (!work_->region.excluded().empty()) {
        work_->sum_tile_rows(sampling);
    }
    if (!work_->tile.excluded().empty()) {
        work_->sum_region_rows(sampling);
    }
    work_->start_counts(sampling);
    for (int r = 0; r < sampling.tile_rows; r += sampling.strip_rows) {
        work_->add_strip(sampling, {r, std::min(r + sampling.strip_rows, sampling.tile_rows)});
    }
    work_->normalise(sampling, rule, search, surface);
}

}  // namespace zemora
