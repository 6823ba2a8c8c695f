#include "render/warp_pair.h"

#include <array>

#include "config/setting_values.h"
#include "render/crop.h"
#include "render/warp_plan.h"
#include "render/warp_rows.h"

namespace zemora {

namespace {

/// Told by how much the target must be reduced.
bool check_frame(const PictureSize& frame, Notes& notes) {
    if (frame.height > kLargestSide) {
        notes.say<Msg::warpimage_output_height_not_possible>();
        notes.say<Msg::warpimage_reduce_output_height_by>();
        notes.print(format_text("%d\n", frame.height - (kLargestSide - 1)));
    }
    if (frame.width > kLargestSide) {
        notes.say<Msg::warpimage_output_width_not_possible>();
        notes.say<Msg::warpimage_reduce_output_width_by>();
        notes.print(format_text("%d\n", frame.width - (kLargestSide - 1)));
    }
    return frame.height > 0 && frame.width > 0 && frame.height <= kLargestSide && frame.width <= kLargestSide;
}

/// Makes both bitmaps hold the frame, at one pitch. False without memory.
bool provide_bitmaps(WarpedPair& warp) {
    const auto fits = [&warp](const Bitmap& bitmap) {
        return bitmap.width() >= warp.width && bitmap.height() >= warp.height;
    };
    if (fits(warp.left) && fits(warp.right) && warp.left.pitch() == warp.right.pitch()) {
        return true;
    }
    warp.left.reset();
    warp.right.reset();
    std::array<Bitmap*, 2> bitmaps = {&warp.left, &warp.right};
    // The library clears what it allocates; both views at once.
#pragma omp parallel for schedule(static, 1)
    for (int i = 0; i < 2; ++i) {
        *bitmaps[static_cast<std::size_t>(i)] = Bitmap::create(warp.width, warp.height);
    }
    return warp.left && warp.right;
}

/// The range stands at its own place, or at the origin of views that hold no more than it.
void warp_range(WarpedPair& warp, const std::array<ViewRows, 2>& views, const PixelRectangle& range) {
    const std::array<Picture, 2> targets = {warp.left.picture(warp.width, warp.height),
                                            warp.right.picture(warp.width, warp.height)};
    const bool is_origin = warp.plan.crop.decided.has_value();
    const int left = is_origin ? 0 : range.left;
    const int lowered = is_origin ? range.bottom : 0;
#pragma omp parallel for schedule(dynamic, 8)
    for (int row = range.bottom; row <= range.top; ++row) {
        for (std::size_t i = 0; i < views.size(); ++i) {
            warp_row(views[i], row, range.left, range.width(), targets[i].pixel(left, row - lowered));
        }
    }
}

void warp_pixels(WarpedPair& warp, const StereoPicture& source, const ColourChange* colours,
                 const PixelRectangle& range, Notes& notes) {
    const WarpPlan& plan = warp.plan;
    const int kernel = plan.interpolation.kernel;
    if (!has_kernel(kernel)) {
        notes.print(format_text("image_interpol_discret: Interpolation_Mode = %d ist nicht implementiert!\n",
                                kernel));
    }
    const PairTransform transforms = make_transforms(plan, warp.correction);
    const Sampler sampler(kernel_of(kernel), plan.interpolation.tent_radius, plan.gamma, plan.background);
    const auto tone = [&plan, &sampler](const ToneTables& tables, int mode) {
        // The wide kernels have kept picture and background apart already.
        const bool apart = sampler.kernel == Kernel::nearest || sampler.kernel == Kernel::bilinear;
        return plan.tone.is_applied ? ToneLookup(&tables, mode, apart) : ToneLookup();
    };
    std::array<ViewRows, 2> views = {
        ViewRows(transforms[0], sampler, source.left, tone(plan.tone.left, plan.tone.mode_left)),
        ViewRows(transforms[1], sampler, source.right, tone(plan.tone.right, plan.tone.mode_right))};
    views[0].is_left = true;
    for (ViewRows& view : views) {
        view.colours = plan.tone.is_applied ? colours : nullptr;
    }
    warp_range(warp, views, range);
}

}  // namespace

Result<void> warp_pair(const StereoPicture& source, const WarpPlan& plan, const ColourChange* colours,
                       WarpedPair& into, Notes& notes) {
    if (!check_frame(plan.frame, notes)) {
        return Failure::of_pair({});
    }
    FixedCorrection fixed = fixed_correction(plan);
    if (!check_limits(fixed, plan.frame.height, plan.frame.width, notes)) {
        return Failure::of_pair({});
    }
    into.plan = plan;
    into.correction = fixed;
    const auto& decided = plan.crop.decided;
    into.width = decided ? decided->width() : plan.frame.width;
    into.height = decided ? decided->height() : plan.frame.height;
    if (!provide_bitmaps(into)) {
        return Failure::out_of_memory(kNoMemoryForViews);
    }
    if (decided) {
        into.kept = *decided;
        warp_pixels(into, source, colours, *decided, notes);
        if (plan.crop.cropp_output == setting::cropp_output::blanked) {
            blank_common(into.views(), plan.background);
        }
        return {};
    }
    const bool whole = plan.crop.keeps_frame;
    const PixelRectangle frame{0, into.width - 1, 0, into.height - 1};
    const PixelRectangle range = whole ? frame : find_range(plan.crop, plan.frame, notes);
    warp_pixels(into, source, colours, range, notes);
    into.kept = whole ? frame : find_kept(into.views(), plan.crop, plan.background, range, notes);
    if (into.kept.width() <= 0 || into.kept.height() <= 0) {
        return Failure::of_pair({});
    }
    keep_part(into, into.kept);
    return {};
}

Interpolation interpolation_for(int mode, float scale) {
    const int radius = scale < 0.25F ? 3 : (static_cast<double>(scale) < 0.333 ? 2 : 1);
    if (mode != setting::interpolation_mode::by_scale &&
        mode != setting::interpolation_mode::by_scale_sharpened) {
        return {mode, radius};
    }
    return {0.666 >= static_cast<double>(scale) ? 3 : 2, radius};
}

}  // namespace zemora
