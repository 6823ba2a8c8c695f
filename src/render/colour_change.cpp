#include "render/colour_change.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr std::size_t kValues = 65536;
constexpr double kLargestValue = 65535.0;

/// Place of a channel of the files (red, green, blue) in a pixel.
constexpr std::size_t pixel_place(std::size_t channel) {
    return kPixelBytes - 1 - channel;
}

/// Row `k` of the matrix times the light of red, green, blue.
template <class Number>
Number product(const ColorManagement::Matrix& matrix, std::size_t k,
               const std::array<Number, kPixelBytes>& light) {
    const auto& row = matrix[k];
    return Number{row[0]} * light[0] + Number{row[1]} * light[1] + Number{row[2]} * light[2];
}

}  // namespace

ColourChange::ColourChange(ColorManagement colours) : colours_(std::move(colours)) {
    for (std::size_t c = 0; c < light_.size() && colours_.field_in[0].empty(); ++c) {
        light_[c].resize(kValues);
        for (std::size_t v = 0; v < kValues; ++v) {
            light_[c][v] =
                std::pow(static_cast<double>(v) / kValues, static_cast<double>(colours_.gamma_in[c]));
        }
    }
}

void ColourChange::change_by_exponents(const ColorManagement::Matrix& matrix, Values& values) const {
    std::array<double, kPixelBytes> light;
    for (std::size_t c = 0; c < light.size(); ++c) {
        light[c] = light_[c][values[pixel_place(c)]];
    }
    for (std::size_t c = 0; c < light.size(); ++c) {
        const double value =
            std::pow(std::max(product(matrix, c, light), 0.0), static_cast<double>(colours_.gamma_out[c]));
        values[pixel_place(c)] =
            static_cast<std::uint16_t>(round_half_up(std::min(value * kValues, kLargestValue)));
    }
}

/// The tables have 16 values of a pixel to a level.
void ColourChange::change_by_tables(const ColorManagement::Matrix& matrix, Values& values) const {
    constexpr int kLast = ColorManagement::kFieldLevels - 1;
    constexpr int kShift = 4;
    std::array<float, kPixelBytes> light;
    for (std::size_t c = 0; c < light.size(); ++c) {
        const int level = std::min((values[pixel_place(c)] + 8) >> kShift, kLast);
        light[c] = static_cast<float>(colours_.field_in[c][static_cast<std::size_t>(level)]);
    }
    for (std::size_t c = 0; c < light.size(); ++c) {
        const float bounded = std::clamp(product(matrix, c, light), 0.0F, static_cast<float>(kLast));
        const auto level = static_cast<std::size_t>(round_half_up(bounded));
        // The columns of the second table belong to blue, green, red.
        const std::int64_t value = std::int64_t{colours_.field_out[pixel_place(c)][level]} << kShift;
        values[pixel_place(c)] = static_cast<std::uint16_t>(std::min<std::int64_t>(value, kValues - 1));
    }
}

void ColourChange::change(bool is_left, Values& values) const {
    const ColorManagement::Matrix& matrix = is_left ? colours_.left : colours_.right;
    if (light_[0].empty()) {
        change_by_tables(matrix, values);
    } else {
        change_by_exponents(matrix, values);
    }
}

void ColourChange::apply(bool is_left, Sample* samples, int count) const {
    for (int i = 0; i < count; ++i) {
        if (samples[i].empty == 0) {
            change(is_left, samples[i].value);
        }
    }
}

}  // namespace zemora
