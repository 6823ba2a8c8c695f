#include "render/squeeze.h"

#include <algorithm>
#include <cstddef>

#include "codec/bitmap_forms.h"

namespace zemora {

namespace {

template <class Channel>
void mean_of_rows(const Channel* a, const Channel* b, Channel* target, int count) {
    for (int i = 0; i < count; ++i) {
        target[i] = static_cast<Channel>((unsigned{a[i]} + unsigned{b[i]}) / 2);
    }
}

/// `width` pixels of the target from twice as many of the source.
template <class Channel>
void mean_of_columns(const Channel* source, Channel* target, int width) {
    for (int x = 0; x < width; ++x, source += 2 * kPixelBytes, target += kPixelBytes) {
        for (int c = 0; c < kPixelBytes; ++c) {
            target[c] = static_cast<Channel>((unsigned{source[c]} + unsigned{source[c + kPixelBytes]}) / 2);
        }
    }
}

template <class Channel>
const Channel* channels(const std::uint8_t* bytes) {
    return reinterpret_cast<const Channel*>(bytes);
}

template <class Channel>
void squeeze_into(const Bitmap& source, Squeeze squeeze, const Bitmap& target) {
    const int width = target.width();
    const int height = target.height();
#pragma omp parallel for schedule(static)
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<Channel*>(target.bits() + y * target.pitch());
        if (squeeze == Squeeze::columns) {
            mean_of_columns(channels<Channel>(source.bits() + y * source.pitch()), row, width);
        } else {
            const std::uint8_t* lower = source.bits() + 2 * y * source.pitch();
            mean_of_rows(channels<Channel>(lower), channels<Channel>(lower + source.pitch()), row,
                         width * kPixelBytes);
        }
    }
}

/// The part of the view's columns that the target holds: first column and count.
struct Columns {
    int first;
    int count;
};

Columns columns_inside(int width, int target_width, int column) {
    const int first = std::max(0, -column);
    return {first, std::max(0, std::min(width, target_width - column) - first)};
}

}  // namespace

Bitmap squeezed(const Bitmap& picture, Squeeze squeeze) {
    const int width = squeeze == Squeeze::columns ? picture.width() / 2 : picture.width();
    const int height = squeeze == Squeeze::rows ? picture.height() / 2 : picture.height();
    if (width < 1 || height < 1) {
        return {};
    }
    if (is_deep(picture)) {
        Bitmap half = create_deep(width, height);
        if (half) {
            squeeze_into<std::uint16_t>(picture, squeeze, half);
        }
        return half;
    }
    Bitmap half = Bitmap::create(width, height);
    if (half) {
        squeeze_into<std::uint8_t>(picture, squeeze, half);
    }
    return half;
}

void interlace_rows(const StereoPicture& views, Picture target, int row, int left_column, int right_column) {
    const int pairs = views.left.height / 2;
#pragma omp parallel for schedule(static)
    for (int i = 0; i < 2 * pairs; ++i) {
        const bool is_left = i % 2 == 0;
        const ConstPicture& view = is_left ? views.left : views.right;
        const int column = is_left ? left_column : right_column;
        const auto [first, count] = columns_inside(view.width, target.width, column);
        if (row + i < 0 || row + i >= target.height || count == 0) {
            continue;
        }
        const int lower = i - i % 2;
        mean_of_rows(view.pixel(first, lower), view.pixel(first, lower + 1),
                     target.pixel(column + first, row + i), count * kPixelBytes);
    }
}

}  // namespace zemora
