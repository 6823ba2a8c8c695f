#pragma once
/// Finds the largest upright picture inside a frame that may be tilted, coloured and noisy.

#include <optional>

#include "input/loaded_view.h"

namespace zemora {

struct CutRule {
    std::optional<Colour> frame;  ///< Colour of the frame; without it each edge has its own, measured.
    int tolerance = 0;            ///< Colour distance from which on a pixel is surely no frame.
};

/// The part of a view that lies inside its frame; rows count from the bottom.
struct KeptRegion {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const KeptRegion&, const KeptRegion&) = default;
};

/// The region inside the frame of a view; the whole view where it has none. Nothing when there is no
/// memory for the work copy.
[[nodiscard]] std::optional<KeptRegion> find_inside_of_frame(const LoadedView& view, const CutRule& rule);

}  // namespace zemora
