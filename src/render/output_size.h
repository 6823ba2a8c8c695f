#pragma once
/// Size of the output and the common image area.

#include "numerics/result.h"
#include "render/selection_box.h"
#include "render/warp_state.h"

namespace zemora {

/// How the finished pair is brought to a size too small to work at.
enum class FinalRescale {
    none,
    by_factor,  ///< Both sides by the factor from the size worked at to the final size.
    by_width,   ///< To the final width, the height in proportion.
    by_height   ///< To the final height, the width in proportion.
};

/// The size that a pair is worked at.
struct TargetSize {
    int work_height = 0;  ///< 0 on a side that is not given.
    int work_width = 0;
    FinalRescale final_rescale = FinalRescale::none;
    int final_width = 0;
    int final_height = 0;
    int size_flag = 0;  ///< `size_step` of the final warps.
    bool free_size_below_crop_3 = false;
};

/// From the source size and `OutputHeight`, `OutputWidth`, `CroppOutput`.
[[nodiscard]] TargetSize find_target_size(int source_height, int source_width, int output_height,
                                          int output_width, int cropp_output);

/// Sets the scaled size and `force_size` of `warp` for a new pair. False, with the messages told,
/// when a side would pass 16384.
[[nodiscard]] bool setup_output_size(WarpState& warp, const TargetSize& target, int source_height,
                                     int source_width);

/// Rectangle of pixels, all four inclusive; rows from the bottom.
struct PixelRectangle {
    int left = 0;
    int right = 0;
    int bottom = 0;
    int top = 0;
    [[nodiscard]] int width() const { return right - left + 1; }
    [[nodiscard]] int height() const { return top - bottom + 1; }
    friend bool operator==(const PixelRectangle&, const PixelRectangle&) = default;
};

/// Largest rectangle inside `range` that the search by axes and rays finds to hold picture in both
/// views; `background` marks no picture.
[[nodiscard]] PixelRectangle find_common_area(const StereoPicture& pair, const PixelRectangle& range,
                                              Colour background);

/// Cuts `rectangle` to the ratio width over height, centred.
[[nodiscard]] PixelRectangle crop_to_ratio(PixelRectangle rectangle, double ratio);

/// Whether the final warp must be repeated to force the target size.
struct SizeRepeat {
    bool height_done = true;
    bool width_done = true;
    double ratio_height = 1.0;
    double ratio_width = 1.0;
    [[nodiscard]] bool needed() const { return !(height_done && width_done); }
};
/// Compares the cropped size with the target; may choose `force_size` again (`CroppOutput` 3).
[[nodiscard]] SizeRepeat check_forced_size(WarpState& warp, int size_flag);

/// Final over worked size; 1 where nothing is reduced at the end.
[[nodiscard]] double final_reduction(const TargetSize& target);

/// Brings the finished pair to its final size with the image library's bicubic filter. Fails without memory.
[[nodiscard]] Result<void> rescale_to_final(WarpedPair& warp, const TargetSize& target);

}  // namespace zemora
