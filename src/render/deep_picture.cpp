#include "render/deep_picture.h"

#include <algorithm>
#include <cstring>

namespace zemora {

DeepPicture deep_picture(const Bitmap& bitmap) {
    return {bitmap.bits(), bitmap.pitch(), bitmap.width(), bitmap.height()};
}

void copy_deep(DeepPicture source, DeepPicture target, int x, int y) {
    const int left = std::max(0, -x);
    const int bottom = std::max(0, -y);
    const int right = std::min(source.width, target.width - x);
    const int top = std::min(source.height, target.height - y);
    for (int row = bottom; row < top && left < right; ++row) {
        std::memcpy(target.pixel(x + left, y + row), source.pixel(left, row),
                    static_cast<std::size_t>(right - left) * kDeepBytes);
    }
}

Bitmap widened(ConstPicture picture) {
    Bitmap wide = create_deep(picture.width, picture.height);
    if (!wide) {
        return wide;
    }
    const DeepPicture target = deep_picture(wide);
#pragma omp parallel for schedule(static)
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* from = picture.row(y);
        std::uint16_t* to = target.pixel(0, y);
        for (int x = 0; x < picture.width; ++x, from += kPixelBytes, to += kPixelBytes) {
            to[0] = deep_level(from[2]);
            to[1] = deep_level(from[1]);
            to[2] = deep_level(from[0]);
        }
    }
    return wide;
}

}  // namespace zemora
