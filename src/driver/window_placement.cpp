#include "driver/window_placement.h"

#include "render/framing.h"

namespace zemora {

WindowPlacement place_window(const WindowWish& wish, double shift_px, double window_px, double scale,
                             const PictureSize& working) {
    const double offset_px =
        pixels_from_reference(wish.offset, wish.reference, working.height, working.width);
    WindowPlacement placement;
    switch (wish.estimate_window) {
        case 0:  // the shift of the pair stays as it was taken
            placement.pure_shift_px = -offset_px / scale;
            placement.window_shift_px = shift_px - placement.pure_shift_px;
            placement.output_window_px = scale * placement.window_shift_px;
            return placement;
        case 1:  // the mean disparity, which the shift has removed
            placement.output_window_px = offset_px;
            break;
        default:  // a measured disparity
            placement.output_window_px = -scale * window_px + offset_px;
            break;
    }
    placement.window_shift_px = placement.output_window_px / scale;
    placement.pure_shift_px = shift_px - placement.window_shift_px;
    return placement;
}

}  // namespace zemora
