#include "input/jpeg_metadata.h"

#include <algorithm>
#include <cstddef>

namespace zemora {

namespace {

constexpr std::uint8_t kMark = 0xFF;
constexpr std::uint8_t kStart = 0xD8;
constexpr std::uint8_t kScan = 0xDA;    // pixels follow
constexpr std::uint8_t kApp0 = 0xE0;    // JFIF, which gives the resolution
constexpr std::uint8_t kAdobe = 0xEE;   // APP14, which gives the colour space
constexpr std::uint8_t kUnread = 0xEF;  // APP15
constexpr std::uint8_t kComment = 0xFE;

bool is_metadata(std::uint8_t marker) {
    return marker == kComment || (marker > kApp0 && marker < kUnread && marker != kAdobe);
}

/// Restart marks, TEM and the start stand alone, all others have a length.
bool stands_alone(std::uint8_t marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= kStart);
}

}  // namespace

void hide_jpeg_metadata(std::span<std::uint8_t> file) {
    if (file.size() < 2 || file[0] != kMark || file[1] != kStart) {
        return;
    }
    // As the decoder does: what is no mark is passed over up to the next one. Between the scans of a
    // progressive file there may be segments too; among pixels a length cannot be trusted.
    bool among_pixels = false;
    std::size_t at = 2;
    while (at + 1 < file.size()) {
        if (file[at] != kMark) {
            at = static_cast<std::size_t>(
                std::find(file.begin() + static_cast<std::ptrdiff_t>(at), file.end(), kMark) - file.begin());
            continue;
        }
        std::uint8_t& marker = file[at + 1];
        if (marker == kMark || marker == 0) {
            ++at;
            continue;
        }
        among_pixels = among_pixels || marker == kScan;
        const bool hidden = is_metadata(marker);
        marker = hidden ? kUnread : marker;
        at += 2;
        if (!stands_alone(marker) && !(hidden && among_pixels) && at + 1 < file.size()) {
            at += static_cast<std::size_t>(file[at] << 8U | file[at + 1]);
        }
    }
}

}  // namespace zemora
