#include "input/cut_edges.h"

#include <FreeImage.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "input/edge_line.h"
#include "input/passepartout.h"
#include "numerics/labelled_array.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kCopyWidth = 512;                   // pixels; of the work copy
constexpr int kLeastCopyHeight = 4;               // a flatter view stays whole
constexpr int kMostCopyHeight = 16 * kCopyWidth;  // and a slimmer one
constexpr double kMostSpread = 384.0;             // of an edge that is a frame: squared sum of the channels
constexpr double kPlaceInPixel = 0.25;            // where in a pixel of the copy its line runs

enum Edge { kLeft, kRight, kLow, kHigh, kEdges };
constexpr bool is_upright(int edge) {
    return edge == kLeft || edge == kRight;
}
constexpr bool is_first(int edge) {
    return edge == kLeft || edge == kLow;
}

/// Means of the columns or rows of a picture.
struct Means {
    std::vector<std::array<int, kPixelBytes>> of;
    [[nodiscard]] int count() const { return static_cast<int>(of.size()); }
    [[nodiscard]] Colour colour(int i) const {
        const auto& mean = of[static_cast<std::size_t>(i)];
        return {static_cast<std::uint8_t>(mean[0]), static_cast<std::uint8_t>(mean[1]),
                static_cast<std::uint8_t>(mean[2])};
    }
    /// Distance of two neighbours from twice a colour.
    [[nodiscard]] int pair_distance(int i, Colour c) const {
        const auto& a = of[static_cast<std::size_t>(i)];
        const auto& b = of[static_cast<std::size_t>(i) + 1];
        const std::array<int, kPixelBytes> twice{2 * c.blue, 2 * c.green, 2 * c.red};
        int sum = 0;
        for (std::size_t k = 0; k < twice.size(); ++k) {
            sum += std::abs(a[k] + b[k] - twice[k]);
        }
        return sum;
    }
};

/// `lines` means over `length` pixels each.
Means means_of(const std::uint8_t* origin, std::ptrdiff_t line_step, int lines, std::ptrdiff_t pixel_step,
               int length) {
    Means means;
    for (int i = 0; i < lines; ++i) {
        std::array<std::int64_t, kPixelBytes> sum{};
        const std::uint8_t* pixel = origin + i * line_step;
        for (int k = 0; k < length; ++k, pixel += pixel_step) {
            for (std::size_t c = 0; c < sum.size(); ++c) {
                sum[c] += pixel[c];
            }
        }
        auto& mean = means.of.emplace_back();
        for (std::size_t c = 0; c < sum.size(); ++c) {
            mean[c] = round_half_up(static_cast<double>(sum[c]) / length);
        }
    }
    return means;
}

/// What is known of one edge.
struct EdgeState {
    bool searched = false;
    Colour colour;
    int estimate = 0;
    bool found = false;  ///< There is a line.
    EdgeLine line;
};
using Edges = std::array<EdgeState, kEdges>;

/// Mean squared distance of the pixels of an edge from its colour, by the sum of the channels.
double spread_of(const std::uint8_t* pixel, std::ptrdiff_t step, int count, Colour c) {
    double sum = 0.0;
    for (int i = 0; i < count; ++i, pixel += step) {
        const double difference = pixel[0] + pixel[1] + pixel[2] - c.blue - c.green - c.red;
        sum += difference * difference;
    }
    return sum / count;
}

/// Where the means leave the colour of the frame. The contrast asked for falls until there is a place.
int first_estimate(const Means& means, const EdgeState& edge, bool from_first, int tolerance) {
    const int n = means.count();
    const int border = from_first ? 0 : n - 1;
    if (!edge.searched) {
        return border;
    }
    for (int limit = 2 * tolerance;; limit -= 2) {
        if (from_first) {
            for (int i = 1; i + 1 < n / 2; ++i) {
                if (means.pair_distance(i, edge.colour) >= limit) {
                    return i;
                }
            }
        } else {
            for (int i = n - 2; i >= n / 2; --i) {
                if (means.pair_distance(i, edge.colour) >= limit) {
                    return i + 1;
                }
            }
        }
        if (limit < 0) {
            return border;  // too few means for a walk
        }
    }
}

/// The edge of `picture` as its lines see it; each half of the picture belongs to one edge.
EdgeStrip strip_of(ConstPicture picture, int edge, Colour colour) {
    EdgeStrip strip;
    strip.origin = picture.bits;
    strip.along = is_upright(edge) ? picture.pitch : kPixelBytes;
    strip.across = is_upright(edge) ? kPixelBytes : picture.pitch;
    const int length = is_upright(edge) ? picture.width : picture.height;
    strip.first = is_first(edge) ? 0 : length / 2;
    strip.last = is_first(edge) ? std::max(length / 2 - 1, 0) : length - 1;
    strip.frame_below = is_first(edge);
    strip.colour = colour;
    return strip;
}

/// Innermost place of a line between two places along it.
double innermost(const EdgeLine& line, int edge, double from, double to) {
    return is_first(edge) ? std::max(line.at(from), line.at(to)) : std::min(line.at(from), line.at(to));
}

/// The lines that run between the two edges crossing this one.
void bound_lines(const Edges& edges, int edge, int lines, int length, EdgeSearch& search) {
    const int low = is_upright(edge) ? kLow : kLeft;
    const EdgeLine& first = edges[static_cast<std::size_t>(low)].line;
    const EdgeLine& last = edges[static_cast<std::size_t>(low) + 1].line;
    search.first_line = std::clamp(round_half_up(innermost(first, low, 0, length - 1)), 0, lines - 1);
    search.last_line = std::clamp(round_half_up(innermost(last, low + 1, 0, length - 1)), 0, lines - 1);
}

/// Colours and first estimates from the small copy.
Edges estimate_edges(ConstPicture copy, const CutRule& rule) {
    const Means columns = means_of(copy.bits, kPixelBytes, copy.width, copy.pitch, copy.height);
    const Means rows = means_of(copy.bits, copy.pitch, copy.height, kPixelBytes, copy.width);
    Edges edges;
    for (int i = 0; i < kEdges; ++i) {
        EdgeState& edge = edges[static_cast<std::size_t>(i)];
        const Means& means = is_upright(i) ? columns : rows;
        const int border = is_first(i) ? 0 : means.count() - 1;
        const EdgeStrip strip = strip_of(copy, i, {});
        edge.colour = rule.frame.value_or(means.colour(border));
        edge.searched =
            rule.frame || spread_of(strip.origin + border * strip.across, strip.along,
                                    is_upright(i) ? copy.height : copy.width, edge.colour) < kMostSpread;
        edge.estimate = first_estimate(means, edge, is_first(i), rule.tolerance);
        edge.line = {0.0, static_cast<double>(edge.estimate)};
    }
    return edges;
}

/// Lines in the copy: the left and right ones first, the others between them.
void refine_in_copy(ConstPicture copy, Edges& edges) {
    for (int i = 0; i < kEdges; ++i) {
        EdgeState& edge = edges[static_cast<std::size_t>(i)];
        if (!edge.searched) {
            continue;
        }
        EdgeSearch search;
        bound_lines(edges, i, is_upright(i) ? copy.height : copy.width,
                    is_upright(i) ? copy.width : copy.height, search);
        LabelledVector<int> k_max(std::max(search.last_line - search.first_line + 1, 0), "cut_edges: k_max");
        const std::span<int> places(k_max.data(), static_cast<std::size_t>(k_max.size()));
        find_edge_places(strip_of(copy, i, edge.colour), search, edge.line, places);
        edge.found = fit_edge_line(places, search.first_line, edge.line);
    }
}

/// Lines in the view itself, round those of the copy: a pixel of the copy is many of a large view.
void refine_in_view(ConstPicture view, int tolerance, int reach, Edges& edges) {
    for (int i = 0; i < kEdges; ++i) {
        EdgeState& edge = edges[static_cast<std::size_t>(i)];
        if (!edge.found) {
            continue;
        }
        EdgeSearch search;
        search.reach = reach;
        search.innermost_of_equals = true;
        search.saturation = std::max(tolerance, 1);
        search.least_contrast = std::max(search.saturation * kEdgeSidePixels / 4, 1);
        bound_lines(edges, i, is_upright(i) ? view.height : view.width,
                    is_upright(i) ? view.width : view.height, search);
        LabelledVector<int> k_max(std::max(search.last_line - search.first_line + 1, 0), "cut_edges: k_max");
        const std::span<int> places(k_max.data(), static_cast<std::size_t>(k_max.size()));
        find_edge_places(strip_of(view, i, edge.colour), search, edge.line, places);
        const auto found =
            static_cast<std::ptrdiff_t>(places.size()) - std::count(places.begin(), places.end(), kNoPlace);
        // A few rows that look like the end of a frame make no frame.
        edge.found = 3 * found >= static_cast<std::ptrdiff_t>(places.size()) &&
                     fit_edge_line_without_strays(places, search.first_line, edge.line);
        if (!edge.found) {
            edge.line = {0.0, is_first(i) ? 0.0 : (is_upright(i) ? view.width : view.height) - 1.0};
        }
    }
}

struct Point {
    double x;
    double y;
};

/// Where an upright line x = a y + b and a level line y = a x + b cross.
Point crossing(const EdgeLine& upright, const EdgeLine& level) {
    const double x = (upright.slope * level.offset + upright.offset) / (1.0 - upright.slope * level.slope);
    return {x, level.at(x)};
}

/// The upright rectangle inside all four lines. A line runs through the last pixel of the frame or the
/// first of the picture; the pixel behind the nearer of the two is picture.
KeptRegion rectangle_inside(const Edges& edges, int width, int height) {
    const auto border = [&](int edge) {
        return EdgeLine{0.0, edge == kRight ? width - 1.0 : (edge == kHigh ? height - 1.0 : 0.0)};
    };
    std::array<EdgeLine, kEdges> lines;
    for (int i = 0; i < kEdges; ++i) {
        const EdgeState& edge = edges[static_cast<std::size_t>(i)];
        lines[static_cast<std::size_t>(i)] = edge.found ? edge.line : border(i);
    }
    const Point corners[] = {crossing(lines[kLeft], lines[kLow]), crossing(lines[kLeft], lines[kHigh]),
                             crossing(lines[kRight], lines[kLow]), crossing(lines[kRight], lines[kHigh])};
    const double left = std::max(corners[0].x, corners[1].x);
    const double right = std::min(corners[2].x, corners[3].x);
    const double low = std::max(corners[0].y, corners[2].y);
    const double high = std::min(corners[1].y, corners[3].y);
    const auto inside = [&](int edge, double place, int last) {
        if (!edges[static_cast<std::size_t>(edge)].found) {
            return is_first(edge) ? 0 : last;
        }
        const double pixel = is_first(edge) ? std::floor(place + 0.5) + 1.0 : std::ceil(place - 0.5) - 1.0;
        return std::clamp(round_half_up(pixel), 0, last);
    };
    const int x0 = inside(kLeft, left, width - 1);
    const int x1 = inside(kRight, right, width - 1);
    const int y0 = inside(kLow, low, height - 1);
    const int y1 = inside(kHigh, high, height - 1);
    if (x1 < x0 || y1 < y0) {
        return {0, 0, width, height};
    }
    return {x0, y0, x1 - x0 + 1, y1 - y0 + 1};
}

Bitmap work_copy(const LoadedView& view, int height) {
    const int top = view.bitmap.height() - view.height;  // the library counts from the top
    Bitmap copy(FreeImage_RescaleRect(view.bitmap.handle(), kCopyWidth, height, 0, top, view.width,
                                      view.bitmap.height(), FILTER_BSPLINE));
    return copy;
}

}  // namespace

std::optional<KeptRegion> find_inside_of_frame(const LoadedView& view, const CutRule& rule) {
    const KeptRegion whole{0, 0, view.width, view.height};
    const int copy_height = round_half_up(static_cast<double>(kCopyWidth) / view.width * view.height);
    if (view.width < 2 || copy_height < kLeastCopyHeight || copy_height > kMostCopyHeight) {
        return whole;
    }
    const Bitmap copy = work_copy(view, copy_height);
    if (!copy) {
        return std::nullopt;
    }
    Edges edges = estimate_edges(copy.picture(), rule);
    refine_in_copy(copy.picture(), edges);
    const double scale = (kCopyWidth - 1.0) / (view.width - 1.0);
    for (int i = 0; i < kEdges; ++i) {
        EdgeState& edge = edges[static_cast<std::size_t>(i)];
        const int last = is_upright(i) ? view.width - 1 : view.height - 1;
        edge.line.offset = edge.found ? (edge.line.offset + kPlaceInPixel * (1.0 - edge.line.slope)) / scale
                                      : (is_first(i) ? 0.0 : last);
        edge.line.slope = edge.found ? edge.line.slope : 0.0;
    }
    constexpr int kReach = 5;  // pixels, of the copy and then of the view
    const int coarse_reach = std::max(kReach, static_cast<int>(std::ceil(kReach / scale)));
    for (const int reach : {coarse_reach, std::max(kReach, coarse_reach / kReach)}) {
        refine_in_view(view.picture(), rule.tolerance, reach, edges);
    }
    return rectangle_inside(edges, view.width, view.height);
}

}  // namespace zemora
