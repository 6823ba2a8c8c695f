#include "render/sample_pixel.h"

#include <algorithm>
#include <cmath>

#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kLargestValue = 65535;

/// Bicubic convolution with a = -1: t^3 - 2 t^2 + 1 below 1, -t^3 + 5 t^2 - 8 t + 4 up to 2, in
/// 1/128 (Keys, Cubic convolution interpolation for digital image processing, 1981).
int near_weight(int d) {
    return ((d - 256) * d * d + 0x202000) >> 14;
}
int far_weight(int d) {
    return (((640 - d) * d - 131072) * d + 0x802000) >> 14;
}

AxisWeights make_bicubic() {
    AxisWeights table{};
    for (int f = 0; f < 128; ++f) {
        auto& row = table[static_cast<std::size_t>(f)];
        row[0] = static_cast<std::int16_t>(far_weight(128 + f));
        row[1] = static_cast<std::int16_t>(near_weight(f));
        row[2] = static_cast<std::int16_t>(f == 0 ? 0 : near_weight(128 - f));
        row[3] = static_cast<std::int16_t>(far_weight(256 - f));
    }
    return table;
}

AxisWeights make_bilinear() {
    AxisWeights table{};
    for (int f = 0; f < 128; ++f) {
        table[static_cast<std::size_t>(f)] = {0, static_cast<std::int16_t>(128 - f),
                                              static_cast<std::int16_t>(f), 0};
    }
    return table;
}

/// Rising to the middle taps by whole pixels, then falling.
Axis tent_axis(int radius, int index, int fraction) {
    Axis axis{index - 1, 2 * (radius + 1), {}};
    for (int i = 0; i < axis.taps; ++i) {
        const bool rising = i <= radius;
        axis.weight[static_cast<std::size_t>(i)] =
            rising ? 128 * (i + 1) - fraction : 128 * (axis.taps - 1 - i) + fraction;
    }
    return axis;
}

Axis table_axis(const AxisWeights& table, int index, int fraction) {
    Axis axis{index - 1, 4, {}};
    const auto& row = table[static_cast<std::size_t>(fraction)];
    std::copy(row.begin(), row.end(), axis.weight.begin());
    return axis;
}

/// The weighted sum of a tent as an 8.8 value.
int normalise_tent(std::int64_t sum, int radius) {
    switch (radius) {
        case 3: return static_cast<int>((sum + 8192) >> 14);
        case 2: return static_cast<int>((sum + 2592) / 5184);
        default: return static_cast<int>((sum + 512) >> 10);
    }
}

int normalise(const Sampler& sampler, std::int64_t sum) {
    switch (sampler.kernel) {
        case Kernel::bicubic: return static_cast<int>((sum + 32) >> 6);
        case Kernel::tent: return normalise_tent(sum, sampler.filter_radius);
        default: return static_cast<int>(sum >> 6);
    }
}

Sample background_sample(Colour colour) {
    const auto wide = [](std::uint8_t byte) { return static_cast<std::uint16_t>(byte << 8); };
    return {{wide(colour.blue), wide(colour.green), wide(colour.red)}, 1};
}

Sample nearest_sample(const Sampler& sampler, const ConstPicture& source, int x, int y) {
    const int column = std::clamp((x + 64) >> 7, 0, source.width - 1);
    const int row = std::clamp((y + 64) >> 7, 0, source.height - 1);
    const std::uint8_t* pixel = source.pixel(column, row);
    Sample sample = background_sample({pixel[0], pixel[1], pixel[2]});
    sample.empty = is_colour(pixel, sampler.background) ? 1 : 0;
    return sample;
}

/// The pixel nearest to the sample, or nothing outside the picture. The bilinear kernel reaches half
/// a pixel further out.
const std::uint8_t* centre_pixel(Kernel kernel, const ConstPicture& source, int x, int y) {
    int column = (x + 64) >> 7;
    int row = (y + 64) >> 7;
    if (kernel == Kernel::bilinear) {
        if (x <= -192 || y <= -192) {
            return nullptr;
        }
        column = (x + 64) / 128;
        row = (y + 64) / 128;
    }
    const bool inside = column >= 0 && row >= 0 && column < source.width && row < source.height;
    return inside ? source.pixel(column, row) : nullptr;
}

/// Calls `add` with each tap's weight and pixel.
template <class Add>
void for_taps(const Sampler& sampler, const ConstPicture& source, int x, int y, const std::uint8_t* centre,
              const Add& add) {
    const Axis across = axis_of(sampler, x);
    const Axis up = axis_of(sampler, y);
    for (int j = 0; j < up.taps; ++j) {
        const std::uint8_t* row = source.row(std::clamp(up.first + j, 0, source.height - 1));
        for (int i = 0; i < across.taps; ++i) {
            const int column = std::clamp(across.first + i, 0, source.width - 1);
            const std::uint8_t* tap = row + static_cast<std::ptrdiff_t>(column) * kPixelBytes;
            const int weight =
                across.weight[static_cast<std::size_t>(i)] * up.weight[static_cast<std::size_t>(j)];
            add(weight, is_colour(tap, sampler.background) ? centre : tap);
        }
    }
}

void blend(const Sampler& sampler, const ConstPicture& source, int x, int y, const std::uint8_t* centre,
           Sample& sample) {
    std::array<std::int64_t, kPixelBytes> sum{};
    for_taps(sampler, source, x, y, centre, [&sum](int weight, const std::uint8_t* tap) {
        for (std::size_t c = 0; c < sum.size(); ++c) {
            sum[c] += weight * tap[c];
        }
    });
    for (std::size_t c = 0; c < sum.size(); ++c) {
        sample.value[c] =
            static_cast<std::uint16_t>(std::clamp(normalise(sampler, sum[c]), 0, kLargestValue));
    }
}

void blend_linear_light(const Sampler& sampler, const ConstPicture& source, int x, int y,
                        const std::uint8_t* centre, Sample& sample) {
    std::array<double, kPixelBytes> sum{};
    for_taps(sampler, source, x, y, centre, [&sum, &sampler](int weight, const std::uint8_t* tap) {
        for (std::size_t c = 0; c < sum.size(); ++c) {
            sum[c] += weight * sampler.light[tap[c]];
        }
    });
    const double per_axis = axis_sum(sampler);
    for (std::size_t c = 0; c < sum.size(); ++c) {
        const double mean = sum[c] / (per_axis * per_axis);
        const double byte = mean > 0.0 ? std::pow(mean, 1.0 / sampler.gamma) : 0.0;
        sample.value[c] =
            static_cast<std::uint16_t>(std::clamp(round_half_up(byte * 256.0), 0, kLargestValue));
    }
}

}  // namespace

Kernel kernel_of(int interpolation) {
    return has_kernel(interpolation) ? static_cast<Kernel>(interpolation) : Kernel::bilinear;
}

const AxisWeights& bicubic_weights() {
    static const AxisWeights table = make_bicubic();
    return table;
}

const AxisWeights& bilinear_weights() {
    static const AxisWeights table = make_bilinear();
    return table;
}

Axis axis_of(const Sampler& sampler, int position) {
    const int index = position >> 7;
    const int fraction = position & 127;
    switch (sampler.kernel) {
        case Kernel::bicubic: return table_axis(bicubic_weights(), index, fraction);
        case Kernel::tent: return tent_axis(sampler.filter_radius, index, fraction);
        default: return table_axis(bilinear_weights(), index, fraction);
    }
}

double axis_sum(const Sampler& sampler) {
    return sampler.kernel == Kernel::tent ? 128.0 * (sampler.filter_radius + 1) * (sampler.filter_radius + 1)
                                          : 128.0;
}

Sampler::Sampler(Kernel chosen, int tent_radius, float gamma_value, Colour background_colour)
    : kernel(chosen),
      filter_radius(std::clamp(tent_radius, 1, 3)),
      gamma(gamma_value > 0.0F && std::isfinite(gamma_value) ? gamma_value : 1.0),
      background(background_colour) {
    linear_light = kernel != Kernel::nearest && (gamma < 0.99 || gamma > 1.01);
    if (linear_light) {
        for (std::size_t byte = 0; byte < light.size(); ++byte) {
            light[byte] = std::pow(static_cast<double>(byte), gamma);
        }
    }
}

Sample sample_pixel(const Sampler& sampler, const ConstPicture& source, int x, int y) {
    if (sampler.kernel == Kernel::nearest) {
        return nearest_sample(sampler, source, x, y);
    }
    const std::uint8_t* centre = centre_pixel(sampler.kernel, source, x, y);
    if (centre == nullptr || is_colour(centre, sampler.background)) {
        return background_sample(sampler.background);
    }
    Sample sample;
    if (sampler.linear_light) {
        blend_linear_light(sampler, source, x, y, centre, sample);
    } else {
        blend(sampler, source, x, y, centre, sample);
    }
    if (sampler.kernel != Kernel::bilinear) {
        keep_from_background(sample.value, sampler.background);
    }
    return sample;
}

}  // namespace zemora
