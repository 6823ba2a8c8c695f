#pragma once
/// The codecs that videos are written with, by their four-character codes.

#include <string>
#include <string_view>

#include "config/messages.h"

namespace zemora {

struct VideoCodecRow {
    std::string_view code;     ///< Four characters.
    std::string_view aliases;  ///< Other names, a blank between them.
    const char* encoder;       ///< As libavcodec calls it.
    BothTexts meaning;
};

inline constexpr VideoCodecRow kVideoCodecs[] = {
#define ROW(code, aliases, encoder, english, german) {code, aliases, encoder, {english, german}},
#include "config/video_codec_table.inc"
};
inline constexpr int kVideoCodecCount = static_cast<int>(std::size(kVideoCodecs));

/// Speeds of the encoders of H.264 and H.265, the fastest first.
inline constexpr std::string_view kVideoPresets[] = {"ultrafast", "superfast", "veryfast", "faster",  "fast",
                                                     "medium",    "slow",      "slower",   "veryslow"};
[[nodiscard]] bool is_video_preset(std::string_view name);

/// The row of a code or of another name for it, in any case; null when there is none.
[[nodiscard]] const VideoCodecRow* find_video_codec(std::string_view name);

/// The code in a text of `VideoCodec`: what stands before the first bar, four characters, filled up
/// with blanks.
[[nodiscard]] std::string codec_code_of(std::string_view codec_text);

}  // namespace zemora
