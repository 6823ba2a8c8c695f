#pragma once
/// Opens films for reading as the program wants them opened.

#include <string>

#include "video/libav_handles.h"

namespace zemora {

/// A local file of a known kind, with what the library finds out about its streams: a playlist that has the
/// name of a film is refused, as its neighbours would be opened. Gives 0 or the library's error.
[[nodiscard]] int open_input(const std::string& path, InputFile& file);

/// Its first stream of pictures that is no cover; -1 without one.
[[nodiscard]] int first_picture_stream(const AVFormatContext& file);

/// Its first stream of sound that there is a decoder for; -1 without one.
[[nodiscard]] int first_sound_stream(const AVFormatContext& file);

/// Leaves out the packets of all other streams.
void read_only_stream(AVFormatContext& file, int stream);

}  // namespace zemora
