#include "video/encoder_settings.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace zemora {

namespace {

/// One row for each `VideoQuality`.
struct QualityRow {
    double bit_rate_factor;  ///< Of 5 bits a pixel and second; 0 leaves the rate to the encoder.
    double rate_factor;      ///< Below 0 none.
};
// clang-format off
constexpr QualityRow kQualities[] = {
    {0.4, -1.0},
    {0.7, -1.0},
    {1.0, -1.0},
    {1.5, -1.0},
    {2.0, -1.0},
    {0.0,  1.0},
    {0.0, -1.0},
};
// clang-format on
constexpr int kLargestQuality = static_cast<int>(std::size(kQualities)) - 1;

constexpr std::int64_t kBitsAPixelSecond = 5;
constexpr int kKeyFrameDistance = 12;

constexpr std::int64_t kAacBitsAChannel = 96'000;
/// The largest frame of AAC, bits a channel, and the samples in it (ISO/IEC 14496-3).
constexpr std::int64_t kAacFrameBits = 6144;
constexpr std::int64_t kAacFrameSamples = 1024;

}  // namespace

EncoderSettings h264_settings(int quality, std::string_view preset, PictureSize size) {
    const QualityRow& row = kQualities[std::clamp(quality, 0, kLargestQuality)];
    const std::int64_t base = kBitsAPixelSecond * size.width * size.height;
    EncoderSettings settings;
    settings.preset = preset;
    settings.bit_rate =
        static_cast<std::int64_t>(std::floor(row.bit_rate_factor * static_cast<double>(base) + 0.5));
    settings.rate_factor = row.rate_factor;
    settings.key_frame_distance = kKeyFrameDistance;
    return settings;
}

std::int64_t aac_bit_rate(int channels, int sample_rate) {
    const std::int64_t possible = kAacFrameBits * sample_rate / kAacFrameSamples;
    return channels * std::min(kAacBitsAChannel, possible);
}

}  // namespace zemora
