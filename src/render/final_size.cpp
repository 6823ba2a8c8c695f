#include "render/final_size.h"

#include <FreeImage.h>

#include <utility>

namespace zemora {

namespace {

/// Empty when the memory is not there.
Bitmap rescaled(const Bitmap& bitmap, int used_width, int used_height, int width, int height) {
    FIBITMAP* handle = bitmap.handle();
    const bool whole = used_width == bitmap.width() && used_height == bitmap.height();
    Bitmap used;
    if (!whole) {
        used = Bitmap::create(used_width, used_height);
        if (!used) {
            return {};
        }
        copy(bitmap.picture(used_width, used_height), used.picture());
        handle = used.handle();
    }
    return Bitmap(FreeImage_Rescale(handle, width, height, FILTER_BICUBIC));
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
