#pragma once
/// Pictures of a video as blue, green, red, and back: all cores of a caller's team may take bands of rows.

#include <array>
#include <cstddef>
#include <cstdint>

#include "numerics/bitmap.h"
#include "video/video_facts.h"

namespace zemora {

/// One plane in memory, its rows from the top.
struct Plane {
    const std::uint8_t* bits = nullptr;
    std::ptrdiff_t pitch = 0;  ///< Bytes.
};
struct WritablePlane {
    std::uint8_t* bits = nullptr;
    std::ptrdiff_t pitch = 0;
};

/// A decoded picture: luma and two chroma planes of 8 bits, or of 10 bits in 16.
struct YuvPicture {
    std::array<Plane, 3> planes;
    int width = 0;
    int height = 0;
    int bits = 8;            ///< A sample; 8 or 10.
    int chroma_shift_x = 1;  ///< Columns of luma a chroma sample stands for, as a power of two: 0 or 1.
    int chroma_shift_y = 1;
    bool chroma_is_centred = false;  ///< Across; else at the left of its columns. Down: always between rows.
    ColourTags colours;              ///< With matrix and range settled: not unspecified.
};

/// The matrix and range that an untagged picture of that height has: BT.709 from 720 rows on, else BT.601.
[[nodiscard]] ColourTags settled_tags(ColourTags tags, int height);

/// Fills `into`, of the same size, with the picture; chroma is interpolated between its places. Source of the
/// matrices: ITU-R BT.601-7, BT.709-6, BT.2020-2. All instruction sets give the same bytes.
void bgr_from_yuv(const YuvPicture& yuv, Picture into);

/// Limited range 4:2:0 with 8 bits, chroma at the left of its columns and between its rows, whatever `tags`
/// say of the range; a matrix that is not told is settled by the height. Sides are even.
void yuv_from_bgr(ConstPicture picture, const ColourTags& tags, std::array<WritablePlane, 3> into);

}  // namespace zemora
