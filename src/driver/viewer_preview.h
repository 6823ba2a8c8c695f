#pragma once
/// The pair as the post viewer shows it: corrected, small enough for the screen, with the tone of the output.

#include <optional>
#include <string>

#include "driver/pipeline.h"
#include "driver/viewer_exchange.h"

namespace zemora {

struct ViewerPreview {
    PreviewSize frame;  ///< The whole frame.
    PreviewSize shown;  ///< Of the pictures: what `CroppOutput` keeps of the frame.
};

/// Warps the pair into the working pictures of the warp, without selection and shape. The part of the frame
/// that is kept goes to `result_*` of the pair's selection. Nothing when the values pass the limits.
[[nodiscard]] std::optional<ViewerPreview> make_preview(Pipeline& pipeline, PairRun& pair);

/// Names of the preview's pictures in the image folder.
inline constexpr const char* kLeftPreview = "zemora_pl.bmp";
inline constexpr const char* kRightPreview = "zemora_pr.bmp";

/// Saves the working pictures under these names; an empty text, or the reason why they are not there.
[[nodiscard]] std::string save_preview(Pipeline& pipeline);

}  // namespace zemora
