#pragma once
/// Whether a JPEG file is whole; the image library reports only the first thing that it finds wrong.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace zemora {

/// What the markers of a JPEG file show (ITU-T T.81, annex B). Bytes behind the end marker belong to
/// something else: to the next picture of a multi-picture file, or to padding.
struct JpegShape {
    bool has_scan = false;           ///< Pixels begin somewhere.
    std::optional<std::size_t> end;  ///< Place of the end marker; nothing in a cut-off file.
};

/// Walks over the markers of a file as the decoder does. The file begins with a start marker.
[[nodiscard]] JpegShape jpeg_shape(std::span<const std::uint8_t> file);

/// Mends in place what the decoder warns of before the first pixel and reads nevertheless: bytes between the
/// segments, other revisions of JFIF, unknown colour transforms, odd parameters of a sequential scan. The
/// pixels stay what they were, and the first warning is about them. Files of other kinds stay as they are.
void mend_jpeg_header(std::span<std::uint8_t> file);

/// Whether `count` bytes that the decoder left over before the end marker are padding of a camera: all zeros
/// that are there. Where a damaged picture ends in zeros, the decoder has taken many of them for pixels.
[[nodiscard]] bool is_jpeg_padding(std::span<const std::uint8_t> file, std::size_t count);

}  // namespace zemora
