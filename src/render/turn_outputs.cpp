#include <array>

#include "numerics/turn.h"
#include "render/output_writer.h"

namespace zemora {

namespace {

/// Turns the used part of `bitmap`; false when the memory is not there.
bool turn(Bitmap& bitmap, int width, int height, int mode) {
    const bool exchanged = exchanges_sides(mode);
    Bitmap turned = Bitmap::create(exchanged ? height : width, exchanged ? width : height);
    if (!turned) {
        return false;
    }
    turn_pixels({bitmap.bits(), bitmap.pitch()}, width, height, kPixelBytes, mode,
                {turned.bits(), turned.pitch()});
    bitmap = std::move(turned);
    return true;
}

}  // namespace

void turn_outputs(WarpState& warp) {
    const auto known = [](int mode) { return mode >= 0 && mode < kTurnModes ? mode : 0; };
    const int left = known(warp.parameters.rot_mir_output_left);
    int right = known(warp.parameters.rot_mir_output_right);
    if (exchanges_sides(left) != exchanges_sides(right)) {
        right = left;  // the views keep one size
    }
    constexpr int kUpsideDown = 2;
    constexpr int kMirrored = 4;
    const auto floating_sign = [](int mode) { return mode == kUpsideDown || mode == kMirrored ? -1 : 1; };
    warp.left_turn = left;
    warp.right_turn = right;
    warp.left_is_mirrored = left == kMirrored;
    warp.right_is_mirrored = right == kMirrored;
    warp.left_floating_sign = -floating_sign(left);
    warp.right_floating_sign = floating_sign(right);
    if (left == 0 && right == 0) {
        return;
    }
    if (!turn(warp.left, warp.width, warp.height, left) ||
        !turn(warp.right, warp.width, warp.height, right)) {
        end_run_without_picture_memory(warp.voice.console(),
                                       "w1024: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE\n");
    }
    if (exchanges_sides(left)) {
        std::swap(warp.width, warp.height);
    }
}

}  // namespace zemora
