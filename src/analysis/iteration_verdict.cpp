#include "analysis/iteration_verdict.h"

#include <algorithm>
#include <cmath>

namespace zemora {

namespace {

// Limits of the tests; height in units of one pixel or of the height over 2,000, whichever is more.
constexpr double kRowsPerHeightUnit = 2000.0;
constexpr double kStrictSizePercent = 0.2;
constexpr double kStrictAngleDegrees = 0.114;
constexpr double kLooseHeightUnits = 2.0;
constexpr double kLooseSizePercent = 0.4;
constexpr double kLooseAngleDegrees = 0.228;

}  // namespace

StopVerdict judge_iteration(const Correction& remaining, int input_height, int reduced_height) {
    const double unit = std::max(1.0, input_height / kRowsPerHeightUnit);
    const double height = std::fabs(remaining.height_px);
    const double size = std::fabs(100.0 * remaining.size);
    const double rotation = std::fabs(remaining.rotation_rad / kRadiansPerDegree);
    const double vergence = std::fabs(remaining.vergence_v_rad / kRadiansPerDegree);

    if (height < unit && size < kStrictSizePercent && rotation < kStrictAngleDegrees &&
        vergence < kStrictAngleDegrees) {
        return {StatusCode::success, true, true};
    }
    if (height < kLooseHeightUnits * unit && size < kLooseSizePercent && rotation < kLooseAngleDegrees) {
        return {StatusCode::usable, true, true};
    }
    if (height < static_cast<double>(input_height) / reduced_height && size < kLooseSizePercent) {
        return {rotation < kLooseAngleDegrees ? StatusCode::usable : StatusCode::no_result, false, false};
    }
    return {};
}

}  // namespace zemora
