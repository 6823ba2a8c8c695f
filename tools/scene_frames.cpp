// Frames of a film: the surfaces of a scene are painted once, each view is put together from them.
#include <algorithm>
#include <cmath>
#include <span>

#include "scene.h"

namespace zemora {

namespace {

constexpr int kPositionStep = 16;  // columns between which positions lie on a line, to 0.001 pixel
constexpr int kWeightBits = 8;     // of a place between two pixels

/// The colour between four pixels; positions outside take the nearest one inside.
void sample(ConstPicture picture, double x, double y, std::uint8_t* pixel) {
    const double inside_x = std::clamp(x, 0.0, picture.width - 1.001);
    const double inside_y = std::clamp(y, 0.0, picture.height - 1.001);
    const int left = static_cast<int>(inside_x);
    const int bottom = static_cast<int>(inside_y);
    const int u = static_cast<int>((inside_x - left) * (1 << kWeightBits));
    const int v = static_cast<int>((inside_y - bottom) * (1 << kWeightBits));
    const std::uint8_t* low = picture.pixel(left, bottom);
    const std::uint8_t* high = picture.pixel(left, bottom + 1);
    for (int channel = 0; channel < kPixelBytes; ++channel) {
        const int below = (low[channel] << kWeightBits) + u * (low[channel + kPixelBytes] - low[channel]);
        const int above = (high[channel] << kWeightBits) + u * (high[channel + kPixelBytes] - high[channel]);
        const int sum = (below << kWeightBits) + v * (above - below);
        pixel[channel] = static_cast<std::uint8_t>((sum + (1 << (2 * kWeightBits - 1))) >> (2 * kWeightBits));
    }
}

/// The picture of a surface and where it begins.
struct PaintedSurface {
    ConstPicture picture;
    int left;
    int bottom;
};

/// Brightness and noise of a pixel whose colour stands.
void finish(std::uint8_t* pixel, float gain, float noise, std::uint32_t number) {
    constexpr float kByte = 127.5F;
    const std::uint32_t bits = noise > 0.0F ? mix_bits(number) : 0U;
    for (unsigned channel = 0; channel < kPixelBytes; ++channel) {
        const float grain = static_cast<float>((bits >> (8U * channel)) & 255U) / kByte - 1.0F;
        const float value = pixel[channel] * gain + noise * grain;
        pixel[channel] = static_cast<std::uint8_t>(std::clamp(value + 0.5F, 1.0F, 255.0F));
    }
}

}  // namespace

SurfacePictures Scene::paint_surfaces(int margin_px) const {
    SurfacePictures pictures;
    const double half_w = options_.width / 2.0 + margin_px;
    const double half_h = options_.height / 2.0 + margin_px;
    for (const Layer& layer : layers_) {
        const bool is_object = layer.radius_x > 0.0;
        const double reach_x = is_object ? layer.radius_x + 2.0 : half_w;
        const double high =
            is_object ? layer.centre_y + layer.radius_y + 2.0 : std::min(layer.top + 2.0, half_h);
        const double low = is_object ? layer.centre_y - layer.radius_y - 2.0 : -half_h;
        SurfacePictures::Piece piece;
        piece.left = static_cast<int>(std::floor(layer.centre_x - reach_x));
        piece.bottom = static_cast<int>(std::floor(low));
        piece.bitmap = Bitmap::create(static_cast<int>(std::ceil(2.0 * reach_x)) + 1,
                                      std::max(static_cast<int>(std::ceil(high - low)) + 1, 2));
        const Picture picture = piece.bitmap.picture();
#pragma omp parallel for schedule(dynamic, 8)
        for (int row = 0; row < picture.height; ++row) {
            for (int column = 0; column < picture.width; ++column) {
                const std::array<float, 3> colour =
                    colour_of(layer, {piece.left + column + 0.0, piece.bottom + row + 0.0});
                for (std::size_t channel = 0; channel < colour.size(); ++channel) {
                    picture.pixel(column, row)[channel] =
                        static_cast<std::uint8_t>(std::clamp(colour[channel] + 0.5F, 1.0F, 255.0F));
                }
            }
        }
        pictures.pieces_.push_back(std::move(piece));
    }
    return pictures;
}

/// One row of a view at work.
struct Scene::RowPainter {
    const Scene& scene;
    std::span<const PaintedSurface> surfaces;
    int side;
    std::vector<std::size_t> reached{};  ///< The layers that the row can show, nearest first.

    /// Where the row and its columns lead, in steps.
    [[nodiscard]] std::vector<ScenePoint> positions(int row) const {
        std::vector<ScenePoint> places;
        for (int column = 0; column < scene.width() + kPositionStep; column += kPositionStep) {
            places.push_back(
                scene.ideal_of({column - scene.width() / 2.0, row - scene.height() / 2.0}, side));
        }
        return places;
    }

    void find_reached(const std::vector<ScenePoint>& places) {
        double low = scene.before_camera(places.front().x, places.front().y).y;
        double high = low;
        for (const ScenePoint& place : places) {
            const double y = scene.before_camera(place.x, place.y).y;
            low = std::min(low, y);
            high = std::max(high, y);
        }
        reached.clear();
        for (std::size_t i = 0; i < scene.layers_.size(); ++i) {
            const Layer& layer = scene.layers_[i];
            // A turned camera moves a disparity a little way up or down.
            const double slack = 2.0 + std::fabs(scene.camera_sine_ * layer.disparity);
            const bool everywhere = layer.radius_x <= 0.0;
            if (everywhere || (low <= layer.centre_y + layer.radius_y + slack &&
                               high >= layer.centre_y - layer.radius_y - slack)) {
                reached.push_back(i);
            }
        }
    }

    void paint(ScenePoint ideal, std::uint8_t* pixel) const {
        const ScenePoint here = scene.before_camera(ideal.x, ideal.y);
        for (const std::size_t i : reached) {
            const Layer& layer = scene.layers_[i];
            const double aside = 0.5 * side * layer.disparity_at(here.y);
            const ScenePoint point{here.x - scene.camera_cosine_ * aside,
                                   here.y + scene.camera_sine_ * aside};
            const bool far_off = layer.radius_x > 0.0 && std::fabs(point.x - layer.centre_x) > layer.radius_x;
            if (!far_off && layer.covers(point.x, point.y)) {
                const PaintedSurface& surface = surfaces[i];
                sample(surface.picture, point.x - surface.left, point.y - surface.bottom, pixel);
                return;
            }
        }
    }
};

Bitmap Scene::render_from(const SurfacePictures& pictures, int side, std::uint32_t grain) const {
    Bitmap bitmap = Bitmap::create(options_.width, options_.height);
    const Picture picture = bitmap.picture();
    const float gain = side > 0 ? static_cast<float>(errors_.brightness) : 1.0F;
    const std::uint32_t seed = mix_bits(grain * 2U + (side > 0 ? 1U : 0U));
    const auto noise = static_cast<float>(errors_.noise);
    std::vector<PaintedSurface> surfaces;
    for (const SurfacePictures::Piece& piece : pictures.pieces_) {
        surfaces.push_back({piece.bitmap.picture(), piece.left, piece.bottom});
    }
#pragma omp parallel for schedule(dynamic, 8)
    for (int row = 0; row < options_.height; ++row) {
        RowPainter painter{*this, surfaces, side};
        const std::vector<ScenePoint> places = painter.positions(row);
        painter.find_reached(places);
        for (int column = 0; column < options_.width; ++column) {
            const ScenePoint& a = places[static_cast<std::size_t>(column / kPositionStep)];
            const ScenePoint& b = places[static_cast<std::size_t>(column / kPositionStep) + 1];
            const double t = (column % kPositionStep) / static_cast<double>(kPositionStep);
            std::uint8_t* pixel = picture.pixel(column, row);
            painter.paint({a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)}, pixel);
            if (gain != 1.0F || noise > 0.0F) {
                finish(pixel, gain, noise, static_cast<std::uint32_t>(row * options_.width + column) ^ seed);
            }
        }
    }
    return bitmap;
}

}  // namespace zemora
