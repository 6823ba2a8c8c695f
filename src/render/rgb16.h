#pragma once
/// The 16-bit output: repeats the whole way of the views from their source files in 16 bits per channel.

#include <span>
#include <string>

#include "render/output_writer.h"
#include "render/warp_state.h"

namespace zemora {

/// Both views in 16 bits. They belong to the sources, before the outputs are turned and exchanged; a view
/// whose source is not deep is empty.
struct DeepPair {
    Bitmap left;
    Bitmap right;
    [[nodiscard]] explicit operator bool() const { return left && right; }
};
[[nodiscard]] DeepPair make_deep_pair(const WarpState& warp, const SourceFiles& sources);

/// The finished views in 16 bits, as the outputs stand; null where there is none.
struct DeepViews {
    const Bitmap* left = nullptr;
    const Bitmap* right = nullptr;
    [[nodiscard]] explicit operator bool() const { return left != nullptr && right != nullptr; }
};
/// Those for a product of that name, made with the first one and kept for the others; none where
/// `OutputFormat` does not ask for 16 bits in that file.
[[nodiscard]] DeepViews find_deep_views(WarpState& warp, const SourceFiles& sources, const std::string& file);

/// A deep view and where its lower left pixel comes to stand.
struct PlacedDeepView {
    const Bitmap* view;
    int column;
    int row;
};
/// The composed picture in 48 bits, with the deep views in the places of their 8-bit forms. Empty when the
/// memory is not there.
[[nodiscard]] Bitmap deepened(const Bitmap& canvas, std::span<const PlacedDeepView> views);
/// What then ends the run.
inline constexpr const char* kNoMemoryDeep = "13668: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE (RGB16)\n";

}  // namespace zemora
