#include "input/equal_size.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "numerics/rounding.h"

namespace zemora {

namespace {

void warn_of_sizes(const LoadedView& left, const LoadedView& right, const EqualSizeOptions& options,
                   Notes& notes) {
    constexpr float kVeryDifferent = 0.15F;
    const auto ratio = [](int a, int b) {
        return std::fabs(static_cast<float>(a - b)) / static_cast<float>(a + b);
    };
    if (ratio(left.height, right.height) <= kVeryDifferent &&
        ratio(left.width, right.width) <= kVeryDifferent) {
        return;
    }
    notes.say<Msg::img_input_sizes_very_different>();
    notes.wait(Severity::warning);
    const bool scales = options.cropp_input == setting::cropp_input::scaled;
    if (scales && options.frame.passepartout >= setting::passepartout::own_colour_cut) {
        notes.say<Msg::img_input_better_cropp_input_2>();
        notes.wait(Severity::error);
    }
    if (!scales && options.has_pre_selection) {
        notes.say<Msg::img_input_better_cropp_input_0>();
        notes.wait(Severity::error);
    }
}

/// Enlarges the view that is smaller both ways until it touches the size of the other one.
Result<void> scale_smaller_view(const RecordedView& left, const RecordedView& right,
                                RescaleScratch& scratch) {
    const auto is_smaller = [](const LoadedView& a, const LoadedView& b) {
        return a.width < b.width && a.height < b.height;
    };
    const bool is_left_small = is_smaller(left.view, right.view);
    if (!is_left_small && !is_smaller(right.view, left.view)) {
        return {};
    }
    const RecordedView& small = is_left_small ? left : right;
    const LoadedView& large = is_left_small ? right.view : left.view;
    const double factor = std::min(static_cast<double>(large.height) / small.view.height,
                                   static_cast<double>(large.width) / small.view.width);
    Bitmap scaled =
        Bitmap::create(round_half_up(small.view.width * factor), round_half_up(small.view.height * factor));
    if (!scaled) {
        return Failure::out_of_memory("3442: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (CROPP)\n");
    }
    (void)rescale(small.view.picture(), scaled.picture(), scratch, RescaleFilter::bicubic,
                  RescaleFit::stretch);
    small.view.take(std::move(scaled));
    small.geometry.scaled_width = small.view.width;
    small.geometry.scaled_height = small.view.height;
    return {};
}

/// Puts a view into the middle of a canvas of that size.
Result<void> place_on_canvas(const RecordedView& placed, PictureSize size, Colour colour) {
    Bitmap canvas = Bitmap::create(size.width, size.height);
    if (!canvas) {
        return Failure::out_of_memory("3585: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (CROPP)\n");
    }
    LoadedView& view = placed.view;
    InputGeometry& geometry = placed.geometry;
    geometry.frame_x = (size.width - view.width) / 2;
    geometry.frame_y = (size.height - view.height) / 2;
    fill(canvas.picture(), colour);
    copy(view.picture(), canvas.picture().part(geometry.frame_x, geometry.frame_y, view.width, view.height));
    view.take(std::move(canvas));
    return {};
}

void crop_to_middle(const RecordedView& cropped, PictureSize size) {
    const int x = (cropped.view.width - size.width) / 2;
    const int y = (cropped.view.height - size.height) / 2;
    keep_region(cropped.view, x, y, size.width, size.height);
    cropped.geometry.frame_x = -x;
    cropped.geometry.frame_y = -y;
}

void crop_to_smaller(const RecordedView& left, const RecordedView& right, Notes& notes) {
    notes.say<Msg::img_input_sizes_differ>();
    notes.say<Msg::img_input_cropped_without_scaling>();
    notes.wait(Severity::information);
    const PictureSize size{std::min(left.view.width, right.view.width),
                           std::min(left.view.height, right.view.height)};
    crop_to_middle(left, size);
    crop_to_middle(right, size);
}

Result<void> place_both(const RecordedView& left, const RecordedView& right, Colour colour) {
    const PictureSize size{std::max(left.view.width, right.view.width),
                           std::max(left.view.height, right.view.height)};
    if (auto placed = place_on_canvas(left, size, colour); !placed) {
        return placed;
    }
    return place_on_canvas(right, size, colour);
}

Result<void> settle_sizes(const RecordedView& left, const RecordedView& right,
                          const EqualSizeOptions& options, RescaleScratch& scratch, Notes& notes) {
    warn_of_sizes(left.view, right.view, options, notes);
    if (options.cropp_input == setting::cropp_input::cut) {
        crop_to_smaller(left, right, notes);
        return {};
    }
    if (options.cropp_input == setting::cropp_input::scaled) {
        if (auto scaled = scale_smaller_view(left, right, scratch); !scaled) {
            return scaled;
        }
    }
    return place_both(left, right, options.frame.colour);
}

}  // namespace

Result<void> make_equal_size(const RecordedView& left, const RecordedView& right,
                             const EqualSizeOptions& options, RescaleScratch& scratch, Notes& notes) {
    if (left.view.width != right.view.width || left.view.height != right.view.height) {
        if (auto settled = settle_sizes(left, right, options, scratch, notes); !settled) {
            return settled;
        }
    }
    for (InputGeometry* geometry : {&left.geometry, &right.geometry}) {
        geometry->frame_width = left.view.width;
        geometry->frame_height = left.view.height;
    }
    return {};
}

}  // namespace zemora
