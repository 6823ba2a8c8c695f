#pragma once
/// Size of the output and the common image area.

#include "config/messages.h"
#include "numerics/bitmap.h"
#include "numerics/rescale.h"
#include "numerics/result.h"

namespace zemora {

inline constexpr int kLargestSide = 16384;  ///< Pixels; the largest side of a warped picture.

/// Which side of the target size is forced.
enum ForceSize {
    kForceNothing = 0,
    kForceWidth = 1,
    kForceHeight = 2,
    kForceBothWidthLarger = 5,   ///< Both; the width was the larger ratio.
    kForceBothHeightLarger = 6,  ///< Both; the height was the larger ratio.
};

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

/// The size that the warps of a pair are to reach.
struct SizeWish {
    int height = 0;  ///< 0 on a side that is not given.
    int width = 0;
    int force = kForceNothing;  ///< A `ForceSize`.
    float aspect = 1.0F;        ///< Source width over source height.
    PictureSize source;
    PictureSize scaled;  ///< The whole frame scaled to the target.
    float scale = 1.0F;  ///< Output pixels per source pixel there.

    [[nodiscard]] bool has_both_sides() const { return width > 0 && height > 0; }
    [[nodiscard]] bool forces_width() const {
        return width > 0 &&
               (force == kForceWidth || force == kForceBothWidthLarger || force == kForceBothHeightLarger);
    }
};

/// Works it out for a new pair. Fails for the pair when a side would pass the largest one.
[[nodiscard]] Result<SizeWish> wish_for_size(const TargetSize& target, const PictureSize& source,
                                             int cropp_output, const MessageCatalogue& messages);

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
/// Compares the cropped size with the target; nothing is needed where `is_sized` is false.
[[nodiscard]] SizeRepeat check_forced_size(const PictureSize& size, const SizeWish& wish, int cropp_output,
                                           bool is_sized);

/// `CroppOutput` 3 fits the picture into the target: the side that is larger against it is the forced one.
[[nodiscard]] int force_of_larger_side(const SizeWish& wish, const PictureSize& size);

/// Final over worked size; 1 where nothing is reduced at the end.
[[nodiscard]] double final_reduction(const TargetSize& target);

/// The final size of a finished pair of that size.
[[nodiscard]] PictureSize final_size(const TargetSize& target, const PictureSize& worked);

}  // namespace zemora
