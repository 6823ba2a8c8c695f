#pragma once
/// Writes directories of the TIFF format (TIFF revision 6.0, 1992) byte by byte, low byte first.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace zemora {

using FileBytes = std::vector<std::uint8_t>;

/// Types of a TIFF entry.
enum class TiffType : std::uint16_t {
    text = 2,
    number16 = 3,
    number32 = 4,
    fraction = 5,
    bytes = 7,
    signed_fraction = 10,
};

struct TiffEntry {
    std::uint16_t tag;
    TiffType type;
    std::uint32_t count;
    std::uint32_t value;  ///< Or the offset of the value.
};

class TiffBytes {
public:
    void number16(std::uint32_t value) { number(value, 2); }
    void number32(std::uint32_t value) { number(value, 4); }
    void number16_high_first(std::uint32_t value) {
        bytes_.push_back(static_cast<std::uint8_t>(value >> 8));
        bytes_.push_back(static_cast<std::uint8_t>(value));
    }
    void raw(std::span<const std::uint8_t> bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
    /// The text, cut or filled with zeros to `size` bytes.
    void text(std::string_view text, std::size_t size) {
        text = text.substr(0, size);
        bytes_.insert(bytes_.end(), text.begin(), text.end());
        zeros(size - text.size());
    }
    void zeros(std::size_t count) { bytes_.resize(bytes_.size() + count); }
    /// Low byte first, the first directory behind it.
    void header() {
        text("II*", 4);
        number32(kHeaderSize);
    }
    void directory(std::span<const TiffEntry> entries, std::uint32_t next_directory) {
        number16(static_cast<std::uint32_t>(entries.size()));
        for (const TiffEntry& entry : entries) {
            number16(entry.tag);
            number16(static_cast<std::uint32_t>(entry.type));
            number32(entry.count);
            number32(entry.value);
        }
        number32(next_directory);
    }
    [[nodiscard]] FileBytes take() { return std::move(bytes_); }

    static constexpr std::uint32_t kHeaderSize = 8;

private:
    void number(std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i, value >>= 8) {
            bytes_.push_back(static_cast<std::uint8_t>(value));
        }
    }
    FileBytes bytes_;
};

}  // namespace zemora
