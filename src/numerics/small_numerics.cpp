#include "numerics/small_numerics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <utility>

#include "numerics/labelled_array.h"

namespace zemora {

namespace {

constexpr double kPole = 1e-12;  // closer to a removable pole than this the limit is taken
constexpr double kTooSmall = std::numeric_limits<double>::epsilon();

/// Exchanges rows and columns so that the largest element of the rest matrix stands at (k, k).
void exchange_pivot(int n, int k, double** a, double* b, int* perm) {
    int row = k;
    int column = k;
    for (int j = k; j < n; ++j) {
        for (int i = k; i < n; ++i) {
            if (std::fabs(a[i][j]) > std::fabs(a[row][column])) {
                row = i;
                column = j;
            }
        }
    }
    for (int i = 0; i < n; ++i) {
        std::swap(a[i][k], a[i][column]);
    }
    std::swap(perm[k], perm[column]);
    std::swap(a[k], a[row]);
    std::swap(b[k], b[row]);
}

}  // namespace

double raico(double x, double r) {
    if (!(r >= 0.0 && r <= 1.0)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double p = std::numbers::pi * x;
    if (std::fabs(p) <= kPole) {
        return 1.0;
    }
    const double d = 1.0 - 4.0 * r * r * x * x;
    if (std::fabs(d) <= kPole) {
        return 0.5 * r * std::sin(std::numbers::pi / (2.0 * r));
    }
    return std::sin(p) * std::cos(r * p) / (p * d);
}

float window_median(const float* data, int n, float* scratch, int size, int centre) {
    const int first = centre - (size - 1) / 2;
    for (int k = 0; k < size; ++k) {
        const int i = first + k;
        scratch[k] = i >= 0 && i < n ? data[i] : 0.0F;
    }
    std::sort(scratch, scratch + size);
    return scratch[(size - 1) / 2];
}

Solution gauss_lr_kijtp(int n, double** a, double* b, int* perm) {
    std::iota(perm, perm + std::max(n, 0), 0);
    for (int k = 0; k + 1 < n; ++k) {
        exchange_pivot(n, k, a, b, perm);
        if (std::fabs(a[k][k]) <= kTooSmall) {
            return Solution::singular;
        }
        for (int i = k + 1; i < n; ++i) {
            const double factor = a[i][k] / a[k][k];
            a[i][k] = factor;
            for (int j = k + 1; j < n; ++j) {
                a[i][j] -= factor * a[k][j];
            }
        }
    }
    return Solution::done;
}

void forward_substitution(int n, const double* const* a, double* b) {
    for (int i = 1; i < n; ++i) {
        for (int j = 0; j < i; ++j) {
            b[i] -= a[i][j] * b[j];
        }
    }
}

Solution back_substitution(int n, const double* const* a, double* b) {
    for (int i = n - 1; i >= 0; --i) {
        for (int j = i + 1; j < n; ++j) {
            b[i] -= a[i][j] * b[j];
        }
        if (std::fabs(a[i][i]) <= kTooSmall) {
            return Solution::singular;
        }
        b[i] /= a[i][i];
    }
    return Solution::done;
}

void backpermut(int n, double* b, const int* perm) {
    LabelledVector<double> copy(n, "backpermut:bhelp");
    std::copy(b, b + n, copy.begin());
    for (int i = 0; i < n; ++i) {
        b[perm[i]] = copy[i];
    }
}

}  // namespace zemora
