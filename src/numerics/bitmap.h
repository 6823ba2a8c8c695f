#pragma once
/// Pictures in memory: an owning, move-only bitmap over the image library and views into it.
///
/// Conventions of every picture in Zemora: 24 bits per pixel, three bytes in the order blue, green,
/// red. Row 0 is the bottom row, columns count from the left, rows are `pitch` bytes apart. A
/// bitmap may be larger than the picture it holds; whoever reads a picture goes by the size in its
/// view and never by the size of the bitmap.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

struct FIBITMAP;

namespace zemora {

/// Bytes of a 24-bit pixel.
inline constexpr int kPixelBytes = 3;

/// A colour in memory order.
struct Colour {
    std::uint8_t blue = 0;
    std::uint8_t green = 0;
    std::uint8_t red = 0;
    friend bool operator==(const Colour&, const Colour&) = default;
};

[[nodiscard]] inline bool is_colour(const std::uint8_t* pixel, Colour colour) {
    return pixel[0] == colour.blue && pixel[1] == colour.green && pixel[2] == colour.red;
}

/// Read-only view of a 24-bit picture; owns nothing.
struct ConstPicture {
    const std::uint8_t* bits = nullptr;
    std::ptrdiff_t pitch = 0;  ///< Bytes from one row to the one above it.
    int width = 0;             ///< Pixels.
    int height = 0;            ///< Rows.

    [[nodiscard]] const std::uint8_t* row(int y) const { return bits + y * pitch; }
    [[nodiscard]] const std::uint8_t* pixel(int x, int y) const {
        return row(y) + static_cast<std::ptrdiff_t>(x) * kPixelBytes;
    }
    /// The part of `part_width` by `part_height` pixels whose lower left pixel is (x, y); it must
    /// lie inside.
    [[nodiscard]] ConstPicture part(int x, int y, int part_width, int part_height) const {
        return {pixel(x, y), pitch, part_width, part_height};
    }
};

/// Writable view of a 24-bit picture; owns nothing.
struct Picture {
    std::uint8_t* bits = nullptr;
    std::ptrdiff_t pitch = 0;
    int width = 0;
    int height = 0;

    [[nodiscard]] std::uint8_t* row(int y) const { return bits + y * pitch; }
    [[nodiscard]] std::uint8_t* pixel(int x, int y) const {
        return row(y) + static_cast<std::ptrdiff_t>(x) * kPixelBytes;
    }
    [[nodiscard]] Picture part(int x, int y, int part_width, int part_height) const {
        return {pixel(x, y), pitch, part_width, part_height};
    }
    operator ConstPicture() const { return {bits, pitch, width, height}; }  // NOLINT: a view widens freely
};

/// The two views of a pair, of equal size and pitch.
struct StereoPicture {
    ConstPicture left;
    ConstPicture right;
};

/// Owner of one bitmap of the image library, usually 24 bits. An empty bitmap is false.
class Bitmap {
public:
    Bitmap() = default;
    Bitmap(Bitmap&& other) noexcept;
    Bitmap& operator=(Bitmap&& other) noexcept;
    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;
    ~Bitmap();

    /// A 24-bit bitmap of that size, black; empty when the memory is not there or a side is not
    /// positive.
    [[nodiscard]] static Bitmap create(int width, int height);

    /// A copy of the whole bitmap; empty when the memory is not there.
    [[nodiscard]] Bitmap clone() const;
    [[nodiscard]] explicit operator bool() const { return handle_ != nullptr; }
    void reset();

    [[nodiscard]] int width() const;
    [[nodiscard]] int height() const;
    [[nodiscard]] int bits_per_pixel() const;
    [[nodiscard]] std::ptrdiff_t pitch() const;
    [[nodiscard]] std::uint8_t* bits() const;

    /// The whole bitmap, or its lower left part of the given size, as a picture.
    [[nodiscard]] Picture picture() const { return {bits(), pitch(), width(), height()}; }
    [[nodiscard]] Picture picture(int part_width, int part_height) const {
        return {bits(), pitch(), part_width, part_height};
    }

private:
    friend struct LibraryBitmap;  // codec/library.h: the codec reaches the bitmap of the library
    explicit Bitmap(FIBITMAP* handle) : handle_(handle) {}

    struct Freer {
        void operator()(std::uint8_t* memory) const { std::free(memory); }
    };
    using Pixels = std::unique_ptr<std::uint8_t[], Freer>;

    FIBITMAP* handle_ = nullptr;
    Pixels pixels_;  ///< Null where they belong to the library, or to the picture they are borrowed from.
};

/// Fills a picture with one colour.
void fill(Picture picture, Colour colour);
/// Copies `source` into `target`, which has the same size; the two do not overlap.
void copy(ConstPicture source, Picture target);

}  // namespace zemora
