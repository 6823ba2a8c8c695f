#include "surface_texture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "scene_random.h"

namespace zemora {

namespace {

constexpr int kLatticeSide = 256;

/// Values -1 to 1 on a periodic lattice.
const std::array<float, kLatticeSide * kLatticeSide>& lattice() {
    static const auto values = [] {
        std::array<float, kLatticeSide * kLatticeSide> made{};
        for (std::size_t i = 0; i < made.size(); ++i) {
            made[i] =
                static_cast<float>(mix_bits(static_cast<std::uint32_t>(i) + 77U)) / 2147483648.0F - 1.0F;
        }
        return made;
    }();
    return values;
}

float smooth(float t) {
    return t * t * (3.0F - 2.0F * t);
}

/// Value noise, continuous in position and slope (K. Perlin, "An Image Synthesizer", 1985, in its
/// simplest form).
float noise_at(float x, float y) {
    const float floor_x = std::floor(x);
    const float floor_y = std::floor(y);
    const auto ix = static_cast<unsigned>(static_cast<int>(floor_x));
    const auto iy = static_cast<unsigned>(static_cast<int>(floor_y));
    const float fx = smooth(x - floor_x);
    const float fy = smooth(y - floor_y);
    const auto& values = lattice();
    const auto at = [&](unsigned cx, unsigned cy) {
        return values[(cy % kLatticeSide) * kLatticeSide + cx % kLatticeSide];
    };
    const float low = at(ix, iy) + fx * (at(ix + 1, iy) - at(ix, iy));
    const float high = at(ix, iy + 1) + fx * (at(ix + 1, iy + 1) - at(ix, iy + 1));
    return low + fy * (high - low);
}

constexpr double kFinestDetail = 3.5;  // pixels of a lattice step, so that the sampling is honest
constexpr double kHalfEdge = 1.0;      // pixels from the middle of an edge to its end, for the same reason

/// Pixels to the nearer end of the interval 0 to `length`, negative outside.
double depth_inside(double position, double length) {
    return std::min(position, length - position);
}

/// The position within its period, 0 to `period`.
double within(double position, double period) {
    return position - period * std::floor(position / period);
}

/// Turns the pixels to an edge, positive inside, into -1 to 1.
double edge(double inside) {
    return std::clamp(inside / kHalfEdge, -1.0, 1.0);
}

/// A wave of a half period of 1 and one of -1.
double square_wave(double position, double half_period) {
    const double place = within(position, 2.0 * half_period);
    return place < half_period ? edge(depth_inside(place, half_period))
                               : -edge(depth_inside(place - half_period, half_period));
}

double chequers(double x, double y, int width) {
    const double side = width / 25.0;
    return square_wave(x, side) * square_wave(y, side);
}

double bars(double x, int width) {
    const double period = width / 40.0;
    const double half_bar = 0.2 * period;
    return edge(half_bar - std::fabs(within(x, period) - 0.5 * period));
}

double bricks(double x, double y, int width) {
    const double length = width / 25.0;
    const double height = 0.4 * length;
    const double half_joint = 0.04 * length;
    const double row = std::floor(y / height);
    const double aside = within(row, 2.0) < 0.5 ? 0.0 : 0.5 * length;
    return edge(
        std::min(depth_inside(within(x + aside, length), length), depth_inside(within(y, height), height)) -
        half_joint);
}

}  // namespace

SurfaceNoise surface_noise(double x, double y, float origin_x, float origin_y, int width) {
    SurfaceNoise noise;
    double step = std::max(width / 10.0, kFinestDetail);
    float amplitude = 0.5F;
    for (; step >= kFinestDetail; step /= 2.3, amplitude *= 0.8F) {
        const auto u = static_cast<float>(x / step);
        const auto v = static_cast<float>(y / step);
        const float value = noise_at(u + origin_x + 31.0F, v + origin_y + 57.0F);
        noise.lightness += amplitude * value;
        noise.warmth = 0.6F * noise.warmth + 0.4F * value;
    }
    return noise;
}

float surface_pattern(SurfacePattern pattern, double x, double y, int width) {
    switch (pattern) {
        case SurfacePattern::chequers: return static_cast<float>(chequers(x, y, width));
        case SurfacePattern::bars: return static_cast<float>(bars(x, width));
        case SurfacePattern::bricks: return static_cast<float>(bricks(x, y, width));
        case SurfacePattern::none: break;
    }
    return 0.0F;
}

}  // namespace zemora
