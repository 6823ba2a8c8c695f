#include "render/save_picture.h"

#include <gtest/gtest.h>

#include "codec/library.h"
#include "tests/support/pictures.h"
#include "tests/support/test_folder.h"

namespace zemora {
namespace {

TEST(SavePicture, EverySuffixGetsItsFormat) {
    const test::TestFolder folder;
    const Bitmap picture = test::place_picture(80, 49);
    SaveOptions options;
    options.jpeg_quality = 100;
    // The library calls the whole family of ".ppm" by its first member.
    const std::pair<const char*, FREE_IMAGE_FORMAT> rows[] = {
        {".jps", FIF_JPEG}, {".bmp", FIF_BMP}, {".png", FIF_PNG},   {".tiff", FIF_TIFF},
        {".ppm", FIF_PBM},  {".pgm", FIF_PBM}, {".webp", FIF_WEBP}, {".jp2", FIF_JP2},
        {".j2k", FIF_J2K},  {".psd", FIF_PSD}, {".jng", FIF_JNG}};
    for (const auto& [suffix, format] : rows) {
        const std::string file = folder / (std::string("a") + suffix);
        ASSERT_EQ(save_picture(picture, file, options), "") << suffix;
        EXPECT_EQ(FreeImage_GetFileType(file.c_str()), format) << suffix;
        EXPECT_TRUE(is_written_suffix(suffix));
        const Bitmap loaded = LibraryBitmap::owner(FreeImage_Load(format, file.c_str()));
        ASSERT_TRUE(loaded) << suffix;
        EXPECT_NEAR(FreeImage_GetScanLine(LibraryBitmap::of(loaded), 12)[3 * 20 + FI_RGBA_RED],
                    test::place_colour(20, 12).red, 12)
            << suffix;
    }
    EXPECT_FALSE(is_written_suffix(".gif"));
    EXPECT_NE(save_picture(picture, folder / "a.gif", options), "");
}

}  // namespace
}  // namespace zemora
