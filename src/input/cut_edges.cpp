#include "input/cut_edges.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "codec/bitmap_forms.h"
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
constexpr int kPartsOfFrame = 3;                  // one of these of an edge's rows shows the end of a frame
constexpr int kPartsOfStart = 20;                 // the same while its line is not yet known well
constexpr int kPartsForeign = 20;                 // one of these of a frame's pixels may have another colour
constexpr int kFrameNoise = 60;         // colour distance within a frame: three deviations of its spread
constexpr int kRounds = 4;              // of halving the contrast that is asked for
constexpr double kPlaceInPixel = 0.25;  // where in a pixel of the copy its line runs

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
    bool sure = false;  ///< The line is the end of a frame; it stays.
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

/// The small copy with its means.
struct Copy {
    explicit Copy(ConstPicture whole)
        : picture(whole),
          columns(means_of(whole.bits, kPixelBytes, whole.width, whole.pitch, whole.height)),
          rows(means_of(whole.bits, whole.pitch, whole.height, kPixelBytes, whole.width)) {}
    [[nodiscard]] const Means& means(int edge) const { return is_upright(edge) ? columns : rows; }
    ConstPicture picture;
    Means columns;
    Means rows;
};

/// Colours of the edges, and which of them may be a frame.
Edges start_edges(const Copy& copy, const std::optional<Colour>& frame) {
    Edges edges;
    for (int i = 0; i < kEdges; ++i) {
        EdgeState& edge = edges[static_cast<std::size_t>(i)];
        const int border = is_first(i) ? 0 : copy.means(i).count() - 1;
        const EdgeStrip strip = strip_of(copy.picture, i, {});
        edge.colour = frame.value_or(copy.means(i).colour(border));
        edge.searched = frame || spread_of(strip.origin + border * strip.across, strip.along,
                                           is_upright(i) ? copy.picture.height : copy.picture.width,
                                           edge.colour) < kMostSpread;
    }
    return edges;
}

/// First estimates from the means, of what is not sure yet.
void estimate_edges(const Copy& copy, int tolerance, Edges& edges) {
    for (int i = 0; i < kEdges; ++i) {
        EdgeState& edge = edges[static_cast<std::size_t>(i)];
        if (!edge.sure) {
            edge.estimate = first_estimate(copy.means(i), edge, is_first(i), tolerance);
            edge.line = {0.0, static_cast<double>(edge.estimate)};
        }
    }
}

/// Lines in the copy: the left and right ones first, the others between them.
void refine_in_copy(ConstPicture copy, Edges& edges) {
    for (int i = 0; i < kEdges; ++i) {
        EdgeState& edge = edges[static_cast<std::size_t>(i)];
        if (!edge.searched || edge.sure) {
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

/// Whether nearly all that lies outside a line, in its rows, has the colour of the frame.
bool has_frame_outside(const EdgeStrip& strip, const EdgeSearch& search, const EdgeLine& line,
                       int tolerance) {
    constexpr int kMostLooks = 64;  // in a row
    constexpr int kSoftEdge = 2;    // pixels
    std::int64_t looks = 0;
    std::int64_t foreign = 0;
    for (int u = search.first_line; u <= search.last_line; ++u) {
        const int place = round_half_up(line.at(u));
        const int first = strip.frame_below ? strip.first : std::max(place + kSoftEdge, strip.first);
        const int last = strip.frame_below ? std::min(place - kSoftEdge, strip.last) : strip.last;
        const int step = std::max((last - first + 1) / kMostLooks, 1);
        for (int v = first; v <= last; v += step, ++looks) {
            const std::uint8_t* pixel = strip.origin + u * strip.along + v * strip.across;
            foreign += colour_distance(pixel, strip.colour) > tolerance ? 1 : 0;
        }
    }
    return foreign * kPartsForeign <= looks;
}

/// Whether the places of enough rows lie on the line, and not just by chance.
bool is_straight(std::span<const int> places, int first_line, const EdgeLine& line) {
    constexpr double kNear = 1.5;  // pixels
    std::int64_t found = 0;
    std::int64_t near = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const bool is_near = std::fabs(places[i] - line.at(first_line + static_cast<double>(i))) <= kNear;
        found += places[i] != kNoPlace ? 1 : 0;
        near += places[i] != kNoPlace && is_near ? 1 : 0;
    }
    return near > 0 && 2 * near >= found && kPartsOfFrame * near >= static_cast<std::int64_t>(places.size());
}

/// One edge in the view itself, round its line: a pixel of the copy is many of a large view. The `last` time
/// it is settled whether that is the end of a frame.
void refine_edge(ConstPicture view, int i, const CutRule& rule, int contrast, int reach, bool last,
                 Edges& edges) {
    EdgeState& edge = edges[static_cast<std::size_t>(i)];
    EdgeSearch search;
    search.reach = reach;
    search.innermost_of_equals = true;
    search.saturation = std::max(contrast, 1);
    search.least_contrast = std::max(search.saturation * kEdgeSidePixels / 4, 1);
    bound_lines(edges, i, is_upright(i) ? view.height : view.width, is_upright(i) ? view.width : view.height,
                search);
    LabelledVector<int> k_max(std::max(search.last_line - search.first_line + 1, 0), "cut_edges: k_max");
    const std::span<int> places(k_max.data(), static_cast<std::size_t>(k_max.size()));
    const EdgeStrip strip = strip_of(view, i, edge.colour);
    find_edge_places(strip, search, edge.line, places);
    const std::vector<int> all(places.begin(), places.end());
    const auto found = places.size() - static_cast<std::size_t>(std::count(all.begin(), all.end(), kNoPlace));
    // Of a line that is still askew only a few rows lie within reach.
    if (kPartsOfStart * found >= places.size()) {
        (void)fit_edge_line_without_strays(places, search.first_line, edge.line);
    }
    if (last) {
        edge.sure = is_straight(all, search.first_line, edge.line) &&
                    has_frame_outside(strip, search, edge.line, std::max(rule.tolerance, kFrameNoise));
        edge.found = edge.sure;
    }
}

/// Where no line is, an edge is that of the picture.
void drop_lines(int width, int height, Edges& edges) {
    for (int i = 0; i < kEdges; ++i) {
        EdgeState& edge = edges[static_cast<std::size_t>(i)];
        if (!edge.found) {
            edge.line = {0.0, is_first(i) ? 0.0 : (is_upright(i) ? width : height) - 1.0};
        }
    }
}

/// Takes the lines of the copy for the view, refines them there and keeps those that are sure in both.
void refine_in_view(ConstPicture view, const CutRule& rule, int contrast, Edges& in_copy, Edges& in_view) {
    constexpr int kReach = 5;  // pixels, of the copy and then of the view
    const double scale = (kCopyWidth - 1.0) / (view.width - 1.0);
    for (std::size_t i = 0; i < in_view.size(); ++i) {
        if (!in_view[i].sure) {
            in_view[i] = in_copy[i];
            in_view[i].line.offset =
                (in_copy[i].line.offset + kPlaceInPixel * (1.0 - in_copy[i].line.slope)) / scale;
        }
    }
    drop_lines(view.width, view.height, in_view);
    const int coarse = std::max(kReach, static_cast<int>(std::ceil(kReach / scale)));
    const int fine = std::max(kReach, coarse / kReach);
    struct Pass {
        int reach;
        bool last;
    };
    for (const Pass& pass : {Pass{coarse, false}, Pass{coarse, false}, Pass{fine, true}}) {
        for (int i = 0; i < kEdges; ++i) {
            const EdgeState& edge = in_view[static_cast<std::size_t>(i)];
            if (edge.found && !edge.sure) {
                refine_edge(view, i, rule, contrast, pass.reach, pass.last, in_view);
            }
        }
        drop_lines(view.width, view.height, in_view);
    }
    for (std::size_t i = 0; i < in_view.size(); ++i) {
        in_copy[i].sure = in_view[i].sure;
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

}  // namespace

std::optional<KeptRegion> find_inside_of_frame(const LoadedView& view, const CutRule& rule) {
    const KeptRegion whole{0, 0, view.width, view.height};
    const int copy_height = round_half_up(static_cast<double>(kCopyWidth) / view.width * view.height);
    if (view.width < 2 || copy_height < kLeastCopyHeight || copy_height > kMostCopyHeight) {
        return whole;
    }
    const Bitmap copy = scaled_b_spline(view.bitmap, view.width, view.height, kCopyWidth, copy_height);
    if (!copy) {
        return std::nullopt;
    }
    const Copy small(copy.picture());
    Edges in_copy = start_edges(small, rule.frame);
    Edges in_view;
    const auto is_settled = [](const EdgeState& edge) { return edge.sure || !edge.searched; };
    // Where the picture comes nearer to the frame than the tolerance, the first estimate lies in the picture;
    // then a smaller contrast is asked for.
    for (int contrast = rule.tolerance, round = 0; round < kRounds; ++round, contrast /= 2) {
        estimate_edges(small, contrast, in_copy);
        refine_in_copy(copy.picture(), in_copy);
        refine_in_view(view.picture(), rule, contrast, in_copy, in_view);
        if (std::all_of(in_copy.begin(), in_copy.end(), is_settled)) {
            break;
        }
    }
    return rectangle_inside(in_view, view.width, view.height);
}

}  // namespace zemora
