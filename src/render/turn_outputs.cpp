#include "render/turn_outputs.h"

#include <utility>

#include "numerics/turn.h"

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

/// The view behind its turning; the pixels are not there yet.
FinishedView turned_view(int mode, int floating_sign) {
    constexpr int kUpsideDown = 2;
    constexpr int kMirrored = 4;
    const bool exchanges_edges = mode == kUpsideDown || mode == kMirrored;
    return {{}, mode == kMirrored, exchanges_edges ? -floating_sign : floating_sign};
}

}  // namespace

Result<void> turn_outputs(Finished& pair, WarpedPair& warped, int left_mode, int right_mode) {
    const auto known = [](int mode) { return mode >= 0 && mode < kTurnModes ? mode : 0; };
    const int left = known(left_mode);
    int right = known(right_mode);
    if (exchanges_sides(left) != exchanges_sides(right)) {
        right = left;  // the views keep one size
    }
    pair.left_turn = left;
    pair.right_turn = right;
    pair.left = turned_view(left, -1);
    pair.right = turned_view(right, 1);
    if (left != 0 || right != 0) {
        if (!turn(warped.left, warped.width, warped.height, left) ||
            !turn(warped.right, warped.width, warped.height, right)) {
            return Failure::out_of_memory(kNoMemoryForViews);
        }
        if (exchanges_sides(left)) {
            std::swap(warped.width, warped.height);
        }
    }
    pair.left.picture = warped.pair().left;
    pair.right.picture = warped.pair().right;
    return {};
}

void exchange_outputs(Finished& pair) {
    std::swap(pair.left, pair.right);
    pair.is_exchanged = !pair.is_exchanged;
}

}  // namespace zemora
