#pragma once
/// What the surfaces of a generated scene look like: noise, and patterns that repeat.
///
/// Positions are in pixels of the surface; y counts upward.

namespace zemora {

/// A repeating pattern. Its period is a share of the width of the picture.
enum class SurfacePattern {
    none = 0,
    chequers = 1,  ///< Squares of a twenty-fifth of the width.
    bars = 2,      ///< Upright bars of a fence, one in a fortieth of the width.
    bricks = 3,    ///< Bricks of a twenty-fifth of the width, every other row by half a brick aside.
};

/// Noise of several sizes of grain: about -1 to 1 in lightness, and in how warm the colour is.
struct SurfaceNoise {
    float lightness = 0.0F;
    float warmth = 0.0F;
};

/// The noise at a position for a picture of `width` pixels; the origin chooses the part of the noise.
[[nodiscard]] SurfaceNoise surface_noise(double x, double y, float origin_x, float origin_y, int width);

/// The pattern at a position for a picture of `width` pixels: -1 and 1, with an edge of two pixels between.
[[nodiscard]] float surface_pattern(SurfacePattern pattern, double x, double y, int width);

}  // namespace zemora
