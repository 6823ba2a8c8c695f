#pragma once
/// The geometry of a stereo pair: what separates its views, where its window lies, what a user chose.
///
/// Differences are right view minus left view; rows count upward. Lengths are pixels of the full-size input
/// unless a name says otherwise.

#include <initializer_list>

namespace zemora {

inline constexpr double kRadiansPerDegree = 3.14159265358979323846 / 180.0;

/// The errors of a pair that a warp takes away.
struct Correction {
    double height_px = 0.0;
    double shift_px = 0.0;  ///< With the shift of the stereo window.
    double size = 0.0;      ///< As a fraction; above 0 the right view is larger.
    double rotation_rad = 0.0;
    double vergence_v_rad = 0.0;
    double vergence_h_rad = 0.0;

    Correction& operator+=(const Correction& other) {
        height_px += other.height_px;
        shift_px += other.shift_px;
        size += other.size;
        rotation_rad += other.rotation_rad;
        vergence_v_rad += other.vergence_v_rad;
        vergence_h_rad += other.vergence_h_rad;
        return *this;
    }

    /// The same errors in pixels of which `factor` are as long as one of these.
    [[nodiscard]] Correction scaled(double factor) const {
        Correction result = *this;
        result.height_px *= factor;
        result.shift_px *= factor;
        return result;
    }
    /// The same errors in pixels of which each is as long as `factor` of these.
    [[nodiscard]] Correction scaled_down(double factor) const {
        Correction result = *this;
        result.height_px /= factor;
        result.shift_px /= factor;
        return result;
    }
    /// As the warp and the reports take it.
    [[nodiscard]] Correction rounded_to_float() const {
        const auto rounded = [](double value) { return static_cast<double>(static_cast<float>(value)); };
        return {rounded(height_px),    rounded(shift_px),       rounded(size),
                rounded(rotation_rad), rounded(vergence_v_rad), rounded(vergence_h_rad)};
    }
};

/// The perspective of the finished views, which a person chose; shears are mirrored between the views,
/// trapezoids common to both. Neutral as it stands.
struct ViewShape {
    double phantogram = 0.0;
    double edge_warp = 0.0;
    double vertical_ax = 0.0;
    double common_trapez = 0.0;
    double sym_trapez = 0.0;
    double trapez_scale = 1.0;
};

/// Disparities that are left when the shift of a correction is taken away.
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

/// The shifts of a pair. `window_shift_input_px` + `pure_shift_input_px` is the shift of the correction.
struct WindowPlacement {
    double window_working_px = 0.0;  ///< Place of the window in the size that is worked at.
    double window_shift_input_px = 0.0;
    double pure_shift_input_px = 0.0;  ///< What the warp applies.
};

/// A fixed selection and pre-correction of both views.
struct PreSelection {
    float rotation_left = 0.0F;   ///< Degrees.
    float rotation_right = 0.0F;  ///< Degrees.
    float vergence_v = 0.0F;      ///< Degrees.
    float left_start_x = 0.0F;    ///< This and the following in percent of the view.
    float left_start_y = 0.0F;
    float left_width = 100.0F;
    float left_height = 100.0F;
    float right_start_x = 0.0F;
    float right_start_y = 0.0F;
    float right_width = 100.0F;
    float right_height = 100.0F;
};

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

/// All that is known of the geometry of a pair. The measurement fills it in first, the placing of the window
/// next.
struct PairGeometry {
    StatusCode status = StatusCode::no_result;
    bool measured = false;  ///< From the pictures; else from keys or a record.
    Correction correction;
    Correction remaining;         ///< What the latest round of the measurement still found.
    PairDisparities disparities;  ///< Of the latest round, against the correction's shift.
    WindowPlacement window;
    ViewShape shape;
    PreSelection preset;
    double residual_rms_px = 0.0;  ///< Of the model in the latest round, in pixels of the pair measured.
    int rounds = 0;                ///< Of the measurement; counts from 1.
    double agreement = 1.0;        ///< Share of the picture that agrees with the start, where that was asked.
    bool started_wide = false;     ///< The correction started from the wide search.
};

}  // namespace zemora
