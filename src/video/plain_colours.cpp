#include "video/plain_colours.h"

#include <algorithm>
#include <cmath>

namespace zemora {

namespace {

struct LumaShares {
    double red;
    double blue;
};

LumaShares shares_of(int matrix) {
    switch (matrix) {
        case 1: return {0.2126, 0.0722};
        case 9: return {0.2627, 0.0593};
        default: return {0.299, 0.114};
    }
}

std::uint8_t rounded(double value) {
    return static_cast<std::uint8_t>(std::clamp(std::floor(value + 0.5), 0.0, 255.0));
}

}  // namespace

ColourTags plain_settled_tags(ColourTags tags, int height) {
    constexpr int kUnspecified = 2;
    const int usual = height >= 720 ? 1 : 6;
    tags.matrix = tags.matrix == kUnspecified || tags.matrix == 0 ? usual : tags.matrix;
    tags.primaries = tags.primaries == kUnspecified ? usual : tags.primaries;
    tags.transfer = tags.transfer == kUnspecified ? usual : tags.transfer;
    return tags;
}

void plain_yuv_from_bgr(ConstPicture picture, const ColourTags& tags, std::array<WritablePlane, 3> into) {
    const LumaShares shares = shares_of(tags.matrix);
    const auto luma = [&](const std::uint8_t* p) {
        return shares.blue * p[0] + (1.0 - shares.red - shares.blue) * p[1] + shares.red * p[2];
    };
#pragma omp parallel for schedule(static)
    for (int row = 0; row < picture.height / 2; ++row) {
        for (int y = 2 * row; y < 2 * row + 2; ++y) {
            const std::uint8_t* p = picture.row(picture.height - 1 - y);
            for (int x = 0; x < picture.width; ++x, p += kPixelBytes) {
                into[0].bits[y * into[0].pitch + x] = rounded(16.0 + luma(p) * 219.0 / 255.0);
            }
        }
        for (int x = 0; x < picture.width; x += 2) {
            double blue = 0.0;
            double red = 0.0;
            for (int dy = 0; dy < 2; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    const auto* p = picture.pixel(std::max(x + dx, 0), picture.height - 1 - 2 * row - dy);
                    const double weight = (dx == 0 ? 2.0 : 1.0) / 8.0;
                    blue += weight * (p[0] - luma(p));
                    red += weight * (p[2] - luma(p));
                }
            }
            into[1].bits[row * into[1].pitch + x / 2] =
                rounded(128.0 + blue / (2.0 * (1.0 - shares.blue)) * 224.0 / 255.0);
            into[2].bits[row * into[2].pitch + x / 2] =
                rounded(128.0 + red / (2.0 * (1.0 - shares.red)) * 224.0 / 255.0);
        }
    }
}

}  // namespace zemora
