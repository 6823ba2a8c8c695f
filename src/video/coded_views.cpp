#include "video/coded_views.h"

extern "C" {
#include <libavcodec/codec_id.h>
}

namespace zemora {

ViewsInCode::ViewsInCode(int codec, const std::uint8_t* extradata, std::size_t size) {
    coding_ =
        codec == AV_CODEC_ID_H264 ? Coding::h264 : (codec == AV_CODEC_ID_HEVC ? Coding::hevc : Coding::other);
    // The configuration records of ISO/IEC 14496-15 begin with their version, 1; start codes with 0.
    constexpr std::size_t kAvcLength = 4;
    constexpr std::size_t kHevcLength = 21;
    const std::size_t place = coding_ == Coding::hevc ? kHevcLength : kAvcLength;
    if (extradata != nullptr && size > place && extradata[0] == 1) {
        length_bytes_ = static_cast<std::size_t>(extradata[place] & 3) + 1;
    }
}

bool ViewsInCode::is_further_view(const std::uint8_t* unit, std::size_t size) const {
    if (size < 2) {
        return false;
    }
    if (coding_ == Coding::hevc) {
        const int layer = ((unit[0] & 1) << 5) | (unit[1] >> 3);
        return layer > 0;
    }
    constexpr int kSubsetParameters = 15;
    constexpr int kExtensionSlice = 20;
    const int type = unit[0] & 31;
    return type == kSubsetParameters || type == kExtensionSlice;
}

bool ViewsInCode::behind_lengths(const std::uint8_t* packet, std::size_t size) const {
    std::size_t at = 0;
    while (at + length_bytes_ < size) {
        std::size_t length = 0;
        for (std::size_t i = 0; i < length_bytes_; ++i) {
            length = length << 8 | packet[at + i];
        }
        at += length_bytes_;
        if (length > size - at) {
            return false;
        }
        if (is_further_view(packet + at, length)) {
            return true;
        }
        at += length;
    }
    return false;
}

bool ViewsInCode::behind_start_codes(const std::uint8_t* packet, std::size_t size) const {
    for (std::size_t at = 0; at + 4 < size; ++at) {
        if (packet[at] == 0 && packet[at + 1] == 0 && packet[at + 2] == 1 &&
            is_further_view(packet + at + 3, size - at - 3)) {
            return true;
        }
    }
    return false;
}

bool ViewsInCode::are_several(const std::uint8_t* packet, std::size_t size) const {
    if (coding_ == Coding::other || packet == nullptr) {
        return false;
    }
    return length_bytes_ > 0 ? behind_lengths(packet, size) : behind_start_codes(packet, size);
}

}  // namespace zemora
