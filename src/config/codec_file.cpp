#include "config/codec_file.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>

#include "config/messages.h"
#include "config/number_scan.h"
#include "config/text_lines.h"
#include "platform/paths.h"

namespace zemora {

namespace {

constexpr std::string_view kHeading = "Zemora codec settings";
constexpr int kHundredths = 100;     // the binary form counts quality in 1/100 percent
constexpr int kFullQuality = 10000;  // 1/100 percent
constexpr int kBitsPerByte = 8;
constexpr std::size_t kCodeLength = 4;  // characters

/// Offsets in the compressor options, whose pointers have eight bytes.
constexpr std::size_t kCodeAt = 4;
constexpr std::size_t kKeyFramesAt = 8;
constexpr std::size_t kQualityAt = 12;
constexpr std::size_t kRateAt = 16;
constexpr std::size_t kOptionsSize = 56;

/// Four bytes, the lowest first.
std::uint32_t word_at(std::span<const std::uint8_t> bytes, std::size_t at) {
    return bytes[at] | bytes[at + 1] << 8U | bytes[at + 2] << 16U |
           static_cast<std::uint32_t>(bytes[at + 3]) << 24U;
}

/// The block behind its length at `at`, which moves behind the block; nothing when the file ends in it.
std::optional<std::string> take_block(std::span<const std::uint8_t> bytes, std::size_t& at) {
    if (bytes.size() - at < sizeof(std::uint32_t)) {
        return std::nullopt;
    }
    const std::size_t size = word_at(bytes, at);
    at += sizeof(std::uint32_t);
    if (bytes.size() - at < size) {
        return std::nullopt;
    }
    const auto block = bytes.subspan(at, size);
    at += size;
    return std::string(block.begin(), block.end());
}

/// The number behind a word of a codec's state text.
std::optional<int> number_behind(std::string_view state, std::string_view word) {
    const std::size_t at = state.find(word);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view rest = state.substr(at + word.size());
    return scan_integer(rest.substr(std::min(rest.find_first_not_of(" =:\""), rest.size())));
}

/// This codec keeps its real values in its state: key distance in 1/1000 s at 25 frames per second,
/// bits per second, percent.
void read_state(std::string_view state, CodecSettings& settings) {
    constexpr double kFramesPerMillisecond = 25.0 / 1000.0;
    if (lower_case(settings.code) != "wmv3") {
        return;
    }
    if (const auto distance = number_behind(state, "-v_keydist")) {
        settings.key_frame_distance = static_cast<int>(std::max(*distance, 0) * kFramesPerMillisecond);
    }
    if (const auto bits = number_behind(state, "-v_bitrate")) {
        settings.bytes_per_second = std::max(*bits, 0) / kBitsPerByte;
    }
    if (const auto quality = number_behind(state, "-v_quality")) {
        settings.quality_percent = std::clamp(*quality, 0, kFullQuality / kHundredths);
    }
}

int as_int(std::uint32_t value) {
    return static_cast<int>(std::min<std::uint32_t>(value, std::numeric_limits<int>::max()));
}

std::optional<CodecSettings> read_binary(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kOptionsSize) {
        return std::nullopt;
    }
    CodecSettings settings;
    const auto code = bytes.subspan(kCodeAt, kCodeLength);
    settings.code.assign(code.begin(), code.end());
    settings.key_frame_distance = as_int(word_at(bytes, kKeyFramesAt));
    settings.bytes_per_second = as_int(word_at(bytes, kRateAt));
    const std::uint32_t quality = word_at(bytes, kQualityAt);
    if (quality <= kFullQuality) {  // beyond it stands "as the codec likes"
        settings.quality_percent = static_cast<int>(quality) / kHundredths;
    }
    std::size_t at = kOptionsSize;
    const auto format = take_block(bytes, at);
    const auto state = format ? take_block(bytes, at) : std::nullopt;
    if (!state) {
        return std::nullopt;
    }
    read_state(*state, settings);
    return settings;
}

/// The keys of the text form.
struct CodecFileKey {
    std::string_view key;
    void (*set)(CodecSettings& settings, std::string_view value);
};
constexpr std::array kKeys{
    CodecFileKey{"code",
                 [](CodecSettings& s, std::string_view value) {
                     s.code = value;
                     s.code.resize(kCodeLength, ' ');
                 }},
    CodecFileKey{"quality",
                 [](CodecSettings& s, std::string_view value) {
                     s.quality_percent = std::clamp(scan_integer(value).value_or(s.quality_percent), 0, 100);
                 }},
    CodecFileKey{"rate",
                 [](CodecSettings& s, std::string_view value) {
                     s.bytes_per_second = std::max(scan_integer(value).value_or(0), 0);
                 }},
    CodecFileKey{"keys",
                 [](CodecSettings& s, std::string_view value) {
                     s.key_frame_distance = std::max(scan_integer(value).value_or(s.key_frame_distance), 0);
                 }},
};

std::optional<CodecSettings> read_text(std::span<const TextLine> lines) {
    CodecSettings settings;
    for (const TextLine& line : lines) {
        const std::size_t equals = std::min(line.text.find('='), line.text.size());
        const std::string_view key = trimmed(std::string_view(line.text).substr(0, equals));
        for (const CodecFileKey& row : kKeys) {
            if (row.key == key && equals < line.text.size()) {
                row.set(settings, trimmed(std::string_view(line.text).substr(equals + 1)));
            }
        }
    }
    return settings.code.empty() ? std::nullopt : std::optional(settings);
}

}  // namespace

std::string codec_file_name(std::string_view code) {
    std::string name = "zemora_codec_";
    for (const char c : code) {
        const bool plain = static_cast<unsigned char>(c) < 0x80 && std::isalnum(c) != 0;
        name += plain ? c : '_';
    }
    return name + ".bin";
}

std::string find_codec_file(std::string_view code, const std::string& program_folder,
                            const std::string& own_folder) {
    for (const std::string& folder : {program_folder, own_folder}) {
        if (std::string path = join_path(folder, codec_file_name(code)); file_exists(path)) {
            return path;
        }
    }
    return {};
}

std::string codec_file_text(const CodecSettings& settings) {
    return format_text("%s\ncode = %s\nquality = %d\nrate = %ld\nkeys = %d\n", kHeading.data(),
                       settings.code.c_str(), settings.quality_percent, settings.bytes_per_second,
                       settings.key_frame_distance);
}

std::optional<CodecSettings> read_codec_file(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kLongestText = 4096;  // bytes
    if (bytes.size() <= kLongestText) {
        const auto lines = text_lines(bytes);
        if (!lines.empty() && trimmed(lines[0].text) == kHeading) {
            return read_text(lines);
        }
    }
    return read_binary(bytes);
}

}  // namespace zemora
