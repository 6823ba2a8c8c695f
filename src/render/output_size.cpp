#include "render/output_size.h"

#include <FreeImage.h>

#include <algorithm>
#include <cmath>

#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kSmallestSide = 250;  ///< Pixels; the pipeline works at no smaller side,
constexpr int kWorkedSide = 500;    ///< but at this one.

int in_proportion(int value, int numerator, int denominator) {
    return denominator <= 0 ? 0 : round_half_up(static_cast<double>(value) * numerator / denominator);
}

/// Brings the smaller side of a wanted size to the worked side, the other in proportion.
void enlarge(TargetSize& target, int height, int width) {
    if (height <= width) {
        target.work_height = kWorkedSide;
        target.work_width = in_proportion(width, kWorkedSide, height);
    } else {
        target.work_height = in_proportion(height, kWorkedSide, width);
        target.work_width = kWorkedSide;
    }
}

TargetSize free_size(int source_height, int source_width, int cropp_output) {
    TargetSize target;
    target.work_height = source_height;
    target.work_width = source_width;
    target.size_flag = cropp_output == 3 ? 1 : 0;
    target.free_size_below_crop_3 = cropp_output < 3;
    if (cropp_output < 4 && std::min(source_height, source_width) < kSmallestSide) {
        enlarge(target, source_height, source_width);
        target.final_rescale = FinalRescale::by_factor;
        target.final_height = source_height;
        target.final_width = source_width;
    }
    return target;
}

TargetSize both_given(int height, int width, int cropp_output) {
    TargetSize target;
    target.work_height = height;
    target.work_width = width;
    target.size_flag = cropp_output > 3 ? 0 : 1;
    if (cropp_output > 3 || std::min(height, width) >= kSmallestSide) {
        return target;
    }
    enlarge(target, height, width);
    target.final_rescale = FinalRescale::by_factor;
    target.final_height = height;
    target.final_width = width;
    return target;
}

TargetSize one_given(int height, int width, int cropp_output) {
    TargetSize target;
    target.work_height = height;
    target.work_width = width;
    target.size_flag = 1;
    if (cropp_output > 3 || std::max(height, width) >= kSmallestSide) {
        return target;
    }
    if (height > 0) {
        target.work_height = kWorkedSide;
        target.final_rescale = FinalRescale::by_height;
        target.final_height = height;
    } else {
        target.work_width = kWorkedSide;
        target.final_rescale = FinalRescale::by_width;
        target.final_width = width;
    }
    return target;
}

/// Which side rules the first scaling, and what is forced later.
struct ScaleRule {
    int force_size = kForceNothing;
    bool by_width = false;
    bool by_height = false;
};

ScaleRule find_scale_rule(int cropp_output, const TargetSize& target, double ratio_height,
                          double ratio_width) {
    if (target.work_height > 0 && target.work_width > 0) {
        if (cropp_output > 3) {
            return {};
        }
        if (cropp_output == 3) {
            const bool width = ratio_height > ratio_width;
            return {width ? kForceWidth : kForceHeight, width, !width};
        }
        const bool width = ratio_width >= ratio_height;
        return {width ? kForceBothWidthLarger : kForceBothHeightLarger, width, !width};
    }
    if (target.work_width > 0) {
        return {kForceWidth, true, false};
    }
    return target.work_height > 0 ? ScaleRule{kForceHeight, false, true} : ScaleRule{};
}

bool check_scaled_size(const WarpState& warp) {
    if (warp.scaled_height > kLargestSide) {
        warp.notes.say<Msg::warpimage_image_height_above_maximum>();
        warp.notes.print(format_text("%d\n", warp.scaled_height));
        return false;
    }
    if (warp.scaled_width > kLargestSide) {
        warp.notes.say<Msg::warpimage_image_width_above_maximum>();
        warp.notes.print(format_text("%d\n", warp.scaled_width));
        return false;
    }
    return warp.scaled_height > 0 && warp.scaled_width > 0;
}

/// `CroppOutput` 3 fits the picture into the target: the side that is larger against it is forced.
void choose_force_size_again(WarpState& warp) {
    const bool single = warp.force_size == kForceWidth || warp.force_size == kForceHeight;
    if (single && warp.work_width > 0 && warp.work_height > 0) {
        const double width = static_cast<double>(warp.width) / warp.work_width;
        const double height = static_cast<double>(warp.height) / warp.work_height;
        warp.force_size = width <= height ? kForceHeight : kForceWidth;
    }
}

Bitmap rescaled(const Bitmap& bitmap, int used_width, int used_height, int width, int height) {
    FIBITMAP* handle = bitmap.handle();
    const bool whole = used_width == bitmap.width() && used_height == bitmap.height();
    Bitmap used;
    if (!whole) {
        used = Bitmap::create(used_width, used_height);
        if (!used) {
            return {};
        }
        copy(bitmap.picture(used_width, used_height), used.picture());
        handle = used.handle();
    }
    return Bitmap(FreeImage_Rescale(handle, width, height, FILTER_BICUBIC));
}

}  // namespace

TargetSize find_target_size(int source_height, int source_width, int output_height, int output_width,
                            int cropp_output) {
    const int height = std::max(0, output_height);
    const int width = std::max(0, output_width);
    if (height > 0 && width > 0) {
        return both_given(height, width, cropp_output);
    }
    return height > 0 || width > 0 ? one_given(height, width, cropp_output)
                                   : free_size(source_height, source_width, cropp_output);
}

bool setup_output_size(WarpState& warp, const TargetSize& target, int source_height, int source_width) {
    if (source_height <= 0 || source_width <= 0) {
        return false;
    }
    warp.work_height = target.work_height;
    warp.work_width = target.work_width;
    warp.last_scale_step = 1.0F;
    warp.total_scale = 1.0F;
    warp.force_size = kForceNothing;
    warp.aspect = static_cast<float>(source_width) / static_cast<float>(source_height);
    warp.source_height = source_height;
    warp.source_width = source_width;
    warp.scaled_height = source_height;
    warp.scaled_width = source_width;
    const double ratio_height = static_cast<double>(target.work_height) / source_height;
    const double ratio_width = static_cast<double>(target.work_width) / source_width;
    const ScaleRule rule = find_scale_rule(warp.cropp_output, target, ratio_height, ratio_width);
    warp.force_size = rule.force_size;
    if (rule.by_width) {
        warp.total_scale = static_cast<float>(ratio_width);
        warp.scaled_height = in_proportion(source_height, target.work_width, source_width);
        warp.scaled_width = target.work_width;
    } else if (rule.by_height) {
        warp.total_scale = static_cast<float>(ratio_height);
        warp.scaled_width = in_proportion(source_width, target.work_height, source_height);
        warp.scaled_height = target.work_height;
    }
    warp.height = warp.frame_height = warp.scaled_height;
    warp.width = warp.frame_width = warp.scaled_width;
    return check_scaled_size(warp);
}

SizeRepeat check_forced_size(WarpState& warp, int size_flag) {
    SizeRepeat repeat;
    if (size_flag == 0 || warp.cropp_output > 3) {
        return repeat;
    }
    if (warp.cropp_output == 3) {
        choose_force_size_again(warp);
    }
    const bool needs_height = warp.force_size != kForceWidth && warp.work_height > 0;
    const bool needs_width =
        warp.force_size != kForceNothing && warp.force_size != kForceHeight && warp.work_width > 0;
    repeat.height_done = !needs_height || warp.height == warp.work_height;
    repeat.width_done = !needs_width || warp.width == warp.work_width;
    if (warp.work_height > 0 && warp.height > 0) {
        repeat.ratio_height = static_cast<double>(warp.work_height) / warp.height;
    }
    if (warp.work_width > 0 && warp.width > 0) {
        repeat.ratio_width = static_cast<double>(warp.work_width) / warp.width;
    }
    return repeat;
}

double final_reduction(const TargetSize& target) {
    const double by_height = static_cast<double>(target.final_height) / std::max(target.work_height, 1);
    const double by_width = static_cast<double>(target.final_width) / std::max(target.work_width, 1);
    switch (target.final_rescale) {
        case FinalRescale::by_width: return by_width;
        case FinalRescale::by_height: return by_height;
        case FinalRescale::by_factor: return target.work_height <= target.work_width ? by_height : by_width;
        default: return 1.0;
    }
}

Result<void> rescale_to_final(WarpedPair& warp, const TargetSize& target) {
    int width = target.final_width;
    int height = target.final_height;
    switch (target.final_rescale) {
        case FinalRescale::by_width: height = in_proportion(warp.height, width, warp.width); break;
        case FinalRescale::by_height: width = in_proportion(warp.width, height, warp.height); break;
        case FinalRescale::by_factor: {
            // The smaller side of the size worked at is exact, the other one rounded.
            const bool low = target.work_height <= target.work_width;
            const int worked = low ? target.work_height : target.work_width;
            const int wanted = low ? target.final_height : target.final_width;
            width = in_proportion(warp.width, wanted, worked);
            height = in_proportion(warp.height, wanted, worked);
            break;
        }
        default: return {};
    }
    if (width == warp.width && height == warp.height) {
        return {};
    }
    width = std::max(1, width);
    height = std::max(1, height);
    for (Bitmap* bitmap : {&warp.left, &warp.right}) {
        Bitmap result = rescaled(*bitmap, warp.width, warp.height, width, height);
        if (!result) {
            return Failure::out_of_memory(kNoMemoryForViews);
        }
        *bitmap = std::move(result);
    }
    warp.height = height;
    warp.width = width;
    return {};
}

}  // namespace zemora
