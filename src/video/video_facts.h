#pragma once
/// What is known of a video before its first frame is read: plain values, without the library.

#include <cstdint>
#include <string>

#include "numerics/rational.h"
#include "numerics/rescale.h"

namespace zemora {

/// Code points of ITU-T H.273; 2 is "unspecified".
struct ColourTags {
    int primaries = 2;
    int transfer = 2;
    int matrix = 2;
    bool full_range = false;
    friend bool operator==(const ColourTags&, const ColourTags&) = default;
};

/// How a picture says that it holds two views.
enum class StereoPacking { none, side_by_side, above_below, rows, columns, chequers, frames };

struct StereoFlag {
    StereoPacking packing = StereoPacking::none;
    bool right_first = false;  ///< The right view stands at the left, above, or comes first.
};

enum class FieldOrder { progressive, unknown, top_first, bottom_first };

struct VideoFacts {
    PictureSize size;         ///< Of a picture with square pixels, before `rot_mir`.
    PictureSize coded_size;   ///< As it is stored.
    int rot_mir = 0;          ///< The turn that the file asks for, 0 to 7 as `RotMirInput`.
    Rational rate;            ///< Frames a second; positive.
    int frames = 0;           ///< Pictures that `VideoFile` gives.
    int promised_frames = 0;  ///< As the container claims; 0 where it says nothing.
    int repeated_frames = 0;  ///< Of a varying rate brought to an even grid.
    int dropped_frames = 0;
    std::string codec;                ///< Its name, such as "h264".
    std::string codec_tag;            ///< Four printable characters, blanks for what is none.
    std::int64_t bytes_a_second = 0;  ///< Mean; 0 where it is unknown.
    ColourTags colours;               ///< As tagged.
    bool is_high_dynamic_range = false;
    FieldOrder fields = FieldOrder::unknown;
    StereoFlag stereo;
    bool has_second_stream = false;  ///< Another one of the same size.
    bool has_sound = false;
};

}  // namespace zemora
