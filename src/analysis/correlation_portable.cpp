#include <algorithm>

#include "analysis/correlation_kernels.h"

namespace zemora::correlation_kernels {

namespace {

constexpr int kChannels = 3;

/// Three 16-bit values a pixel, without gaps: products of pairs are what every vector unit adds up.
template <class Byte>
void widen_row(const Byte* pixels, int count, std::int16_t* out) {
    for (int x = 0; x < count; ++x) {
        for (int c = 0; c < kChannels; ++c) {
            *out++ = static_cast<std::int16_t>(static_cast<int>(pixels[4 * x + c]));
        }
    }
}

constexpr int kTogether = 4;  ///< Neighbouring displacements that share the loads of the tile.

/// Adds the sums of products of `a` with `b` at `kTogether` neighbouring displacements, modulo 2^32.
void add_dots(const std::int16_t* a, const std::int16_t* b, int count, std::uint32_t* sums) {
    std::uint32_t s0 = 0;
    std::uint32_t s1 = 0;
    std::uint32_t s2 = 0;
    std::uint32_t s3 = 0;
    for (int k = 0; k < count; ++k) {
        s0 += static_cast<std::uint32_t>(a[k] * b[k]);
        s1 += static_cast<std::uint32_t>(a[k] * b[k + kChannels]);
        s2 += static_cast<std::uint32_t>(a[k] * b[k + 2 * kChannels]);
        s3 += static_cast<std::uint32_t>(a[k] * b[k + 3 * kChannels]);
    }
    sums[0] += s0;
    sums[1] += s1;
    sums[2] += s2;
    sums[3] += s3;
}

/// Columns of the region that are read: those of whole groups of displacements.
int region_columns(const Strip& strip) {
    return strip.tile_columns + (strip.offset_columns + kTogether - 1) / kTogether * kTogether - 1;
}

std::size_t work_bytes(const Strip& strip) {
    const auto tile = static_cast<std::size_t>(strip.tile_columns);
    const auto region = static_cast<std::size_t>(region_columns(strip));
    const auto region_rows = static_cast<std::size_t>(strip.tile_rows + strip.offset_rows - 1);
    return sizeof(std::int16_t) * kChannels *
           (tile * static_cast<std::size_t>(strip.tile_rows) + region * region_rows);
}

void cross(const Strip& strip, std::uint32_t* out, std::ptrdiff_t out_pitch) {
    const int tile_values = strip.tile_columns * kChannels;
    const int region_values = region_columns(strip) * kChannels;
    auto* tile = static_cast<std::int16_t*>(strip.work);
    std::int16_t* region = tile + static_cast<std::ptrdiff_t>(strip.tile_rows) * tile_values;
    for (int r = 0; r < strip.tile_rows; ++r) {
        widen_row(strip.tile + r * strip.tile_pitch, strip.tile_columns,
                  tile + static_cast<std::ptrdiff_t>(r) * tile_values);
    }
    for (int r = 0; r < strip.tile_rows + strip.offset_rows - 1; ++r) {
        widen_row(strip.region + r * strip.region_pitch, region_columns(strip),
                  region + static_cast<std::ptrdiff_t>(r) * region_values);
    }
    for (int i = 0; i < strip.offset_rows; ++i) {
        for (int j = 0; j < strip.offset_columns; j += kTogether) {
            std::uint32_t* sums = out + i * out_pitch + j;
            std::fill(sums, sums + kTogether, 0U);
            for (int r = 0; r < strip.tile_rows; ++r) {
                add_dots(tile + static_cast<std::ptrdiff_t>(r) * tile_values,
                         region + static_cast<std::ptrdiff_t>(r + i) * region_values + j * kChannels,
                         tile_values, sums);
            }
        }
    }
}

void square_terms(const std::uint8_t* pixels, int count, std::uint32_t* out) {
    const auto term = [](int value) { return value * (value - 256); };
    for (int x = 0; x < count; ++x, pixels += 4) {
        out[x] = static_cast<std::uint32_t>(term(pixels[0]) + term(pixels[1]) + term(pixels[2]));
    }
}

}  // namespace

const CrossKernel kPortable = {cross, work_bytes, square_terms};

}  // namespace zemora::correlation_kernels
