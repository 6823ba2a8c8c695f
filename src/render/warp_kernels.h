#pragma once
/// The vector forms of the steps of a warped row.
///
/// This header holds plain numbers only, no inline functions: the files that include it are compiled
/// for other instruction sets.

#include <cstddef>
#include <cstdint>

namespace zemora {

/// Pixels that the vector code samples and finishes at a time.
constexpr int kKernelBlock = 16;

/// The chain of one view for one row in 32 bits, see `ViewTransform`. What is constant in the row is
/// worked out before.
struct MapRow {
    std::int32_t x;  ///< Centred position of the first pixel, with the row's shear, 1/128 pixel.
    std::int32_t y;  ///< Centred position of the row after shift and size.
    std::int32_t half_width;
    std::int32_t half_height;
    std::int32_t side;
    std::int32_t trapez_slope;
    std::int32_t trapez_offset;
    std::int32_t has_trapez;
    std::int32_t shift_x;
    std::int32_t size;        ///< Times the position / (4 << halving).
    std::int32_t rotation;    ///< Times the position / (2 << halving).
    std::int32_t rotation_x;  ///< What the rotation adds to x in this row.
    std::int32_t vergence_v;
    std::int32_t halving;
    float half_width_px;  ///< Whole pixels.
    std::int32_t vergence_h;
    std::uint32_t divider;  ///< n / (height / 8) = n * divider >> divider_bits for n below 2^31.
    std::int32_t divider_bits;
    std::int32_t parabola_mean;
    float total_scale;
};

/// A colour as the vector code takes it.
struct KernelColour {
    std::uint8_t channel[3];
};

/// 4 by 4 taps, the weights negated so that -128 fits a signed byte.
struct TapPlan {
    const std::int32_t* weights;  ///< Per fraction the four weights of an axis as signed bytes.
    std::int32_t rounding;        ///< 256 times what is added to the weighted sum.
    std::int32_t keeps_apart;     ///< 1: samples whose high bytes are the background move by 256 in blue.
    KernelColour background;
    const std::uint8_t* source;
    std::ptrdiff_t pitch;  ///< Bytes; the picture is below 2^31 bytes.
    std::int32_t low;      ///< Positions from `low` to below the ends have all taps inside.
    std::int32_t x_end;
    std::int32_t y_end;
};

/// One set of kernels, for up to 32 blocks a call. A sample is four 16-bit numbers: three 8.8 channels
/// and the empty mark. A set of blocks is a mask of bits.
struct RowKernels {
    /// Source positions of `count` pixels, rounded up to whole vectors: the arrays are that long. The
    /// row's `halving` picks the entry.
    void (*map[2])(const MapRow& row, int count, std::int32_t* x, std::int32_t* y);
    /// Smallest x, largest x, smallest y, largest y of a block.
    void (*bounds)(const std::int32_t* x, const std::int32_t* y, std::int32_t* result);
    /// Samples the blocks that are not in `left_out` and lie inside; gives the blocks not done.
    std::uint32_t (*sample)(const TapPlan& plan, const std::int32_t* x, const std::int32_t* y, int blocks,
                            std::uint32_t left_out, std::uint16_t* samples);
    /// Bytes of the blocks without empty samples; gives the blocks not done.
    std::uint32_t (*finish)(const std::uint16_t* samples, int blocks, KernelColour background,
                            std::uint8_t* target);
    /// Sets the marks of the blocks of source pixels that hold the background.
    void (*mark)(const std::uint8_t* pixels, int blocks, KernelColour background, std::uint8_t* marks);
};

extern const RowKernels kRowKernelsAvx2;
extern const RowKernels kRowKernelsAvx512;

}  // namespace zemora
