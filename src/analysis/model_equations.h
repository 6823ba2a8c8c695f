#pragma once
/// Weighted normal equations of the error model, and small samples of its points.

#include <array>
#include <cstdint>
#include <vector>

#include "analysis/error_model.h"

namespace zemora {

inline constexpr std::size_t kModelTerms = std::tuple_size_v<ModelBasis>;

/// Which terms are solved: height, size, rotation, vergence V, vergence H.
using SolvedTerms = std::array<bool, kModelTerms>;
[[nodiscard]] inline SolvedTerms solved_terms(ModelTerms terms) {
    return {true, true, true, terms.vergence_v, terms.vergence_h};
}

/// dy minus what the coefficients stand for, pixels.
[[nodiscard]] inline double model_residual(double dy, const ModelBasis& basis, const ModelBasis& c) {
    for (std::size_t t = 0; t < kModelTerms; ++t) {
        dy -= c[t] * basis[t];
    }
    return dy;
}

/// The correction that coefficients of the terms stand for; its shift is 0.
[[nodiscard]] Correction values_of_terms(const ModelBasis& c);

/// Root mean square of each column: what brings the columns to one length.
[[nodiscard]] ModelBasis column_units(const std::vector<ModelBasis>& bases);

/// Normal equations of weighted points. The row of a term that is not solved is that of the identity.
class NormalEquations {
public:
    NormalEquations(const ModelBasis& unit, const SolvedTerms& solved);
    void add(const ModelBasis& basis, double dy, double weight);
    /// The coefficients; those before stay, and it is false, where the points do not determine them.
    [[nodiscard]] bool solve(ModelBasis& coefficients);

private:
    ModelBasis unit_;
    SolvedTerms solved_;
    std::array<ModelBasis, kModelTerms> matrix_{};
    ModelBasis right_{};
};

/// Random numbers; the same sequence in every call.
class ModelSampler {
public:
    /// 0 to below 1.
    [[nodiscard]] double next() {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;  // linear congruence, by D. Knuth
        return static_cast<double>(state_ >> 11U) / 9007199254740992.0;
    }
    /// `size` different indices below `count`, which is not less.
    [[nodiscard]] const std::vector<std::size_t>& draw(std::size_t size, std::size_t count);

private:
    std::uint64_t state_ = 88172645463325252U;
    std::vector<std::size_t> drawn_;
};

}  // namespace zemora
