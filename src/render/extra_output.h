#pragma once
/// The stereo formats beside plain side by side: squeezed, above-below, interlaced, tiled, multi-picture.

#include <string>

#include "render/output_writer.h"
#include "render/warp_state.h"

namespace zemora {

/// Values of `ExtraOutput`; videos use the same canvases.
enum class ExtraFormat {
    none = 0,
    squeezed_side_by_side = 1,  ///< lrq
    above_below = 2,            ///< ab
    squeezed_above_below = 3,   ///< abq
    interlaced = 4,             ///< oe
    multi_picture = 5,          ///< .mpo
    left_right_left = 6,        ///< lrl
    left_right_right_left = 7,  ///< lrrl
};

/// The finished canvas of a format with one picture, with frames and texts; empty for `none` and
/// `multi_picture`, whose two pictures are those of `compose_view`. Ends the run when the memory is not
/// there.
[[nodiscard]] Bitmap compose_extra(WarpState& warp, ExtraFormat format);

/// Writes the format of `ExtraOutput`; a value without a format writes nothing and is no failure.
[[nodiscard]] StoreResult write_extra(WarpState& warp, const std::string& file, const SourceFiles& sources);

}  // namespace zemora
