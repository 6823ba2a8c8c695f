#pragma once
/// Small pictures with the times that a camera writes.

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/pictures.h"

namespace zemora::test {

/// Texts of the tags; an empty one is not written.
struct PictureTimes {
    std::string taken;          ///< DateTimeOriginal of the EXIF directory.
    std::string taken_outside;  ///< DateTimeOriginal of the picture's own directory.
    std::string digitized;      ///< DateTimeDigitized of the EXIF directory.
    std::string changed;        ///< DateTime of the picture's own directory.
};

/// A block of TIFF directories in the byte order of Intel.
class TiffBlock {
public:
    TiffBlock() : bytes_{'I', 'I', 42, 0, 8, 0, 0, 0} {}
    void add_number(std::uint16_t tag, std::uint32_t value) { entries_.push_back({tag, 4, 1, value, {}}); }
    void add_text(std::uint16_t tag, const std::string& text) {
        if (!text.empty()) {
            entries_.push_back({tag, 2, static_cast<std::uint32_t>(text.size() + 1), 0, text});
        }
    }
    /// Writes the entries, which stand in the order of their tags, as the next directory.
    void end_directory() {
        auto place = static_cast<std::uint32_t>(bytes_.size() + 6 + 12 * entries_.size());
        std::string texts;
        put(static_cast<std::uint32_t>(entries_.size()), 2);
        for (const Entry& entry : entries_) {
            put(entry.tag, 2);
            put(entry.type, 2);
            put(entry.count, 4);
            put(entry.text.empty() ? entry.value : place + static_cast<std::uint32_t>(texts.size()), 4);
            texts += entry.text.empty() ? std::string() : entry.text + '\0';
        }
        put(0, 4);
        bytes_.insert(bytes_.end(), texts.begin(), texts.end());
        entries_.clear();
    }
    /// Where the directory that is being filled will end.
    [[nodiscard]] std::uint32_t end_of_directory() const {
        std::size_t size = bytes_.size() + 6 + 12 * entries_.size();
        for (const Entry& entry : entries_) {
            size += entry.text.empty() ? 0 : entry.text.size() + 1;
        }
        return static_cast<std::uint32_t>(size);
    }
    [[nodiscard]] std::vector<std::uint8_t>& bytes() { return bytes_; }

private:
    struct Entry {
        std::uint16_t tag;
        std::uint16_t type;
        std::uint32_t count;
        std::uint32_t value;
        std::string text;
    };
    void put(std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i) {
            bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    }
    std::vector<std::uint8_t> bytes_;
    std::vector<Entry> entries_;
};

namespace detail {
constexpr std::uint32_t kEntry = 12;  // bytes

/// Ends a directory whose last entry is still missing: the way to the EXIF directory, which follows.
inline void end_with_exif(TiffBlock& block, const PictureTimes& times) {
    const auto text_size =
        times.taken_outside.empty() ? 0 : kEntry + static_cast<std::uint32_t>(times.taken_outside.size()) + 1;
    block.add_number(0x8769, block.end_of_directory() + kEntry + text_size);
    block.add_text(0x9003, times.taken_outside);
    block.end_directory();
    block.add_text(0x9003, times.taken);
    block.add_text(0x9004, times.digitized);
    block.end_directory();
}
}  // namespace detail

inline std::vector<std::uint8_t> timed_jpeg(const PictureTimes& times) {
    TiffBlock block;
    block.add_text(0x0132, times.changed);
    detail::end_with_exif(block, times);
    std::vector<std::uint8_t> jpeg = encoded(place_picture(16, 12), FIF_JPEG);
    std::vector<std::uint8_t> segment{0xFF, 0xE1, 0, 0, 'E', 'x', 'i', 'f', 0, 0};
    segment.insert(segment.end(), block.bytes().begin(), block.bytes().end());
    const std::size_t size = segment.size() - 2;
    segment[2] = static_cast<std::uint8_t>(size >> 8);
    segment[3] = static_cast<std::uint8_t>(size & 0xFF);
    jpeg.insert(jpeg.begin() + 2, segment.begin(), segment.end());
    return jpeg;
}

/// One grey pixel.
inline std::vector<std::uint8_t> timed_tiff(const PictureTimes& times) {
    TiffBlock block;
    block.add_number(0x0100, 1);
    block.add_number(0x0101, 1);
    block.add_number(0x0102, 8);
    block.add_number(0x0103, 1);
    block.add_number(0x0106, 1);
    block.add_number(0x0111, 0);  // the pixel is the first byte
    block.add_number(0x0115, 1);
    block.add_number(0x0116, 1);
    block.add_number(0x0117, 1);
    block.add_text(0x0132, times.changed);
    detail::end_with_exif(block, times);
    return block.bytes();
}

/// The block stands in a chunk of its own before the pixels; its checksum is left at zero.
inline std::vector<std::uint8_t> timed_png(const PictureTimes& times) {
    TiffBlock block;
    block.add_text(0x0132, times.changed);
    detail::end_with_exif(block, times);
    constexpr int kFirstChunkEnd = 8 + 25;  // bytes of the signature and the header chunk
    std::vector<std::uint8_t> png = encoded(place_picture(16, 12), FIF_PNG);
    const std::size_t size = block.bytes().size();
    std::vector<std::uint8_t> chunk{
        0,   0,  static_cast<std::uint8_t>(size >> 8), static_cast<std::uint8_t>(size & 0xFF), 'e', 'X',
        'I', 'f'};
    chunk.insert(chunk.end(), block.bytes().begin(), block.bytes().end());
    chunk.insert(chunk.end(), 4, 0);
    png.insert(png.begin() + kFirstChunkEnd, chunk.begin(), chunk.end());
    return png;
}

inline void write_bytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace zemora::test
