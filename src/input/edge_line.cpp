#include "input/edge_line.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "input/passepartout.h"
#include "numerics/labelled_array.h"
#include "numerics/rounding.h"

namespace zemora {

void find_edge_places(const EdgeStrip& strip, const EdgeSearch& search, const EdgeLine& expected,
                      std::span<int> places) {
    const int candidates = 2 * search.reach + 1;
    const bool last_of_equals = search.innermost_of_equals && strip.frame_below;
    LabelledVector<int> cost(candidates, "cut_edges: cost");
    std::vector<int> distance(static_cast<std::size_t>(candidates + 2 * kEdgeSidePixels));
    for (int u = search.first_line; u <= search.last_line; ++u) {
        const int start = round_half_up(expected.at(u)) - search.reach;
        const std::uint8_t* line = strip.origin + u * strip.along;
        for (std::size_t i = 0; i < distance.size(); ++i) {
            const int v = std::clamp(start - kEdgeSidePixels + static_cast<int>(i), strip.first, strip.last);
            distance[i] = std::min(colour_distance(line + v * strip.across, strip.colour), search.saturation);
        }
        int best = search.least_contrast - (last_of_equals ? 0 : 1);
        int& place = places[static_cast<std::size_t>(u - search.first_line)];
        place = kNoPlace;
        for (int k = 0; k < candidates; ++k) {
            const int* centre = distance.data() + k + kEdgeSidePixels;
            cost[k] = 0;
            for (int j = 1; j <= kEdgeSidePixels; ++j) {
                cost[k] += centre[j] - centre[-j];
            }
            cost[k] = strip.frame_below ? cost[k] : -cost[k];
            const bool better = last_of_equals ? cost[k] >= best : cost[k] > best;
            if (better && start + k >= strip.first && start + k <= strip.last) {
                best = cost[k];
                place = start + k;
            }
        }
    }
}

bool fit_edge_line(std::span<const int> places, int first_line, EdgeLine& line) {
    double n = 0.0;
    double su = 0.0;
    double sv = 0.0;
    double suu = 0.0;
    double suv = 0.0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (places[i] == kNoPlace) {
            continue;
        }
        const double u = first_line + static_cast<double>(i);
        const double v = places[i];
        n += 1.0;
        su += u;
        sv += v;
        suu += u * u;
        suv += u * v;
    }
    if (n < 0.5) {
        return false;
    }
    const double spread = su * su - suu * n;  // 0 for one line, else at most -1
    line.slope = spread > -0.5 ? 0.0 : (su * sv - suv * n) / spread;
    line.offset = (sv - su * line.slope) / n;
    return true;
}

bool fit_edge_line_without_strays(std::span<int> places, int first_line, EdgeLine& line) {
    constexpr int kRounds = 4;
    constexpr double kLeastLimit = 1.5;  // pixels; rounding and a soft edge
    constexpr double kMediansAllowed = 3.0;
    if (!fit_edge_line(places, first_line, line)) {
        return false;
    }
    std::vector<double> errors;
    for (int round = 0; round < kRounds; ++round) {
        errors.clear();
        const auto error_of = [&](std::size_t i) {
            return std::fabs(places[i] - line.at(first_line + static_cast<double>(i)));
        };
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (places[i] != kNoPlace) {
                errors.push_back(error_of(i));
            }
        }
        const auto middle = errors.begin() + static_cast<std::ptrdiff_t>(errors.size() / 2);
        std::nth_element(errors.begin(), middle, errors.end());
        const double limit = std::max(kLeastLimit, kMediansAllowed * *middle);
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (places[i] != kNoPlace && error_of(i) > limit) {
                places[i] = kNoPlace;
            }
        }
        (void)fit_edge_line(places, first_line, line);  // the middle one is always left
    }
    return true;
}

}  // namespace zemora
