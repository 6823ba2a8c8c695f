#pragma once
/// Where a source picture holds pixels of the background colour, in coarse tiles.

#include <cstdint>
#include <vector>

#include "numerics/bitmap.h"
#include "render/warp_kernels.h"

namespace zemora {

class BackgroundMap {
public:
    static constexpr int kTileWidth = 16;  ///< Pixels.
    static constexpr int kTileRows = 8;

    /// `kernels` may be null.
    BackgroundMap(ConstPicture source, Colour background, const RowKernels* kernels);

    [[nodiscard]] bool any() const { return any_; }
    /// Whether a tile of the rectangle, all bounds inclusive and inside the picture, holds background.
    [[nodiscard]] bool touches(int left, int bottom, int right, int top) const;

private:
    int columns_;
    bool any_ = false;
    std::vector<std::uint8_t> tiles_;
};

}  // namespace zemora
