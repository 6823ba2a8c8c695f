#include "render/crop.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "config/setting_values.h"
#include "numerics/rounding.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

/// Where `CroppOutput` 1 writes the rectangle found: top, bottom, left, right.
constexpr const char* kCropFile = "zemora_cropp.dat";

/// Snaps a window that all but has the target size to it, or cuts it to the target's ratio.
PixelRectangle fit_window_to_target(PixelRectangle window, const SizeWish& wish, Notes& notes) {
    const int dw = wish.width - 1 - window.right + window.left;
    const int dh = wish.height - 1 - window.top + window.bottom;
    if (std::abs(dw) < wish.width / 100 && std::abs(dh) < wish.height / 100) {
        window.left -= dw / 2;
        window.right = window.left + wish.width - 1;
        window.bottom -= dh / 2;
        window.top = window.bottom + wish.height - 1;
        return window;
    }
    const double ratio = static_cast<double>(wish.width) / wish.height;
    const MessageCatalogue& messages = notes.messages();
    notes.print_once(messages.text<Msg::warpimage_selection_ratio_adopted>(ratio) +
                     messages.text<Msg::warpimage_selection_ratio_given_by>(wish.width, wish.height));
    return crop_to_ratio(window, ratio);
}

PixelRectangle clamp_to_frame(PixelRectangle r, int height, int width) {
    r.left = std::clamp(r.left, 0, width - 1);
    r.right = std::clamp(r.right, r.left, width - 1);
    r.bottom = std::clamp(r.bottom, 0, height - 1);
    r.top = std::clamp(r.top, r.bottom, height - 1);
    return r;
}

PixelRectangle selected_window(const SelectionBox& selection, int height, int width) {
    const auto at = [](float fraction, int size) {
        return round_half_up(static_cast<double>(fraction) * (size - 1));
    };
    return {at(selection.left, width), at(selection.right, width), at(selection.bottom, height),
            at(selection.top, height)};
}

/// Cut of one side, `low` and `high` inclusive, to `target` pixels round its middle.
void cut_side(int& low, int& high, int target) {
    low += (high - low + 1 - target) >> 1;
    high = low + target - 1;
}

/// At most 1 per cent larger than the target.
bool is_near(int low, int high, int target) {
    return high - low < static_cast<int>(std::int64_t{target} * 101 / 100);
}

void write_crop_file(const PixelRectangle& area, Notes& notes) {
    const std::string text = format_text("%d %d %d %d", area.top, area.bottom, area.left, area.right);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const std::string failure = write_file_whole(kCropFile, {bytes, text.size()});
    if (!failure.empty()) {
        notes.say<Msg::warpimage_file_write_failed>();
        notes.print(format_text("%s: %s\n", kCropFile, failure.c_str()));
    }
}

bool is_large_enough(const PixelRectangle& area) {
    return area.width() >= kSmallestCommonSide && area.height() >= kSmallestCommonSide;
}

/// A side exactly one pixel above its target loses that pixel.
void drop_surplus_pixel(PixelRectangle& r, const SizeWish& wish) {
    if (wish.height > 0 && r.top - r.bottom == wish.height) {
        --r.top;
    }
    if (wish.width > 0 && r.right - r.left == wish.width) {
        --r.right;
    }
}

constexpr PixelRectangle kNothing{0, -1, 0, -1};

/// The common area of the frame; nothing when it is too small.
PixelRectangle large_common_area(const WorkingViews& views, const PixelRectangle& range, Colour background) {
    const PixelRectangle area = find_common_area({views.left, views.right}, range, background);
    return is_large_enough(area) ? area : kNothing;
}

PixelRectangle find_kept_of_frame(const WorkingViews& views, const CropPlan& crop, Colour background,
                                  const PixelRectangle& frame, Notes& notes) {
    PixelRectangle kept = frame;
    if (crop.cropp_output >= setting::cropp_output::blanked) {
        kept = large_common_area(views, frame, background);
        if (kept == kNothing) {
            return kNothing;
        }
    }
    if (crop.cropp_output == setting::cropp_output::blanked) {
        write_crop_file(kept, notes);
        kept = frame;
        blank_common(views, background);
    }
    if (crop.cropp_output >= setting::cropp_output::ratio && !crop.is_shown_first) {
        kept = crop_to_ratio(kept, target_ratio(crop));
    }
    if (crop.is_sized && crop.cropp_output < setting::cropp_output::ratio) {
        kept = forced_cut(kept, crop.wish, false);
    }
    drop_surplus_pixel(kept, crop.wish);
    return kept;
}

PixelRectangle find_kept_of_window(const WorkingViews& views, const CropPlan& crop, Colour background,
                                   const PixelRectangle& range) {
    PixelRectangle kept = range;
    if (crop.cropp_output >= setting::cropp_output::common_area) {
        kept = large_common_area(views, range, background);
        if (kept == kNothing) {
            return kNothing;
        }
    }
    if (crop.cropp_output < setting::cropp_output::ratio && crop.is_sized) {
        kept = forced_cut(kept, crop.wish, true);
    }
    return kept;
}

}  // namespace

double target_ratio(const CropPlan& crop) {
    const SizeWish& wish = crop.wish;
    if (!wish.has_both_sides()) {
        return 0.0;
    }
    const double ratio = static_cast<double>(wish.width) / wish.height;
    if (crop.cropp_output != setting::cropp_output::ratio_turned || wish.source.height <= 0) {
        return ratio;
    }
    const double source_ratio = static_cast<double>(wish.source.width) / wish.source.height;
    return (ratio >= 1.0) == (source_ratio >= 1.0) ? ratio : 1.0 / ratio;
}

PixelRectangle find_range(const CropPlan& crop, const PictureSize& frame, Notes& notes) {
    const auto [width, height] = frame;
    if (!crop.selection.has_window()) {
        return {0, width - 1, 0, height - 1};
    }
    const SizeWish& wish = crop.wish;
    PixelRectangle window = clamp_to_frame(selected_window(crop.selection, height, width), height, width);
    const bool sized = crop.is_sized && wish.has_both_sides();
    if (crop.cropp_output < setting::cropp_output::fitted && sized &&
        wish.width <= window.right - window.left && wish.height <= window.top - window.bottom) {
        window = fit_window_to_target(window, wish, notes);
    } else if (crop.cropp_output == setting::cropp_output::fitted && sized) {
        window.right = std::min(window.right, window.left + wish.width - 1);
        window.top = std::min(window.top, window.bottom + wish.height - 1);
    } else if (crop.cropp_output >= setting::cropp_output::ratio) {
        window = crop_to_ratio(window, target_ratio(crop));
        if (wish.has_both_sides() && wish.width == wish.height) {
            const int side = std::min(window.width(), window.height());
            window.right = window.left + side - 1;
            window.top = window.bottom + side - 1;
        }
    }
    return clamp_to_frame(window, height, width);
}

PixelRectangle crop_to_ratio(PixelRectangle rectangle, double ratio) {
    const int width = rectangle.width();
    const int height = rectangle.height();
    if (!std::isfinite(ratio) || ratio <= 0.0 || width <= 0 || height <= 0) {
        return rectangle;
    }
    if (ratio <= static_cast<double>(width) / height) {
        const int kept = std::clamp(round_half_up(ratio * height), 1, width);
        rectangle.left += (width - kept) / 2;
        rectangle.right = rectangle.left + kept - 1;
    } else {
        const int kept = std::clamp(round_half_up(width / ratio), 1, height);
        rectangle.bottom += (height - kept) / 2;
        rectangle.top = rectangle.bottom + kept - 1;
    }
    return rectangle;
}

PixelRectangle forced_cut(PixelRectangle r, const SizeWish& wish, bool window) {
    const int surplus_width = wish.width > 0 ? r.width() - wish.width : -1;
    const int surplus_height = wish.height > 0 ? r.height() - wish.height : -1;
    switch (wish.force) {
        case kForceWidth:
            if (surplus_width >= 0 && (window || is_near(r.left, r.right, wish.width))) {
                cut_side(r.left, r.right, wish.width);
            }
            break;
        case kForceHeight:
            if (surplus_height >= 0 && (window || is_near(r.bottom, r.top, wish.height))) {
                cut_side(r.bottom, r.top, wish.height);
            }
            break;
        case kForceBothWidthLarger:
        case kForceBothHeightLarger: {
            const bool by_height = surplus_height < surplus_width;
            const bool near =
                by_height ? is_near(r.bottom, r.top, wish.height) : is_near(r.left, r.right, wish.width);
            if (surplus_width >= 0 && surplus_height >= 0 && near) {
                cut_side(r.left, r.right, wish.width);
                cut_side(r.bottom, r.top, wish.height);
            }
            break;
        }
        default: break;
    }
    return r;
}

void blank_common(const WorkingViews& views, Colour background) {
    const auto& [left, right] = views;
    const auto is_background = [background](const std::uint8_t* pixel) {
        return Colour{pixel[0], pixel[1], pixel[2]} == background;
    };
#pragma omp parallel for schedule(static)
    for (int y = 0; y < left.height; ++y) {
        for (int x = 0; x < left.width; ++x) {
            std::uint8_t* of_left = left.pixel(x, y);
            std::uint8_t* of_right = right.pixel(x, y);
            if (is_background(of_left) || is_background(of_right)) {
                for (std::uint8_t* pixel : {of_left, of_right}) {
                    pixel[0] = background.blue;
                    pixel[1] = background.green;
                    pixel[2] = background.red;
                }
            }
        }
    }
}

PixelRectangle find_kept(const WorkingViews& frame, const CropPlan& crop, Colour background,
                         const PixelRectangle& range, Notes& notes) {
    return crop.selection.has_window() ? find_kept_of_window(frame, crop, background, range)
                                       : find_kept_of_frame(frame, crop, background, range, notes);
}

void keep_part(WarpedPair& pair, const PixelRectangle& kept) {
    pair.width = kept.width();
    pair.height = kept.height();
    if (kept.left == 0 && kept.bottom == 0) {
        return;
    }
    const std::size_t row_bytes = static_cast<std::size_t>(kept.width()) * kPixelBytes;
    for (Bitmap* bitmap : {&pair.left, &pair.right}) {
        const Picture picture = bitmap->picture();
        for (int y = 0; y < kept.height(); ++y) {
            std::memmove(picture.row(y), picture.pixel(kept.left, kept.bottom + y), row_bytes);
        }
    }
}

void select_kept(const WarpedPair& pair, SelectionBox& selection) {
    const auto fraction = [](int position, int size) {
        return size > 1 ? static_cast<float>(position) / static_cast<float>(size - 1) : 0.0F;
    };
    if (selection.has_window()) {
        return;
    }
    const auto [width, height] = pair.plan.frame;
    selection.result_left = fraction(pair.kept.left, width);
    selection.result_right = fraction(pair.kept.right, width);
    selection.result_bottom = fraction(pair.kept.bottom, height);
    selection.result_top = fraction(pair.kept.top, height);
}

void narrow_views(WarpedPair& pair, int width) {
    if (width < 1 || width >= pair.width) {
        return;
    }
    const int first = (pair.width - width) / 2;
    keep_part(pair, {first, first + width - 1, 0, pair.height - 1});
    pair.kept.left += first;
    pair.kept.right = pair.kept.left + width - 1;
}

}  // namespace zemora
