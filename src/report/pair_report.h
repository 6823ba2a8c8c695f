#pragma once
/// The section of a pair in the reports.

#include "analysis/stereo_analyse.h"
#include "config/voice.h"

namespace zemora {

/// Everything that the report of a pair tells; it computes nothing.
struct ImageReport {
    int width = 0;  ///< Output, pixels.
    int height = 0;
    float pre_rotation_left = 0.0F;  ///< Degrees.
    float pre_rotation_right = 0.0F;
    float pre_vergence_v = 0.0F;
    CorrectionValues correction;    ///< Accumulated; height in input pixels.
    double original_near_px = 0.0;  ///< Input pixels.
    double original_far_px = 0.0;
    CorrectionValues remaining;  ///< The last step of the iteration.
    double near_px = 0.0;        ///< Output pixels, after the correction.
    double far_px = 0.0;
    double left_edge_px = 0.0;
    double right_edge_px = 0.0;
    int left_curtain_px = 0;
    int right_curtain_px = 0;
    double deviation = 0.0;  ///< Fraction of the output width.
    double projected_deviation = 0.0;
    double stress_px = 0.0;  ///< Mean vertical error that the correction stands for.
    int seconds = 0;
    int status = 0;  ///< `StatusCode` as a number.
    bool analysed = false;
    bool failure_told = false;  ///< The mount failure has been told where it arose.
};

/// Tells the result of a pair. A pair without result is told to be not mountable.
void report_pair(const ImageReport& report, const Voice& voice);

/// The mount failure on the console and in both reports.
void report_mount_failure(const Voice& voice);

}  // namespace zemora
