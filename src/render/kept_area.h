#pragma once
/// Which part of a warped frame holds picture in both views, found from the transform alone, without a pixel.

#include <span>

#include "render/warp_pair.h"

namespace zemora {

/// The common image area of the frame that `plan` makes of views of that size: the search by axes and rays of
/// `find_common_area`, then every edge drawn in until all of it is picture. None where the corrections pass
/// the limits of the warp, or where there is next to no picture.
[[nodiscard]] std::optional<PixelRectangle> kept_area(const WarpPlan& plan, const PictureSize& source);

/// What all frames of a film have in common when they are mounted: nothing breathes.
struct FilmFrame {
    PictureSize whole;    ///< Of the frame, output pixels.
    float scale = 1.0F;   ///< Output pixels per input pixel.
    PixelRectangle kept;  ///< Of it.
};

/// What a film is to become.
struct FilmFrameWish {
    PictureSize source;
    int width = 0;  ///< Both sides, or 0 for none.
    int height = 0;
    int cropp_output = 0;  ///< 0 to 3.
    int multiple = 1;      ///< Free sides become multiples of it.
};

/// The plan of a frame of a film at that size, with the correction in input pixels.
[[nodiscard]] WarpPlan film_plan(const WarpPlan& base, const Correction& correction, const FilmFrame& frame);

/// One scale and one part of the frame that hold for all of these corrections, whose lengths are input
/// pixels. Fails for the run where no picture is common to all frames, or where the wanted size passes the
/// limits.
[[nodiscard]] Result<FilmFrame> find_film_frame(const FilmFrameWish& wish, const WarpPlan& base,
                                                std::span<const Correction> corrections,
                                                const MessageCatalogue& messages);

}  // namespace zemora
