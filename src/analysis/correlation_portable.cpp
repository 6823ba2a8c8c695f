#include "analysis/correlation_kernels.h"

namespace zemora::correlation_kernels {

namespace {

constexpr int kChannels = 3;

/// Three 16-bit values a pixel, without gaps: products of pairs are what every vector unit adds up.
template <class Byte>
void widen_row(const Byte* pixels, int count, std::int16_t* out) {
    for (int x = 0; x < count; ++x) {
        for (int c = 0; c < kChannels; ++c) {
            *out++ = pixels[4 * x + c];
        }
    }
}

/// Sum of products of two runs of values. |sum| < 2^15 x 3 x columns, modulo 2^32 beyond.
std::uint32_t dot(const std::int16_t* a, const std::int16_t* b, int count) {
    std::uint32_t sum = 0;
    for (int k = 0; k < count; ++k) {
        sum += static_cast<std::uint32_t>(a[k] * b[k]);
    }
    return sum;
}

std::size_t work_bytes(const Strip& strip) {
    const auto tile = static_cast<std::size_t>(strip.tile_columns);
    const auto region = static_cast<std::size_t>(strip.tile_columns + strip.offset_columns - 1);
    const auto region_rows = static_cast<std::size_t>(strip.tile_rows + strip.offset_rows - 1);
    return sizeof(std::int16_t) * kChannels * (tile * static_cast<std::size_t>(strip.tile_rows) + region * region_rows);
}

void cross(const Strip& strip, std::uint32_t* out, std::ptrdiff_t out_pitch) {
    const int tile_values = strip.tile_columns * kChannels;
    const int region_columns = strip.tile_columns + strip.offset_columns - 1;
    const int region_values = region_columns * kChannels;
    auto* tile = static_cast<std::int16_t*>(strip.work);
    std::int16_t* region = tile + static_cast<std::ptrdiff_t>(strip.tile_rows) * tile_values;
    for (int r = 0; r < strip.tile_rows; ++r) {
        widen_row(strip.tile + r * strip.tile_pitch, strip.tile_columns, tile + static_cast<std::ptrdiff_t>(r) * tile_values);
    }
    for (int r = 0; r < strip.tile_rows + strip.offset_rows - 1; ++r) {
        widen_row(strip.region + r * strip.region_pitch, region_columns,
                  region + static_cast<std::ptrdiff_t>(r) * region_values);
    }
    for (int i = 0; i < strip.offset_rows; ++i) {
        for (int j = 0; j < strip.offset_columns; ++j) {
            std::uint32_t sum = 0;
            for (int r = 0; r < strip.tile_rows; ++r) {
                sum += dot(tile + static_cast<std::ptrdiff_t>(r) * tile_values,
                           region + static_cast<std::ptrdiff_t>(r + i) * region_values + j * kChannels, tile_values);
            }
            out[i * out_pitch + j] = sum;
        }
    }
}

}  // namespace

const CrossKernel kPortable = {cross, work_bytes};

}  // namespace zemora::correlation_kernels
