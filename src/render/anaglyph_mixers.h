#pragma once
/// The makers that the table of anaglyph mixes names.

#include "render/anaglyph_mix.h"

namespace zemora {

using MixerPointer = std::unique_ptr<AnaglyphMixer>;

[[nodiscard]] MixerPointer make_mixed_greys(const AnaglyphSettings& settings);
[[nodiscard]] MixerPointer make_mixed_colours(const AnaglyphSettings& settings);
[[nodiscard]] MixerPointer make_full_colours(const AnaglyphSettings& settings);
[[nodiscard]] MixerPointer make_half_colours(const AnaglyphSettings& settings);
[[nodiscard]] MixerPointer make_optimised(const AnaglyphSettings& settings);
[[nodiscard]] MixerPointer make_least_squares(const AnaglyphSettings& settings);
[[nodiscard]] MixerPointer make_by_monitor(const AnaglyphSettings& settings);
[[nodiscard]] MixerPointer make_by_print(const AnaglyphSettings& settings);
[[nodiscard]] MixerPointer make_by_colour_file(const AnaglyphSettings& settings);

}  // namespace zemora
