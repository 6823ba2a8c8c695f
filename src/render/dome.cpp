#include "render/dome.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "codec/bitmap_forms.h"
#include "codec/encode.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kSide = 3000;  ///< Pixels.
constexpr int kDomePixelBytes = 4;
constexpr std::uint8_t kOpaque = 255;
constexpr double kOuterRadius = 0.95;  ///< The bottom of the picture, in half sides of the dome.
constexpr double kPictureHeight = 0.75;
constexpr double kPictureAngle = 1.9896753472735356;  ///< Radians; 0.95 of the third of a turn.
constexpr double kThirdOfTurn = 2.0 * std::numbers::pi / 3.0;

/// The three copies, later ones over earlier ones: the angle of a pixel as seen from the start of the copy.
double angle_in_copy(int copy, double angle) {
    switch (copy) {
        case 0: return angle;
        case 1: return angle < kThirdOfTurn ? angle + 2.0 * kThirdOfTurn : angle - kThirdOfTurn;
        default: return angle + kThirdOfTurn;
    }
}

void draw_pixel(ConstPicture canvas, double x, double y, std::uint8_t* target) {
    const double radius = std::sqrt(x * x + y * y);
    const int row = round_half_up((radius - kOuterRadius) / -kPictureHeight * (canvas.height - 1));
    if (row < 0 || row >= canvas.height) {
        return;
    }
    const double angle = std::atan2(y, x);
    for (int copy = 0; copy < 3; ++copy) {
        const int column = round_half_up(angle_in_copy(copy, angle) / kPictureAngle * (canvas.width - 1));
        if (column >= 0 && column < canvas.width) {
            std::copy_n(canvas.pixel(column, row), kPixelBytes, target);
            target[kPixelBytes] = kOpaque;
        }
    }
}

}  // namespace

Bitmap dome_picture(ConstPicture canvas) {
    Bitmap dome = create_with_alpha(kSide, kSide);
    if (!dome) {
        return dome;
    }
#pragma omp parallel for schedule(dynamic, 16)
    for (int m = 0; m < kSide; ++m) {
        std::uint8_t* target = dome.bits() + m * dome.pitch();
        const double y = (2.0 * m + 1.0) / kSide - 1.0;
        for (int n = 0; n < kSide; ++n, target += kDomePixelBytes) {
            draw_pixel(canvas, (2.0 * n + 1.0) / kSide - 1.0, y, target);
        }
    }
    return dome;
}

std::string save_dome(const Bitmap& dome, const std::string& path) {
    return encode_and_write(dome, {.format = PictureFormat::tiff, .compress = true}, path);
}

}  // namespace zemora
