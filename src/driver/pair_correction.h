#pragma once
/// The accumulated correction of a pair, its status and the test that ends the iteration.

#include <initializer_list>

namespace zemora {

/// The result of a pair.
enum class StatusCode {
    abandoned = -1,
    failed = 0,
    second_phase_failed = 1,
    first_phase_failed = 2,  ///< Or that of an iteration.
    no_result = 3,
    usable = 4,
    success = 5,
};

/// Whether pictures are written for this status.
[[nodiscard]] constexpr bool is_written(StatusCode status) {
    return status >= StatusCode::usable;
}

/// Corrections of a pair; right view minus left view, rows counted upward.
struct PairCorrection {
    double height_px = 0.0;  ///< Full-size input pixels.
    double shift_px = 0.0;   ///< Full-size input pixels, window shift included.
    double size = 0.0;       ///< Fraction.
    double rotation_rad = 0.0;
    double vergence_v_rad = 0.0;
    double vergence_h_rad = 0.0;

    PairCorrection& operator+=(const PairCorrection& other) {
        height_px += other.height_px;
        shift_px += other.shift_px;
        size += other.size;
        rotation_rad += other.rotation_rad;
        vergence_v_rad += other.vergence_v_rad;
        vergence_h_rad += other.vergence_h_rad;
        return *this;
    }
};

/// Disparities in full-size input pixels, relative to the shift of the correction.
struct PairDisparities {
    double window_px = 0.0;
    double near_px = 0.0;
    double far_px = 0.0;
    double left_edge_px = 0.0;
    double right_edge_px = 0.0;
    double top_edge_px = 0.0;
    double bottom_edge_px = 0.0;

    /// The same disparities against a shift that has grown by `shift_px`.
    void subtract(double shift_px) { scale_and_add(1.0, -shift_px); }
    /// value x factor + offset, for all of them.
    void scale_and_add(double factor, double offset_px) {
        for (double* value :
             {&window_px, &near_px, &far_px, &left_edge_px, &right_edge_px, &top_edge_px, &bottom_edge_px}) {
            *value = *value * factor + offset_px;
        }
    }
};

/// What one iteration's remaining errors amount to.
struct StopVerdict {
    StatusCode status = StatusCode::no_result;
    bool converged = false;
    bool worth_keeping = false;  ///< Met the strict or the loose test.
};

/// Judges the remaining errors of an iteration for a pair of `input_height` rows, analysed in the
/// first instance at `reduced_height` rows.
[[nodiscard]] StopVerdict judge_iteration(const PairCorrection& remaining, int input_height,
                                          int reduced_height);

inline constexpr double kRadiansPerDegree = 3.14159265358979323846 / 180.0;

}  // namespace zemora
