#include "input/bmp_pixels.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>

namespace zemora {

namespace {

// Places in the file, bytes.
constexpr std::size_t kPixelsPlace = 10;
constexpr std::size_t kHeaderSizePlace = 14;
constexpr std::size_t kWidthPlace = 18;
constexpr std::size_t kHeightPlace = 22;
constexpr std::size_t kBitsPlace = 28;
constexpr std::size_t kCompressionPlace = 30;
constexpr std::size_t kSizePlace = 34;
constexpr std::size_t kColoursPlace = 46;
constexpr std::size_t kHeaderEnd = 54;  // masks or colours follow

constexpr std::uint32_t kHeaderSize = 40;
constexpr std::uint32_t kRuns = 1;   // compression: 8 bits coded by runs
constexpr std::uint32_t kMasks = 3;  // pixels by masks
constexpr std::int64_t kLargestSide = 65500;
constexpr std::int64_t kLargestPicture = 600'000'000;  // pixels
constexpr std::size_t kColours = 256;
constexpr std::size_t kColourBytes = 4;

using Bytes = std::span<const std::uint8_t>;
using FileBytes = std::vector<std::uint8_t>;

std::uint32_t number_at(Bytes file, std::size_t place, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = size; i-- > 0;) {
        value = value << 8U | file[place + i];
    }
    return value;
}

void put_number(FileBytes& file, std::size_t place, std::size_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        file[place + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

/// What the header says.
struct BmpHeader {
    std::size_t width = 0;
    std::size_t height = 0;  ///< Rows, wherever the first one stands.
    bool top_down = false;
    std::uint32_t bits = 0;
    std::uint32_t compression = 0;
    std::size_t pixels = 0;
};

std::optional<BmpHeader> header_of(Bytes file) {
    if (file.size() < kHeaderEnd || file[0] != 'B' || file[1] != 'M' ||
        number_at(file, kHeaderSizePlace, 4) != kHeaderSize) {
        return std::nullopt;
    }
    const auto width = static_cast<std::int32_t>(number_at(file, kWidthPlace, 4));
    const auto height = static_cast<std::int32_t>(number_at(file, kHeightPlace, 4));
    const std::int64_t rows = std::abs(std::int64_t{height});
    if (width <= 0 || rows == 0 || width > kLargestSide || rows > kLargestSide ||
        width * rows > kLargestPicture) {
        return std::nullopt;
    }
    return BmpHeader{static_cast<std::size_t>(width),
                     static_cast<std::size_t>(rows),
                     height < 0,
                     number_at(file, kBitsPlace, 2),
                     number_at(file, kCompressionPlace, 4),
                     number_at(file, kPixelsPlace, 4)};
}

std::size_t row_bytes(std::size_t width, std::size_t bits) {
    return (width * bits + 31) / 32 * 4;
}

/// The headers of the new file and black pixels.
FileBytes plain_file(Bytes file, const BmpHeader& header, std::size_t bits, std::size_t colours) {
    const std::size_t pixels = kHeaderEnd + colours * kColourBytes;
    const std::size_t size = row_bytes(header.width, bits) * header.height;
    FileBytes plain(pixels + size);
    std::copy_n(file.begin(), kHeaderEnd, plain.begin());
    put_number(plain, 2, plain.size(), 4);
    put_number(plain, kPixelsPlace, pixels, 4);
    put_number(plain, kBitsPlace, bits, 2);
    put_number(plain, kCompressionPlace, 0, 4);
    put_number(plain, kSizePlace, size, 4);
    put_number(plain, kColoursPlace, colours, 4);
    put_number(plain, kColoursPlace + 4, 0, 4);
    return plain;
}

/// A channel of a pixel by its mask, in 8 bits.
class Channel {
public:
    explicit Channel(std::uint32_t mask)
        : mask_(mask), shift_(mask != 0 ? std::countr_zero(mask) : 0), greatest_(mask >> shift_) {}
    [[nodiscard]] std::uint8_t of(std::uint32_t pixel) const {
        constexpr std::uint64_t kFull = 255;
        const std::uint64_t value = (pixel & mask_) >> shift_;
        return static_cast<std::uint8_t>(greatest_ != 0 ? (value * kFull + greatest_ / 2) / greatest_ : 0);
    }

private:
    std::uint32_t mask_;
    int shift_;
    std::uint32_t greatest_;
};

std::optional<FileBytes> without_masks(Bytes file, const BmpHeader& header) {
    constexpr std::size_t kMaskBytes = 12;  // red, green, blue
    constexpr std::size_t kTargetBits = 24;
    const std::size_t pixel_bytes = header.bits / 8;
    const std::size_t pitch = row_bytes(header.width, header.bits);
    if (file.size() < kHeaderEnd + kMaskBytes || header.pixels > file.size() ||
        pitch * header.height > file.size() - header.pixels) {
        return std::nullopt;
    }
    const std::array<Channel, 3> channels{Channel(number_at(file, kHeaderEnd + 8, 4)),
                                          Channel(number_at(file, kHeaderEnd + 4, 4)),
                                          Channel(number_at(file, kHeaderEnd, 4))};
    FileBytes plain = plain_file(file, header, kTargetBits, 0);
    for (std::size_t row = 0; row < header.height; ++row) {
        std::uint8_t* target = plain.data() + kHeaderEnd + row * row_bytes(header.width, kTargetBits);
        for (std::size_t x = 0; x < header.width; ++x) {
            const std::uint32_t pixel =
                number_at(file, header.pixels + row * pitch + x * pixel_bytes, pixel_bytes);
            for (const Channel& channel : channels) {
                *target++ = channel.of(pixel);
            }
        }
    }
    return plain;
}

/// Reads runs (Windows SDK, "Bitmap compression", BI_RLE8) into rows of one byte a pixel, the lowest first.
class RunReader {
public:
    RunReader(Bytes code, const BmpHeader& header, std::uint8_t* pixels)
        : code_(code), width_(header.width), height_(header.height), pixels_(pixels) {}

    /// False where the code ends too early or leads outside the picture.
    [[nodiscard]] bool read() {
        for (;;) {
            const int count = next();
            const int value = next();
            if (count < 0 || value < 0) {
                return y_ >= height_;  // only the end mark is missing
            }
            if (count > 0) {
                if (!put(static_cast<std::size_t>(count), [value] { return value; })) {
                    return false;
                }
            } else if (value == kEnd) {
                return true;
            } else if (!escape(value)) {
                return false;
            }
        }
    }

private:
    enum Escape { kEndOfRow = 0, kEnd = 1, kMove = 2 };

    [[nodiscard]] int next() { return at_ < code_.size() ? code_[at_++] : -1; }

    /// Sets pixels of the row; what goes beyond it is lost.
    template <class Value>
    [[nodiscard]] bool put(std::size_t count, Value value_of) {
        for (std::size_t i = 0; i < count; ++i, ++x_) {
            const int value = value_of();
            if (value < 0 || y_ >= height_) {
                return false;
            }
            if (x_ < width_) {
                pixels_[y_ * row_bytes(width_, 8) + x_] = static_cast<std::uint8_t>(value);
            }
        }
        return true;
    }

    [[nodiscard]] bool escape(int value) {
        if (value == kEndOfRow) {
            x_ = 0;
            ++y_;
            return true;
        }
        if (value == kMove) {
            const int right = next();
            const int up = next();
            x_ += static_cast<std::size_t>(std::max(right, 0));
            y_ += static_cast<std::size_t>(std::max(up, 0));
            return right >= 0 && up >= 0 && x_ <= width_ && y_ <= height_;
        }
        const bool odd = value % 2 != 0;
        return put(static_cast<std::size_t>(value), [this] { return next(); }) && (!odd || next() >= 0);
    }

    Bytes code_;
    std::size_t width_;
    std::size_t height_;
    std::uint8_t* pixels_;
    std::size_t at_ = 0;
    std::size_t x_ = 0;
    std::size_t y_ = 0;
};

std::optional<FileBytes> without_runs(Bytes file, const BmpHeader& header) {
    const std::size_t told = number_at(file, kColoursPlace, 4);
    const std::size_t colours = told == 0 ? kColours : std::min(told, kColours);
    if (header.pixels < kHeaderEnd || header.pixels > file.size()) {
        return std::nullopt;
    }
    FileBytes plain = plain_file(file, header, 8, kColours);
    const std::size_t there = std::min(colours * kColourBytes, header.pixels - kHeaderEnd);
    std::copy_n(file.begin() + kHeaderEnd, there, plain.begin() + kHeaderEnd);
    std::uint8_t* pixels = plain.data() + kHeaderEnd + kColours * kColourBytes;
    return RunReader(file.subspan(header.pixels), header, pixels).read() ? std::optional(std::move(plain))
                                                                         : std::nullopt;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> with_plain_bmp_pixels(std::span<const std::uint8_t> file) {
    const auto header = header_of(file);
    if (!header) {
        return std::nullopt;
    }
    if (header->compression == kMasks && (header->bits == 16 || header->bits == 32)) {
        return without_masks(file, *header);
    }
    const bool coded = header->compression == kRuns && header->bits == 8 && !header->top_down;
    return coded ? without_runs(file, *header) : std::nullopt;
}

}  // namespace zemora
