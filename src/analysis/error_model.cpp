#include "analysis/error_model.h"

#include <array>
#include <cmath>

namespace zemora {

namespace {

constexpr int kRounds = 5;
constexpr int kHalfLattice = 8;  ///< Half the points a side over which an error is averaged.
constexpr int kLattice = 2 * kHalfLattice;

enum Term { kHeight, kSize, kRotation, kVergenceV, kVergenceH, kTerms };

}  // namespace

ModelBasis model_basis(const ModelPoint& point, int height, int width) {
    const int middle_x = width / 2;
    const int middle_y = height / 2;
    const double x = point.x - middle_x;
    const double y = point.y - middle_y;
    const double exact_y = point.y - height / 2.0;
    return {1.0, y, x, x * y / (width / 2.0), exact_y * exact_y / (height / 2.0) - height / 6.0};
}

ModelTerms model_terms(int estimate_vergence_v, int estimate_vergence_h, bool corners_covered) {
    namespace v = setting::estimate_vergence_v;
    namespace h = setting::estimate_vergence_h;
    return {
        estimate_vergence_v == v::corrected || (estimate_vergence_v == v::with_corners && corners_covered),
        estimate_vergence_h == h::corrected || (estimate_vergence_h == h::with_corners && corners_covered)};
}

ModelFit solve_error_model(std::vector<ModelPoint> points, int height, int width, ModelTerms terms) {
    const std::array<bool, kTerms> solved = {true, true, true, terms.vergence_v, terms.vergence_h};
    std::vector<ModelBasis> bases;
    bases.reserve(points.size());
    for (const ModelPoint& point : points) {
        bases.push_back(model_basis(point, height, width));
    }
    ModelBasis total{};
    for (int step = 0; step < kRounds * kTerms; ++step) {
        const auto term = static_cast<std::size_t>(step % kTerms);
        double product = 0.0;
        double square = 0.0;
        for (std::size_t k = 0; solved[term] && k < points.size(); ++k) {
            product += points[k].dy * bases[k][term];
            square += bases[k][term] * bases[k][term];
        }
        const double coefficient = square > 0.0 ? product / square : 0.0;
        total[term] += coefficient;
        for (std::size_t k = 0; k < points.size(); ++k) {
            points[k].dy -= coefficient * bases[k][term];
        }
    }
    ModelFit fit;
    fit.values.height_px = static_cast<float>(total[kHeight]);
    fit.values.size = static_cast<float>(total[kSize]);
    fit.values.rotation_rad = static_cast<float>(total[kRotation]);
    fit.values.vergence_v_rad = static_cast<float>(total[kVergenceV]);
    fit.values.vergence_h_rad = static_cast<float>(total[kVergenceH]);
    for (const ModelPoint& point : points) {
        fit.residual_rms_px += point.dy * point.dy;
    }
    fit.residual_rms_px =
        points.empty() ? 0.0 : std::sqrt(fit.residual_rms_px / static_cast<double>(points.size()));
    return fit;
}

double mean_model_error(const Correction& values, int height, int width) {
    double sum = 0.0;
    for (int i = 0; i < kLattice; ++i) {
        for (int j = 0; j < kLattice; ++j) {
            const double x = (j - kHalfLattice) * static_cast<double>(width) / kLattice;
            const double y = (i - kHalfLattice) * static_cast<double>(height) / kLattice;
            sum += std::fabs(values.height_px + values.size * y + values.rotation_rad * x +
                             values.vergence_v_rad * x * y / (width / 2.0) +
                             values.vergence_h_rad * y * y / (height / 2.0));
        }
    }
    return sum / (kLattice * kLattice);
}

}  // namespace zemora
