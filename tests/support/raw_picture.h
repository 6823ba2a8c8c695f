#pragma once
/// Camera raw files made to measure: a DNG picture (DNG 1.4) with unpacked values behind a Bayer filter.

#include <array>
#include <cstdint>
#include <vector>

namespace zemora::test {

/// `value_at(x, y)` of 16 bits in the rows from the top; `orientation` as in Exif.
template <class ValueAt>
std::vector<std::uint8_t> raw_picture(unsigned width, unsigned height, unsigned orientation,
                                      ValueAt value_at) {
    std::vector<std::uint8_t> file{'I', 'I', 42, 0, 8, 0, 0, 0};
    const auto put = [&file](std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i) {
            file.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    };
    struct Entry {
        std::uint32_t tag, type, count, value;
    };
    constexpr std::uint32_t kEntries = 20;
    constexpr std::uint32_t kMatrix = 8 + 2 + kEntries * 12 + 4;  // nine fractions: the identity
    constexpr std::uint32_t kNeutral = kMatrix + 9 * 8;           // three
    constexpr std::uint32_t kPixels = kNeutral + 3 * 8;
    const std::array<Entry, kEntries> entries{{{254, 4, 1, 0},
                                               {256, 4, 1, width},
                                               {257, 4, 1, height},
                                               {258, 3, 1, 16},
                                               {259, 3, 1, 1},
                                               {262, 3, 1, 32803},
                                               {271, 2, 2, 'T'},
                                               {272, 2, 2, 'T'},
                                               {273, 4, 1, kPixels},
                                               {274, 3, 1, orientation},
                                               {277, 3, 1, 1},
                                               {278, 4, 1, height},
                                               {279, 4, 1, 2 * width * height},
                                               {33421, 3, 2, 0x00020002},
                                               {33422, 1, 4, 0x02010100},  // red, green / green, blue
                                               {50706, 1, 4, 0x00000401},
                                               {50717, 3, 1, 65535},
                                               {50721, 10, 9, kMatrix},
                                               {50728, 5, 3, kNeutral},
                                               {50778, 3, 1, 21}}};
    put(kEntries, 2);
    for (const Entry& entry : entries) {
        put(entry.tag, 2);
        put(entry.type, 2);
        put(entry.count, 4);
        put(entry.value, 4);
    }
    put(0, 4);
    for (int i = 0; i < 9; ++i) {
        put(i % 4 == 0 ? 1 : 0, 4);
        put(1, 4);
    }
    for (int i = 0; i < 6; ++i) {
        put(1, 4);
    }
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            put(static_cast<std::uint32_t>(value_at(x, y)), 2);
        }
    }
    return file;
}

}  // namespace zemora::test
