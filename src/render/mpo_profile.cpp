#include "render/mpo_profile.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "input/mpo.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

using FileBytes = std::vector<std::uint8_t>;
using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kMarkerSize = 2;
constexpr std::uint8_t kFirstApplication = 0xE0;
constexpr std::uint8_t kApplication2 = 0xE2;
constexpr std::uint8_t kLastApplication = 0xEF;

/// What stands in front of the tables of a JPEG picture.
struct Head {
    FileBytes profile;    ///< Its segments, with their markers.
    std::size_t end = 0;  ///< Behind the last of the application's segments.
};

Head head_of(Bytes jpeg) {
    constexpr std::string_view kName("ICC_PROFILE\0", 12);
    Head head;
    std::size_t at = kMarkerSize;
    while (at + 2 * kMarkerSize <= jpeg.size() && jpeg[at] == 0xFF && jpeg[at + 1] >= kFirstApplication &&
           jpeg[at + 1] <= kLastApplication) {
        const std::size_t size = kMarkerSize + (std::size_t{jpeg[at + 2]} << 8U | jpeg[at + 3]);
        if (size > jpeg.size() - at) {
            break;
        }
        const Bytes segment = jpeg.subspan(at, size);
        if (segment[1] == kApplication2 && size > 2 * kMarkerSize + kName.size() &&
            std::equal(kName.begin(), kName.end(), segment.begin() + 2 * kMarkerSize)) {
            head.profile.insert(head.profile.end(), segment.begin(), segment.end());
        }
        at += size;
    }
    head.end = at;
    return head;
}

}  // namespace

std::string share_profile(const std::string& path) {
    constexpr std::size_t kSecondSize = 0x32 + 16 + 4;  // place in the index that Zemora writes
    std::string reason;
    auto file = read_file_whole(path, reason);
    if (!file) {
        return reason;
    }
    const MpoIndex index = read_mpo_index(*file);
    const std::size_t second = index.origin + index.offset2;
    const std::size_t place = index.origin + kSecondSize;
    if (!index.found || index.big_endian || index.offset2 == 0 || second + kMarkerSize > file->size() ||
        place + sizeof(std::uint32_t) > second) {
        return {};
    }
    const auto byte_of = [](std::uint32_t number, std::size_t i) {
        return static_cast<std::uint8_t>(number >> (8 * i));
    };
    for (std::size_t i = 0; i < sizeof(std::uint32_t); ++i) {
        if ((*file)[place + i] != byte_of(index.size2, i)) {
            return {};  // an index of somebody else
        }
    }
    const Head first_head = head_of(std::span(*file).first(second));
    const Head second_head = head_of(std::span(*file).subspan(second));
    if (first_head.profile.empty() || !second_head.profile.empty()) {
        return {};
    }
    file->insert(file->begin() + static_cast<std::ptrdiff_t>(second + second_head.end),
                 first_head.profile.begin(), first_head.profile.end());
    const auto size = static_cast<std::uint32_t>(index.size2 + first_head.profile.size());
    for (std::size_t i = 0; i < sizeof(size); ++i) {
        (*file)[place + i] = byte_of(size, i);
    }
    return write_file_whole(path, *file);
}

}  // namespace zemora
