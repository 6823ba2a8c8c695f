#include "render/output_size.h"

#include <algorithm>
#include <cmath>

#include "config/setting_values.h"
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

Result<SizeWish> wish_for_size(const TargetSize& target, const PictureSize& source, int cropp_output,
                               const MessageCatalogue& messages) {
    if (source.height <= 0 || source.width <= 0) {
        return Failure::of_pair({});
    }
    SizeWish wish;
    wish.height = target.work_height;
    wish.width = target.work_width;
    wish.aspect = static_cast<float>(source.width) / static_cast<float>(source.height);
    wish.source = wish.scaled = source;
    const double ratio_height = static_cast<double>(target.work_height) / source.height;
    const double ratio_width = static_cast<double>(target.work_width) / source.width;
    const ScaleRule rule = find_scale_rule(cropp_output, target, ratio_height, ratio_width);
    wish.force = rule.force_size;
    if (rule.by_width) {
        wish.scale = static_cast<float>(ratio_width);
        wish.scaled = {target.work_width, in_proportion(source.height, target.work_width, source.width)};
    } else if (rule.by_height) {
        wish.scale = static_cast<float>(ratio_height);
        wish.scaled = {in_proportion(source.width, target.work_height, source.height), target.work_height};
    }
    if (wish.scaled.height > kLargestSide) {
        return Failure::of_pair(messages.text<Msg::warpimage_image_height_above_maximum>() +
                                format_text("%d\n", wish.scaled.height));
    }
    if (wish.scaled.width > kLargestSide) {
        return Failure::of_pair(messages.text<Msg::warpimage_image_width_above_maximum>() +
                                format_text("%d\n", wish.scaled.width));
    }
    if (wish.scaled.height <= 0 || wish.scaled.width <= 0) {
        return Failure::of_pair({});
    }
    return wish;
}

int force_of_larger_side(const SizeWish& wish, const PictureSize& size) {
    const bool single = wish.force == kForceWidth || wish.force == kForceHeight;
    if (!single || !wish.has_both_sides()) {
        return wish.force;
    }
    const double width = static_cast<double>(size.width) / wish.width;
    const double height = static_cast<double>(size.height) / wish.height;
    return width <= height ? kForceHeight : kForceWidth;
}

SizeRepeat check_forced_size(const PictureSize& size, const SizeWish& wish, int cropp_output, bool is_sized) {
    SizeRepeat repeat;
    if (!is_sized || cropp_output > setting::cropp_output::fitted) {
        return repeat;
    }
    const bool needs_height = wish.force != kForceWidth && wish.height > 0;
    const bool needs_width = wish.force != kForceNothing && wish.force != kForceHeight && wish.width > 0;
    repeat.height_done = !needs_height || size.height == wish.height;
    repeat.width_done = !needs_width || size.width == wish.width;
    if (wish.height > 0 && size.height > 0) {
        repeat.ratio_height = static_cast<double>(wish.height) / size.height;
    }
    if (wish.width > 0 && size.width > 0) {
        repeat.ratio_width = static_cast<double>(wish.width) / size.width;
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

PictureSize final_size(const TargetSize& target, const PictureSize& worked) {
    int width = target.final_width;
    int height = target.final_height;
    switch (target.final_rescale) {
        case FinalRescale::by_width: height = in_proportion(worked.height, width, worked.width); break;
        case FinalRescale::by_height: width = in_proportion(worked.width, height, worked.height); break;
        case FinalRescale::by_factor: {
            // The smaller side of the size worked at is exact, the other one rounded.
            const bool low = target.work_height <= target.work_width;
            const int side = low ? target.work_height : target.work_width;
            const int wanted = low ? target.final_height : target.final_width;
            width = in_proportion(worked.width, wanted, side);
            height = in_proportion(worked.height, wanted, side);
            break;
        }
        default: return worked;
    }
    if (width == worked.width && height == worked.height) {
        return worked;
    }
    return {std::max(1, width), std::max(1, height)};
}

}  // namespace zemora
