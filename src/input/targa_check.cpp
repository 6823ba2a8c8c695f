#include "input/targa_check.h"

#include <cstddef>

namespace zemora {

namespace {

// Places in the header, bytes.
constexpr std::size_t kHeaderSize = 18;
constexpr std::size_t kIdentLength = 0;
constexpr std::size_t kHasPalette = 1;
constexpr std::size_t kImageType = 2;
constexpr std::size_t kPaletteLength = 5;
constexpr std::size_t kPaletteEntryBits = 7;
constexpr std::size_t kWidth = 12;
constexpr std::size_t kHeight = 14;
constexpr std::size_t kPixelBits = 16;

constexpr unsigned kRunLengthCoded = 8;  // bit of the image type
constexpr unsigned kRepeated = 0x80;     // bit of a packet's head: one pixel stands for the whole packet

std::size_t word_at(std::span<const std::uint8_t> file, std::size_t place) {
    return file[place] + std::size_t{256} * file[place + 1];
}

std::size_t bytes_of_bits(std::size_t bits) {
    return (bits + 7) / 8;
}

}  // namespace

bool targa_is_cut_off(std::span<const std::uint8_t> file) {
    if (file.size() < kHeaderSize) {
        return true;
    }
    const std::size_t palette =
        file[kHasPalette] == 0 ? 0 : word_at(file, kPaletteLength) * bytes_of_bits(file[kPaletteEntryBits]);
    const std::size_t pixel = bytes_of_bits(file[kPixelBits]);
    std::size_t place = kHeaderSize + file[kIdentLength] + palette;
    std::size_t left = word_at(file, kWidth) * word_at(file, kHeight);
    if ((file[kImageType] & kRunLengthCoded) == 0) {
        return place + left * pixel > file.size();
    }
    while (left > 0) {
        if (place >= file.size()) {
            return true;
        }
        const unsigned head = file[place++];
        const std::size_t count = (head & ~kRepeated) + 1;
        place += (head & kRepeated) != 0 ? pixel : count * pixel;
        left -= count < left ? count : left;
    }
    return place > file.size();
}

}  // namespace zemora
