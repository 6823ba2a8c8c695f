#pragma once
/// A stereo scene with known truth: textured layers at known disparities, seen by two cameras, the
/// right one of which is misaligned by known amounts.
///
/// A scene deeper than 4 % of the width is laid out by perspective: the ground comes near at the bottom, and
/// near objects are large, stand on the ground or hang above it.
///
/// Positions are in pixels of the picture, centred, y counted upward. Disparity is right minus left.

#include <array>
#include <cstdint>
#include <vector>

#include "numerics/bitmap.h"
#include "scene_random.h"
#include "surface_texture.h"

namespace zemora {

/// Misalignment of the views, right minus left. A view of side s (-1 left, +1 right) that carries the
/// share w of it shows the point that belongs at (x, y) where these steps lead, in this order, with
/// e the error times s w:
///   height      y += e
///   size        x += e x, y += e y
///   rotation    x, y = x - e y, y + e x
///   vergence V  x, y = x + e x^2 / (W/2), y + e x y / (W/2)
///   vergence H  y += e (y^2 / (H/2) - H/6)
/// To first order dy is the model of the analysis, whatever the share; to second order the share counts.
struct SceneErrors {
    double height_px = 0.0;
    double size = 0.0;  ///< Fraction.
    double rotation_rad = 0.0;
    double vergence_v_rad = 0.0;
    double vergence_h_rad = 0.0;
    int share = 0;            ///< 0 half on each view, -1 all on the left, 1 all on the right.
    double brightness = 1.0;  ///< Factor of the right view.
    double noise = 0.0;       ///< Half range of uniform noise in both views, levels.
};

struct ScenePoint {
    double x = 0.0;
    double y = 0.0;
};

/// Where the camera of a film has got to since its first frame; both views move alike. The surfaces stay.
struct CameraPlace {
    double x_px = 0.0;      ///< To the right: what is seen moves to the left.
    double y_px = 0.0;      ///< Upward: what is seen moves down.
    double turn_rad = 0.0;  ///< What is seen turns counter-clockwise round the middle.
    friend bool operator==(const CameraPlace&, const CameraPlace&) = default;
};

struct SceneOptions {
    int width = 0;  ///< Pixels.
    int height = 0;
    std::uint32_t seed = 1;
    int objects = 14;                ///< Surfaces in front of ground and wall.
    double near_disparity = -0.012;  ///< Fractions of the width.
    double far_disparity = 0.008;
    bool flat = false;     ///< Every surface of one colour; a pattern stays.
    double texture = 1.0;  ///< Strength of the noise on the surfaces, 0 to 1.
    /// On the wall, the ground and the largest of the near objects, with a tenth of the noise over it.
    SurfacePattern pattern = SurfacePattern::none;
    /// The lenses of both views show a point at r from the middle at r (1 - barrel (r / R)^2), with R half
    /// the diagonal, after the misalignment. Below 0.14; negative for a cushion.
    double barrel = 0.0;
    CameraPlace camera;
};

/// The surfaces of a scene as pictures, so that many frames of it are made in short time.
class SurfacePictures {
public:
    SurfacePictures() = default;

private:
    friend class Scene;
    struct Piece {
        Bitmap bitmap;
        int left = 0;  ///< Of the surface's pixels, the first column and row.
        int bottom = 0;
    };
    std::vector<Piece> pieces_;  ///< In the order of the layers.
};

class Scene {
public:
    Scene(const SceneOptions& options, const SceneErrors& errors);

    [[nodiscard]] Bitmap render_left() const { return render(-1); }
    [[nodiscard]] Bitmap render_right() const { return render(+1); }

    /// Pictures of all surfaces, with so many pixels beyond the sides of the view.
    [[nodiscard]] SurfacePictures paint_surfaces(int margin_px) const;
    /// A view from such pictures, which may be those of another scene that differs in errors, depth and
    /// camera alone: -1 the left, 1 the right one. It differs from a rendered one by the interpolation
    /// between the pixels of a surface. `grain` chooses the noise.
    [[nodiscard]] Bitmap render_from(const SurfacePictures& pictures, int side, std::uint32_t grain) const;

    /// Where the right view shows what the left view has at `left`, hidden or not.
    [[nodiscard]] ScenePoint right_of_left(ScenePoint left) const;
    /// Whether the right view shows what the left view has at `left`: not behind something else, not outside.
    [[nodiscard]] bool right_sees(ScenePoint left) const;
    [[nodiscard]] const SceneErrors& errors() const { return errors_; }
    [[nodiscard]] int width() const { return options_.width; }
    [[nodiscard]] int height() const { return options_.height; }

private:
    /// One surface; the first that covers a point hides those behind it.
    struct Layer {
        double centre_x = 0.0;
        double centre_y = 0.0;
        double radius_x = 0.0;  ///< 0 covers everything below `top`.
        double radius_y = 0.0;
        double top = 0.0;
        double disparity = 0.0;  ///< Pixels, at y = 0.
        double disparity_per_row = 0.0;
        float colour[3] = {};
        float pattern_x = 0.0F;  ///< Origin in the texture.
        float pattern_y = 0.0F;
        bool patterned = false;
        double turn_sine = 0.0;  ///< Of the pattern against the surface.
        double turn_cosine = 1.0;
        [[nodiscard]] bool covers(double x, double y) const;
        [[nodiscard]] double disparity_at(double y) const { return disparity + disparity_per_row * y; }
    };
    struct Hit {
        const Layer* layer;
        ScenePoint point;  ///< On the surface, between the two views.
    };
    struct RowPainter;
    void add_object(SceneRandom& random);
    void put_in_perspective(Layer& object) const;
    void add_ground(SceneRandom& random);
    void add_wall(SceneRandom& random);
    void lay_patterns();
    [[nodiscard]] bool is_deep() const;
    [[nodiscard]] double ground_slope() const;
    [[nodiscard]] double near_px() const { return options_.near_disparity * options_.width; }
    [[nodiscard]] double far_px() const { return options_.far_disparity * options_.width; }

    [[nodiscard]] Bitmap render(int side) const;
    [[nodiscard]] Hit hit(double x, double y, int side) const;
    [[nodiscard]] ScenePoint before_camera(double x, double y) const;
    [[nodiscard]] std::array<float, 3> colour_of(const Layer& layer, ScenePoint surface) const;
    [[nodiscard]] ScenePoint through_lens(ScenePoint point) const;
    [[nodiscard]] ScenePoint before_lens(ScenePoint point) const;
    [[nodiscard]] ScenePoint misaligned(ScenePoint ideal, int side) const;
    [[nodiscard]] ScenePoint ideal_of(ScenePoint shown, int side) const;
    [[nodiscard]] float pattern_of(const Layer& layer, ScenePoint surface) const;
    void shade(ScenePoint ideal, int side, std::uint32_t noise, std::uint8_t* pixel) const;

    SceneOptions options_;
    SceneErrors errors_;
    double camera_sine_ = 0.0;
    double camera_cosine_ = 1.0;
    std::vector<Layer> layers_;  ///< Nearest first.
};

}  // namespace zemora
