#pragma once
/// Pixels of the warp: one output row of one view at a time.
///
/// A row runs in pieces through three steps: source positions, samples, bytes. Each step has a
/// portable form and may have vector forms with equal results.

#include <array>
#include <cstdint>

#include "render/background_map.h"
#include "render/colour_change.h"
#include "render/sample_pixel.h"
#include "render/tone.h"
#include "render/warp_kernels.h"
#include "render/warp_plan.h"

namespace zemora {

/// Pixels of a row worked on at a time; fits the first cache, at most 31 blocks.
inline constexpr int kPiece = 256;

/// Source positions of a piece, 1/128 pixel.
struct PiecePositions {
    alignas(64) std::array<std::int32_t, kPiece> x;
    alignas(64) std::array<std::int32_t, kPiece> y;
};

/// Everything that the rows of one view need.
struct ViewRows {
    ViewRows(const ViewTransform& view_transform, const Sampler& view_sampler, ConstPicture view_source,
             ToneLookup view_tone);

    ViewTransform transform;
    const Sampler& sampler;
    ConstPicture source;
    ToneLookup tone;
    BackgroundMap background;
    const RowKernels* kernels;  ///< Null for the portable forms.
    /// The chain in 32 bits; null where the numbers do not fit.
    void (*map_kernel)(const MapRow& row, int count, std::int32_t* x, std::int32_t* y);
    TapPlan taps;
    /// What follows the tone tables; null for nothing.
    const ColourChange* colours = nullptr;
    bool is_left = false;
};

/// The source positions of `count` pixels, at most a piece, of output row `row` from column `first` on.
void map_piece(const ViewRows& view, int row, int first, int count, PiecePositions& positions);

/// Writes `count` pixels of output row `row` from column `first` on to `target`.
void warp_row(const ViewRows& view, int row, int first, int count, std::uint8_t* target);

}  // namespace zemora
