#pragma once
/// Generated scans: a textured picture inside a tilted, coloured, noisy frame, with the truth beside it.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>

#include "input/loaded_view.h"

namespace zemora::test {

struct ScanPlan {
    int width = 800;
    int height = 600;
    double border = 0.1;  ///< Of the width on each side.
    double tilt_deg = 0.0;
    std::array<Colour, 4> frame{};  ///< Left, right, low, high.
    double noise = 0.0;             ///< Standard deviation of each channel.
    double left_light = 1.0;  ///< Brightness of the picture at its left side, growing to 1 at the right.
    unsigned seed = 1;
};

/// The edges of the picture inside: left and right x = slope y + offset, low and high y = slope x + offset.
struct ScanEdge {
    double slope;
    double offset;
};

struct FramedScan {
    LoadedView view;
    std::array<ScanEdge, 4> edges;

    /// How far the point lies inside the picture, in pixels; negative in the frame.
    [[nodiscard]] double depth(double x, double y) const {
        return std::min({x - (edges[0].slope * y + edges[0].offset), edges[1].slope * y + edges[1].offset - x,
                         y - (edges[2].slope * x + edges[2].offset),
                         edges[3].slope * x + edges[3].offset - y});
    }
    /// The edge that the point is outside of most.
    [[nodiscard]] int side_of(double x, double y) const {
        const std::array depths{
            x - (edges[0].slope * y + edges[0].offset), edges[1].slope * y + edges[1].offset - x,
            y - (edges[2].slope * x + edges[2].offset), edges[3].slope * x + edges[3].offset - y};
        return static_cast<int>(std::min_element(depths.begin(), depths.end()) - depths.begin());
    }
    /// The largest upright rectangle inside, as columns and rows [first, last].
    [[nodiscard]] std::array<double, 4> ideal() const {
        const auto cross = [&](const ScanEdge& upright, const ScanEdge& level) {
            const double x =
                (upright.slope * level.offset + upright.offset) / (1 - upright.slope * level.slope);
            return std::array{x, level.slope * x + level.offset};
        };
        const auto ll = cross(edges[0], edges[2]);
        const auto lh = cross(edges[0], edges[3]);
        const auto rl = cross(edges[1], edges[2]);
        const auto rh = cross(edges[1], edges[3]);
        return {std::ceil(std::max(ll[0], lh[0])), std::floor(std::min(rl[0], rh[0])),
                std::ceil(std::max(ll[1], rl[1])), std::floor(std::min(lh[1], rh[1]))};
    }
};

/// A colour of the picture: smooth patches with fine detail on them, mostly of middle brightness.
inline Colour texture_at(double x, double y) {
    const auto channel = [&](double a, double b, double phase) {
        const double value = 140 + 45 * std::sin(x * a + y * b + phase) +
                             30 * std::sin(x * 0.31 + phase * y * 0.11) +
                             25 * std::cos((x - y) * 0.057 + 2 * phase);
        return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0));
    };
    return {channel(0.021, 0.013, 0.3), channel(0.017, -0.019, 1.1), channel(-0.015, 0.023, 2.2)};
}

inline FramedScan make_scan(const ScanPlan& plan) {
    FramedScan scan;
    scan.view.take(Bitmap::create(plan.width, plan.height));
    constexpr double kPi = 3.14159265358979;
    const double slope = std::tan(plan.tilt_deg * kPi / 180);
    const double margin = plan.border * plan.width + 0.3;
    // The edges turn round the middle of each; the level ones the other way, as those of a turned slide.
    scan.edges = {ScanEdge{slope, margin - slope * plan.height / 2},
                  ScanEdge{slope, plan.width - margin - slope * plan.height / 2},
                  ScanEdge{-slope, margin + slope * plan.width / 2},
                  ScanEdge{-slope, plan.height - margin + slope * plan.width / 2}};
    std::mt19937 random(plan.seed);
    std::normal_distribution<double> noise(0.0, std::max(plan.noise, 1e-9));
    for (int y = 0; y < plan.height; ++y) {
        for (int x = 0; x < plan.width; ++x) {
            const double share = std::clamp(scan.depth(x, y) + 0.5, 0.0, 1.0);  // of picture in this pixel
            const Colour frame = plan.frame[static_cast<std::size_t>(scan.side_of(x, y))];
            const Colour inside = texture_at(x, y);
            const double light = plan.left_light + (1.0 - plan.left_light) * x / plan.width;
            const auto mix = [&](int a, int b) {
                return static_cast<std::uint8_t>(std::clamp(
                    a + share * (light * b - a) + (plan.noise > 0 ? noise(random) : 0.0) + 0.5, 0.0, 255.0));
            };
            std::uint8_t* pixel = scan.view.picture().pixel(x, y);
            pixel[0] = mix(frame.blue, inside.blue);
            pixel[1] = mix(frame.green, inside.green);
            pixel[2] = mix(frame.red, inside.red);
        }
    }
    return scan;
}

}  // namespace zemora::test
