#pragma once
/// Encodes bitmaps, in memory or as files that are whole or not there. May be called from any thread.

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "codec/picture_format.h"
#include "numerics/bitmap.h"

namespace zemora {

/// How much of the colours a JPEG file keeps, against its brightness.
enum class Chroma {
    quarter,  ///< One colour for two by two pixels (4:2:0).
    half,     ///< One for two neighbours in a row (4:2:2).
    full,     ///< One for each pixel (4:4:4).
};

/// What a format has no use for is left aside.
struct EncodeOptions {
    PictureFormat format = PictureFormat::unknown;
    /// Packs a TIFF file by LZW with differences, a PNG file by deflate, a BMP and a PSD file by run lengths.
    bool compress = false;
    /// 1 to 100, or 0 for the usual one of the format. Of JPEG, WebP and JNG; a file of JPEG 2000 has one
    /// byte for 101 - quality bytes of the picture.
    int quality = 0;
    Chroma chroma = Chroma::quarter;
    unsigned dots_per_metre_x = 0;  ///< Written into the bitmap too; 0 leaves what that has.
    unsigned dots_per_metre_y = 0;
};

/// A picture file in memory.
class EncodedPicture {
public:
    EncodedPicture(const Bitmap& picture, const EncodeOptions& options);
    /// Empty when the picture cannot be encoded. Valid as long as this lives.
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return bytes_; }

private:
    struct Closer {
        void operator()(void* stream) const;
    };
    std::unique_ptr<void, Closer> stream_;
    std::span<const std::uint8_t> bytes_;
};

/// Encodes into memory, then writes with every byte checked: the library does not report a full disk.
/// Empty, or the reason why there is no such file.
[[nodiscard]] std::string encode_and_write(const Bitmap& picture, const EncodeOptions& options,
                                           const std::string& path);

}  // namespace zemora
