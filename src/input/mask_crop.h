#pragma once
/// The part of a video frame that its mask shows, and the preview thumbs with that part drawn in.

#include <optional>
#include <string>

#include "config/notes.h"
#include "numerics/bitmap.h"
#include "numerics/rescale.h"
#include "numerics/result.h"

namespace zemora {

/// A mask: its sides as fractions of the picture, 0 to 1, and how much the right view's lies beside it.
struct MaskFrame {
    float left = 0.0F;
    float right = 1.0F;
    float low = 0.0F;   ///< Counted from the top of the picture.
    float high = 1.0F;  ///< Below `low` in the picture.
    int shift_x = 0;    ///< Pixels to the right.
    int shift_y = 0;    ///< Pixels upward.
};

/// Both views' windows of one size; rows count from the bottom.
struct MaskWindow {
    int left_x = 0;
    int left_y = 0;
    int right_x = 0;
    int right_y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const MaskWindow&, const MaskWindow&) = default;
};

/// The windows of a mask in views of that size. Where nothing of it lies in both views, they stay whole.
[[nodiscard]] MaskWindow find_mask_window(const MaskFrame& mask, int width, int height);

/// Moves both windows to the lower left corners; returns their size.
[[nodiscard]] PictureSize apply_mask_crop(Picture left, Picture right, const MaskFrame& mask);

/// Writes "zemora_thumb_l.bmp" and "zemora_thumb_r.bmp" of both views into the folder, with the lines of a
/// mask where one is given. A file that cannot be written is reported. Fails for the run without memory.
[[nodiscard]] Result<void> write_mask_thumbs(const StereoPicture& views, const std::string& folder,
                                             const std::optional<MaskFrame>& mask, Notes& notes);

}  // namespace zemora
