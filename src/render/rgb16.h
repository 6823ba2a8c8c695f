#pragma once
/// The 16-bit output: repeats the whole way of the views from their source files in 16 bits per channel.

#include <span>
#include <string>

#include "input/view_geometry.h"
#include "render/output_writer.h"
#include "render/save_picture.h"
#include "render/warp_pair.h"

namespace zemora {

/// Both views in 16 bits; a view whose source is not deep is empty.
struct DeepPair {
    Bitmap left;
    Bitmap right;
    [[nodiscard]] explicit operator bool() const { return left && right; }
    [[nodiscard]] DeepViews views() const { return {left ? &left : nullptr, right ? &right : nullptr}; }
};

/// What the views are made from besides the latest warp.
struct DeepInput {
    SourceFiles sources;
    InputGeometry left;  ///< What the input did to the views of the files.
    InputGeometry right;
    const ColourChange* colours = nullptr;
};

/// Whether a product of that name is stored in 16 bits.
[[nodiscard]] bool has_deep_form(const Finished& pair, const SaveOptions& options, const std::string& file);

/// The latest warp in 16 bits: the views belong to the sources, before the outputs are turned and exchanged.
/// Fails without memory.
[[nodiscard]] Result<DeepPair> make_deep_pair(const WarpedPair& warp, const DeepInput& input);

/// The same as the finished views stand, for all products of the pair.
[[nodiscard]] Result<DeepPair> make_deep_outputs(const WarpedPair& warp, const Finished& finished,
                                                 const DeepInput& input);

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
