#pragma once
/// Depth masks for the frames of a sequence between those that have one.

#include <string>
#include <vector>

#include "config/notes.h"
#include "depth/motion_field.h"
#include "input/depth_gaps.h"
#include "numerics/bitmap.h"
#include "numerics/result.h"

namespace zemora {

/// Moves the mask along the field: `target` gets the mask of the frame that the field leads to. Only the
/// first byte of a pixel of `mask` counts. What nothing moves to is filled from around.
void project_depth_mask(const MotionField& field, ConstPicture mask, Picture target);

/// (1 - t) of `forward` and t of `backward`, into `target`.
void blend_depth_masks(ConstPicture forward, ConstPicture backward, double t, Picture target);

/// Makes the missing masks of a sequence beside those that are there, named by their counters, in the
/// format of the first mask. A mask that exists already is never written. Fails for the run when a frame
/// cannot be read, which is found out before the first mask is made, when a mask cannot be written, or
/// without memory.
[[nodiscard]] Result<void> fill_depth_gaps(const DepthGapPlan& plan, const std::vector<std::string>& photos,
                                           const std::vector<std::string>& masks, Notes& notes);

}  // namespace zemora
