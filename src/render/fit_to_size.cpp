#include "render/fit_to_size.h"

#include <algorithm>
#include <cmath>

#include "config/setting_values.h"
#include "render/size_step.h"

namespace zemora {

namespace {

constexpr int kForcedRounds = 6;  // size tests: the final warp and at most five repeats

/// What is left of the frame's width once the window and its shift by the user are in place. The measured
/// area lost the shift of the views, which the warp takes only in part.
double kept_width(const MeasuredFrame& measured, const Sizing& sizing) {
    const double selection_shift_px = static_cast<double>(sizing.window_offset) * measured.frame.width;
    const double warped_shift_px = measured.scale * sizing.correction.shift_px - selection_shift_px;
    const double measured_shift_px = measured.scale * measured.shift_input_px;
    return std::max(measured.common_area.width() + std::fabs(measured_shift_px) - std::fabs(warped_shift_px),
                    1.0);
}

}  // namespace

SizeRepeat first_size(const MeasuredFrame& measured, const Sizing& sizing, const CropPlan& crop) {
    const SelectionBox& selection = crop.selection;
    double height = std::max(measured.common_area.height(), 1);
    double width = std::max(measured.common_area.width(), 1);
    if (selection.has_window()) {
        height = (static_cast<double>(selection.top) - selection.bottom) * measured.frame.height;
        width = (static_cast<double>(selection.right) - selection.left) * measured.frame.width;
    } else if (crop.cropp_output < setting::cropp_output::common_area) {
        height = measured.frame.height;
        width = measured.frame.width;
    } else if (crop.is_shown_first) {
        width = kept_width(measured, sizing);
    }
    SizeRepeat first;
    first.height_done = first.width_done = false;
    first.ratio_height = crop.wish.height / height;
    first.ratio_width = crop.wish.width / width;
    return first;
}

int force_inside_target(const CropPlan& crop, const SizeRepeat& first) {
    const SizeWish& wish = crop.wish;
    const bool single = wish.force == kForceWidth || wish.force == kForceHeight;
    if (crop.cropp_output != setting::cropp_output::fitted || !crop.selection.has_window() || !single ||
        !wish.has_both_sides()) {
        return wish.force;
    }
    return first.ratio_height <= first.ratio_width ? kForceHeight : kForceWidth;
}

WarpPlan next_plan(const WarpPlan& last, const Sizing& sizing, const SizeRepeat& repeat) {
    const SizeWish& wish = last.crop.wish;
    const SizeStep step = size_step(
        {last.frame.height, last.frame.width, last.crop.is_sized ? 1 : 0, repeat.height_done ? 1 : 0,
         repeat.width_done ? 1 : 0, repeat.ratio_height, repeat.ratio_width},
        wish.force, wish.aspect, static_cast<float>(last.size_step));
    const double scale = last.scale;
    const double selection_shift_px = sizing.window_offset * static_cast<float>(last.frame.width);
    WarpPlan plan = last;
    plan.frame = {step.width, step.height};
    plan.scale = static_cast<float>(scale * step.factor);
    plan.size_step = step.factor;
    plan.correction = sizing.correction;
    plan.correction.height_px = scale * sizing.correction.height_px;
    plan.correction.shift_px = scale * sizing.correction.shift_px - selection_shift_px;
    plan.interpolation =
        interpolation_for(sizing.interpolation_mode, static_cast<float>(scale * step.factor));
    return plan;
}

Result<bool> fit_to_size(const StereoPicture& source, WarpPlan plan, bool is_changed, const Sizing& sizing,
                         const ColourChange* colours, WarpedPair& pair, Notes& notes) {
    const char* step = notes.messages().either({"Zemora::equalize: phase 4: force size/color            ",
                                                "Zemora::Entzerrung: Phase 4: Bildgroesse/-farbe erzwingen"});
    CropPlan& crop = plan.crop;
    for (int round = 0; round < kForcedRounds; ++round) {
        const PictureSize size{pair.width, pair.height};
        if (crop.is_sized && crop.cropp_output == setting::cropp_output::fitted) {
            crop.wish.force = force_of_larger_side(crop.wish, size);
        }
        const SizeRepeat repeat = check_forced_size(size, crop.wish, crop.cropp_output, crop.is_sized);
        if (!repeat.needed() && !(round == 0 && is_changed)) {
            return true;
        }
        if (round == kForcedRounds - 1) {
            break;
        }
        plan = next_plan(plan, sizing, repeat);
        notes.progress(step, 0.0);
        if (const Result<void> done = warp_pair(source, plan, colours, pair, notes); !done) {
            return done.failure();
        }
        notes.progress(step, 100.0);
    }
    return false;
}

}  // namespace zemora
