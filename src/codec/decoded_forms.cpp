#include "codec/decoded_forms.h"

#include <algorithm>
#include <utility>

#include "codec/library.h"

namespace zemora {

namespace {

/// `FIT_UNKNOWN` for an empty bitmap.
FREE_IMAGE_TYPE type_of(const Bitmap& bitmap) {
    return FreeImage_GetImageType(LibraryBitmap::of(bitmap));
}

std::uint16_t* deep_row(const Bitmap& grey, int y) {
    return reinterpret_cast<std::uint16_t*>(grey.bits() + y * grey.pitch());
}

}  // namespace

Bitmap as_24_bits(Bitmap bitmap) {
    if (type_of(bitmap) == FIT_UINT16) {  // which has no direct way
        bitmap = LibraryBitmap::owner(FreeImage_ConvertTo8Bits(LibraryBitmap::of(bitmap)));
    }
    return bitmap ? LibraryBitmap::owner(FreeImage_ConvertTo24Bits(LibraryBitmap::of(bitmap))) : Bitmap();
}

Bitmap as_deep_colours(Bitmap bitmap) {
    const FREE_IMAGE_TYPE type = type_of(bitmap);
    return type == FIT_UINT16 || type == FIT_RGBA16
               ? LibraryBitmap::owner(FreeImage_ConvertToRGB16(LibraryBitmap::of(bitmap)))
               : std::move(bitmap);
}

Bitmap inks_as_24_bits(const Bitmap& inks) {
    constexpr int kInks = 4;
    constexpr int kFull = 255;
    if (type_of(inks) != FIT_BITMAP || inks.bits_per_pixel() != 8 * kInks) {
        return {};
    }
    Bitmap result = Bitmap::create(inks.width(), inks.height());
    for (int y = 0; result && y < inks.height(); ++y) {
        const std::uint8_t* from = inks.bits() + y * inks.pitch();
        std::uint8_t* to = result.picture().row(y);
        for (int x = 0; x < inks.width(); ++x, from += kInks, to += kPixelBytes) {
            for (int c = 0; c < kPixelBytes; ++c) {
                to[c] = static_cast<std::uint8_t>((kFull - from[c]) * (kFull - from[kPixelBytes]) / kFull);
            }
        }
    }
    return result;
}

Bitmap grey_of_deep_pairs(const Bitmap& pairs) {
    constexpr int kPairBytes = 4;
    const FREE_IMAGE_TYPE type = type_of(pairs);
    const bool is_colours = type == FIT_BITMAP && pairs.bits_per_pixel() == 8 * kPairBytes;
    if (!is_colours && type != FIT_UINT32) {
        return {};
    }
    const int low = is_colours ? FI_RGBA_RED : 0;
    const int high = is_colours ? FI_RGBA_GREEN : 1;
    Bitmap grey = LibraryBitmap::owner(FreeImage_AllocateT(FIT_UINT16, pairs.width(), pairs.height()));
    for (int y = 0; grey && y < pairs.height(); ++y) {
        const std::uint8_t* from = pairs.bits() + y * pairs.pitch();
        std::uint16_t* to = deep_row(grey, y);
        for (int x = 0; x < pairs.width(); ++x, from += kPairBytes) {
            to[x] = static_cast<std::uint16_t>(from[high] << 8U | from[low]);
        }
    }
    return grey;
}

void invert_deep_grey(Bitmap& bitmap) {
    if (type_of(bitmap) != FIT_UINT16) {
        return;
    }
    for (int y = 0; y < bitmap.height(); ++y) {
        std::uint16_t* row = deep_row(bitmap, y);
        std::transform(row, row + bitmap.width(), row,
                       [](std::uint16_t value) { return static_cast<std::uint16_t>(UINT16_MAX - value); });
    }
}

}  // namespace zemora
