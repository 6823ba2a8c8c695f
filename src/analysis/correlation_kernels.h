#pragma once
/// The inner loops of the correlation, one per instruction set: the cross term of the multiplied-out
/// square, sum over a strip of tile rows of (L - 128) x R.

#include <cstddef>
#include <cstdint>

namespace zemora::correlation_kernels {

/// Zero rows before and behind each strip of the tile, so that a block of displacement rows can be
/// worked on together.
inline constexpr int kRowPad = 8;
/// Displacement columns are computed in blocks of this size.
inline constexpr int kColumnBlock = 16;
/// Readable pixels behind the last one in use, in each row of tile and region.
inline constexpr int kColumnPad = 32;

/// A strip of the tile and the region of the other view that it meets. Pixels have four bytes, the
/// fourth is 0 in the region. Rows of pixels are `..._pitch` bytes apart.
struct Strip {
    const std::int8_t* tile;  ///< Mapped value - 128; `kRowPad` rows of zeros on either side.
    std::ptrdiff_t tile_pitch;
    const std::uint8_t* region;  ///< Mapped value, 0 where the pixel takes no part.
    std::ptrdiff_t region_pitch;
    int tile_rows;
    int tile_columns;    ///< Pixels behind the last one are zeros.
    int offset_rows;     ///< The region has `tile_rows` + `offset_rows` - 1 rows
    int offset_columns;  ///< and columns alike.
    void* work;          ///< `work_bytes` bytes, 64-byte aligned.
};

struct CrossKernel {
    /// Writes the sums to out[i x out_pitch + j] for all displacements, modulo 2^32; out_pitch is
    /// `offset_columns` rounded up to `kColumnBlock`.
    void (*cross)(const Strip& strip, std::uint32_t* out, std::ptrdiff_t out_pitch);
    std::size_t (*work_bytes)(const Strip& strip);
    /// out[x] = sum of v^2 - 256 v over the bytes of pixel x, modulo 2^32. Reads and writes up to
    /// `kColumnBlock` - 1 pixels behind the last.
    void (*square_terms)(const std::uint8_t* pixels, int count, std::uint32_t* out);
};

extern const CrossKernel kPortable;
#if defined(__x86_64__)
extern const CrossKernel kAvx2;
extern const CrossKernel kAvx512;
#endif

}  // namespace zemora::correlation_kernels
