#include "input/mask_crop.h"

#include <algorithm>

#include "codec/encode.h"
#include "input/loaded_view.h"
#include "numerics/rounding.h"
#include "platform/console.h"

namespace zemora {

namespace {

constexpr int kThumbWidth = 267;
constexpr int kThumbHeight = 178;
constexpr Colour kThumbGround{64, 64, 255};
constexpr Colour kMaskLine{0, 255, 255};

/// The largest size of the views' aspect inside a thumb.
PictureSize size_in_thumb(int width, int height) {
    if (static_cast<double>(height) * kThumbWidth < static_cast<double>(width) * kThumbHeight) {
        return {kThumbWidth, std::max(round_half_up(static_cast<double>(height) * kThumbWidth / width), 1)};
    }
    return {std::max(round_half_up(static_cast<double>(width) * kThumbHeight / height), 1), kThumbHeight};
}

/// Lines along the sides of a window, across the whole picture.
void draw_window(Picture picture, int x, int y, int width, int height) {
    for (const int column : {x, x + width - 1}) {
        fill(picture.part(column, 0, 1, picture.height), kMaskLine);
    }
    for (const int row : {y, y + height - 1}) {
        fill(picture.part(0, row, picture.width, 1), kMaskLine);
    }
}

}  // namespace

MaskWindow find_mask_window(const MaskFrame& mask, int width, int height) {
    const auto place = [](float fraction, int side) {
        return std::clamp(round_half_up(static_cast<double>(fraction) * (side - 1)), 0, side - 1);
    };
    const int shift_x = std::clamp(mask.shift_x, -width, width);
    const int shift_y = std::clamp(mask.shift_y, -height, height);
    int x0 = place(mask.left, width);
    int x1 = place(mask.right, width);
    int y0 = place(mask.low, height);  // from the top, in the left view
    int y1 = place(mask.high, height);
    x0 = std::max(x0, -shift_x);
    x1 = std::min(x1, width - 1 - shift_x);
    y0 = std::max(y0, shift_y);
    y1 = std::min(y1, height - 1 + shift_y);
    if (x1 < x0 || y1 < y0) {
        return {0, 0, 0, 0, width, height};
    }
    return {x0, height - 1 - y1, x0 + shift_x, height - 1 - (y1 - shift_y), x1 - x0 + 1, y1 - y0 + 1};
}

PictureSize apply_mask_crop(Picture left, Picture right, const MaskFrame& mask) {
    const MaskWindow window = find_mask_window(mask, left.width, left.height);
    move_to_corner(left, window.left_x, window.left_y, window.width, window.height);
    move_to_corner(right, window.right_x, window.right_y, window.width, window.height);
    return {window.width, window.height};
}

Result<void> write_mask_thumbs(const StereoPicture& views, const std::string& folder,
                               const std::optional<MaskFrame>& mask, Notes& notes) {
    const PictureSize size = size_in_thumb(views.left.width, views.left.height);
    const Bitmap thumb = Bitmap::create(kThumbWidth, kThumbHeight);
    if (!thumb) {
        return Failure::out_of_memory("5248: FAILED TO ALLOCATE MEMORY FOR INPUT IMAGE (ROT)\n");
    }
    const Picture place = thumb.picture().part((kThumbWidth - size.width) / 2,
                                               (kThumbHeight - size.height) / 2, size.width, size.height);
    RescaleScratch scratch;
    const auto write = [&](ConstPicture view, bool is_left) {
        fill(thumb.picture(), kThumbGround);
        (void)rescale(view, place, scratch, RescaleFilter::bicubic, RescaleFit::stretch);
        if (mask) {
            MaskFrame scaled = *mask;
            scaled.shift_x = round_half_up(static_cast<double>(size.width) * mask->shift_x / view.width);
            scaled.shift_y = round_half_up(static_cast<double>(size.height) * mask->shift_y / view.height);
            const MaskWindow window = find_mask_window(scaled, size.width, size.height);
            draw_window(place, is_left ? window.left_x : window.right_x,
                        is_left ? window.left_y : window.right_y, window.width, window.height);
        }
        const std::string file = folder + (is_left ? "/zemora_thumb_l.bmp" : "/zemora_thumb_r.bmp");
        const std::string reason = encode_and_write(thumb, {PictureFormat::bmp}, file);
        if (!reason.empty()) {
            notes.print(format_text(
                notes.messages().either({"The preview %s couldn't be written: %s\n",
                                         "Die Vorschau %s konnte nicht geschrieben werden: %s\n"}),
                printable(file).c_str(), reason.c_str()));
        }
    };
    write(views.left, true);
    write(views.right, false);
    return {};
}

}  // namespace zemora
