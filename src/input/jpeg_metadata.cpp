#include "input/jpeg_metadata.h"

#include <cstddef>

namespace zemora {

namespace {

constexpr std::uint8_t kMark = 0xFF;
constexpr std::uint8_t kStart = 0xD8;
constexpr std::uint8_t kScan = 0xDA;    // the pixels follow
constexpr std::uint8_t kApp0 = 0xE0;    // JFIF, which tells the resolution
constexpr std::uint8_t kAdobe = 0xEE;   // APP14, which tells the colour space
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
    // As the decoder does: what is no mark is passed over up to the next one.
    std::size_t at = 2;
    while (at + 1 < file.size()) {
        std::uint8_t& marker = file[at + 1];
        if (file[at] != kMark || marker == kMark || marker == 0) {
            ++at;
            continue;
        }
        if (marker == kScan) {
            return;
        }
        if (is_metadata(marker)) {
            marker = kUnread;
        }
        at += 2;
        if (!stands_alone(marker) && at + 1 < file.size()) {
            at += static_cast<std::size_t>(file[at] << 8U | file[at + 1]);
        }
    }
}

}  // namespace zemora
