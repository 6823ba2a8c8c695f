#include "input/mpo_sizes.h"

#include <cstdint>

#include "input/mpo.h"
#include "input/mpo_views.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

using Bytes = std::span<const std::uint8_t>;

// Second bytes of the markers of a JPEG file.
constexpr std::uint8_t kStartOfImage = 0xD8;
constexpr std::uint8_t kEndOfImage = 0xD9;
constexpr std::size_t kMarkerSize = 2;

bool is_marker(Bytes file, std::size_t at, std::uint8_t code) {
    return at + kMarkerSize <= file.size() && file[at] == 0xFF && file[at + 1] == code;
}

std::optional<FirstPicture> first_picture_in(Bytes file) {
    const MpoIndex index = read_mpo_index(file);
    const std::size_t start2 = index.origin + index.offset2;
    if (!index.found || !index.known_order || index.size_place == 0 ||
        mpo_index_origin(file) != index.origin || index.offset1 != 0 || start2 <= index.size_place ||
        !is_marker(file, start2, kStartOfImage) || index.size2 > file.size() - start2) {
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
