#include <algorithm>

#include "analysis/correlation.h"

namespace zemora {

namespace {

/// The sum of the three 8.8 channels over this is the grey value of the contrast measure.
constexpr double kGreyScale = 256.0 * 30.0;

/// Variance of the grey values of `count` pixels, exactly 0 for equal ones: a value is below 2^18, so
/// that count^2 x variance stays below 2^64 up to 2^15 pixels, whatever wraps round before.
double row_variance(const std::uint8_t* pixels, int count, const std::uint16_t* grey) {
    std::uint64_t sum = 0;
    std::uint64_t squares = 0;
    for (int x = 0; x < count; ++x, pixels += kPixelBytes) {
        const std::uint32_t value =
            static_cast<std::uint32_t>(grey[pixels[0]]) + grey[pixels[1]] + grey[pixels[2]];
        sum += value;
        squares += static_cast<std::uint64_t>(value) * value;
    }
    const auto n = static_cast<std::uint64_t>(count);
    const double scale = static_cast<double>(n) * kGreyScale;
    return static_cast<double>(n * squares - sum * sum) / (scale * scale);
}

}  // namespace

float tile_contrast(const ToneView& view, int tile_rows, int tile_columns, int x, int y, int least_pixels) {
    const int first_column = std::max(x, 0);
    const int columns = std::min(x + tile_columns, view.picture.width) - first_column;
    const int first_row = std::max(y, 0);
    const int rows = std::min(y + tile_rows, view.picture.height) - first_row;
    if (columns <= 0 || rows <= 0 || static_cast<std::int64_t>(columns) * rows < least_pixels) {
        return -1.0F;
    }
    double largest = 0.0;
    for (int r = 0; r < rows; ++r) {
        largest = std::max(largest, row_variance(view.picture.pixel(first_column, first_row + r), columns,
                                                 view.grey.data()));
    }
    return static_cast<float>(largest);
}

}  // namespace zemora
