#pragma once
/// The 16-bit output: repeats the whole way of a view from its source file in 16 bits per channel.

#include <optional>
#include <string>

#include "render/framing.h"
#include "render/output_writer.h"
#include "render/warp_state.h"

namespace zemora {

/// Which part of a source file is the view.
enum class SourcePart { whole, left_half, right_half };

/// One view as it stands in the 8-bit output, with its frame in black; 48 bits. Empty when the file
/// does not hold 16 bits per channel. `plain` is the view with 8 bits, where it is known: it shows what was
/// painted over.
[[nodiscard]] Bitmap make_rgb16(const WarpState& warp, const std::string& file, View view, SourcePart part,
                                ConstPicture plain = {});

/// Both views in 16 bits. They belong to the sources, before an exchange of the outputs; a view whose
/// source is not deep is empty.
struct DeepPair {
    Bitmap left;
    Bitmap right;
    [[nodiscard]] explicit operator bool() const { return left && right; }
};
[[nodiscard]] DeepPair make_deep_pair(const WarpState& warp, const SourceFiles& sources);

/// Whether `OutputFormat` asks for 16 bits in that file.
[[nodiscard]] bool wants_deep(const WarpState& warp, const std::string& file);

/// The deep views in the order of the outputs: these have been exchanged by `InverseOutput`, the sources have
/// not.
[[nodiscard]] DeepPair make_deep_outputs(const WarpState& warp, const SourceFiles& sources);

/// Two pictures of 48 bits in one, `first` on the left.
[[nodiscard]] Bitmap join_deep(const Bitmap& first, const Bitmap& second);
/// One above the other.
[[nodiscard]] Bitmap stack_deep(const Bitmap& upper, const Bitmap& lower);

}  // namespace zemora
