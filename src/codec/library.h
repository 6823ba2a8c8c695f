#pragma once
/// The picture library as the files of this folder see it; nothing outside includes this but tests.

#include <FreeImage.h>

#include <string>

#include "codec/picture_format.h"
#include "numerics/bitmap.h"

namespace zemora {

/// The way to the bitmap of the library inside a `Bitmap`.
struct LibraryBitmap {
    /// Still owned by `bitmap`; null when that is empty.
    [[nodiscard]] static FIBITMAP* of(const Bitmap& bitmap) { return bitmap.handle_; }
    /// Takes the ownership of `handle`, which may be null.
    [[nodiscard]] static Bitmap owner(FIBITMAP* handle) { return Bitmap(handle); }
};

/// `unknown` for formats that have no row in the table.
[[nodiscard]] PictureFormat format_of_library(FREE_IMAGE_FORMAT format);

[[nodiscard]] FREE_IMAGE_FORMAT library_format(PictureFormat format);

/// The library's own call takes names apart in a place that all threads share; this one may be called from
/// any.
[[nodiscard]] FREE_IMAGE_FORMAT library_format_of_name(const std::string& path);

}  // namespace zemora
