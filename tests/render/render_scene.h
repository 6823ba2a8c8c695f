#pragma once
/// Small asymmetric pictures and a ready-made rendering state for the tests of this folder.

#include <memory>
#include <random>
#include <string>

#include "config/voice.h"
#include "render/warp.h"

namespace zemora::testing {

/// Smooth, asymmetric, without a pixel of black.
inline Bitmap textured(int width, int height, unsigned seed = 1) {
    Bitmap bitmap = Bitmap::create(width, height);
    const Picture picture = bitmap.picture();
    std::mt19937 random(seed);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t* pixel = picture.pixel(x, y);
            pixel[0] = static_cast<std::uint8_t>(40 + (x * 5 + y * 3) % 180);
            pixel[1] = static_cast<std::uint8_t>(60 + (x * x / 7 + y * 2) % 150);
            pixel[2] = static_cast<std::uint8_t>(20 + random() % 200);
        }
    }
    return bitmap;
}

/// Full range of bytes, with black and white pixels.
inline Bitmap noisy(int width, int height, unsigned seed) {
    Bitmap bitmap = Bitmap::create(width, height);
    std::mt19937 random(seed);
    for (int y = 0; y < height; ++y) {
        for (int i = 0; i < width * kPixelBytes; ++i) {
            const unsigned draw = random();
            bitmap.picture().row(y)[i] = static_cast<std::uint8_t>(
                (draw & 0x300U) == 0 ? ((draw & 0x400U) == 0 ? 0 : 255) : draw & 255U);
        }
    }
    return bitmap;
}

inline Colour colour_at(ConstPicture picture, int x, int y) {
    const std::uint8_t* pixel = picture.pixel(x, y);
    return {pixel[0], pixel[1], pixel[2]};
}

/// Number of pixels that differ between two pictures of equal size.
inline int count_differences(ConstPicture a, ConstPicture b) {
    int different = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            different += colour_at(a, x, y) == colour_at(b, x, y) ? 0 : 1;
        }
    }
    return different;
}

/// A state with its surroundings, quiet and never waiting.
struct Rig {
    explicit Rig(const ParameterSet& set = {}) : parameters(set) {
        parameters.stop_at_error = -1;
        parameters.verbose_mode = 0;
        warp = std::make_unique<WarpState>(parameters, left_record, right_record, voice);
    }

    /// A request without correction at the size of the source.
    WarpRequest request(const Bitmap& left, const Bitmap& right) const {
        WarpRequest wanted;
        wanted.source = {left.picture(), right.picture()};
        wanted.frame_height = left.height();
        wanted.frame_width = left.width();
        wanted.crop = 0;
        return wanted;
    }

    WarpStatus run(const WarpRequest& wanted) { return warp_still(*warp, wanted, selection); }

    ParameterSet parameters;
    ViewGeometry left_record;
    ViewGeometry right_record;
    Console console;
    MessageCatalogue messages{Language::english};
    Voice voice{console, messages, parameters};
    SelectionBox selection;
    std::unique_ptr<WarpState> warp;
};

}  // namespace zemora::testing
