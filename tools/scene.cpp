#include "scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace zemora {

namespace {

constexpr double kDeep = 0.04;          ///< Of the width: a depth beyond which perspective shows.
constexpr double kHorizon = 0.1;        ///< Of the height above the middle: where ground and wall meet.
constexpr double kNearestGround = 0.7;  ///< Of the depth, at the bottom of a deep scene.
constexpr double kPatternNoise = 0.1;   ///< Of the noise, where there is a pattern.

void paint(SceneRandom& random, float (&colour)[3], float& pattern_x, float& pattern_y) {
    for (float& channel : colour) {
        channel = static_cast<float>(random.between(70.0, 190.0));
    }
    pattern_x = static_cast<float>(random.between(0.0, 100.0));
    pattern_y = static_cast<float>(random.between(0.0, 100.0));
}

}  // namespace

bool Scene::Layer::covers(double x, double y) const {
    if (radius_x <= 0.0) {
        return y <= top;
    }
    const double u = (x - centre_x) / radius_x;
    const double v = (y - centre_y) / radius_y;
    return u * u * u * u + v * v * v * v <= 1.0;
}

Scene::Scene(const SceneOptions& options, const SceneErrors& errors)
    : options_(options),
      errors_(errors),
      camera_sine_(std::sin(options.camera.turn_rad)),
      camera_cosine_(std::cos(options.camera.turn_rad)) {
    SceneRandom random(options.seed);
    for (int i = 0; i < options.objects; ++i) {
        add_object(random);
    }
    std::sort(layers_.begin(), layers_.end(),
              [](const Layer& a, const Layer& b) { return a.disparity < b.disparity; });
    add_ground(random);
    add_wall(random);
    if (options.pattern != SurfacePattern::none) {
        lay_patterns();
    }
}

bool Scene::is_deep() const {
    return options_.far_disparity - options_.near_disparity > kDeep;
}

void Scene::add_object(SceneRandom& random) {
    const double w = options_.width;
    const double h = options_.height;
    Layer layer;
    layer.centre_x = random.between(-0.48, 0.48) * w;
    layer.centre_y = random.between(-0.48, 0.48) * h;
    layer.radius_x = random.between(0.02, 0.09) * w;
    layer.radius_y = random.between(0.02, 0.10) * w;
    layer.disparity = random.between(near_px(), far_px());
    paint(random, layer.colour, layer.pattern_x, layer.pattern_y);
    if (is_deep()) {
        put_in_perspective(layer);
    }
    layers_.push_back(layer);
}

/// Disparity per row of the ground of a deep scene, from its bottom up to the wall.
double Scene::ground_slope() const {
    return kNearestGround * (far_px() - near_px()) / ((kHorizon + 0.5) * options_.height);
}

/// Sizes the object by its distance and lifts it on the ground where the ground would be in front of it.
void Scene::put_in_perspective(Layer& object) const {
    constexpr double kSizeOfFarthest = 0.5;
    constexpr double kFoot = 0.8;  // of the radius from the middle down to where it stands
    const double size = kSizeOfFarthest + (far_px() - object.disparity) / (far_px() - near_px());
    object.radius_x *= size;
    object.radius_y = std::min(object.radius_y * size, 0.4 * options_.height);
    const double standing_row = kHorizon * options_.height - (far_px() - object.disparity) / ground_slope();
    object.centre_y = std::max(object.centre_y, standing_row + kFoot * object.radius_y);
}

/// Rises from the near to the far distance at the horizon.
void Scene::add_ground(SceneRandom& random) {
    Layer ground;
    ground.top = kHorizon * options_.height;
    if (is_deep()) {
        ground.disparity_per_row = ground_slope();
        ground.disparity = far_px() - ground.disparity_per_row * ground.top;
    } else {
        ground.disparity = far_px() * 0.9;
        ground.disparity_per_row = (far_px() * 0.9 - near_px() * 0.6) / (0.6 * options_.height);
    }
    paint(random, ground.colour, ground.pattern_x, ground.pattern_y);
    layers_.push_back(ground);
}

void Scene::add_wall(SceneRandom& random) {
    Layer wall;
    wall.top = 10.0 * options_.height;
    wall.disparity = far_px();
    paint(random, wall.colour, wall.pattern_x, wall.pattern_y);
    layers_.push_back(wall);
}

/// The pattern stands upright on wall and ground, and turned on the largest objects of the nearer half, so
/// that a match one period aside lies at another height.
void Scene::lay_patterns() {
    constexpr std::size_t kBackground = 2;
    constexpr std::size_t kMostObjects = 4;
    constexpr double kDegree = 3.14159265358979323846 / 180.0;
    std::vector<Layer*> chosen;
    const std::size_t objects = layers_.size() - kBackground;
    for (std::size_t i = 0; i < (objects + 1) / 2; ++i) {
        chosen.push_back(&layers_[i]);
    }
    std::sort(chosen.begin(), chosen.end(), [](const Layer* a, const Layer* b) {
        return a->radius_x * a->radius_y > b->radius_x * b->radius_y;
    });
    chosen.resize(std::min(chosen.size(), kMostObjects));
    SceneRandom random(options_.seed + 1000U);  // apart from that of the scene, which stays as it is without
    for (Layer* object : chosen) {
        const double turn = random.between(4.0, 14.0) * (random.next() < 0.5 ? -kDegree : kDegree);
        object->turn_sine = std::sin(turn);
        object->turn_cosine = std::cos(turn);
    }
    chosen.push_back(&layers_[objects]);
    chosen.push_back(&layers_[objects + 1]);
    for (Layer* layer : chosen) {
        layer->patterned = true;
        std::fill(std::begin(layer->colour), std::end(layer->colour),
                  static_cast<float>(random.between(100.0, 150.0)));
    }
}

/// Where a point of the view lies among the surfaces.
ScenePoint Scene::before_camera(double x, double y) const {
    if (options_.camera == CameraPlace()) {
        return {x, y};
    }
    return {camera_cosine_ * x + camera_sine_ * y + options_.camera.x_px,
            camera_cosine_ * y - camera_sine_ * x + options_.camera.y_px};
}

/// The slope of a surface is taken at the point of the view, not between both: of a camera that turns by a
/// few degrees it makes no difference.
Scene::Hit Scene::hit(double x, double y, int side) const {
    const double height = before_camera(x, y).y;
    for (const Layer& layer : layers_) {
        const ScenePoint between = before_camera(x - 0.5 * side * layer.disparity_at(height), y);
        if (layer.covers(between.x, between.y)) {
            return {&layer, between};
        }
    }
    return {&layers_.back(), before_camera(x, y)};
}

ScenePoint Scene::misaligned(ScenePoint ideal, int side) const {
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

ScenePoint Scene::through_lens(ScenePoint point) const {
    const double square = point.x * point.x + point.y * point.y;
    const double half_diagonal_square =
        0.25 * (1.0 * options_.width * options_.width + 1.0 * options_.height * options_.height);
    const double factor = 1.0 - options_.barrel * square / half_diagonal_square;
    return {point.x * factor, point.y * factor};
}

/// The inverse of the lens, by Newton's method along the ray.
ScenePoint Scene::before_lens(ScenePoint point) const {
    constexpr int kRounds = 8;
    const double half_diagonal = 0.5 * std::hypot(options_.width, options_.height);
    const double shown = std::hypot(point.x, point.y) / half_diagonal;
    if (options_.barrel == 0.0 || shown == 0.0) {
        return point;
    }
    double radius = shown;
    for (int i = 0; i < kRounds; ++i) {
        const double square = options_.barrel * radius * radius;
        radius -= (radius * (1.0 - square) - shown) / (1.0 - 3.0 * square);
    }
    return {point.x * radius / shown, point.y * radius / shown};
}

ScenePoint Scene::ideal_of(ScenePoint shown, int side) const {
    constexpr int kRounds = 6;  // the displacements are small; each round gains two digits
    const ScenePoint point = before_lens(shown);
    ScenePoint ideal = point;
    for (int i = 0; i < kRounds; ++i) {
        const ScenePoint there = misaligned(ideal, side);
        ideal.x += point.x - there.x;
        ideal.y += point.y - there.y;
    }
    return ideal;
}

ScenePoint Scene::right_of_left(ScenePoint left) const {
    const ScenePoint ideal = ideal_of(left, -1);
    const double height = before_camera(ideal.x, ideal.y).y;
    const double disparity = hit(ideal.x, ideal.y, -1).layer->disparity_at(height);
    return through_lens(misaligned({ideal.x + disparity, ideal.y}, +1));
}

bool Scene::right_sees(ScenePoint left) const {
    const ScenePoint ideal = ideal_of(left, -1);
    const Layer* layer = hit(ideal.x, ideal.y, -1).layer;
    const ScenePoint right = right_of_left(left);
    const double half_w = options_.width / 2.0;
    const double half_h = options_.height / 2.0;
    const bool inside =
        right.x >= -half_w && right.x <= half_w - 1.0 && right.y >= -half_h && right.y <= half_h - 1.0;
    const double disparity = layer->disparity_at(before_camera(ideal.x, ideal.y).y);
    return inside && hit(ideal.x + disparity, ideal.y, +1).layer == layer;
}

float Scene::pattern_of(const Layer& layer, ScenePoint surface) const {
    constexpr float kContrast = 0.3F;
    const double x = surface.x - layer.centre_x;
    const double y = surface.y - layer.centre_y;
    return kContrast * surface_pattern(options_.pattern, layer.turn_cosine * x + layer.turn_sine * y,
                                       layer.turn_cosine * y - layer.turn_sine * x, options_.width);
}

std::array<float, 3> Scene::colour_of(const Layer& layer, ScenePoint surface) const {
    const SurfaceNoise texture =
        options_.flat ? SurfaceNoise{}
                      : surface_noise(surface.x, surface.y, layer.pattern_x, layer.pattern_y, options_.width);
    const float pattern = layer.patterned ? pattern_of(layer, surface) : 0.0F;
    const auto strength = static_cast<float>(options_.texture * (layer.patterned ? kPatternNoise : 1.0));
    constexpr std::array kWarm{0.25F, 0.0F, -0.25F};
    std::array<float, 3> colour{};
    for (std::size_t channel = 0; channel < colour.size(); ++channel) {
        colour[channel] = layer.colour[channel] * (1.0F + pattern + 0.55F * strength * texture.lightness +
                                                   kWarm[channel] * strength * texture.warmth);
    }
    return colour;
}

void Scene::shade(ScenePoint ideal, int side, std::uint32_t noise, std::uint8_t* pixel) const {
    const Hit seen = hit(ideal.x, ideal.y, side);
    const std::array<float, 3> colour = colour_of(*seen.layer, seen.point);
    const float gain = side > 0 ? static_cast<float>(errors_.brightness) : 1.0F;
    for (int channel = 0; channel < kPixelBytes; ++channel) {
        const auto grain =
            static_cast<float>(mix_bits(noise * 3U + static_cast<std::uint32_t>(channel))) / 2147483648.0F -
            1.0F;
        const float value =
            colour[static_cast<std::size_t>(channel)] * gain + static_cast<float>(errors_.noise) * grain;
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
            shade(point, side, mix_bits(number ^ options_.seed), picture.pixel(column, row));
        }
    }
    return bitmap;
}

}  // namespace zemora
