#pragma once
/// What the five terms of the model could at best remove: a yardstick that is independent of the program.

#include <vector>

namespace zemora::test {

/// A vertical error at a place of the picture; the sides of the picture lie at -1 and 1.
struct HeightError {
    double x = 0.0;
    double y = 0.0;
    double dy = 0.0;  ///< Pixels.
};

/// |dy| that height, size, rotation and both vergences leave where they fit best, in the order of the points.
/// Least squares with the weights of P. J. Huber, "Robust Estimation of a Location Parameter" (1964). Empty
/// for fewer points than terms or points on which the terms cannot be told apart.
[[nodiscard]] std::vector<double> left_by_best_terms(const std::vector<HeightError>& errors);

}  // namespace zemora::test
