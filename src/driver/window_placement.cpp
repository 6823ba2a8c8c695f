#include "driver/window_placement.h"

#include "render/framing.h"

namespace zemora {

WindowPlacement place_window(const WindowWish& wish, double shift_input_px, double window_input_px,
                             double scale, const PictureSize& working) {
    const double offset_px =
        pixels_from_reference(wish.offset, wish.reference, working.height, working.width);
    WindowPlacement placement;
    switch (wish.estimate_window) {
        case 0:  // the shift of the pair stays as it was taken
            placement.pure_shift_input_px = -offset_px / scale;
            placement.window_shift_input_px = shift_input_px - placement.pure_shift_input_px;
            placement.window_working_px = scale * placement.window_shift_input_px;
            return placement;
        case 1:  // the mean disparity, which the shift has removed
            placement.window_working_px = offset_px;
            break;
        default:  // a measured disparity
            placement.window_working_px = -scale * window_input_px + offset_px;
            break;
    }
    placement.window_shift_input_px = placement.window_working_px / scale;
    placement.pure_shift_input_px = shift_input_px - placement.window_shift_input_px;
    return placement;
}

}  // namespace zemora
