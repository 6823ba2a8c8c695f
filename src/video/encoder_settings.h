#pragma once
/// How the encoders of written videos are set: plain values out of tables, without the library.

#include <cstdint>
#include <string>
#include <string_view>

#include "numerics/rescale.h"

namespace zemora {

struct EncoderSettings {
    std::string encoder = "libx264";  ///< As the library names it.
    std::string preset;               ///< Empty where the encoder has none.
    std::string pixel_format = "yuv420p";
    std::int64_t bit_rate = 0;   ///< Bits a second; 0 leaves it to the encoder.
    double rate_factor = -1.0;   ///< Constant rate factor; below 0 none.
    int key_frame_distance = 0;  ///< Frames.
    int frame_packing = -1;      ///< `frame_packing_of`; below 0 none.
};

/// What a `VideoQuality` of 0 to 6 means for H.264 at that size.
[[nodiscard]] EncoderSettings h264_settings(int quality, std::string_view preset, PictureSize size);

/// Bits a second of the sound, `channels` together.
[[nodiscard]] std::int64_t aac_bit_rate(int channels, int sample_rate);

}  // namespace zemora
