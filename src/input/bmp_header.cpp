#include "input/bmp_header.h"

#include <cstddef>

namespace zemora {

namespace {

constexpr std::size_t kFileHeader = 14;  // bytes
constexpr std::size_t kShortHeader = 40;
constexpr std::size_t kLeastLongHeader = 52;
constexpr std::size_t kGreatestLongHeader = 124;
constexpr std::size_t kMasks = 12;  // of red, green and blue; in the long headers at byte 40

// Places in the file.
constexpr std::size_t kPixelsPlace = 10;
constexpr std::size_t kHeaderSizePlace = 14;
constexpr std::size_t kCompressionPlace = 30;
constexpr std::uint32_t kBitFields = 3;  // compression: pixels by masks

std::uint32_t number_at(std::span<const std::uint8_t> file, std::size_t place) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;) {
        value = value << 8U | file[place + i];
    }
    return value;
}

void put_number(std::vector<std::uint8_t>& file, std::size_t place, std::size_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        file[place + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

}  // namespace

std::optional<std::vector<std::uint8_t>> with_short_bmp_header(std::span<const std::uint8_t> file) {
    if (file.size() < kFileHeader + kLeastLongHeader || file[0] != 'B' || file[1] != 'M') {
        return std::nullopt;
    }
    const std::size_t size = number_at(file, kHeaderSizePlace);
    const std::size_t pixels = number_at(file, kPixelsPlace);
    if (size < kLeastLongHeader || size > kGreatestLongHeader || size == 64 /* OS/2 */ ||
        file.size() < kFileHeader + size || pixels < kFileHeader + size) {
        return std::nullopt;
    }
    const std::size_t kept = kShortHeader + (number_at(file, kCompressionPlace) == kBitFields ? kMasks : 0);
    const auto at = [&](std::size_t place) { return file.begin() + static_cast<std::ptrdiff_t>(place); };
    std::vector<std::uint8_t> changed(at(0), at(kFileHeader + kept));
    changed.insert(changed.end(), at(kFileHeader + size), file.end());
    put_number(changed, kHeaderSizePlace, kShortHeader);
    put_number(changed, kPixelsPlace, pixels - size + kept);
    return changed;
}

}  // namespace zemora
