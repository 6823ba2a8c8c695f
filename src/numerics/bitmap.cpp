#include "numerics/bitmap.h"

#include <FreeImage.h>

#include <cstring>
#include <utility>

namespace zemora {

Bitmap::Bitmap(Bitmap&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}

Bitmap& Bitmap::operator=(Bitmap&& other) noexcept {
    if (this != &other) {
        reset();
        handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
}

Bitmap::~Bitmap() {
    reset();
}

Bitmap Bitmap::create(int width, int height) {
    constexpr int kDepth = 8 * kPixelBytes;
    if (width <= 0 || height <= 0) {
        return {};
    }
    return Bitmap(
        FreeImage_Allocate(width, height, kDepth, FI_RGBA_RED_MASK, FI_RGBA_GREEN_MASK, FI_RGBA_BLUE_MASK));
}

Bitmap Bitmap::clone() const {
    return Bitmap(handle_ == nullptr ? nullptr : FreeImage_Clone(handle_));
}

void Bitmap::reset() {
    if (handle_ != nullptr) {
        FreeImage_Unload(std::exchange(handle_, nullptr));
    }
}

int Bitmap::width() const {
    return handle_ == nullptr ? 0 : static_cast<int>(FreeImage_GetWidth(handle_));
}

int Bitmap::height() const {
    return handle_ == nullptr ? 0 : static_cast<int>(FreeImage_GetHeight(handle_));
}

int Bitmap::bits_per_pixel() const {
    return handle_ == nullptr ? 0 : static_cast<int>(FreeImage_GetBPP(handle_));
}

std::ptrdiff_t Bitmap::pitch() const {
    return handle_ == nullptr ? 0 : static_cast<std::ptrdiff_t>(FreeImage_GetPitch(handle_));
}

std::uint8_t* Bitmap::bits() const {
    return handle_ == nullptr ? nullptr : FreeImage_GetBits(handle_);
}

void fill(Picture picture, Colour colour) {
    if (picture.width <= 0) {
        return;
    }
    const bool flat = colour.blue == colour.green && colour.green == colour.red;
    const std::size_t row_bytes = static_cast<std::size_t>(picture.width) * kPixelBytes;
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* target = picture.row(y);
        if (flat) {
            std::memset(target, colour.blue, row_bytes);
        } else if (y > 0) {
            std::memcpy(target, picture.row(0), row_bytes);
        } else {
            for (int x = 0; x < picture.width; ++x, target += kPixelBytes) {
                target[0] = colour.blue;
                target[1] = colour.green;
                target[2] = colour.red;
            }
        }
    }
}

void copy(ConstPicture source, Picture target) {
    const std::size_t row_bytes = static_cast<std::size_t>(source.width) * kPixelBytes;
    for (int y = 0; y < source.height; ++y) {
        std::memcpy(target.row(y), source.row(y), row_bytes);
    }
}

}  // namespace zemora
