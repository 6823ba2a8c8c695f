#include "numerics/turn.h"

#include <algorithm>
#include <cstring>

namespace zemora {

namespace {

/// Where source pixel (0, 0) lands in the target, and the steps of one column and one row.
struct TurnSteps {
    std::ptrdiff_t origin;
    std::ptrdiff_t per_column;
    std::ptrdiff_t per_row;
};

TurnSteps steps_of(int mode, int width, int height, std::ptrdiff_t pixel, std::ptrdiff_t pitch) {
    const std::ptrdiff_t w = width - 1;
    const std::ptrdiff_t h = height - 1;
    switch (mode) {
        case 1: return {h * pixel, pitch, -pixel};
        case 2: return {h * pitch + w * pixel, -pixel, -pitch};
        case 3: return {w * pitch, -pitch, pixel};
        case 4: return {w * pixel, -pixel, pitch};
        case 5: return {0, pitch, pixel};
        case 6: return {h * pitch, pixel, -pitch};
        case 7: return {w * pitch + h * pixel, -pitch, -pixel};
        default: return {0, pixel, pitch};
    }
}

/// Rows of one block: both the read and the written lines of a block stay in the cache.
constexpr int kBlock = 64;

template <int kBytes>
void turn_all(ConstPixelRows source, int width, int height, const TurnSteps& steps, std::uint8_t* target) {
    const int blocks = (height + kBlock - 1) / kBlock;
#pragma omp parallel for schedule(static)
    for (int block = 0; block < blocks; ++block) {
        const int end = std::min((block + 1) * kBlock, height);
        for (int first = 0; first < width; first += kBlock) {
            const int last = std::min(first + kBlock, width);
            for (int y = block * kBlock; y < end; ++y) {
                const std::uint8_t* from = source.bits + y * source.pitch + std::ptrdiff_t{first} * kBytes;
                std::uint8_t* to = target + steps.origin + y * steps.per_row + first * steps.per_column;
                for (int x = first; x < last; ++x, from += kBytes, to += steps.per_column) {
                    std::memcpy(to, from, kBytes);
                }
            }
        }
    }
}

}  // namespace

void turn_pixels(ConstPixelRows source, int width, int height, int pixel_bytes, int mode, PixelRows target) {
    constexpr int kDeepPixelBytes = 6;
    const TurnSteps steps = steps_of(mode, width, height, pixel_bytes, target.pitch);
    if (pixel_bytes == kDeepPixelBytes) {
        turn_all<kDeepPixelBytes>(source, width, height, steps, target.bits);
    } else {
        turn_all<3>(source, width, height, steps, target.bits);
    }
}

}  // namespace zemora
