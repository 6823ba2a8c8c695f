#pragma once
/// Writes bitmaps as files that are whole or not there.

#include <FreeImage.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace zemora {

/// A picture file in memory.
class EncodedPicture {
public:
    EncodedPicture(FIBITMAP* picture, FREE_IMAGE_FORMAT format, int flags);
    /// Empty when the picture cannot be encoded. Valid as long as this lives.
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return bytes_; }

private:
    struct Closer {
        void operator()(FIMEMORY* stream) const { FreeImage_CloseMemory(stream); }
    };
    std::unique_ptr<FIMEMORY, Closer> stream_;
    std::span<const std::uint8_t> bytes_;
};

/// The format that the suffix of a name stands for. The library's own call takes names apart in a place that
/// all threads share; this one may be called from any.
[[nodiscard]] FREE_IMAGE_FORMAT format_of_name(const std::string& path);

/// Encodes into memory, then writes with every byte checked: the library does not report a full disk.
/// Empty, or the reason why there is no such file.
[[nodiscard]] std::string encode_and_write(FIBITMAP* picture, FREE_IMAGE_FORMAT format, int flags,
                                           const std::string& path);

}  // namespace zemora
