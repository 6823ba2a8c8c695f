#pragma once
/// Decodes picture files in memory. May be called from any thread, and from several at the same time.

#include <cstdint>
#include <span>
#include <string>

#include "codec/picture_format.h"
#include "numerics/bitmap.h"
#include "numerics/rescale.h"

namespace zemora {

/// The format of a file, from its content, else from the suffix of its name.
[[nodiscard]] PictureFormat format_of_file(std::span<const std::uint8_t> content, const std::string& path);

/// The size that the header tells; empty (no width or height) where it is damaged or the format has none that
/// can be read without the pixels.
[[nodiscard]] PictureSize size_in_header(std::span<const std::uint8_t> content, PictureFormat format);

/// The text of that EXIF tag; empty when there is none.
[[nodiscard]] std::string exif_text(std::span<const std::uint8_t> content, PictureFormat format,
                                    const char* tag_name);

struct DecodedPicture {
    Bitmap bitmap;         ///< In the form that the library leaves it in; empty when there are no pixels.
    std::string messages;  ///< What the library said meanwhile, each with a line end.
    /// Whether more was to be read than there was: some readers take a cut-off file for a whole one.
    bool ran_out = false;
};
[[nodiscard]] DecodedPicture decode(std::span<const std::uint8_t> content, PictureFormat format);

}  // namespace zemora
