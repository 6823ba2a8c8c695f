#pragma once
/// The first directory of a TIFF file, classic or big, in either byte order (TIFF 6.0, 1992, section 2).

#include <cstdint>
#include <functional>
#include <span>

namespace zemora {

/// Numbers of a file in its own byte order; 0 outside the file.
struct TiffNumbers {
    std::span<const std::uint8_t> file;
    bool high_first;

    [[nodiscard]] bool holds(std::uint64_t place, std::size_t size) const {
        return size <= file.size() && place <= file.size() - size;
    }
    [[nodiscard]] std::uint64_t number(std::uint64_t place, std::size_t size) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size && holds(place, size); ++i) {
            value = value << 8U | file[place + (high_first ? i : size - 1 - i)];
        }
        return value;
    }
};

/// An entry that lies whole in the file.
struct TiffEntryPlace {
    std::uint64_t tag;
    std::uint64_t place;  ///< Of the entry; its tag is the first two bytes there.
    std::uint64_t value;  ///< What stands in the place of the value: a number of 16 or 32 bits.
};

/// Calls `look` for the entries of the first directory, in their order; for none in a file of another kind.
void for_each_tiff_entry(
    std::span<const std::uint8_t> file,
    const std::function<void(const TiffNumbers& bytes, const TiffEntryPlace& entry)>& look);

/// How the pixels of a TIFF file lie.
struct TiffLayout {
    bool tiled = false;
    bool planes_apart = false;     ///< Each channel by itself.
    bool inks = false;             ///< Cyan, magenta, yellow, black.
    bool deep_grey_alpha = false;  ///< Grey and alpha of 16 bits each.
    bool white_is_zero = false;    ///< Grey, the greatest number is black.
    std::uint64_t bits = 1;        ///< Of the first channel.
    /// Nothing but numbers without sign of 1, 4, 8 or 16 bits, at most four channels, and no planes in tiles.
    bool usual = true;
};
[[nodiscard]] TiffLayout tiff_layout(std::span<const std::uint8_t> file);

}  // namespace zemora
