#include "render/final_size.h"

#include <utility>

#include "codec/bitmap_forms.h"

namespace zemora {

namespace {

/// Empty when the memory is not there.
Bitmap rescaled(const Bitmap& bitmap, int used_width, int used_height, int width, int height) {
    if (used_width == bitmap.width() && used_height == bitmap.height()) {
        return scaled_bicubic(bitmap, width, height);
    }
    const Bitmap used = Bitmap::create(used_width, used_height);
    if (!used) {
        return {};
    }
    copy(bitmap.picture(used_width, used_height), used.picture());
    return scaled_bicubic(used, width, height);
}

}  // namespace

Result<void> rescale_to_final(WarpedPair& pair, const TargetSize& target) {
    const PictureSize size = final_size(target, {pair.width, pair.height});
    if (size == PictureSize{pair.width, pair.height}) {
        return {};
    }
    for (Bitmap* bitmap : {&pair.left, &pair.right}) {
        Bitmap result = rescaled(*bitmap, pair.width, pair.height, size.width, size.height);
        if (!result) {
            return Failure::out_of_memory(kNoMemoryForViews);
        }
        *bitmap = std::move(result);
    }
    pair.height = size.height;
    pair.width = size.width;
    return {};
}

}  // namespace zemora
