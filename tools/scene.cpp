#include "scene.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zemora {

namespace {

std::uint32_t mix(std::uint32_t value) {
    value ^= value >> 16;
    value *= 0x7FEB352DU;
    value ^= value >> 15;
    value *= 0x846CA68BU;
    return value ^ (value >> 16);
}

/// A reproducible stream of numbers in 0 to 1.
class Random {
public:
    explicit Random(std::uint32_t seed) : state_(mix(seed + 0x9E3779B9U)) {}
    double next() {
        state_ = mix(state_ + 0x9E3779B9U);
        return state_ / 4294967296.0;
    }
    double between(double low, double high) { return low + (high - low) * next(); }

private:
    std::uint32_t state_;
};

constexpr int kLatticeSide = 256;

/// Values -1 to 1 on a periodic lattice.
const std::array<float, kLatticeSide * kLatticeSide>& lattice() {
    static const auto values = [] {
        std::array<float, kLatticeSide * kLatticeSide> made{};
        for (std::size_t i = 0; i < made.size(); ++i) {
            made[i] = static_cast<float>(mix(static_cast<std::uint32_t>(i) + 77U)) / 2147483648.0F - 1.0F;
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

}  // namespace

bool Scene::Layer::covers(double x, double y) const {
    if (radius_x <= 0.0) {
        return y <= top;
    }
    const double u = (x - centre_x) / radius_x;
    const double v = (y - centre_y) / radius_y;
    return u * u * u * u + v * v * v * v <= 1.0;
}

Scene::Scene(const SceneOptions& options, const SceneErrors& errors) : options_(options), errors_(errors) {
    Random random(options.seed);
    const double w = options.width;
    const double h = options.height;
    const double near_px = options.near_disparity * w;
    const double far_px = options.far_disparity * w;
    const auto paint = [&](Layer& layer) {
        for (float& channel : layer.colour) {
            channel = static_cast<float>(random.between(70.0, 190.0));
        }
        layer.pattern_x = static_cast<float>(random.between(0.0, 100.0));
        layer.pattern_y = static_cast<float>(random.between(0.0, 100.0));
    };
    for (int i = 0; i < options.objects; ++i) {
        Layer layer;
        layer.centre_x = random.between(-0.48, 0.48) * w;
        layer.centre_y = random.between(-0.48, 0.48) * h;
        layer.radius_x = random.between(0.02, 0.09) * w;
        layer.radius_y = random.between(0.02, 0.10) * w;
        layer.disparity = random.between(near_px, far_px);
        paint(layer);
        layers_.push_back(layer);
    }
    std::sort(layers_.begin(), layers_.end(),
              [](const Layer& a, const Layer& b) { return a.disparity < b.disparity; });
    Layer ground;  // rises from the near to the far distance at the horizon
    ground.top = 0.1 * h;
    ground.disparity = far_px * 0.9;
    ground.disparity_per_row = (far_px * 0.9 - near_px * 0.6) / (0.6 * h);
    paint(ground);
    layers_.push_back(ground);
    Layer wall;
    wall.top = 10.0 * h;
    wall.disparity = far_px;
    paint(wall);
    layers_.push_back(wall);
}

Scene::Hit Scene::hit(double x, double y, int side) const {
    for (const Layer& layer : layers_) {
        const double between = x - 0.5 * side * layer.disparity_at(y);
        if (layer.covers(between, y)) {
            return {&layer, between};
        }
    }
    return {&layers_.back(), x};
}

ScenePoint Scene::displaced(ScenePoint ideal, int side) const {
    const double share = errors_.share == 0 ? 0.5 : (errors_.share == side ? 1.0 : 0.0);
    const double sign = side * share;
    const double half_w = options_.width / 2.0;
    const double half_h = options_.height / 2.0;
    double x = ideal.x;
    double y = ideal.y + sign * errors_.height_px;
    x += sign * errors_.size * x;
    y += sign * errors_.size * y;
    const double turned_x = x - sign * errors_.rotation_rad * y;
    y += sign * errors_.rotation_rad * x;
    x = turned_x;
    const double keystone = sign * errors_.vergence_v_rad * x / half_w;
    x += keystone * x;
    y += keystone * y;
    y += sign * errors_.vergence_h_rad * (y * y / half_h - options_.height / 6.0);
    return {x, y};
}

ScenePoint Scene::ideal_of(ScenePoint point, int side) const {
    constexpr int kRounds = 6;  // the displacements are small; each round gains two digits
    ScenePoint ideal = point;
    for (int i = 0; i < kRounds; ++i) {
        const ScenePoint there = displaced(ideal, side);
        ideal.x += point.x - there.x;
        ideal.y += point.y - there.y;
    }
    return ideal;
}

ScenePoint Scene::right_of_left(ScenePoint left) const {
    const ScenePoint ideal = ideal_of(left, -1);
    const double disparity = hit(ideal.x, ideal.y, -1).layer->disparity_at(ideal.y);
    return displaced({ideal.x + disparity, ideal.y}, +1);
}

void Scene::shade(ScenePoint ideal, int side, std::uint32_t noise, std::uint8_t* pixel) const {
    const Hit seen = hit(ideal.x, ideal.y, side);
    const Layer& layer = *seen.layer;
    float texture = 0.0F;
    float tint = 0.0F;
    if (!options_.flat) {
        double step = std::max(options_.width / 10.0, kFinestDetail);
        float amplitude = 0.5F;
        for (; step >= kFinestDetail; step /= 2.3, amplitude *= 0.8F) {
            const auto x = static_cast<float>(seen.x / step);
            const auto y = static_cast<float>(ideal.y / step);
            const float value = noise_at(x + layer.pattern_x + 31.0F, y + layer.pattern_y + 57.0F);
            texture += amplitude * value;
            tint = 0.6F * tint + 0.4F * value;
        }
    }
    const float gain = side > 0 ? static_cast<float>(errors_.brightness) : 1.0F;
    constexpr std::array kTint{0.25F, 0.0F, -0.25F};
    for (int channel = 0; channel < kPixelBytes; ++channel) {
        float value = layer.colour[channel] *
                      (1.0F + 0.55F * texture + kTint[static_cast<std::size_t>(channel)] * tint);
        const auto grain =
            static_cast<float>(mix(noise * 3U + static_cast<std::uint32_t>(channel))) / 2147483648.0F - 1.0F;
        value = value * gain + static_cast<float>(errors_.noise) * grain;
        pixel[channel] = static_cast<std::uint8_t>(std::clamp(value + 0.5F, 1.0F, 255.0F));
    }
}

Bitmap Scene::render(int side) const {
    Bitmap bitmap = Bitmap::create(options_.width, options_.height);
    const Picture picture = bitmap.picture();
#pragma omp parallel for schedule(dynamic, 8)
    for (int row = 0; row < options_.height; ++row) {
        for (int column = 0; column < options_.width; ++column) {
            const ScenePoint point =
                ideal_of({column - options_.width / 2.0, row - options_.height / 2.0}, side);
            const auto number =
                static_cast<std::uint32_t>((row * 2 + (side > 0 ? 1 : 0)) * options_.width + column);
            shade(point, side, mix(number ^ options_.seed), picture.pixel(column, row));
        }
    }
    return bitmap;
}

}  // namespace zemora
