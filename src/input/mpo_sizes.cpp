#include "input/mpo_sizes.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "input/mpo.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

using Bytes = std::span<const std::uint8_t>;

// Second bytes of the markers of a JPEG file.
constexpr std::uint8_t kStartOfImage = 0xD8;
constexpr std::uint8_t kEndOfImage = 0xD9;
constexpr std::uint8_t kStartOfScan = 0xDA;
constexpr std::uint8_t kApplication2 = 0xE2;
constexpr std::size_t kMarkerSize = 2;
constexpr std::array<std::uint8_t, 4> kIdentifier{'M', 'P', 'F', 0};

bool is_marker(Bytes file, std::size_t at, std::uint8_t code) {
    return at + kMarkerSize <= file.size() && file[at] == 0xFF && file[at + 1] == code;
}

/// Place of the byte order mark of the index, by the segments of the file.
std::optional<std::size_t> find_origin(Bytes file) {
    constexpr std::size_t kHead = 2 * kMarkerSize + kIdentifier.size();
    std::size_t at = is_marker(file, 0, kStartOfImage) ? kMarkerSize : file.size();
    while (at + kHead <= file.size() && file[at] == 0xFF && file[at + 1] != kStartOfScan) {
        if (is_marker(file, at, kApplication2) &&
            std::equal(kIdentifier.begin(), kIdentifier.end(),
                       file.begin() + static_cast<std::ptrdiff_t>(at + 2 * kMarkerSize))) {
            return at + kHead;
        }
        at += kMarkerSize + (std::size_t{file[at + 2]} << 8U | file[at + 3]);
    }
    return std::nullopt;
}

std::optional<FirstPicture> first_picture_in(Bytes file) {
    const MpoIndex index = read_mpo_index(file);
    const std::size_t start2 = index.origin + index.offset2;
    if (!index.found || !index.known_order || index.size_place == 0 || find_origin(file) != index.origin ||
        index.offset1 != 0 || start2 <= index.size_place || !is_marker(file, start2, kStartOfImage) ||
        index.size2 > file.size() - start2) {
        return std::nullopt;
    }
    return FirstPicture{index.size1, start2, index.size_place, index.big_endian};
}

/// As before the edit; the whole way to the second picture where that leads nowhere.
std::size_t new_size(Bytes file, const FirstPicture& now, const std::optional<FirstPicture>& before) {
    if (!before || before->size > before->next_start || before->next_start - before->size > now.next_start) {
        return now.next_start;
    }
    const std::size_t size = now.next_start - (before->next_start - before->size);
    const bool ends_there = size >= kMarkerSize && is_marker(file, size - kMarkerSize, kEndOfImage);
    return ends_there ? size : now.next_start;
}

}  // namespace

std::optional<FirstPicture> first_picture_of(const std::string& path) {
    std::string reason;
    const auto file = read_file_whole(path, reason);
    return file ? first_picture_in(*file) : std::nullopt;
}

std::string settle_first_size(const std::string& path, const std::optional<FirstPicture>& before) {
    std::string reason;
    auto file = read_file_whole(path, reason);
    if (!file) {
        return reason;
    }
    const auto now = first_picture_in(*file);
    const std::size_t size = now ? new_size(*file, *now, before) : 0;
    if (!now || now->size == size) {
        return {};
    }
    constexpr std::size_t kBytes = sizeof(std::uint32_t);
    for (std::size_t i = 0; i < kBytes; ++i) {
        const std::size_t place = now->size_place + (now->big_endian ? kBytes - 1 - i : i);
        (*file)[place] = static_cast<std::uint8_t>(size >> 8 * i);
    }
    return write_file_whole(path, *file);
}

}  // namespace zemora
