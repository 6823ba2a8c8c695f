#pragma once
/// From an error surface to a displacement and the figures of its trustworthiness.

#include "analysis/correlation.h"

namespace zemora {

/// Sharpness of a minimum on the border of the search: no minimum at all.
inline constexpr float kNoMinimum = -2.0F;

/// What one surface says of its minimum: where it lies, and how far it can be trusted.
struct SurfaceFigures {
    float sharpness_x = 0.0F;  ///< How steeply the errors rise in x; of a profile, along its line.
    float sharpness_y = 0.0F;  ///< How steeply they rise in y.
    float sharpness = 0.0F;    ///< How steeply they rise in the direction of the weakest rise.
    int ambiguity = 0;         ///< Number of displacements within twice the least error.
    /// Of a surface 1,000 times the least error over the number of displacements; of a profile the width of
    /// the band of low errors.
    int match_error = 0;
    float dx = 0.0F;  ///< Pixels from the centre of the search.
    float dy = 0.0F;
    /// Pixels; how far the height can move before the error doubles, see `SubPixel::vertex`.
    float looseness = 0.0F;
};

/// Where between its steps the minimum of a surface is taken to lie.
enum class SubPixel {
    damped_height,  ///< In height, three quarters of the way to the vertex of a parabola; whole steps across.
    vertex,         ///< In both axes, at the vertex of the paraboloid through the nine errors round it.
};

/// Grades the minimum of a two-dimensional search; `height` and `width` are the size in pixels of
/// the image in which the displacements are wanted.
[[nodiscard]] SurfaceFigures evaluate_surface(const ErrorSurface& surface, int height, int width,
                                              SubPixel sub_pixel);

/// Grades the minimum of a surface of one row.
[[nodiscard]] SurfaceFigures evaluate_profile(const ErrorSurface& surface);

}  // namespace zemora
