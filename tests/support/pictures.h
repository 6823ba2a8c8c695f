#pragma once
/// Small pictures in every form that files come in, for the tests of loading and storing.

#include <cstdint>
#include <string>
#include <vector>

#include "codec/library.h"
#include "numerics/bitmap.h"

namespace zemora::test {

/// Bytes in the library's format `format`.
inline std::vector<std::uint8_t> encoded(const Bitmap& bitmap, FREE_IMAGE_FORMAT format, int flags = 0) {
    FIMEMORY* memory = FreeImage_OpenMemory();
    FreeImage_SaveToMemory(format, LibraryBitmap::of(bitmap), memory, flags);
    BYTE* data = nullptr;
    DWORD size = 0;
    FreeImage_AcquireMemory(memory, &data, &size);
    std::vector<std::uint8_t> bytes(data, data + size);
    FreeImage_CloseMemory(memory);
    return bytes;
}

/// A colour that tells its place: no two places of a small picture are alike, turned or mirrored.
inline Colour place_colour(int x, int y) {
    return {static_cast<std::uint8_t>(5 + 3 * x), static_cast<std::uint8_t>(7 + 5 * y),
            static_cast<std::uint8_t>(40 + x + 2 * y)};
}

inline Bitmap place_picture(int width, int height) {
    Bitmap bitmap = Bitmap::create(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Colour c = place_colour(x, y);
            std::uint8_t* pixel = bitmap.picture().pixel(x, y);
            pixel[0] = c.blue;
            pixel[1] = c.green;
            pixel[2] = c.red;
        }
    }
    return bitmap;
}

inline Colour colour_at(ConstPicture picture, int x, int y) {
    const std::uint8_t* pixel = picture.pixel(x, y);
    return {pixel[0], pixel[1], pixel[2]};
}

}  // namespace zemora::test
