// The fit that trusts the points by how well they agree.

#include <algorithm>
#include <cmath>

#include "analysis/model_equations.h"

namespace zemora {

namespace {

constexpr std::size_t kVergenceH = 4;
constexpr int kMostRounds = 30;
constexpr double kCutSigmas = 4.0;         ///< Where the weight of a point ends.
constexpr double kSigmaOfMedian = 1.4826;  ///< Of a normal distribution.
constexpr double kLeastSigma = 0.07;       ///< Pixels; no match is more exact.
constexpr double kFirm = 2.0;  ///< Times the looseness of the firm quarter, that doubles a square.
constexpr double kReferenceHeight = 600.0;  ///< Pixels of the image that `kAgreement` holds for.
constexpr double kAgreement = 1.2;          ///< Pixels within which a point agrees with a sample.
constexpr double kLargestSigma = 0.7;       ///< Of `kAgreement`; a wider majority would let in everything.

/// The points as rows of the equations.
struct Problem {
    Problem(const std::vector<ModelPoint>& points, int height, int width, ModelTerms terms)
        : solved(solved_terms(terms)), agreement(kAgreement * std::max(1.0, height / kReferenceHeight)) {
        for (const ModelPoint& point : points) {
            bases.push_back(model_basis(point, height, width));
            dy.push_back(point.dy);
        }
        unit = column_units(bases);
        take_scales(points);
    }
    [[nodiscard]] std::size_t size() const { return dy.size(); }
    /// In units of the point's scale.
    [[nodiscard]] double residual(std::size_t k, const ModelBasis& c) const {
        return model_residual(dy[k], bases[k], c) / scales[k];
    }
    /// A tile that holds its height less than the firm quarter of all may miss it by more.
    void take_scales(const std::vector<ModelPoint>& points) {
        std::vector<double> all;
        for (const ModelPoint& point : points) {
            all.push_back(point.looseness);
        }
        const auto quarter = all.begin() + static_cast<std::ptrdiff_t>(all.size() / 4);
        std::nth_element(all.begin(), quarter, all.end());
        const double firm = kFirm * std::max(*quarter, kLeastSigma);
        for (const ModelPoint& point : points) {
            scales.push_back(std::hypot(1.0, point.looseness / firm));
        }
    }

    std::vector<ModelBasis> bases;
    std::vector<double> dy;
    std::vector<double> scales;  ///< 1 and more.
    ModelBasis unit{};
    SolvedTerms solved;
    double agreement;  ///< Pixels.
};

/// How badly the points agree with the coefficients. A false match costs the same however false it is.
double disagreement(const Problem& problem, const ModelBasis& c) {
    const double most = problem.agreement * problem.agreement;
    double sum = 0.0;
    for (std::size_t k = 0; k < problem.size(); ++k) {
        const double r = problem.residual(k, c);
        sum += std::min(r * r, most);
    }
    return sum;
}

/// The coefficients of the sample with which most points agree (P. Torr and A. Zisserman, "MLESAC", 2000,
/// the truncated square). Small samples leave out the vergence H, which they would hardly determine.
ModelBasis best_sample(const Problem& problem) {
    constexpr int kSamples = 600;
    constexpr std::size_t kSmall = 4;
    constexpr std::size_t kLarge = 7;
    SolvedTerms few = problem.solved;
    few[kVergenceH] = false;
    ModelSampler sampler;
    ModelBasis best{};
    double least = disagreement(problem, best);
    for (int n = 0; n < kSamples; ++n) {
        const bool small = n % 2 == 0;
        NormalEquations equations(problem.unit, small ? few : problem.solved);
        for (const std::size_t k : sampler.draw(small ? kSmall : kLarge, problem.size())) {
            equations.add(problem.bases[k], problem.dy[k], 1.0);
        }
        ModelBasis c{};
        if (!equations.solve(c)) {
            continue;
        }
        const double now = disagreement(problem, c);
        if (now < least) {
            least = now;
            best = c;
        }
    }
    return best;
}

/// Spread of the residuals of the points that agree at all.
double spread(const Problem& problem, const std::vector<double>& residuals) {
    constexpr double kReach = 3.0;
    std::vector<double> sizes;
    for (const double r : residuals) {
        if (std::fabs(r) <= kReach * problem.agreement) {
            sizes.push_back(std::fabs(r));
        }
    }
    if (sizes.empty()) {
        return problem.agreement;
    }
    const auto middle = sizes.begin() + static_cast<std::ptrdiff_t>(sizes.size() / 2);
    std::nth_element(sizes.begin(), middle, sizes.end());
    return std::clamp(kSigmaOfMedian * *middle, kLeastSigma, kLargestSigma * problem.agreement);
}

/// Weights of J. W. Tukey: fall to 0 at `cut`.
double weight_of(double residual, double cut) {
    const double u = residual / cut;
    return std::fabs(u) < 1.0 ? (1.0 - u * u) * (1.0 - u * u) : 0.0;
}

/// A fit at work: the coefficients, what they leave, and what each point counts.
struct WeightedFit {
    explicit WeightedFit(const Problem& problem_in)
        : problem(problem_in),
          coefficients(best_sample(problem_in)),
          residuals(problem_in.size()),
          weights(problem_in.size()) {}

    /// Residuals and weights for the coefficients; the largest change of a weight.
    double weigh() {
        for (std::size_t k = 0; k < problem.size(); ++k) {
            residuals[k] = problem.residual(k, coefficients);
        }
        const double cut = kCutSigmas * spread(problem, residuals);
        double change = 0.0;
        for (std::size_t k = 0; k < problem.size(); ++k) {
            const double weight = weight_of(residuals[k], cut);
            change = std::max(change, std::fabs(weight - weights[k]));
            weights[k] = weight;
        }
        return change;
    }
    [[nodiscard]] bool solve() {
        NormalEquations equations(problem.unit, problem.solved);
        for (std::size_t k = 0; k < problem.size(); ++k) {
            equations.add(problem.bases[k], problem.dy[k],
                          weights[k] / (problem.scales[k] * problem.scales[k]));
        }
        return equations.solve(coefficients);
    }
    [[nodiscard]] double residual_rms_px() const {
        double squares = 0.0;
        double sum = 0.0;
        for (std::size_t k = 0; k < problem.size(); ++k) {
            squares += weights[k] * residuals[k] * residuals[k];
            sum += weights[k];
        }
        return sum > 0.0 ? std::sqrt(squares / sum) : 0.0;
    }

    const Problem& problem;
    ModelBasis coefficients;
    std::vector<double> residuals;
    std::vector<double> weights;
};

}  // namespace

RobustFit solve_error_model_robustly(const std::vector<ModelPoint>& points, int height, int width,
                                     ModelTerms terms) {
    if (points.size() < kLeastRobustPoints) {
        return {solve_error_model(points, height, width, terms), std::vector<double>(points.size(), 1.0)};
    }
    constexpr double kSettled = 1e-3;
    const Problem problem(points, height, width, terms);
    WeightedFit fit(problem);
    for (int round = 0; fit.weigh() > kSettled && round < kMostRounds; ++round) {
        if (!fit.solve()) {
            break;
        }
    }
    return {{values_of_terms(fit.coefficients), fit.residual_rms_px()}, fit.weights};
}

}  // namespace zemora
