#include "analysis/surface.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kSlopeReach = 5;            ///< Steps on either side of the minimum that a slope uses.
constexpr double kReferenceSide = 800.0;  ///< Pixels; slopes of larger images count for more.
constexpr double kSubPixelShare = 0.75;   ///< Of the vertex of the parabola that is applied.

struct CellIndex {
    int row = 0;
    int column = 0;
};

/// Ties of the least error go to the cell that a spiral from the centre meets first: +column, +row,
/// then two steps back each, three forward and so on.
CellIndex find_minimum(const ErrorSurface& surface) {
    const float least = *std::min_element(surface.errors().begin(), surface.errors().end());
    CellIndex cell{surface.centre_row(), surface.centre_column()};
    const auto found = [&] {
        return cell.row >= 0 && cell.column >= 0 && cell.row < surface.rows() &&
               cell.column < surface.columns() && surface.at(cell.row, cell.column) == least;
    };
    const int longest = 2 * std::max(surface.rows(), surface.columns()) + 2;
    for (int leg = 1, direction = 1; leg <= longest; ++leg, direction = -direction) {
        for (int k = 0; k < leg && !found(); ++k) {
            cell.column += direction;
        }
        for (int k = 0; k < leg && !found(); ++k) {
            cell.row += direction;
        }
        if (found()) {
            return cell;
        }
    }
    return {surface.centre_row(), surface.centre_column()};  // not-a-number only
}

/// Straight line through the points (w, r) that are added, by least squares.
class LineFit {
public:
    void add(double w, double r) {
        n_ += 1.0;
        w_ += w;
        r_ += r;
        ww_ += w * w;
        wr_ += w * r;
    }
    [[nodiscard]] double slope_percent() const {
        const double denominator = n_ * ww_ - w_ * w_;
        return denominator > 0.0 ? 100.0 * (n_ * wr_ - w_ * r_) / denominator : 0.0;
    }

private:
    double n_ = 0.0, w_ = 0.0, r_ = 0.0, ww_ = 0.0, wr_ = 0.0;
};

/// Rise of the error k steps from the minimum, relative to it.
double rise(const ErrorSurface& surface, CellIndex cell, CellIndex best) {
    const double e0 = surface.at(best.row, best.column);
    return (surface.at(cell.row, cell.column) - e0) / (e0 + 1.0);
}

/// Curvature along an axis: the rise over the square of the distance in steps.
double slope_along(const ErrorSurface& surface, CellIndex best, CellIndex step) {
    LineFit fit;
    for (int k = -kSlopeReach; k <= kSlopeReach; ++k) {
        const CellIndex cell{best.row + k * step.row, best.column + k * step.column};
        if (surface.valid(cell.row, cell.column)) {
            fit.add(k * k, rise(surface, cell, best));
        }
    }
    return fit.slope_percent();
}

/// A slope measured on an image larger than the reference counts for more.
double raised(double slope, int side, int step) {
    return std::max(slope, slope * side / (kReferenceSide * step));
}

struct RingPoint {
    double least = 0.0;
    double opposite = 0.0;
};

/// The smallest cell of the ring at `distance`, and the one opposite to it. The first in the given
/// order wins; false when a cell is missing.
template <std::size_t N>
bool ring_point(const ErrorSurface& surface, CellIndex best, const std::array<CellIndex, N>& ring,
                RingPoint& point) {
    const CellIndex* least = nullptr;
    for (const CellIndex& step : ring) {
        if (!surface.valid(best.row + step.row, best.column + step.column)) {
            return false;
        }
        const double error = surface.at(best.row + step.row, best.column + step.column);
        if (least == nullptr || error < point.least) {
            least = &step;
            point.least = error;
        }
    }
    point.opposite = surface.at(best.row - least->row, best.column - least->column);
    return true;
}

constexpr std::array<CellIndex, 8> kInnerRing = {
    {{-1, -1}, {-1, 0}, {-1, 1}, {0, 1}, {1, 1}, {1, 0}, {1, -1}, {0, -1}}};
constexpr std::array<CellIndex, 16> kOuterRing = {{{-2, -2},
                                                   {-2, -1},
                                                   {-2, 0},
                                                   {-2, 1},
                                                   {-2, 2},
                                                   {-1, 2},
                                                   {0, 2},
                                                   {1, 2},
                                                   {2, 2},
                                                   {2, 1},
                                                   {2, 0},
                                                   {2, -1},
                                                   {2, -2},
                                                   {1, -2},
                                                   {0, -2},
                                                   {-1, -2}}};

/// Slope over the five cells of a line through the minimum in its direction of weakest rise.
float sharpness_2d(const ErrorSurface& surface, CellIndex best, int height, int width) {
    RingPoint inner;
    RingPoint outer;
    if (!ring_point(surface, best, kOuterRing, outer) || !ring_point(surface, best, kInnerRing, inner)) {
        return kNoMinimum;
    }
    const double e = std::max(static_cast<double>(surface.at(best.row, best.column)), 1e-12);
    const double t1 = (inner.least + outer.least + e + inner.opposite + outer.opposite) / (e + 1.0) - 5.0;
    const double t2 =
        (4.0 * outer.least + inner.least + inner.opposite + 4.0 * outer.opposite) / (e + 1.0) - 10.0;
    const double slope = -(2.0 * t1 - t2) / 14.0;
    return static_cast<float>(100.0 *
                              raised(raised(slope, height, surface.step_y()), width, surface.step_x()));
}

/// Vertical sub-pixel part, in pixels, where the minimum lies strictly between two neighbours. Only
/// a share of the parabola's vertex is applied, so that repeated corrections do not overshoot.
double sub_pixel_dy(const ErrorSurface& surface, CellIndex best) {
    if (!surface.valid(best.row - 1, best.column) || !surface.valid(best.row + 1, best.column)) {
        return 0.0;
    }
    const double below = surface.at(best.row - 1, best.column);
    const double e0 = surface.at(best.row, best.column);
    const double above = surface.at(best.row + 1, best.column);
    if (!(e0 < below && e0 < above)) {
        return 0.0;
    }
    const double vertex_steps = 0.5 * (below - above) / (above + below - 2.0 * e0);
    return kSubPixelShare * vertex_steps * surface.step_y();
}

constexpr double kLoosest = 1000.0;  ///< Of a surface that does not hold the height at all.

/// A position between the steps of a surface, in steps from a cell.
struct Vertex {
    double x = 0.0;
    double y = 0.0;
    double looseness = kLoosest;  ///< Steps in height that double the error, the other axis left free.
};

/// Vertex of the parabola through three errors along an axis, where the middle one is the least.
double vertex_along(double before, double least, double after) {
    return least < before && least < after ? 0.5 * (before - after) / (after + before - 2.0 * least) : 0.0;
}

/// Lowest point of the paraboloid that lies nearest, by least squares, to the nine errors round the
/// minimum. Where that has no lowest point within a step, each axis has a parabola of its own.
Vertex paraboloid_vertex(const ErrorSurface& surface, CellIndex best) {
    double x = 0.0, y = 0.0, xx = 0.0, yy = 0.0, xy = 0.0, all = 0.0;
    for (int i = -1; i <= 1; ++i) {
        for (int j = -1; j <= 1; ++j) {
            if (!surface.valid(best.row + i, best.column + j)) {
                return {};
            }
            const double error = surface.at(best.row + i, best.column + j);
            x += j * error;
            y += i * error;
            xx += j * j * error;
            yy += i * i * error;
            xy += i * j * error;
            all += error;
        }
    }
    // f = a + b x + c y + d x^2 + e x y + g y^2 on the lattice -1, 0, 1
    const double b = x / 6.0;
    const double c = y / 6.0;
    const double d = xx / 2.0 - all / 3.0;
    const double e = xy / 4.0;
    const double g = yy / 2.0 - all / 3.0;
    const double determinant = 4.0 * d * g - e * e;
    if (d > 0.0 && determinant > 0.0) {
        const double rise = determinant / (4.0 * d);  // of the valley's floor, per squared step in height
        const double looseness = std::sqrt((surface.at(best.row, best.column) + 1.0) / rise);
        const Vertex vertex{(e * c - 2.0 * g * b) / determinant, (e * b - 2.0 * d * c) / determinant,
                            std::min(looseness, kLoosest)};
        if (std::fabs(vertex.x) <= 1.0 && std::fabs(vertex.y) <= 1.0) {
            return vertex;
        }
    }
    const double least = surface.at(best.row, best.column);
    return {
        vertex_along(surface.at(best.row, best.column - 1), least, surface.at(best.row, best.column + 1)),
        vertex_along(surface.at(best.row - 1, best.column), least, surface.at(best.row + 1, best.column))};
}

/// Displacements with at most twice the least error; the last of all cells is never counted.
int count_ambiguous(const ErrorSurface& surface, float least) {
    const auto near = std::count_if(surface.errors().begin(), surface.errors().end(),
                                    [least](float error) { return error <= 2.0F * least; });
    return static_cast<int>(
        std::min<std::ptrdiff_t>(near, static_cast<std::ptrdiff_t>(surface.errors().size()) - 1));
}

/// Rise per step on one side of a V-shaped profile.
double flank(const ErrorSurface& surface, CellIndex best, int direction) {
    LineFit fit;
    for (int d = 0; d <= kSlopeReach; ++d) {
        const CellIndex cell{0, best.column + direction * d};
        if (surface.valid(0, cell.column)) {
            fit.add(d, rise(surface, cell, best));
        }
    }
    return fit.slope_percent();
}

/// Distance between the first and the last displacement below twice the least error; negative when
/// there is none.
int low_band(const ErrorSurface& surface, float least) {
    const auto low = [&](int j) { return surface.at(0, j) < 2.0F * least; };
    const int end = surface.columns() - 1;
    int first = 0;
    while (first < end && !low(first)) {
        ++first;
    }
    int last = end - 1;
    while (last >= 0 && !low(last)) {
        --last;
    }
    return last - first;
}

}  // namespace

SurfaceFigures evaluate_surface(const ErrorSurface& surface, int height, int width, SubPixel sub_pixel) {
    const CellIndex best = find_minimum(surface);
    const float least = surface.at(best.row, best.column);
    SurfaceFigures figures;
    figures.dx = static_cast<float>((best.column - surface.centre_column()) * surface.step_x());
    figures.dy = static_cast<float>((best.row - surface.centre_row()) * surface.step_y());
    if (sub_pixel == SubPixel::vertex) {
        const Vertex vertex = paraboloid_vertex(surface, best);
        figures.dx += static_cast<float>(vertex.x * surface.step_x());
        figures.dy += static_cast<float>(vertex.y * surface.step_y());
        figures.looseness = static_cast<float>(vertex.looseness * surface.step_y());
    } else {
        figures.dy += static_cast<float>(sub_pixel_dy(surface, best));
    }
    figures.ambiguity = count_ambiguous(surface, least);
    figures.match_error = round_half_up(least * 1000.0 / static_cast<double>(surface.errors().size()));
    const bool on_side = best.column == 0 || best.column == surface.columns() - 1;
    const bool on_end = best.row == 0 || best.row == surface.rows() - 1;
    figures.sharpness_x =
        on_side ? kNoMinimum
                : static_cast<float>(raised(slope_along(surface, best, {0, 1}), width, surface.step_x()));
    figures.sharpness_y =
        on_end ? kNoMinimum
               : static_cast<float>(raised(slope_along(surface, best, {1, 0}), height, surface.step_y()));
    figures.sharpness = sharpness_2d(surface, best, height, width);
    return figures;
}

SurfaceFigures evaluate_profile(const ErrorSurface& surface) {
    const CellIndex best = find_minimum(surface);
    const float least = surface.at(0, best.column);
    SurfaceFigures figures;
    figures.dx = static_cast<float>((best.column - surface.centre_column()) * surface.step_x());
    figures.ambiguity = count_ambiguous(surface, least);
    figures.match_error = low_band(surface, least);
    const bool on_side = best.column == 0 || best.column == surface.columns() - 1;
    figures.sharpness_x =
        on_side ? kNoMinimum
                : static_cast<float>(std::min(flank(surface, best, 1), flank(surface, best, -1)));
    return figures;
}

}  // namespace zemora
