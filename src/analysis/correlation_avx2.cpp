#include <immintrin.h>

#include "analysis/correlation_kernels.h"

namespace zemora::correlation_kernels {

namespace {

constexpr int kLanes = 8;  ///< Displacements in a register.
constexpr int kPixel = 4;
constexpr int kChannels = 3;
constexpr int kBlockRows = 4;

static_assert(kBlockRows <= kRowPad);
static_assert(kColumnBlock % (2 * kLanes) == 0);

/// Channels as planes of pairs of neighbours, two 16-bit values a pair: the tile has a pair for each
/// two columns, the region one for each column, so that the sum of two products is a displacement.
struct PairPlanes {
    std::int32_t* tile;
    std::int32_t* region;
    std::ptrdiff_t tile_plane;  ///< Pairs of one channel of a row.
    std::ptrdiff_t region_plane;
    std::ptrdiff_t tile_row;  ///< Pairs of a row, all channels.
    std::ptrdiff_t region_row;
};

PairPlanes planes_of(const Strip& strip) {
    PairPlanes p{};
    p.tile_plane = (strip.tile_columns + 1) / 2;
    const int out_columns = (strip.offset_columns + kColumnBlock - 1) / kColumnBlock * kColumnBlock;
    p.region_plane = (strip.tile_columns + 1 + out_columns + kLanes - 1) / kLanes * kLanes;
    p.tile_row = p.tile_plane * kChannels;
    p.region_row = p.region_plane * kChannels;
    p.region = static_cast<std::int32_t*>(strip.work);
    p.tile = p.region + p.region_row * (strip.tile_rows + strip.offset_rows - 1);
    return p;
}

std::size_t work_bytes(const Strip& strip) {
    const PairPlanes p = planes_of(strip);
    const std::ptrdiff_t region = p.region_row * (strip.tile_rows + strip.offset_rows - 1);
    const std::ptrdiff_t tile = p.tile_row * (strip.tile_rows + 2 * kBlockRows);
    return static_cast<std::size_t>(region + tile) * sizeof(std::int32_t);
}

std::int32_t pair_of(std::int32_t low, std::int32_t high) {
    return (low & 0xFFFF) | static_cast<std::int32_t>(static_cast<std::uint32_t>(high) << 16U);
}

void make_tile_row(const std::int8_t* pixels, const PairPlanes& p, std::int32_t* out) {
    for (std::ptrdiff_t k = 0; k < p.tile_plane; ++k, pixels += 2 * kPixel) {
        for (int ch = 0; ch < kChannels; ++ch) {
            out[ch * p.tile_plane + k] = pair_of(pixels[ch], pixels[kPixel + ch]);
        }
    }
}

void make_region_row(const std::uint8_t* pixels, const PairPlanes& p, std::int32_t* out) {
    const __m256i low_byte = _mm256_set1_epi32(0xFF);
    const __m256i high_byte = _mm256_set1_epi32(0xFF0000);
    for (std::ptrdiff_t x = 0; x < p.region_plane; x += kLanes, pixels += kLanes * kPixel, out += kLanes) {
        const __m256i here = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
        const __m256i next = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels + kPixel));
        const __m256i blue = _mm256_or_si256(_mm256_and_si256(here, low_byte),
                                             _mm256_and_si256(_mm256_slli_epi32(next, 16), high_byte));
        const __m256i green = _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi32(here, 8), low_byte),
                                              _mm256_and_si256(_mm256_slli_epi32(next, 8), high_byte));
        const __m256i red = _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi32(here, 16), low_byte),
                                            _mm256_and_si256(next, high_byte));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), blue);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + p.region_plane), green);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + 2 * p.region_plane), red);
    }
}

/// `Rows` displacement rows from `i0` and `Registers` x 8 columns from `j0`. A region row meets the
/// tile rows of these displacements together; rows off the strip are zeros.
template <int Rows, int Registers>
void block(const Strip& strip, const PairPlanes& p, int i0, int j0, std::uint32_t* out,
           std::ptrdiff_t out_pitch) {
    __m256i sums[Rows][Registers];
    for (auto& row : sums) {
        for (__m256i& sum : row) {
            sum = _mm256_setzero_si256();
        }
    }
    for (int q = 0; q < strip.tile_rows + Rows - 1; ++q) {
        for (int ch = 0; ch < kChannels; ++ch) {
            const std::int32_t* region = p.region + (q + i0) * p.region_row + ch * p.region_plane + j0;
            const std::int32_t* tile = p.tile + (q + kBlockRows) * p.tile_row + ch * p.tile_plane;
            for (std::ptrdiff_t c = 0; c < p.tile_plane; ++c, region += 2, ++tile) {
                __m256i right[Registers];
                for (int v = 0; v < Registers; ++v) {
                    right[v] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(region + v * kLanes));
                }
                for (int k = 0; k < Rows; ++k) {
                    const __m256i left = _mm256_set1_epi32(tile[-k * p.tile_row]);
                    for (int v = 0; v < Registers; ++v) {
                        sums[k][v] = _mm256_add_epi32(sums[k][v], _mm256_madd_epi16(right[v], left));
                    }
                }
            }
        }
    }
    for (int k = 0; k < Rows; ++k) {
        for (int v = 0; v < Registers; ++v) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + (i0 + k) * out_pitch + j0 + v * kLanes),
                                sums[k][v]);
        }
    }
}

void cross(const Strip& strip, std::uint32_t* out, std::ptrdiff_t out_pitch) {
    const PairPlanes p = planes_of(strip);
    for (int r = 0; r < strip.tile_rows + strip.offset_rows - 1; ++r) {
        make_region_row(strip.region + r * strip.region_pitch, p, p.region + r * p.region_row);
    }
    for (int r = -kBlockRows; r < strip.tile_rows + kBlockRows; ++r) {
        make_tile_row(strip.tile + r * strip.tile_pitch, p, p.tile + (r + kBlockRows) * p.tile_row);
    }
    const int columns = static_cast<int>(out_pitch);
    for (int i = 0; strip.offset_rows < kBlockRows && i < strip.offset_rows; ++i) {
        int j = 0;
        for (; j + 4 * kLanes <= columns; j += 4 * kLanes) {
            block<1, 4>(strip, p, i, j, out, out_pitch);
        }
        for (; j < columns; j += 2 * kLanes) {
            block<1, 2>(strip, p, i, j, out, out_pitch);
        }
    }
    for (int i = 0; strip.offset_rows >= kBlockRows && i < strip.offset_rows; i += kBlockRows) {
        // The last block overlaps the one before and writes the same sums again.
        const int last = strip.offset_rows - kBlockRows;
        for (int j = 0; j < columns; j += 2 * kLanes) {
            block<kBlockRows, 2>(strip, p, i < last ? i : last, j, out, out_pitch);
        }
    }
}

void square_terms(const std::uint8_t* pixels, int count, std::uint32_t* out) {
    constexpr int kQuad = 4;  // pixels of 16-bit channels in a register
    const __m256i level = _mm256_set1_epi16(256);
    for (int x = 0; x < count; x += kQuad, pixels += kQuad * kPixel) {
        const __m256i values =
            _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels)));
        const __m256i pairs = _mm256_madd_epi16(values, _mm256_sub_epi16(values, level));
        const __m256i sums = _mm256_permute4x64_epi64(_mm256_hadd_epi32(pairs, pairs), 0x08);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), _mm256_castsi256_si128(sums));
    }
}

}  // namespace

const CrossKernel kAvx2 = {cross, work_bytes, square_terms};

}  // namespace zemora::correlation_kernels
