#include "input/percent_crop.h"

#include <algorithm>

#include "numerics/rounding.h"

namespace zemora {

namespace {

/// The region that a percentage selection keeps along one axis.
struct KeptRange {
    int first;
    int count;
};

KeptRange kept_range(float start_percent, float size_percent, int side) {
    constexpr float kWhole = 100.0F;
    const auto length = static_cast<float>(side);
    const int first = std::clamp(round_half_up(start_percent * length / kWhole), 0, side - 1);
    const int end = first + round_half_up(size_percent * length / kWhole);
    const int last = end > 0 ? std::min(end, side) - 1 : 0;
    return {first, std::max(last - first + 1, 1)};
}

/// One side of a selection, with its words.
struct Axis {
    const char* start_label;
    const char* size_label;
    const char* lone_size_label;  ///< Where the size stands alone.
    float start;                  ///< Percent, as the size.
    float size;
};

/// Whether all values can be used; reports the first that cannot.
bool are_usable(const Axis (&axes)[4], Notes& notes) {
    constexpr float kTenths = 10.0F;
    constexpr int kLimit = 1001;  // tenths of a per cent; just above the whole
    for (const Axis& axis : axes) {
        if (axis.size < 1.0F) {
            notes.print(format_text("%s%5.1f", axis.lone_size_label, static_cast<double>(axis.size)));
            notes.say<Msg::img_input_value_not_used>();
            notes.print("\n");
            return false;
        }
    }
    for (const Axis& axis : axes) {
        if (0L + round_half_up(axis.start * kTenths) + round_half_up(axis.size * kTenths) >= kLimit) {
            notes.say<Msg::img_input_selection_sum_above_100>();
            notes.print(format_text("\n%s%5.1f\n%s%5.1f\n", axis.start_label, static_cast<double>(axis.start),
                                    axis.size_label, static_cast<double>(axis.size)));
            return false;
        }
    }
    return true;
}

void crop(const RecordedView& cropped, const Axis& x_axis, const Axis& y_axis) {
    const KeptRange x = kept_range(x_axis.start, x_axis.size, cropped.view.width);
    const KeptRange y = kept_range(y_axis.start, y_axis.size, cropped.view.height);
    keep_region(cropped.view, x.first, y.first, x.count, y.count);
    InputGeometry& geometry = cropped.geometry;
    geometry.crop_x = x.first;
    geometry.crop_y = y.first;
    geometry.crop_width = x.count;
    geometry.crop_height = y.count;
}

}  // namespace

void crop_by_percent(const RecordedView& left, const RecordedView& right, const PreSelection& chosen,
                     Notes& notes) {
    const Axis axes[4] = {
        {"   LeftImageStartx = ", "   LeftImageWidth  = ", "   LeftImageWidth  = ", chosen.left_start_x,
         chosen.left_width},
        {"   LeftImageStarty = ", "   LeftImageHeight = ", "   LeftImageHeight  = ", chosen.left_start_y,
         chosen.left_height},
        {"   RightImageStartx = ", "   RightImageWidth  = ", "   RightImageWidth  = ", chosen.right_start_x,
         chosen.right_width},
        {"   RightImageStarty = ", "   RightImageHeight = ", "   RightImageHeight  = ", chosen.right_start_y,
         chosen.right_height},
    };
    if (are_usable(axes, notes)) {
        crop(left, axes[0], axes[1]);
        crop(right, axes[2], axes[3]);
    }
}

}  // namespace zemora
