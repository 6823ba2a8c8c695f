#include "numerics/bitmap.h"

#include <FreeImage.h>

#include <cstdlib>
#include <cstring>
#include <utility>

namespace zemora {

Bitmap::Bitmap(Bitmap&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)), pixels_(std::move(other.pixels_)) {}

Bitmap& Bitmap::operator=(Bitmap&& other) noexcept {
    if (this != &other) {
        reset();
        handle_ = std::exchange(other.handle_, nullptr);
        pixels_ = std::move(other.pixels_);
    }
    return *this;
}

Bitmap::~Bitmap() {
    reset();
}

Bitmap Bitmap::create(int width, int height) {
    constexpr std::size_t kRowUnit = 4;  // bytes, as in the library's own bitmaps
    if (width <= 0 || height <= 0) {
        return {};
    }
    const std::size_t pitch =
        (static_cast<std::size_t>(width) * kPixelBytes + kRowUnit - 1) / kRowUnit * kRowUnit;
    // The library would write its zeros at once, on one thread; large pieces of fresh memory hold them
    // already.
    Pixels pixels(static_cast<std::uint8_t*>(std::calloc(static_cast<std::size_t>(height), pitch)));
    if (!pixels) {
        return {};
    }
    Bitmap bitmap(FreeImage_ConvertFromRawBitsEx(FALSE, pixels.get(), FIT_BITMAP, width, height,
                                                 static_cast<int>(pitch), 8 * kPixelBytes, FI_RGBA_RED_MASK,
                                                 FI_RGBA_GREEN_MASK, FI_RGBA_BLUE_MASK, FALSE));
    if (bitmap) {
        bitmap.pixels_ = std::move(pixels);
    }
    return bitmap;
}

Bitmap Bitmap::clone() const {
    return Bitmap(handle_ == nullptr ? nullptr : FreeImage_Clone(handle_));
}

void Bitmap::reset() {
    if (handle_ != nullptr) {
        FreeImage_Unload(std::exchange(handle_, nullptr));
    }
    pixels_.reset();
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

namespace {

/// Smaller pictures are copied in less time than it takes to wake the other threads.
constexpr std::ptrdiff_t kLargeBytes = std::ptrdiff_t{1} << 20;

void fill_row(std::uint8_t* target, int width, Colour colour) {
    for (int x = 0; x < width; ++x, target += kPixelBytes) {
        target[0] = colour.blue;
        target[1] = colour.green;
        target[2] = colour.red;
    }
}

}  // namespace

void fill(Picture picture, Colour colour) {
    if (picture.width <= 0 || picture.height <= 0) {
        return;
    }
    const bool flat = colour.blue == colour.green && colour.green == colour.red;
    const std::ptrdiff_t row_bytes = static_cast<std::ptrdiff_t>(picture.width) * kPixelBytes;
    fill_row(picture.row(0), picture.width, colour);
#pragma omp parallel for schedule(static) if (row_bytes * picture.height >= kLargeBytes)
    for (int y = 1; y < picture.height; ++y) {
        if (flat) {
            std::memset(picture.row(y), colour.blue, static_cast<std::size_t>(row_bytes));
        } else {
            std::memcpy(picture.row(y), picture.row(0), static_cast<std::size_t>(row_bytes));
        }
    }
}

void copy(ConstPicture source, Picture target) {
    const std::ptrdiff_t row_bytes = static_cast<std::ptrdiff_t>(source.width) * kPixelBytes;
#pragma omp parallel for schedule(static) if (row_bytes * source.height >= kLargeBytes)
    for (int y = 0; y < source.height; ++y) {
        std::memcpy(target.row(y), source.row(y), static_cast<std::size_t>(row_bytes));
    }
}

}  // namespace zemora
