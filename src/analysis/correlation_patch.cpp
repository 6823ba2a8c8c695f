#include "analysis/correlation_patch.h"

#include <algorithm>
#include <cstring>

namespace zemora::correlation_patch {

namespace {

/// 3 x 255^2 for each pixel of a strip stays below 2^31.
constexpr int kStripPixels = 11000;
constexpr std::ptrdiff_t kBytes = 4;  ///< Of a pixel in a patch.

/// Scans run outward from the picture's centre: the samples count from that edge of the tile that
/// lies nearer to it.
int first_sample(int start, int length, int step, int samples, int picture_side) {
    return start > picture_side / 2 ? start : start + length - 1 - (samples - 1) * step;
}

/// First of the samples x, x + step, ... that is not below 0, and the end of those below `side`.
std::pair<int, int> samples_inside(int x, int step, int count, int side) {
    const int first = x >= 0 ? 0 : (-x + step - 1) / step;
    const int end = x < side ? (side - 1 - x) / step + 1 : 0;
    return {std::min(first, count), std::clamp(end, std::min(first, count), count)};
}

}  // namespace

Sampling::Sampling(const ConstPicture& first, const TileSearch& search)
    : step_x(search.step_x),
      step_y(search.step_y),
      tile_rows((search.tile_rows + step_y - 1) / step_y),
      tile_columns((search.tile_columns + step_x - 1) / step_x),
      offset_rows(search.search_rows / step_y + 1),
      offset_columns(search.search_columns / step_x + 1),
      tile_x(first_sample(search.x, search.tile_columns, step_x, tile_columns, first.width)),
      tile_y(first_sample(search.y, search.tile_rows, step_y, tile_rows, first.height)),
      region_x(tile_x + search.shift_x - (offset_columns - 1) / 2 * step_x),
      region_y(tile_y + search.shift_y - (offset_rows - 1) / 2 * step_y),
      strip_rows(std::max(kStripPixels / std::max(tile_columns, 1), 1)) {}

std::uint32_t* Patch::prepare(std::ptrdiff_t rows, std::ptrdiff_t columns) {
    constexpr std::ptrdiff_t kLine = 64;  // bytes, so that rows start on cache lines
    pitch_ = ((columns + correlation_kernels::kColumnPad) * kBytes + kLine - 1) / kLine * kLine;
    std::uint8_t* bytes = bytes_.ensure(rows * pitch_);
    std::memset(bytes, 0, static_cast<std::size_t>(rows * pitch_));
    excluded_.clear();
    return reinterpret_cast<std::uint32_t*>(bytes);
}

void Patch::exclude(const ToneView& view, Colour passe, int x, int y, int step_x, int row, int first,
                    int end) {
    const auto excluded = [&](int k) { return is_colour(view.picture.pixel(x + k * step_x, y), passe); };
    for (int k = first; k < end; ++k) {
        if (!excluded(k)) {
            continue;
        }
        const int start = k;
        while (k + 1 < end && excluded(k + 1)) {
            ++k;
        }
        excluded_.push_back({row, start, k});
    }
}

void Patch::copy_row(const ToneView& view, Colour passe, int x, int y, int step_x, int count, int row,
                     std::uint32_t* out) {
    const bool row_inside = y >= 0 && y < view.picture.height;
    const auto [first, end] =
        row_inside ? samples_inside(x, step_x, count, view.picture.width) : std::pair(count, count);
    if (first > 0) {
        excluded_.push_back({row, 0, first - 1});
    }
    bool any_excluded = false;
    const std::uint8_t* map = view.mapped.data();
    for (int k = first; k < end; ++k) {
        const std::uint8_t* pixel = view.picture.pixel(x + k * step_x, y);
        const bool passe_pixel = is_colour(pixel, passe);
        any_excluded |= passe_pixel;
        const std::uint32_t value = map[pixel[0]] | static_cast<std::uint32_t>(map[pixel[1]]) << 8U |
                                    static_cast<std::uint32_t>(map[pixel[2]]) << 16U;
        out[k] = passe_pixel ? 0 : value;
    }
    if (any_excluded) {
        exclude(view, passe, x, y, step_x, row, first, end);
    }
    if (end < count) {
        excluded_.push_back({row, std::max(end, first), count - 1});
    }
}

void Patch::copy_tile(const ToneView& view, Colour passe, const Sampling& sampling) {
    constexpr std::uint32_t kMinus128 = 0x00808080U;  // on bytes read as signed
    const int rows = sampling.padded_row(sampling.tile_rows - 1) + correlation_kernels::kRowPad + 1;
    std::uint32_t* pixels = prepare(rows, sampling.tile_columns);
    for (int r = 0; r < sampling.tile_rows; ++r) {
        std::uint32_t* out = pixels + sampling.padded_row(r) * (pitch_ / kBytes);
        copy_row(view, passe, sampling.tile_x, sampling.tile_y + r * sampling.step_y, sampling.step_x,
                 sampling.tile_columns, r, out);
        for (int c = 0; c < sampling.tile_columns; ++c) {
            out[c] ^= kMinus128;
        }
    }
}

void Patch::copy_region(const ToneView& view, Colour passe, const Sampling& sampling) {
    std::uint32_t* pixels = prepare(sampling.region_rows(), sampling.region_columns());
    for (int r = 0; r < sampling.region_rows(); ++r) {
        copy_row(view, passe, sampling.region_x, sampling.region_y + r * sampling.step_y, sampling.step_x,
                 sampling.region_columns(), r, pixels + r * (pitch_ / kBytes));
    }
}

}  // namespace zemora::correlation_patch
