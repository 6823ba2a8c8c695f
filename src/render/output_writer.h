#pragma once
/// Left-right and side-by-side output of the finished pair.

#include <string>

#include "render/warp_state.h"

namespace zemora {

/// Result of a store: what could not be written, in words for the user; empty when all is well.
struct StoreResult {
    int code = 0;        ///< 0 done, else the error code that the driver shows.
    std::string reason;  ///< A line for each file that failed.
};

/// The result of storing `file`, with the reason of a failure or an empty one.
[[nodiscard]] StoreResult result_of(const std::string& file, const std::string& reason);

/// The source files, for the 16-bit output.
struct SourceFiles {
    std::string left;  ///< The stereo file for stereo input.
    std::string right;
    /// The views as they were loaded, with 8 bits: what has the passepartout colour in them is no picture.
    StereoPicture views{};
    bool halves_exchanged = false;  ///< The left view is the right half of the stereo file.
};

/// Turns or mirrors the working pair by `RotMirOutputLeft` and `RotMirOutputRight`.
void turn_outputs(WarpState& warp);

/// Each file is written beside its final name and renamed when it is whole.
[[nodiscard]] StoreResult write_left_right(WarpState& warp, const std::string& left_file,
                                           const std::string& right_file, const SourceFiles& sources);
[[nodiscard]] StoreResult write_stereo(WarpState& warp, const std::string& file, const SourceFiles& sources);

}  // namespace zemora
