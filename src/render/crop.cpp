#include "render/crop.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "numerics/rounding.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

/// Where `CroppOutput` 1 writes the rectangle found: top, bottom, left, right.
constexpr const char* kCropFile = "zemora_cropp.dat";

bool has_both_targets(const WarpState& warp) {
    return warp.work_width > 0 && warp.work_height > 0;
}

/// Snaps a window that all but has the target size to it, or cuts it to the target's ratio.
PixelRectangle fit_window_to_target(PixelRectangle window, const WarpState& warp) {
    const int dw = warp.work_width - 1 - window.right + window.left;
    const int dh = warp.work_height - 1 - window.top + window.bottom;
    if (std::abs(dw) < warp.work_width / 100 && std::abs(dh) < warp.work_height / 100) {
        window.left -= dw / 2;
        window.right = window.left + warp.work_width - 1;
        window.bottom -= dh / 2;
        window.top = window.bottom + warp.work_height - 1;
        return window;
    }
    const double ratio = static_cast<double>(warp.work_width) / warp.work_height;
    const MessageCatalogue& messages = warp.notes.messages();
    warp.notes.print_once(
        messages.text<Msg::warpimage_selection_ratio_adopted>(ratio) +
        messages.text<Msg::warpimage_selection_ratio_given_by>(warp.work_width, warp.work_height));
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

void write_crop_file(const WarpState& warp, const PixelRectangle& area) {
    const std::string text = format_text("%d %d %d %d", area.top, area.bottom, area.left, area.right);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const std::string failure = write_file_whole(kCropFile, {bytes, text.size()});
    if (!failure.empty()) {
        warp.notes.say<Msg::warpimage_file_write_failed>();
        warp.notes.print(format_text("%s: %s\n", kCropFile, failure.c_str()));
    }
}

bool is_large_enough(const PixelRectangle& area) {
    return area.width() >= kSmallestCommonSide && area.height() >= kSmallestCommonSide;
}

/// A side exactly one pixel above its target loses that pixel.
void drop_surplus_pixel(PixelRectangle& r, const WarpState& warp) {
    if (warp.work_height > 0 && r.top - r.bottom == warp.work_height) {
        --r.top;
    }
    if (warp.work_width > 0 && r.right - r.left == warp.work_width) {
        --r.right;
    }
}

constexpr PixelRectangle kNothing{0, -1, 0, -1};

PixelRectangle find_kept_of_frame(WarpState& warp, int size_step, const PixelRectangle& frame) {
    PixelRectangle kept = frame;
    if (warp.cropp_output >= 1) {
        kept = find_common_area(warp.pair(), frame, warp.passe_colour);
        if (!is_large_enough(kept)) {
            return kNothing;
        }
    }
    if (warp.cropp_output == 1) {
        write_crop_file(warp, kept);
        kept = frame;
        blank_common(warp.left.picture(warp.width, warp.height), warp.right.picture(warp.width, warp.height),
                     warp.passe_colour);
    }
    if (warp.cropp_output >= 4 && warp.post_viewer_active == 0) {
        kept = crop_to_ratio(kept, target_ratio(warp));
    }
    if (size_step != 0 && warp.cropp_output < 4) {
        kept = forced_cut(kept, warp, false);
    }
    drop_surplus_pixel(kept, warp);
    return kept;
}

PixelRectangle find_kept_of_window(WarpState& warp, int size_step, const PixelRectangle& range) {
    PixelRectangle kept = range;
    if (warp.cropp_output >= 2) {
        kept = find_common_area(warp.pair(), range, warp.passe_colour);
        if (!is_large_enough(kept)) {
            return kNothing;
        }
    }
    if (warp.cropp_output < 4 && size_step != 0) {
        kept = forced_cut(kept, warp, true);
    }
    return kept;
}

}  // namespace

double target_ratio(const WarpState& warp) {
    if (!has_both_targets(warp)) {
        return 0.0;
    }
    const double ratio = static_cast<double>(warp.work_width) / warp.work_height;
    if (warp.cropp_output != 5 || warp.source_height <= 0) {
        return ratio;
    }
    const double source_ratio = static_cast<double>(warp.source_width) / warp.source_height;
    return (ratio >= 1.0) == (source_ratio >= 1.0) ? ratio : 1.0 / ratio;
}

PixelRectangle find_range(const WarpState& warp, const SelectionBox& selection, int size_step, int height,
                          int width) {
    if (!has_window(selection)) {
        return {0, width - 1, 0, height - 1};
    }
    PixelRectangle window = clamp_to_frame(selected_window(selection, height, width), height, width);
    const bool sized = size_step != 0 && has_both_targets(warp);
    if (warp.cropp_output < 3 && sized && warp.work_width <= window.right - window.left &&
        warp.work_height <= window.top - window.bottom) {
        window = fit_window_to_target(window, warp);
    } else if (warp.cropp_output == 3 && sized) {
        window.right = std::min(window.right, window.left + warp.work_width - 1);
        window.top = std::min(window.top, window.bottom + warp.work_height - 1);
    } else if (warp.cropp_output >= 4) {
        window = crop_to_ratio(window, target_ratio(warp));
        if (has_both_targets(warp) && warp.work_width == warp.work_height) {
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

PixelRectangle forced_cut(PixelRectangle r, const WarpState& warp, bool window) {
    const int surplus_width = warp.work_width > 0 ? r.width() - warp.work_width : -1;
    const int surplus_height = warp.work_height > 0 ? r.height() - warp.work_height : -1;
    switch (warp.force_size) {
        case kForceWidth:
            if (surplus_width >= 0 && (window || is_near(r.left, r.right, warp.work_width))) {
                cut_side(r.left, r.right, warp.work_width);
            }
            break;
        case kForceHeight:
            if (surplus_height >= 0 && (window || is_near(r.bottom, r.top, warp.work_height))) {
                cut_side(r.bottom, r.top, warp.work_height);
            }
            break;
        case kForceBothWidthLarger:
        case kForceBothHeightLarger: {
            const bool by_height = surplus_height < surplus_width;
            const bool near = by_height ? is_near(r.bottom, r.top, warp.work_height)
                                        : is_near(r.left, r.right, warp.work_width);
            if (surplus_width >= 0 && surplus_height >= 0 && near) {
                cut_side(r.left, r.right, warp.work_width);
                cut_side(r.bottom, r.top, warp.work_height);
            }
            break;
        }
        default: break;
    }
    return r;
}

void blank_common(Picture left, Picture right, Colour background) {
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

PixelRectangle find_kept(WarpState& warp, const SelectionBox& selection, int size_step,
                         const PixelRectangle& range) {
    return has_window(selection) ? find_kept_of_window(warp, size_step, range)
                                 : find_kept_of_frame(warp, size_step, range);
}

void move_to_origin(WarpState& warp, const PixelRectangle& kept) {
    if (kept.left == 0 && kept.bottom == 0) {
        return;
    }
    const std::size_t row_bytes = static_cast<std::size_t>(kept.width()) * kPixelBytes;
    for (Bitmap* bitmap : {&warp.left, &warp.right}) {
        const Picture picture = bitmap->picture();
        for (int y = 0; y < kept.height(); ++y) {
            std::memmove(picture.row(y), picture.pixel(kept.left, kept.bottom + y), row_bytes);
        }
    }
}

void narrow_views(WarpState& warp, int width) {
    if (width < 1 || width >= warp.width) {
        return;
    }
    const int first = (warp.width - width) / 2;
    move_to_origin(warp, {first, first + width - 1, 0, warp.height - 1});
    warp.width = width;
    for (ViewGeometry* record : {&warp.left_record, &warp.right_record}) {
        record->kept_x += first;
        record->kept_width = width;
    }
}

}  // namespace zemora
