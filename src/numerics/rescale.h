#pragma once
/// Rescaling of 24-bit pictures with the program's own filters.

#include <cstdint>
#include <memory>

#include "numerics/bitmap.h"

namespace zemora {

/// Work area of `rescale`; survives calls, so that pictures of one size allocate once.
class RescaleScratch {
public:
    /// Room for that many samples, with anything in it; the room given before is no longer valid.
    [[nodiscard]] std::uint16_t* room(std::size_t samples);

private:
    std::unique_ptr<std::uint16_t[]> samples_;
    std::size_t size_ = 0;
};

enum class RescaleFilter { bilinear = 1, bicubic = 2 };
enum class RescaleFit {
    keep_aspect = 0,  ///< The largest size of the source's aspect inside the target.
    stretch = 1,      ///< Exactly the target's size.
};

struct PictureSize {
    int width = 0;
    int height = 0;
    friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

/// Writes `source`, rescaled, to the lower left of `target`; returns the size written. Nothing is
/// written, and a size of 0 returned, when a side of either is not positive, or when the bilinear filter
/// would reduce the height to less than a 255th. The rows are shared out to all cores; the result does not
/// depend on their number.
PictureSize rescale(ConstPicture source, Picture target, RescaleScratch& scratch, RescaleFilter filter,
                    RescaleFit fit);

/// How `rescale_rotated` turns and shears the picture round its centre.
struct RotatedRescale {
    double rotation_deg = 0.0;
    double vergence_deg = 0.0;
    double zoom = 1.0;
    Colour outside;  ///< Colour of the pixels that lie outside the source.
};

/// Resamples `source` to the size of `target` by the nearest pixel, rotated and sheared.
void rescale_rotated(ConstPicture source, Picture target, const RotatedRescale& how);

}  // namespace zemora
