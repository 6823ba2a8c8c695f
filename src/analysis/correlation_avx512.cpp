#include <immintrin.h>

#include "analysis/correlation_kernels.h"

namespace zemora::correlation_kernels {

namespace {

constexpr int kLanes = 16;  ///< Pixels of four bytes in a register.
constexpr int kPixel = 4;
constexpr int kBlockRows = 8;  ///< Displacement rows of a block; they share the loads of the region.

static_assert(kBlockRows <= kRowPad);
static_assert(kColumnBlock % kLanes == 0);

int broadcast_pixel(const std::int8_t* pixel) {
    int value = 0;
    __builtin_memcpy(&value, pixel, sizeof value);
    return value;
}

/// `Rows` displacement rows from `i0` and `Registers` x 16 columns from `j0`. For each region row
/// the tile rows that meet it at these displacements are taken together; rows off the strip are
/// zeros.
template <int Rows, int Registers>
void block(const Strip& strip, int i0, int j0, std::uint32_t* out, std::ptrdiff_t out_pitch) {
    __m512i sums[Rows][Registers];
    for (auto& row : sums) {
        for (__m512i& sum : row) {
            sum = _mm512_setzero_si512();
        }
    }
    for (int q = 0; q < strip.tile_rows + Rows - 1; ++q) {
        const std::uint8_t* region =
            strip.region + (q + i0) * strip.region_pitch + static_cast<std::ptrdiff_t>(j0) * kPixel;
        const std::int8_t* tile = strip.tile + q * strip.tile_pitch;
        for (int c = 0; c < strip.tile_columns; ++c, region += kPixel, tile += kPixel) {
            __m512i right[Registers];
            for (int v = 0; v < Registers; ++v) {
                right[v] = _mm512_loadu_si512(region + v * kLanes * kPixel);
            }
            for (int k = 0; k < Rows; ++k) {
                const __m512i left = _mm512_set1_epi32(broadcast_pixel(tile - k * strip.tile_pitch));
                for (int v = 0; v < Registers; ++v) {
                    sums[k][v] = _mm512_dpbusd_epi32(sums[k][v], right[v], left);
                }
            }
        }
    }
    for (int k = 0; k < Rows; ++k) {
        for (int v = 0; v < Registers; ++v) {
            _mm512_storeu_si512(out + (i0 + k) * out_pitch + j0 + v * kLanes, sums[k][v]);
        }
    }
}

template <int Rows>
void rows(const Strip& strip, int i0, std::uint32_t* out, std::ptrdiff_t out_pitch) {
    constexpr int kMost = Rows > 1 ? 3 : 4;  // registers of columns that the sums leave room for
    const int end = static_cast<int>(out_pitch) / kLanes;
    for (int v = 0; v < end;) {
        // The rest in equal parts: two blocks of two registers are faster than three and one.
        const int blocks = (end - v + kMost - 1) / kMost;
        const int registers = (end - v + blocks - 1) / blocks;
        switch (registers) {
            case 1: block<Rows, 1>(strip, i0, v * kLanes, out, out_pitch); break;
            case 2: block<Rows, 2>(strip, i0, v * kLanes, out, out_pitch); break;
            case 3: block<Rows, 3>(strip, i0, v * kLanes, out, out_pitch); break;
            default: block<Rows, kMost>(strip, i0, v * kLanes, out, out_pitch); break;
        }
        v += registers;
    }
}

void cross(const Strip& strip, std::uint32_t* out, std::ptrdiff_t out_pitch) {
    if (strip.offset_rows < kBlockRows) {
        for (int i = 0; i < strip.offset_rows; ++i) {
            rows<1>(strip, i, out, out_pitch);
        }
        return;
    }
    for (int i = 0; i < strip.offset_rows; i += kBlockRows) {
        // The last block overlaps the one before and writes the same sums again.
        const int last = strip.offset_rows - kBlockRows;
        rows<kBlockRows>(strip, i < last ? i : last, out, out_pitch);
    }
}

std::size_t work_bytes(const Strip& /*strip*/) {
    return 0;
}

/// v^2 - 256 v = v (v - 128) - 128 v, both products of an unsigned and a signed byte.
void square_terms(const std::uint8_t* pixels, int count, std::uint32_t* out) {
    const __m512i minus_128 = _mm512_set1_epi8(-128);
    for (int x = 0; x < count; x += kLanes, pixels += kLanes * kPixel) {
        const __m512i values = _mm512_loadu_si512(pixels);
        const __m512i centred = _mm512_xor_si512(values, minus_128);
        const __m512i products = _mm512_dpbusd_epi32(_mm512_setzero_si512(), values, centred);
        _mm512_storeu_si512(out + x, _mm512_dpbusd_epi32(products, values, minus_128));
    }
}

}  // namespace

const CrossKernel kAvx512 = {cross, work_bytes, square_terms};

}  // namespace zemora::correlation_kernels
