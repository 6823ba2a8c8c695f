#pragma once
/// Small free-standing numerics: impulse response, windowed median, linear systems.

namespace zemora {

/// Raised cosine impulse response at `x` samples with the roll-off `r` from 0 to 1; not a number for
/// another roll-off.
[[nodiscard]] double raico(double x, double r);

/// Median of the window of `size` entries round `centre` of `data` with `n` entries; entries outside
/// count as 0. `scratch` holds `size` entries.
[[nodiscard]] float window_median(const float* data, int n, float* scratch, int size, int centre);

/// Result of the steps of a linear solution.
enum class Solution { done = 0, singular = 1 };

/// LU decomposition with total pivoting of the `n` x `n` matrix of row pointers `a`, with the right
/// side `b` following the row exchanges. Exchanges pointers, not rows; `perm` (n entries) records
/// the column exchanges. Afterwards the unit lower and the upper triangle stand in `a`.
[[nodiscard]] Solution gauss_lr_kijtp(int n, double** a, double* b, int* perm);
/// Solves with the unit lower triangle, in place.
void forward_substitution(int n, const double* const* a, double* b);
/// Solves with the upper triangle, in place.
[[nodiscard]] Solution back_substitution(int n, const double* const* a, double* b);
/// Undoes the column exchanges of the decomposition.
void backpermut(int n, double* b, const int* perm);

}  // namespace zemora
