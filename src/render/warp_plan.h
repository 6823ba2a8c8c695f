#pragma once
/// What one warp does to each view, as plain numbers: no pixel is touched here.
///
/// Positions are in 1/128 pixel and centred: x = 128 column - 128 width/2, y = 128 row - 128
/// height/2, rows from the bottom. `map` leads from an output position to the source position.
/// The chain works in 64 bits; `fits_32` tells that no step leaves 31 bits, for the vector code.

#include <array>
#include <cstdint>

#include "render/warp_kernels.h"
#include "render/warp_pair.h"

namespace zemora {

inline constexpr int kPositionUnit = 128;  ///< Positions per pixel.

[[nodiscard]] FixedCorrection fixed_correction(const WarpPlan& plan);

/// Whether the corrections are within what the approximations of the chain hold for. A vergence
/// beyond its limit is reported once a pair and becomes 0; a size or rotation beyond it is reported and gives
/// false.
[[nodiscard]] bool check_limits(FixedCorrection& fixed, int height, int width, Notes& notes);

/// The same without a word, and a vergence beyond its limit becomes 0.
[[nodiscard]] bool is_within_limits(FixedCorrection& fixed, const PictureSize& frame);

/// A position in 1/128 pixel.
struct Position {
    std::int64_t x = 0;
    std::int64_t y = 0;
};

/// The chain of one view.
struct ViewTransform {
    int height = 0;  ///< Output frame, pixels.
    int width = 0;
    int side = 1;  ///< -1 left, +1 right.
    float total_scale = 1.0F;

    // Shapes: shears mirrored between the views, trapezoids common to both.
    double phantogram = 0.0;
    double edge_warp = 0.0;
    double vertical_ax = 0.0;
    double common_trapez = 0.0;
    double sym_trapez = 0.0;

    // The share of this view in the correction.
    std::int64_t shift_x = 0;
    std::int64_t shift_y = 0;
    std::int64_t size = 0;      ///< Signed for this view.
    std::int64_t rotation = 0;  ///< Signed for this view.
    std::int64_t vergence_v = 0;
    std::int64_t vergence_h = 0;
    int halving = 0;  ///< 1 when this view takes half of the correction.

    /// Source position in 1/128 source pixel of the output pixel; limited to 30 bits.
    [[nodiscard]] Position map(int column, int row) const;
    /// The chain without the way back to the source: a centred output position.
    [[nodiscard]] Position map_centred(Position position) const;
    /// Whether vector code with 32-bit steps and float divisions gives the same numbers.
    [[nodiscard]] bool fits_32() const;
};

/// The chain for the row from column `first` on, where `fits_32` holds.
[[nodiscard]] MapRow map_row_of(const ViewTransform& view, int row, int first);

/// Left and right.
using PairTransform = std::array<ViewTransform, 2>;

/// `fixed` is the correction of the plan within its limits.
[[nodiscard]] PairTransform make_transforms(const WarpPlan& plan, const FixedCorrection& fixed);

}  // namespace zemora
