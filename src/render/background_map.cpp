#include "render/background_map.h"

#include <algorithm>

namespace zemora {

namespace {

bool holds_background(const std::uint8_t* pixel, int count, KernelColour background) {
    for (int i = 0; i < count; ++i, pixel += kPixelBytes) {
        if (pixel[0] == background.channel[0] && pixel[1] == background.channel[1] &&
            pixel[2] == background.channel[2]) {
            return true;
        }
    }
    return false;
}

/// Marks in `tiles` the tiles of one row of pixels that hold `background`.
void mark_row(const std::uint8_t* row, int width, KernelColour background, const RowKernels* kernels,
              std::uint8_t* tiles) {
    const int whole = kernels == nullptr ? 0 : width / BackgroundMap::kTileWidth;
    if (whole > 0) {
        kernels->mark(row, whole, background, tiles);
    }
    tiles += whole;
    for (int x = whole * BackgroundMap::kTileWidth; x < width; x += BackgroundMap::kTileWidth, ++tiles) {
        const int count = std::min(width - x, BackgroundMap::kTileWidth);
        const std::uint8_t* pixels = row + static_cast<std::ptrdiff_t>(x) * kPixelBytes;
        *tiles |= static_cast<std::uint8_t>(holds_background(pixels, count, background));
    }
}

}  // namespace

BackgroundMap::BackgroundMap(ConstPicture source, Colour background, const RowKernels* kernels)
    : columns_((source.width + kTileWidth - 1) / kTileWidth) {
    const int tile_rows = (source.height + kTileRows - 1) / kTileRows;
    tiles_.assign(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(tile_rows), 0);
    std::uint8_t* tiles = tiles_.data();
    const KernelColour colour{{background.blue, background.green, background.red}};
    static_assert(kTileWidth == kKernelBlock);
#pragma omp parallel for schedule(dynamic, 16)
    for (int tile_row = 0; tile_row < tile_rows; ++tile_row) {
        const int end = std::min(source.height, (tile_row + 1) * kTileRows);
        for (int y = tile_row * kTileRows; y < end; ++y) {
            mark_row(source.row(y), source.width, colour, kernels,
                     tiles + static_cast<std::ptrdiff_t>(tile_row) * columns_);
        }
    }
    any_ = std::find(tiles_.begin(), tiles_.end(), 1) != tiles_.end();
}

bool BackgroundMap::touches(int left, int bottom, int right, int top) const {
    if (!any_) {
        return false;
    }
    for (int j = bottom / kTileRows; j <= top / kTileRows; ++j) {
        const std::uint8_t* row = tiles_.data() + static_cast<std::ptrdiff_t>(j) * columns_;
        for (int i = left / kTileWidth; i <= right / kTileWidth; ++i) {
            if (row[i] != 0) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace zemora
