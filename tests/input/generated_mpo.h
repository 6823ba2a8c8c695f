#pragma once
/// Multi-picture files made to measure, regular and not.

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/pictures.h"

namespace zemora::test {

using FileBytes = std::vector<std::uint8_t>;

/// Numbers in either byte order behind each other.
class NumberWriter {
public:
    NumberWriter(FileBytes& bytes, bool big_endian) : bytes_(bytes), big_endian_(big_endian) {}
    void u16(std::uint32_t value) { put(value, 2); }
    void u32(std::uint32_t value) { put(value, 4); }
    void entry(std::uint32_t tag, std::uint32_t type, std::uint32_t count, std::uint32_t value) {
        u16(tag);
        u16(type);
        u32(count);
        u32(value);
    }

private:
    void put(std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i) {
            const int shift = 8 * (big_endian_ ? count - 1 - i : i);
            bytes_.push_back(static_cast<std::uint8_t>(value >> shift));
        }
    }
    FileBytes& bytes_;
    bool big_endian_;
};

/// A JPEG that starts with an Exif segment, as cameras write it; `extra` stands behind that segment.
inline FileBytes exif_jpeg(const Bitmap& picture, const FileBytes& extra = {}) {
    static constexpr std::uint8_t kExif[] = {0xFF, 0xE1, 0, 22, 'E', 'x', 'i', 'f', 0, 0, 'I', 'I',
                                             '*',  0,    8, 0,  0,   0,   0,   0,   0, 0, 0,   0};
    FileBytes jpeg = encoded(picture, FIF_JPEG, 95 | JPEG_SUBSAMPLING_444);
    FileBytes segments(std::begin(kExif), std::end(kExif));
    std::copy(extra.begin(), extra.end(), std::back_inserter(segments));
    jpeg.insert(jpeg.begin() + 2, segments.begin(), segments.end());
    return jpeg;
}

struct MpoPlan {
    bool big_endian = false;
    int pictures = 2;
    std::uint32_t padding = 0;          ///< Zeros before the second picture; its entry points before them.
    std::uint32_t moved = 0;            ///< Zeros between the directory and the entries.
    std::uint32_t first_directory = 8;  ///< As written; the directory itself stands at 8 or, above, there.
    int wrong_size2 = 0;                ///< Added to the second size.
    const char* order_mark = nullptr;   ///< In place of the right one.
};

struct GeneratedMpo {
    FileBytes bytes;
    FileBytes left;  ///< The first picture, with the padding behind it.
    FileBytes right;
    std::size_t origin = 0;
};

inline FileBytes index_segment(const MpoPlan& plan, std::uint32_t size1, std::uint32_t size2,
                               std::uint32_t offset2) {
    static constexpr std::uint8_t kHead[] = {0xFF, 0xE2, 0, 0, 'M', 'P', 'F', 0};
    FileBytes segment;
    segment.reserve(1024);
    segment.insert(segment.end(), std::begin(kHead), std::end(kHead));
    NumberWriter write(segment, plan.big_endian);
    const char* mark = plan.big_endian ? "MM\0*" : "II*\0";
    if (plan.order_mark != nullptr) {
        mark = plan.order_mark;
    }
    std::copy_n(mark, 4, std::back_inserter(segment));
    write.u32(plan.first_directory);
    segment.resize(segment.size() + plan.first_directory - 8);
    constexpr std::uint32_t kEntries = 3;
    const std::uint32_t entries_at = plan.first_directory + 2 + kEntries * 12 + 4 + plan.moved;
    write.u16(kEntries);
    write.entry(0xB000, 7, 4, 0x30303130);
    write.entry(0xB001, 4, 1, static_cast<std::uint32_t>(plan.pictures));
    write.entry(0xB002, 7, 16 * static_cast<std::uint32_t>(plan.pictures), entries_at);
    write.u32(0);
    segment.resize(segment.size() + plan.moved);
    for (int i = 0; i < plan.pictures; ++i) {
        write.u32(0x00020002);
        write.u32(i == 0 ? size1 : size2 + static_cast<std::uint32_t>(plan.wrong_size2));
        write.u32(i == 0 ? 0 : offset2);
        write.u32(0);
    }
    segment[2] = static_cast<std::uint8_t>((segment.size() - 2) >> 8);
    segment[3] = static_cast<std::uint8_t>(segment.size() - 2);
    return segment;
}

inline GeneratedMpo make_mpo(const MpoPlan& plan, const Bitmap& left, const Bitmap& right) {
    GeneratedMpo mpo;
    mpo.right = exif_jpeg(right);
    const auto size2 = static_cast<std::uint32_t>(mpo.right.size());
    const FileBytes without = exif_jpeg(left, index_segment(plan, 0, size2, 0));
    const auto size1 = static_cast<std::uint32_t>(without.size());
    constexpr std::size_t kBehindExif = 2 + 24;
    mpo.origin = kBehindExif + 8;
    mpo.left =
        exif_jpeg(left, index_segment(plan, size1, size2, size1 - static_cast<std::uint32_t>(mpo.origin)));
    mpo.bytes = mpo.left;
    mpo.bytes.resize(mpo.bytes.size() + plan.padding);
    for (int i = 1; i < plan.pictures; ++i) {
        mpo.bytes.insert(mpo.bytes.end(), mpo.right.begin(), mpo.right.end());
    }
    return mpo;
}

}  // namespace zemora::test
