#include "codec/bitmap_forms.h"

#include "codec/library.h"

namespace zemora {

namespace {

constexpr int kFourChannelBits = 32;

}  // namespace

bool is_deep(const Bitmap& bitmap) {
    return bitmap && FreeImage_GetImageType(LibraryBitmap::of(bitmap)) == FIT_RGB16;
}

Bitmap create_deep(int width, int height) {
    return width > 0 && height > 0 ? LibraryBitmap::owner(FreeImage_AllocateT(FIT_RGB16, width, height))
                                   : Bitmap();
}

Bitmap create_with_alpha(int width, int height) {
    return LibraryBitmap::owner(FreeImage_Allocate(width, height, kFourChannelBits, FI_RGBA_RED_MASK,
                                                   FI_RGBA_GREEN_MASK, FI_RGBA_BLUE_MASK));
}

Bitmap create_cmyk(int width, int height) {
    Bitmap bitmap = LibraryBitmap::owner(FreeImage_Allocate(width, height, kFourChannelBits));
    if (bitmap) {
        FreeImage_GetICCProfile(LibraryBitmap::of(bitmap))->flags |= FIICC_COLOR_IS_CMYK;
    }
    return bitmap;
}

Bitmap with_alpha(const Bitmap& picture) {
    return LibraryBitmap::owner(FreeImage_ConvertTo32Bits(LibraryBitmap::of(picture)));
}

Bitmap borrowed(ConstPicture picture) {
    return LibraryBitmap::owner(FreeImage_ConvertFromRawBitsEx(
        FALSE, const_cast<std::uint8_t*>(picture.bits), FIT_BITMAP, picture.width, picture.height,
        static_cast<int>(picture.pitch), 8 * kPixelBytes, FI_RGBA_RED_MASK, FI_RGBA_GREEN_MASK,
        FI_RGBA_BLUE_MASK, FALSE));
}

Bitmap columns_of(const Bitmap& bitmap, int first, int end) {
    return LibraryBitmap::owner(FreeImage_Copy(LibraryBitmap::of(bitmap), first, 0, end, bitmap.height()));
}

Bitmap scaled_bicubic(const Bitmap& bitmap, int width, int height) {
    return LibraryBitmap::owner(FreeImage_Rescale(LibraryBitmap::of(bitmap), width, height, FILTER_BICUBIC));
}

Bitmap scaled_b_spline(const Bitmap& bitmap, int part_width, int part_height, int width, int height) {
    const int top = bitmap.height() - part_height;  // the library counts from the top
    return LibraryBitmap::owner(FreeImage_RescaleRect(LibraryBitmap::of(bitmap), width, height, 0, top,
                                                      part_width, bitmap.height(), FILTER_BSPLINE));
}

}  // namespace zemora
