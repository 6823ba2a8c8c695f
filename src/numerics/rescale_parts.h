#pragma once
/// What the filters of `rescale` share.

#include "numerics/rescale.h"

namespace zemora::rescale_parts {

/// One axis of a rescaling.
struct Axis {
    int in = 0;          ///< Samples of the source.
    int out = 0;         ///< Samples of the result.
    float scale = 1.0F;  ///< Result samples per source sample.
    /// The scale as a fraction of whole numbers, `out_span` over `in_span`: the distances between
    /// the first and the last sample, or the counts where there is only one sample.
    int in_span = 1;
    int out_span = 1;
};

/// The axis of a rescaling from `in` to `out` samples, both positive.
[[nodiscard]] Axis make_axis(int in, int out);

/// False, with nothing written, where the height would shrink to less than a 255th.
[[nodiscard]] bool bilinear(ConstPicture source, Picture target, RescaleScratch& scratch, const Axis& x,
                            const Axis& y);
void bicubic(ConstPicture source, Picture target, RescaleScratch& scratch, const Axis& x, const Axis& y);

}  // namespace zemora::rescale_parts
