#pragma once
/// The measuring instrument of the analysis: the mean squared colour difference between a tile of
/// one view and the equally large tiles of the other view over a range of displacements.

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "analysis/tone_tables.h"
#include "numerics/bitmap.h"

namespace zemora {

/// Error of a displacement at which too little of the tile overlaps the other view. A real error is
/// at most 3 x 255 x 255.
inline constexpr float kNoOverlap = 1e8F;

/// A view as the analysis sees it: the picture and the grey table that maps its channels.
struct ToneView {
    ToneView(ConstPicture view, const ToneTables& tables);

    ConstPicture picture;
    std::array<std::uint16_t, ToneTables::kLevels> grey;     ///< 8.8 fixed point.
    std::array<std::uint8_t, ToneTables::kLevels> mapped{};  ///< The whole part of `grey`.
};

/// What takes no part, and how much of a tile has to take part.
struct OverlapRule {
    Colour passe_colour;        ///< Unmapped pixels of this colour are left out.
    double least_share = 0.75;  ///< Of the tile's sampled pixels, for two-dimensional searches.
};

/// One tile and its range of displacements, in pixels.
struct TileSearch {
    int x = 0;  ///< Lower left pixel of the tile in the first view.
    int y = 0;
    int tile_rows = 0;
    int tile_columns = 0;
    int search_rows = 0;  ///< Displacements 0 to this, both inclusive.
    int search_columns = 0;
    int step_y = 1;  ///< Every so many rows and columns of tile and displacements.
    int step_x = 1;
    int shift_x = 0;  ///< Displacement at the centre of the search.
    int shift_y = 0;
};

/// Errors over the stepped displacements, [row][column]. Index (i, j) is the displacement
/// ((i - centre_row) x step_y, (j - centre_column) x step_x) from the centre of the search.
class ErrorSurface {
public:
    void reshape(const TileSearch& search);
    [[nodiscard]] int rows() const { return rows_; }
    [[nodiscard]] int columns() const { return columns_; }
    [[nodiscard]] int step_y() const { return step_y_; }
    [[nodiscard]] int step_x() const { return step_x_; }
    [[nodiscard]] int centre_row() const { return (rows_ - 1) / 2; }
    [[nodiscard]] int centre_column() const { return (columns_ - 1) / 2; }
    [[nodiscard]] float at(int i, int j) const { return errors_[index(i, j)]; }
    void set(int i, int j, float error) { errors_[index(i, j)] = error; }
    [[nodiscard]] const std::vector<float>& errors() const { return errors_; }
    /// Whether (i, j) is a displacement of the surface with enough overlap.
    [[nodiscard]] bool valid(int i, int j) const {
        return i >= 0 && j >= 0 && i < rows_ && j < columns_ && at(i, j) < kNoOverlap;
    }

    /// Whether no error within `reach` steps of (i, j) is less; all of these have to be valid.
    [[nodiscard]] bool is_local_minimum(int i, int j, int reach) const;

private:
    [[nodiscard]] std::size_t index(int i, int j) const {
        return static_cast<std::size_t>(i) * static_cast<std::size_t>(columns_) + static_cast<std::size_t>(j);
    }
    int rows_ = 0;
    int columns_ = 0;
    int step_y_ = 1;
    int step_x_ = 1;
    std::vector<float> errors_;
};

/// Correlates tiles; owns the work area, so each thread has one of its own.
class Correlator {
public:
    Correlator();
    Correlator(Correlator&&) noexcept;
    Correlator& operator=(Correlator&&) noexcept;
    Correlator(const Correlator&) = delete;
    Correlator& operator=(const Correlator&) = delete;
    ~Correlator();

    /// Fills `surface` for the tile, which lies inside the first view. The sums behind the errors
    /// are exact integers: they depend neither on threads nor on the instruction set.
    void correlate(const ToneView& first, const ToneView& second, const OverlapRule& rule,
                   const TileSearch& search, ErrorSurface& surface);

private:
    struct Work;
    std::unique_ptr<Work> work_;
};

/// The largest variance along a row of the tile, of the mapped grey value (sum of the channels over
/// 30); -1 when fewer than `least_pixels` of the tile lie inside the view.
[[nodiscard]] float tile_contrast(const ToneView& view, int tile_rows, int tile_columns, int x, int y,
                                  int least_pixels);

}  // namespace zemora
