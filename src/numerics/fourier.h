#pragma once
/// The discrete Fourier transform.

#include <complex>
#include <vector>

namespace zemora {

/// X[k] = sum of x[n] exp(-2 pi i k n / N), in place; N is a power of two.
void fourier(std::vector<std::complex<double>>& values);

/// c[d] = sum of a[t] b[t + d] for all d; a negative d stands at N + d. N, a power of two, is at least the
/// sum of both sizes.
[[nodiscard]] std::vector<double> cross_correlation(const std::vector<float>& a, const std::vector<float>& b);

}  // namespace zemora
