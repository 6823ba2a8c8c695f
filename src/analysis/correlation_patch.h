#pragma once
/// Dense copies of the sampled pixels of a tile and of its search region, with the pixels that take
/// no part kept as runs.

#include <cstdint>
#include <vector>

#include "analysis/correlation.h"
#include "analysis/correlation_kernels.h"
#include "numerics/labelled_array.h"

namespace zemora::correlation_patch {

/// Memory that only grows; contents are undefined after `ensure`.
template <class T>
class Buffer {
public:
    T* ensure(std::ptrdiff_t size) {
        if (elements_.size() < size) {
            elements_ = LabelledVector<T>(size, "correlation:right_tmp");
        }
        return elements_.data();
    }
    [[nodiscard]] T* data() { return elements_.data(); }
    [[nodiscard]] const T* data() const { return elements_.data(); }

private:
    LabelledVector<T> elements_{0, "correlation:right_tmp"};
};

/// The samples of tile and region as dense arrays.
struct Sampling {
    Sampling(const ConstPicture& first, const TileSearch& search);

    int step_x;
    int step_y;
    int tile_rows;
    int tile_columns;
    int offset_rows;
    int offset_columns;
    int tile_x;  ///< First sampled pixel of the tile.
    int tile_y;
    int region_x;  ///< First sampled pixel of the region; it may lie outside the view.
    int region_y;
    int strip_rows;  ///< Tile rows of a strip, which is summed up in 32 bits.

    [[nodiscard]] int region_rows() const { return tile_rows + offset_rows - 1; }
    [[nodiscard]] int region_columns() const { return tile_columns + offset_columns - 1; }
    /// Columns of the arrays over the displacements.
    [[nodiscard]] int out_pitch() const {
        constexpr int kBlock = correlation_kernels::kColumnBlock;
        return (offset_columns + kBlock - 1) / kBlock * kBlock;
    }
    [[nodiscard]] std::ptrdiff_t out_size() const {
        return static_cast<std::ptrdiff_t>(offset_rows) * out_pitch();
    }
    /// Row of the padded tile copy that holds tile row r.
    [[nodiscard]] int padded_row(int r) const {
        return r + correlation_kernels::kRowPad * (r / strip_rows + 1);
    }
};

/// Neighbouring pixels of one row, both ends inclusive.
struct PixelRun {
    int row = 0;
    int first = 0;
    int last = 0;
};

/// Pixels of four bytes: mapped blue, green, red, and 0. Excluded ones count as mapped 0.
class Patch {
public:
    /// The sampled tile, as values - 128 with rows of zeros between the strips.
    void copy_tile(const ToneView& view, Colour passe, const Sampling& sampling);
    /// The sampled region; pixels outside the view are excluded.
    void copy_region(const ToneView& view, Colour passe, const Sampling& sampling);

    [[nodiscard]] const std::uint8_t* row(int r) const { return bytes_.data() + r * pitch_; }
    [[nodiscard]] std::ptrdiff_t pitch() const { return pitch_; }
    [[nodiscard]] const std::vector<PixelRun>& excluded() const { return excluded_; }

private:
    void copy_row(const ToneView& view, Colour passe, int x, int y, int step_x, int count, int row,
                  std::uint32_t* out);
    void exclude(const ToneView& view, Colour passe, int x, int y, int step_x, int row, int first, int end);
    std::uint32_t* prepare(std::ptrdiff_t rows, std::ptrdiff_t columns);

    Buffer<std::uint8_t> bytes_;
    std::ptrdiff_t pitch_ = 0;
    std::vector<PixelRun> excluded_;
};

}  // namespace zemora::correlation_patch
