#pragma once
/// The codec file: the encoding that was chosen for a codec, kept from run to run.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zemora {

/// How a video is encoded. Rate and key distance count only for encoders that take them.
struct CodecSettings {
    std::string code;              ///< Four characters.
    int quality_percent = 95;      ///< 0 to 100.
    long bytes_per_second = 0;     ///< 0 leaves the rate to the encoder.
    int key_frame_distance = 100;  ///< Frames.
    friend bool operator==(const CodecSettings&, const CodecSettings&) = default;
};

/// "zemora_codec_XXXX.bin"; every character that is neither a letter nor a digit stands as "_".
[[nodiscard]] std::string codec_file_name(std::string_view code);

/// The file of the code in the program's folder, else in the folder that it keeps its own files in;
/// empty when it is in neither.
[[nodiscard]] std::string find_codec_file(std::string_view code, const std::string& program_folder,
                                          const std::string& own_folder);

/// The contents of a codec file in the text form.
[[nodiscard]] std::string codec_file_text(const CodecSettings& settings);

/// Reads the text form, and the binary form of another system: 56 bytes of compressor options, then a
/// format block and a parameter block, each behind its length. Nothing when it is neither.
[[nodiscard]] std::optional<CodecSettings> read_codec_file(std::span<const std::uint8_t> bytes);

}  // namespace zemora
