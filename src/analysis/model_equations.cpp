#include "analysis/model_equations.h"

#include <algorithm>
#include <cmath>

namespace zemora {

namespace {

using Matrix = std::array<ModelBasis, kModelTerms>;

/// The lower half of L with L L^T the symmetric matrix whose lower half is given, in its place. False where
/// the matrix is singular (A.-L. Cholesky).
bool decompose(Matrix& matrix) {
    constexpr double kSingular = 1e-9;
    for (std::size_t j = 0; j < kModelTerms; ++j) {
        const double before = matrix[j][j];
        for (std::size_t k = 0; k < j; ++k) {
            matrix[j][j] -= matrix[j][k] * matrix[j][k];
        }
        if (!(matrix[j][j] > kSingular * before)) {
            return false;
        }
        matrix[j][j] = std::sqrt(matrix[j][j]);
        for (std::size_t i = j + 1; i < kModelTerms; ++i) {
            for (std::size_t k = 0; k < j; ++k) {
                matrix[i][j] -= matrix[i][k] * matrix[j][k];
            }
            matrix[i][j] /= matrix[j][j];
        }
    }
    return true;
}

/// Solves L L^T x = b; b becomes x.
void substitute(const Matrix& lower, ModelBasis& b) {
    for (std::size_t i = 0; i < kModelTerms; ++i) {
        for (std::size_t k = 0; k < i; ++k) {
            b[i] -= lower[i][k] * b[k];
        }
        b[i] /= lower[i][i];
    }
    for (std::size_t i = kModelTerms; i-- > 0;) {
        for (std::size_t k = i + 1; k < kModelTerms; ++k) {
            b[i] -= lower[k][i] * b[k];
        }
        b[i] /= lower[i][i];
    }
}

}  // namespace

Correction values_of_terms(const ModelBasis& c) {
    Correction values;
    values.height_px = static_cast<float>(c[0]);
    values.size = static_cast<float>(c[1]);
    values.rotation_rad = static_cast<float>(c[2]);
    values.vergence_v_rad = static_cast<float>(c[3]);
    values.vergence_h_rad = static_cast<float>(c[4]);
    return values;
}

ModelBasis column_units(const std::vector<ModelBasis>& bases) {
    constexpr double kLeast = 1e-12;
    ModelBasis unit{};
    for (std::size_t t = 0; t < kModelTerms; ++t) {
        for (const ModelBasis& basis : bases) {
            unit[t] += basis[t] * basis[t];
        }
        unit[t] = std::max(std::sqrt(unit[t] / static_cast<double>(std::max<std::size_t>(bases.size(), 1))),
                           kLeast);
    }
    return unit;
}

NormalEquations::NormalEquations(const ModelBasis& unit, const SolvedTerms& solved)
    : unit_(unit), solved_(solved) {
    for (std::size_t t = 0; t < kModelTerms; ++t) {
        matrix_[t][t] = solved_[t] ? 0.0 : 1.0;
    }
}

void NormalEquations::add(const ModelBasis& basis, double dy, double weight) {
    ModelBasis row;
    for (std::size_t t = 0; t < kModelTerms; ++t) {
        row[t] = solved_[t] ? basis[t] / unit_[t] : 0.0;
    }
    for (std::size_t i = 0; i < kModelTerms; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            matrix_[i][j] += weight * row[i] * row[j];
        }
        right_[i] += weight * row[i] * dy;
    }
}

bool NormalEquations::solve(ModelBasis& coefficients) {
    if (!decompose(matrix_)) {
        return false;
    }
    substitute(matrix_, right_);
    for (std::size_t t = 0; t < kModelTerms; ++t) {
        coefficients[t] = solved_[t] ? right_[t] / unit_[t] : 0.0;
    }
    return true;
}

const std::vector<std::size_t>& ModelSampler::draw(std::size_t size, std::size_t count) {
    drawn_.clear();
    while (drawn_.size() < size) {
        const auto index = static_cast<std::size_t>(next() * static_cast<double>(count));
        if (std::find(drawn_.begin(), drawn_.end(), index) == drawn_.end()) {
            drawn_.push_back(index);
        }
    }
    return drawn_;
}

}  // namespace zemora
