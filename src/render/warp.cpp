#include "render/warp.h"

#include <array>

#include "numerics/rounding.h"
#include "render/crop.h"
#include "render/size_step.h"
#include "render/warp_plan.h"
#include "render/warp_rows.h"

namespace zemora {

namespace {

/// The size step of this call; it changes the scale and frame of `warp`.
SizeStep apply_size_step(WarpState& warp, const WarpRequest& request) {
    const SizeStep step =
        size_step({request.frame_height, request.frame_width, request.size_step, request.height_done,
                   request.width_done, request.ratio_height, request.ratio_width},
                  warp.force_size, warp.aspect, warp.last_scale_step);
    warp.latest_size_step = request.size_step;
    warp.last_scale_step = static_cast<float>(step.factor);
    warp.total_scale = static_cast<float>(static_cast<double>(warp.total_scale) * step.factor);
    warp.frame_height = warp.height = step.height;
    warp.frame_width = warp.width = step.width;
    return step;
}

/// Told by how much the target must be reduced.
bool check_frame(const WarpState& warp) {
    if (warp.height > kLargestSide) {
        warp.notes.say<Msg::warpimage_output_height_not_possible>();
        warp.notes.say<Msg::warpimage_reduce_output_height_by>();
        warp.notes.print(format_text("%d\n", warp.height - (kLargestSide - 1)));
    }
    if (warp.width > kLargestSide) {
        warp.notes.say<Msg::warpimage_output_width_not_possible>();
        warp.notes.say<Msg::warpimage_reduce_output_width_by>();
        warp.notes.print(format_text("%d\n", warp.width - (kLargestSide - 1)));
    }
    return warp.height > 0 && warp.width > 0 && warp.height <= kLargestSide && warp.width <= kLargestSide;
}

/// Makes both working pictures hold `width` by `height` pixels, at one pitch. False without memory.
bool provide_working_pictures(WarpState& warp) {
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

void warp_range(WarpState& warp, const std::array<ViewRows, 2>& views, const PixelRectangle& range) {
    const std::array<Picture, 2> targets = {warp.left.picture(warp.width, warp.height),
                                            warp.right.picture(warp.width, warp.height)};
#pragma omp parallel for schedule(dynamic, 8)
    for (int row = range.bottom; row <= range.top; ++row) {
        for (std::size_t i = 0; i < views.size(); ++i) {
            warp_row(views[i], row, range.left, range.width(), targets[i].pixel(range.left, row));
        }
    }
}

void warp_pixels(WarpState& warp, const WarpRequest& request, const FixedCorrection& fixed,
                 const PixelRectangle& range) {
    if (!has_kernel(request.interpolation)) {
        warp.notes.print(
            format_text("image_interpol_discret: Interpolation_Mode = %d ist nicht implementiert!\n",
                        request.interpolation));
    }
    const PairTransform transforms = make_transforms(warp, fixed, warp.height, warp.width);
    const Sampler sampler(kernel_of(request.interpolation), warp.filter_radius, request.gamma,
                          warp.passe_colour);
    const auto tone = [&request, &sampler](const ToneTables* tables, int mode) {
        // The wide kernels have kept picture and background apart already.
        const bool apart = sampler.kernel == Kernel::nearest || sampler.kernel == Kernel::bilinear;
        return request.use_tone ? ToneLookup(tables, mode, apart) : ToneLookup();
    };
    std::array<ViewRows, 2> views = {ViewRows(transforms[0], sampler, request.source.left,
                                              tone(request.tone_left, request.tone_mode_left)),
                                     ViewRows(transforms[1], sampler, request.source.right,
                                              tone(request.tone_right, request.tone_mode_right))};
    views[0].is_left = true;
    for (ViewRows& view : views) {
        view.colours = request.use_tone && warp.colours ? &*warp.colours : nullptr;
    }
    warp_range(warp, views, range);
}

void record_kept(WarpState& warp, const PixelRectangle& kept) {
    for (ViewGeometry* record : {&warp.left_record, &warp.right_record}) {
        record->kept_x = kept.left;
        record->kept_y = kept.bottom;
        record->kept_width = kept.width();
        record->kept_height = kept.height();
    }
}

/// Tells the selection which part of the frame was kept.
void select_kept(SelectionBox& selection, const PixelRectangle& kept, int height, int width) {
    const auto fraction = [](int position, int size) {
        return size > 1 ? static_cast<float>(position) / static_cast<float>(size - 1) : 0.0F;
    };
    selection.result_left = fraction(kept.left, width);
    selection.result_right = fraction(kept.right, width);
    selection.result_bottom = fraction(kept.bottom, height);
    selection.result_top = fraction(kept.top, height);
}

/// Cuts the frame to what is kept; false when no picture is left.
bool crop(WarpState& warp, const WarpRequest& request, SelectionBox& selection, const PixelRectangle& range) {
    const PixelRectangle kept = find_kept(warp, selection, request.size_step, range);
    if (kept.width() <= 0 || kept.height() <= 0) {
        return false;
    }
    if (!has_window(selection)) {
        select_kept(selection, kept, warp.height, warp.width);
    }
    move_to_origin(warp, kept);
    warp.height = kept.height();
    warp.width = kept.width();
    record_kept(warp, kept);
    return true;
}

/// Keeps what the 16-bit output needs to repeat this warp.
void keep_for_repeat(WarpState& warp, const WarpRequest& request, const FixedCorrection& fixed) {
    record_transforms(warp, fixed, warp.height, warp.width);
    warp.left_record.tone_mode = request.use_tone ? request.tone_mode_left : 0;
    warp.right_record.tone_mode = request.use_tone ? request.tone_mode_right : 0;
    warp.left_tone = request.tone_left != nullptr ? *request.tone_left : ToneTables::identity();
    warp.right_tone = request.tone_right != nullptr ? *request.tone_right : ToneTables::identity();
    warp.latest_correction = fixed;
    warp.latest_interpolation = request.interpolation;
    warp.latest_gamma = request.gamma;
}

}  // namespace

Result<void> warp_still(WarpState& warp, const WarpRequest& request, SelectionBox& selection) {
    const SizeStep step = apply_size_step(warp, request);
    if (!check_frame(warp)) {
        return Failure::of_pair({});
    }
    FixedCorrection fixed = fixed_correction(warp, request.correction, step.factor, warp.width);
    if (!check_limits(fixed, warp.height, warp.width, warp.notes)) {
        return Failure::of_pair({});
    }
    keep_for_repeat(warp, request, fixed);
    if (!provide_working_pictures(warp)) {
        return Failure::out_of_memory(kNoMemoryForViews);
    }
    const bool whole = request.crop == 0;
    const PixelRectangle frame{0, warp.width - 1, 0, warp.height - 1};
    const PixelRectangle range =
        whole ? frame : find_range(warp, selection, request.size_step, warp.height, warp.width);
    warp_pixels(warp, request, fixed, range);
    if (whole) {
        record_kept(warp, frame);
        return {};
    }
    return crop(warp, request, selection, range) ? Result<void>() : Failure::of_pair({});
}

int choose_interpolation(WarpState& warp, float scale) {
    warp.filter_radius = scale < 0.25F ? 3 : (static_cast<double>(scale) < 0.333 ? 2 : 1);
    if (warp.interpolation_mode != 4 && warp.interpolation_mode != 5) {
        return warp.interpolation_mode;
    }
    return 0.666 >= static_cast<double>(scale) ? 3 : 2;
}

}  // namespace zemora
