#include "depth/motion_field.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kCellsPerRow = 60;
constexpr int kLeastRefinedCell = 8;  // pixels; three halvings leave one
constexpr int kRefinements = 3;
constexpr int kSmoothings = 3;
constexpr int kLeastShiftH = 11;  // pixels
constexpr int kLastSweep = 100;
constexpr int kShortGap = 3;  // cells from neighbour to neighbour that are interpolated

// Marks of cells. Bit 0: without usable vector.
constexpr int kNoVector = 1;
constexpr int kNoTexture = 3;
constexpr int kUnclear = 5;
constexpr int kAtBorder = 9;

/// Cells of one matching; the vectors of those that found nothing are filled in.
struct CellGrid {
    int rows = 0;
    int columns = 0;
    std::vector<MotionVector> vectors;
    std::vector<int> flags;

    [[nodiscard]] std::size_t index(int row, int column) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
               static_cast<std::size_t>(column);
    }
    [[nodiscard]] bool is_empty(std::size_t cell) const { return (flags[cell] & kNoVector) != 0; }
    void set(std::size_t cell, MotionVector vector) {
        vectors[cell] = vector;
        flags[cell] &= ~kNoVector;
    }
};

double luminance(const std::uint8_t* pixel) {
    return (58.0 * pixel[1] + 30.0 * pixel[2] + 12.0 * pixel[0]) / 100.0;
}

/// Mean squared distance of the block's luminance from the plane that fits it best. On a square lattice
/// the slopes are independent of each other.
double texture_of(ConstPicture picture, int size, int x0, int y0) {
    const double middle = (size - 1) / 2.0;
    double sum = 0.0;
    double squares = 0.0;
    double along_x = 0.0;
    double along_y = 0.0;
    for (int y = 0; y < size; ++y) {
        const std::uint8_t* pixel = picture.row(y0 + y) + kPixelBytes * x0;
        for (int x = 0; x < size; ++x, pixel += kPixelBytes) {
            const double value = luminance(pixel);
            sum += value;
            squares += value * value;
            along_x += value * (x - middle);
            along_y += value * (y - middle);
        }
    }
    const double count = static_cast<double>(size) * size;
    const double spread = (static_cast<double>(size) * size - 1.0) / 12.0;  // mean of (x - middle)^2
    const double mean = sum / count;
    const double variance = squares / count - mean * mean;
    if (spread <= 0.0) {
        return variance;
    }
    const double slopes = along_x * along_x + along_y * along_y;
    return variance - slopes / (count * count * spread);
}

/// (a + 2b + c + 2) / 4 along rows and then along columns; the border stays.
void smooth(Picture picture) {
    const int bytes = kPixelBytes * picture.width;
    const auto blend = [](int a, int b, int c) {
        return static_cast<std::uint8_t>((a + 2 * b + c + 2) >> 2);
    };
    std::vector<std::uint8_t> before(static_cast<std::size_t>(bytes));
    std::vector<std::uint8_t> here(static_cast<std::size_t>(bytes));
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* row = picture.row(y);
        std::copy_n(row, bytes, here.data());
        for (int i = kPixelBytes; i < bytes - kPixelBytes; ++i) {
            row[i] = blend(here[static_cast<std::size_t>(i - kPixelBytes)], here[static_cast<std::size_t>(i)],
                           here[static_cast<std::size_t>(i + kPixelBytes)]);
        }
    }
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* row = picture.row(y);
        std::copy_n(row, bytes, here.data());
        if (y > 0 && y + 1 < picture.height) {
            const std::uint8_t* above = picture.row(y + 1);
            for (int i = 0; i < bytes; ++i) {
                row[i] = blend(before[static_cast<std::size_t>(i)], row[i], above[i]);
            }
        }
        before.swap(here);
    }
}

Bitmap smoothed(ConstPicture picture) {
    Bitmap copied = Bitmap::create(picture.width, picture.height);
    if (copied) {
        copy(picture, copied.picture());
        for (int i = 0; i < kSmoothings; ++i) {
            smooth(copied.picture());
        }
    }
    return copied;
}

int byte_differences(const std::uint8_t* a, const std::uint8_t* b, int count) {
    int sum = 0;
    for (int i = 0; i < count; ++i) {
        sum += std::abs(a[i] - b[i]);
    }
    return sum;
}

/// Mean over the block's pixels whose place lies in `to`.
float cost_of(ConstPicture from, ConstPicture to, int size, int x0, int y0, MotionVector offset) {
    constexpr float kTooFew = 1e6F;
    const int first_x = std::max(x0, -offset.x);
    const int end_x = std::min({x0 + size, from.width, to.width - offset.x});
    const int first_y = std::max(y0, -offset.y);
    const int end_y = std::min({y0 + size, from.height, to.height - offset.y});
    const int columns = std::max(end_x - first_x, 0);
    const int rows = std::max(end_y - first_y, 0);
    if (rows * columns < size * size / 2 || rows * columns == 0) {
        return kTooFew;
    }
    std::int64_t sum = 0;
    for (int y = first_y; y < end_y; ++y) {
        sum += byte_differences(from.row(y) + kPixelBytes * first_x,
                                to.row(y + offset.y) + kPixelBytes * (first_x + offset.x),
                                kPixelBytes * columns);
    }
    return static_cast<float>(static_cast<double>(sum) / (rows * columns));
}

MotionVector interpolated(MotionVector a, MotionVector b, int step, int steps) {
    const auto between = [&](int p, int q) {
        return round_half_up(p + static_cast<double>((q - p) * step) / steps);
    };
    return {between(a.x, b.x), between(a.y, b.y)};
}

/// Runs of empty cells along one line of the grid: `cell(i)` of `count`.
template <class CellAt>
void fill_line(CellGrid& grid, int count, const CellAt& cell) {
    for (int start = 0; start < count; ++start) {
        if (!grid.is_empty(cell(start))) {
            continue;
        }
        int end = start;
        while (end < count && grid.is_empty(cell(end))) {
            ++end;
        }
        const int before = start - 1;
        const bool reaches_end = end >= count - 1;  // behind the run is nothing, or the last cell
        if (before < 0 && !reaches_end) {
            for (int i = start; i < end; ++i) {
                grid.set(cell(i), grid.vectors[cell(end)]);
            }
        } else if (before >= 0 && reaches_end) {
            for (int i = start; i < count; ++i) {
                grid.set(cell(i), grid.vectors[cell(before)]);
            }
            return;
        } else if (before >= 0 && end <= before + kShortGap) {
            for (int i = start; i < end; ++i) {
                grid.set(cell(i), interpolated(grid.vectors[cell(before)], grid.vectors[cell(end)],
                                               i - before, end - before));
            }
        }
        start = end;
    }
}

/// Mean of the neighbours that have a vector; false without any.
bool fill_from_neighbours(CellGrid& grid, int row, int column) {
    int count = 0;
    double x = 0.0;
    double y = 0.0;
    for (int r = std::max(row - 1, 0); r <= std::min(row + 1, grid.rows - 1); ++r) {
        for (int c = std::max(column - 1, 0); c <= std::min(column + 1, grid.columns - 1); ++c) {
            const std::size_t cell = grid.index(r, c);
            if (!grid.is_empty(cell)) {
                x += grid.vectors[cell].x;
                y += grid.vectors[cell].y;
                ++count;
            }
        }
    }
    if (count > 0) {
        grid.set(grid.index(row, column), {round_half_up(x / count), round_half_up(y / count)});
    }
    return count > 0;
}

void fill_cells(CellGrid& grid) {
    for (int row = 0; row < grid.rows; ++row) {
        fill_line(grid, grid.columns, [&](int i) { return grid.index(row, i); });
    }
    for (int column = 0; column < grid.columns; ++column) {
        fill_line(grid, grid.rows, [&](int i) { return grid.index(i, column); });
    }
    bool has_empty = true;
    for (int sweep = 0; sweep < kLastSweep && has_empty; ++sweep) {
        has_empty = false;
        for (int row = 0; row < grid.rows; ++row) {
            for (int column = 0; column < grid.columns; ++column) {
                if (grid.is_empty(grid.index(row, column))) {
                    has_empty = true;
                    (void)fill_from_neighbours(grid, row, column);
                }
            }
        }
    }
    for (std::size_t cell = 0; cell < grid.vectors.size(); ++cell) {
        if (grid.is_empty(cell)) {
            grid.vectors[cell] = {};
        }
    }
}

/// Matches all cells within `reach` pixels; the number of clear ones at the border of the search.
int match_cells(CellGrid& grid, const std::vector<int>& texture, ConstPicture from, ConstPicture to,
                int block, int reach) {
    int at_border = 0;
    const MatchRange range{-reach, reach, -reach, reach};
#pragma omp parallel for schedule(dynamic) reduction(+ : at_border)
    for (int row = 0; row < grid.rows; ++row) {
        for (int column = 0; column < grid.columns; ++column) {
            const std::size_t cell = grid.index(row, column);
            const BlockMatch match = match_block(from, to, block, column * block, row * block, range);
            grid.vectors[cell] = match.vector;
            grid.flags[cell] = texture[cell] | match.flags;
            const int farthest = std::max(std::abs(match.vector.x), std::abs(match.vector.y));
            if (farthest == reach) {
                at_border += grid.is_empty(cell) ? 0 : 1;
                grid.flags[cell] |= kAtBorder;
            }
        }
    }
    return at_border;
}

}  // namespace

BlockMatch match_block(ConstPicture from, ConstPicture to, int size, int x, int y, const MatchRange& range) {
    constexpr float kClear = 0.1F;
    const int columns = range.dx_max - range.dx_min + 1;
    const int rows = range.dy_max - range.dy_min + 1;
    if (rows <= 0 || columns <= 0) {
        return {{}, kUnclear};
    }
    std::vector<float> costs;
    costs.reserve(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
    for (int dy = range.dy_min; dy <= range.dy_max; ++dy) {
        for (int dx = range.dx_min; dx <= range.dx_max; ++dx) {
            costs.push_back(cost_of(from, to, size, x, y, {dx, dy}));
        }
    }
    const auto least = static_cast<int>(std::min_element(costs.begin(), costs.end()) - costs.begin());
    float second = std::numeric_limits<float>::infinity();
    for (int i = 0; i < static_cast<int>(costs.size()); ++i) {
        if (i / columns != least / columns && i % columns != least % columns) {
            second = std::min(second, costs[static_cast<std::size_t>(i)]);
        }
    }
    const bool is_clear = second - costs[static_cast<std::size_t>(least)] > kClear;
    return {{range.dx_min + least % columns, range.dy_min + least / columns}, is_clear ? 0 : kUnclear};
}

Result<void> MotionField::estimate_motion_field(ConstPicture from, ConstPicture to) {
    width_ = from.width;
    height_ = from.height;
    vectors_.assign(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), {});
    const int block = std::clamp(width_ / kCellsPerRow, 1, std::max(height_, 1));
    fine_step_ = block;
    const Bitmap smooth_from = smoothed(from);
    const Bitmap smooth_to = smoothed(to);
    if (!smooth_from || !smooth_to) {
        return Failure::out_of_memory("d71: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE\n");
    }
    match_grid(from, smooth_from.picture(), smooth_to.picture(), block);
    for (int level = 0; level < kRefinements && block >= kLeastRefinedCell; ++level) {
        fine_step_ /= 2;
        refine(smooth_from.picture(), smooth_to.picture(), fine_step_);
    }
    return {};
}

void MotionField::match_grid(ConstPicture from, ConstPicture smooth_from, ConstPicture smooth_to, int block) {
    constexpr double kLeastTexture = 5.0;
    constexpr int kCellsPerStray = 500;
    constexpr int kFarTooMany = 10;  // times the allowed number: the motion is wider than the search
    CellGrid grid{height_ / block, width_ / block, {}, {}};
    const std::size_t cells = static_cast<std::size_t>(grid.rows) * static_cast<std::size_t>(grid.columns);
    grid.vectors.resize(cells);
    grid.flags.resize(cells);
    std::vector<int> texture(cells);
#pragma omp parallel for
    for (int row = 0; row < grid.rows; ++row) {
        for (int column = 0; column < grid.columns; ++column) {
            texture[grid.index(row, column)] =
                texture_of(from, block, column * block, row * block) < kLeastTexture ? kNoTexture : 0;
        }
    }
    // Edges of moving things match nowhere: a few cells always end at the border of the search.
    const int allowed = static_cast<int>(cells) / kCellsPerStray;
    const int widest = std::max(2 * (width_ / kWidthPerReach) + 1, kLeastShiftH);
    int stray = match_cells(grid, texture, smooth_from, smooth_to, block, shift_h_ / 2);
    while (stray > kFarTooMany * allowed && shift_h_ < widest) {
        widen_search(stray, allowed, std::min(shift_h_ + shift_h_ / 2, widest));
        stray = match_cells(grid, texture, smooth_from, smooth_to, block, shift_h_ / 2);
    }
    if (stray <= allowed) {
        shift_h_ = std::max(shift_h_ - 1, kLeastShiftH);
    } else if (shift_h_ < widest) {
        widen_search(stray, allowed, shift_h_ + 1);
    }
    fill_cells(grid);
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            set(x, y,
                grid.vectors[grid.index(std::min(y / block, grid.rows - 1),
                                        std::min(x / block, grid.columns - 1))]);
        }
    }
}

void MotionField::widen_search(int stray, int allowed, int width) {
    shift_h_ = width;
    if (notes_.verbose() > 1) {
        notes_.print(
            format_text(notes_.messages().either(
                            {"d2431: ShiftHM1=%d, allowed are: %d, ShiftH too small -> ShiftH=%d\n",
                             "d2431: ShiftHM1=%d, erlaubt sind: %d, ShiftH zu klein -> ShiftH=%d\n"}),
                        stray, allowed, shift_h_));
    }
}

void MotionField::refine(ConstPicture from, ConstPicture to, int half) {
    const std::vector<MotionVector> coarse = vectors_;
    const auto corner = [&](int x, int y) {
        return coarse[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                      static_cast<std::size_t>(x)];
    };
#pragma omp parallel for schedule(dynamic)
    for (int y = half; y < height_ - 2 * half; y += 2 * half) {
        for (int x = half; x + 2 * half < width_; x += 2 * half) {
            const std::array<MotionVector, 4> corners{corner(x, y), corner(x + 2 * half, y),
                                                      corner(x, y + 2 * half),
                                                      corner(x + 2 * half, y + 2 * half)};
            if (std::all_of(corners.begin(), corners.end(),
                            [&](MotionVector v) { return v == corners[0]; })) {
                continue;
            }
            refine_node(from, to, half, x, y, corners);
        }
    }
}

/// Four blocks round a point where the motion changes are matched on their own, with the motions around.
void MotionField::refine_node(ConstPicture from, ConstPicture to, int half, int x, int y,
                              const std::array<MotionVector, 4>& corners) {
    MatchRange range{corners[0].x, corners[0].x, corners[0].y, corners[0].y};
    for (const MotionVector& v : corners) {
        range = {std::min(range.dx_min, v.x), std::max(range.dx_max, v.x), std::min(range.dy_min, v.y),
                 std::max(range.dy_max, v.y)};
    }
    for (const int block_y : {y, y + half}) {
        for (const int block_x : {x, x + half}) {
            const BlockMatch match = match_block(from, to, half, block_x, block_y, range);
            if (match.flags != 0) {
                return;  // what is not clear here is left as it was
            }
            for (int row = block_y; row < block_y + half; ++row) {
                for (int column = block_x; column < block_x + half; ++column) {
                    set(column, row, match.vector);
                }
            }
        }
    }
}

}  // namespace zemora
