#include "input/mpo_views.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "input/tiff_directory.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t kMark = 0xFF;
constexpr std::uint8_t kApplication2 = 0xE2;
constexpr std::uint8_t kStartOfScan = 0xDA;
constexpr std::size_t kMarkerSize = 2;

bool stands_at(Bytes content, std::size_t place, std::string_view text) {
    return place <= content.size() && text.size() <= content.size() - place &&
           std::equal(text.begin(), text.end(), content.begin() + static_cast<std::ptrdiff_t>(place),
                      [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

bool begins_as_jpeg(Bytes content, std::size_t place) {
    return stands_at(content, place, "\xFF\xD8");
}

}  // namespace

std::optional<std::size_t> mpo_index_origin(Bytes content) {
    constexpr std::string_view kName("MPF\0", 4);
    const std::size_t head = 2 * kMarkerSize + kName.size();
    std::size_t at = begins_as_jpeg(content, 0) ? kMarkerSize : content.size();
    while (at + head < content.size() && content[at] == kMark && content[at + 1] != kStartOfScan) {
        if (content[at + 1] == kApplication2 && stands_at(content, at + 2 * kMarkerSize, kName)) {
            return at + head;
        }
        at += kMarkerSize + (std::size_t{content[at + 2]} << 8U | content[at + 3]);
    }
    return std::nullopt;
}

bool holds_two_views(Bytes content) {
    constexpr std::uint64_t kEntriesTag = 0xB002;
    constexpr std::uint64_t kEntrySize = 16;  // type, size, offset, two numbers of other pictures
    constexpr std::uint64_t kTypeBits = 0xFFFFFF;
    constexpr std::uint64_t kView = 0x020002;  // one of several for stereo
    const auto origin = mpo_index_origin(content);
    if (!origin) {
        return false;
    }
    std::uint64_t entries = 0;
    for_each_tiff_entry(content.subspan(*origin),
                        [&entries](const TiffNumbers&, const TiffEntryPlace& entry) {
                            entries = entry.tag == kEntriesTag ? entry.value : entries;
                        });
    const TiffNumbers numbers{content.subspan(*origin), content[*origin] == 'M'};
    const auto is_view = [&](std::uint64_t entry) { return (numbers.number(entry, 4) & kTypeBits) == kView; };
    const std::uint64_t second = entries + kEntrySize;
    return entries != 0 && numbers.holds(second, kEntrySize) && is_view(entries) && is_view(second) &&
           begins_as_jpeg(content, *origin + numbers.number(second + 8, 4));
}

bool holds_two_views(const std::string& path) {
    std::string reason;
    const auto content = read_file_whole(path, reason);
    return content && holds_two_views(*content);
}

}  // namespace zemora
