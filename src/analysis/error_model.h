#pragma once
/// The model of vertical misalignment and its fits.
///
/// dy(X, Y) = height + size Y + rotation X + vergence_v X Y / (W/2) + vergence_h (Y^2 / (H/2) - H/6)
/// with X, Y from the middle of the image. The last term has mean 0 over the height of the image.

#include <array>
#include <vector>

#include "analysis/stereo_analyse.h"

namespace zemora {

/// Terms that are solved besides height, size and rotation; the others are 0.
struct ModelTerms {
    bool vergence_v = false;
    bool vergence_h = false;
    friend bool operator==(const ModelTerms&, const ModelTerms&) = default;
};

/// The terms wanted by `EstimateVergence_V` and `EstimateVergence_H`: never, always, or only with points in
/// all four corners.
[[nodiscard]] ModelTerms model_terms(int estimate_vergence_v, int estimate_vergence_h, bool corners_covered);

/// A measured cell.
struct ModelPoint {
    int x = 0;  ///< Middle of the tile, pixels of the image.
    int y = 0;
    double dy = 0.0;
    double looseness = 0.0;  ///< Pixels; how little the tile holds its height (`SurfaceFigures::looseness`).
};

/// Values of the terms at a point for coefficients of 1: height, size, rotation, vergence V, vergence H.
using ModelBasis = std::array<double, 5>;
[[nodiscard]] ModelBasis model_basis(const ModelPoint& point, int height, int width);

struct ModelFit {
    Correction values;             ///< The shift stays 0.
    double residual_rms_px = 0.0;  ///< Pixels; of the weighted points where the fit has weights.
};

/// Fits the terms in turn, five times over, each to what the others leave.
[[nodiscard]] ModelFit solve_error_model(std::vector<ModelPoint> points, int height, int width,
                                         ModelTerms terms);

/// Fewer points than these give no majority to trust.
inline constexpr std::size_t kLeastRobustPoints = 12;

struct RobustFit {
    ModelFit fit;
    std::vector<double> weights;  ///< One a point, 0 to 1; 0 for a point that contradicts the others.
};

/// Fits all terms at once to the points that agree with each other: starts from the best of many small
/// samples and goes on with weighted normal equations (P. J. Huber, "Robust Statistics", 1981; weights of
/// Beaton and Tukey). The samples are the same in every call. With fewer than `kLeastRobustPoints` points
/// it is `solve_error_model` with weights of 1.
[[nodiscard]] RobustFit solve_error_model_robustly(const std::vector<ModelPoint>& points, int height,
                                                   int width, ModelTerms terms);

}  // namespace zemora
