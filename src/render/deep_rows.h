#pragma once
/// Pixels of the warp in 16 bits: the positions, kernels, tone and colour change of the 8-bit warp on deep
/// taps.

#include <vector>

#include "render/deep_picture.h"
#include "render/warp_rows.h"

namespace zemora {

/// Everything that the rows of one deep view need.
struct DeepRows {
    /// `plain` is the view with 8 bits, of the size of `deep`, which shows what in it is no picture; or
    /// empty.
    DeepRows(const ViewTransform& transform, const Sampler& sampler, DeepPicture deep, ConstPicture plain);

    ViewRows rows;  ///< Of the 8-bit view.
    DeepPicture source;
    /// By channel in memory; null where no table applies.
    std::array<const std::array<std::uint16_t, ToneTables::kLevels>*, kPixelBytes> tone{};
    std::vector<double> light;  ///< Of all values, where the kernel blends in linear light.
};

/// The sample at (x, y) in 1/128 source pixel; false, and nothing written, where there is no picture.
bool sample_deep(const DeepRows& view, int x, int y, std::uint16_t* target);

/// Writes `count` pixels of output row `row` from column `first` on to `target`; no picture is the
/// background colour.
void warp_deep_row(const DeepRows& view, int row, int first, int count, std::uint16_t* target);

}  // namespace zemora
