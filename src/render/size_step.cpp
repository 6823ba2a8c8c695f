#include "render/size_step.h"

#include <algorithm>
#include <cmath>

#include "numerics/rounding.h"

namespace zemora {

namespace {

/// A factor that cannot be used counts as 1.
double usable(double factor) {
    return std::isfinite(factor) && factor > 0.0 ? factor : 1.0;
}

SizeStep scaled(const SizeStepRequest& request, double factor) {
    return {factor, round_half_up(request.height * factor), round_half_up(request.width * factor)};
}

SizeStep by_height(const SizeStepRequest& request, double aspect) {
    const double factor = usable(request.ratio_height);
    const int height = round_half_up(request.height * factor);
    return {factor, height, round_half_up(height * aspect)};
}

SizeStep by_width(const SizeStepRequest& request, double aspect) {
    const double factor = usable(request.ratio_width);
    const int width = round_half_up(request.width * factor);
    return {factor, round_half_up(width / aspect), width};
}

/// Both sides have to reach their target: the larger ratio covers it, later steps only enlarge.
SizeStep by_both(const SizeStepRequest& request, double last_scale_step) {
    const double ratio_height = usable(request.ratio_height);
    const double ratio_width = usable(request.ratio_width);
    if (request.height_done == 0 && request.width_done == 0) {
        return scaled(request, std::max(ratio_height, ratio_width));
    }
    if (request.height_done == 0) {
        return scaled(request, std::max(ratio_height, 1.0));
    }
    if (request.width_done == 0) {
        return scaled(request, std::max(ratio_width, 1.0));
    }
    const bool done = request.height_done == 1 && request.width_done == 1;
    return {done ? 1.0 : last_scale_step, request.height, request.width};
}

}  // namespace

SizeStep size_step(const SizeStepRequest& request, int force_size, float aspect, float last_scale_step) {
    if (request.step == 0) {
        return {1.0, request.height, request.width};
    }
    const double safe_aspect = usable(static_cast<double>(aspect));
    switch (force_size) {
        case kForceWidth: return by_width(request, safe_aspect);
        case kForceBothWidthLarger:
        case kForceBothHeightLarger: return by_both(request, usable(static_cast<double>(last_scale_step)));
        default: return by_height(request, safe_aspect);
    }
}

}  // namespace zemora
