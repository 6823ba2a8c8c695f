#include "render/anaglyph_greys.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "numerics/rounding.h"
#include "render/anaglyph_mixers.h"

namespace zemora {

namespace {

/// A byte from the number that is exact in double precision.
std::uint8_t byte_of(double value) {
    return static_cast<std::uint8_t>(std::clamp(round_half_up(value), 0, 255));
}

/// Whether the curve is so flat round a luminance that its rounding does not show in single precision.
bool is_flat(double luminance, double grey, const GreyShape& shape) {
    constexpr double kLuminanceError = 1e-12;
    constexpr double kAllowedError = 1e-8;  // as a share of the grey
    constexpr double kSmallest = 1e-30;
    constexpr double kLargest = 1e30;
    const double base = ((luminance - 128.0) * shape.density + 128.0) * shape.brightness;
    const double error = kLuminanceError * (std::abs(shape.density) + 1.0) * std::abs(shape.brightness);
    if (luminance == 0.0 || base < -error) {
        return grey < kLargest;  // black is one colour only; below 0 the curve is constant
    }
    return base > 0.0 && std::abs(shape.gamma) * error < kAllowedError * base && grey > kSmallest &&
           grey < kLargest;
}

/// The greys of both views.
struct GreyPair {
    explicit GreyPair(const AnaglyphSettings& settings)
        : left_shape{settings.density, settings.brightness, settings.gamma_red},
          right_shape{settings.density, settings.brightness, settings.gamma_cyan},
          left(left_shape),
          right(right_shape) {}

    GreyShape left_shape;
    GreyShape right_shape;
    GreyTable left;
    GreyTable right;
};

/// One output channel of `AnaglyphType` 0 and 1.
struct Share {
    double weight;
    bool is_left;
};

/// `AnaglyphType` 0, and 1 with colours: the mean of the view's channel and its weighted grey.
template <bool has_colours>
class GreyMixer : public AnaglyphMixer {
public:
    explicit GreyMixer(const AnaglyphSettings& settings) : greys_(settings) {
        // Channels of a pixel stand in the order blue, green, red.
        for (std::size_t c = 0; c < shares_.size(); ++c) {
            const float balance = settings.balance[shares_.size() - 1 - c];
            shares_[c] = {std::abs(balance), balance < 0.0F};
        }
    }

    bool mix(const std::uint8_t* left, const std::uint8_t* right, std::uint8_t* mixed,
             int count) const override {
        std::array<float, kPixelBytes> weights{};
        std::transform(shares_.begin(), shares_.end(), weights.begin(),
                       [](const Share& share) { return static_cast<float>(share.weight); });
        for (int x = 0; x < count; ++x, left += kPixelBytes, right += kPixelBytes, mixed += kPixelBytes) {
            const float left_grey = greys_.left.near_grey(left);
            const float right_grey = greys_.right.near_grey(right);
            for (std::size_t c = 0; c < shares_.size(); ++c) {
                const bool is_left = shares_[c].is_left;
                float value = weights[c] * (is_left ? left_grey : right_grey);
                if constexpr (has_colours) {
                    value = 0.5F * (static_cast<float>((is_left ? left : right)[c]) + value);
                }
                const int byte = sure_byte(value);
                mixed[c] = byte >= 0 ? static_cast<std::uint8_t>(byte) : exact(left, right, c);
            }
        }
        return true;
    }

private:
    [[nodiscard]] std::uint8_t exact(const std::uint8_t* left, const std::uint8_t* right,
                                     std::size_t channel) const {
        const Share& share = shares_[channel];
        const std::uint8_t* view = share.is_left ? left : right;
        const double grey =
            share.weight * grey_of(luminance(view), share.is_left ? greys_.left_shape : greys_.right_shape);
        return byte_of(has_colours ? 0.5 * (view[channel] + grey) : grey);
    }

    GreyPair greys_;
    std::array<Share, kPixelBytes> shares_{};
};

/// `AnaglyphType` 3: grey of the left view in red, colours of the right one without most of their red.
class HalfColourMixer : public AnaglyphMixer {
public:
    explicit HalfColourMixer(const AnaglyphSettings& settings)
        : shape_{settings.density, settings.brightness, settings.gamma_red},
          greys_(shape_),
          blends_(kLevels * kLevels) {
        for (std::size_t red = 0; red < kLevels; ++red) {
            for (std::size_t other = 0; other < kLevels; ++other) {
                blends_[red * kLevels + other] =
                    byte_of(0.7 * static_cast<double>(other) + 0.3 * static_cast<double>(red));
            }
        }
    }

    bool mix(const std::uint8_t* left, const std::uint8_t* right, std::uint8_t* mixed,
             int count) const override {
        for (int x = 0; x < count; ++x, left += kPixelBytes, right += kPixelBytes, mixed += kPixelBytes) {
            const std::uint8_t* blends = blends_.data() + right[2] * kLevels;
            mixed[0] = blends[right[0]];
            mixed[1] = blends[right[1]];
            const int byte = sure_byte(greys_.near_grey(left));
            mixed[2] =
                byte >= 0 ? static_cast<std::uint8_t>(byte) : byte_of(grey_of(luminance(left), shape_));
        }
        return true;
    }

private:
    static constexpr std::size_t kLevels = 256;
    GreyShape shape_;
    GreyTable greys_;
    std::vector<std::uint8_t> blends_;  ///< By red, then by the other channel.
};

}  // namespace

double grey_of(double luminance, const GreyShape& shape) {
    const double grey =
        std::max(0.0, ((luminance - 128.0) * shape.density + 128.0) * shape.brightness / 255.0);
    return 255.0 * (shape.gamma == 1.0 ? grey : std::pow(grey, shape.gamma));
}

GreyTable::GreyTable(const GreyShape& shape) : greys_(255 * (kRed + kGreen + kBlue) + 1) {
    const int count = static_cast<int>(greys_.size());
#pragma omp parallel for schedule(static)
    for (int i = 0; i < count; ++i) {
        const double y = i / 1000.0;
        const double grey = grey_of(y, shape);
        greys_[static_cast<std::size_t>(i)] =
            is_flat(y, grey, shape) ? static_cast<float>(grey) : std::numeric_limits<float>::quiet_NaN();
    }
}

MixerPointer make_mixed_greys(const AnaglyphSettings& settings) {
    return std::make_unique<GreyMixer<false>>(settings);
}

MixerPointer make_mixed_colours(const AnaglyphSettings& settings) {
    return std::make_unique<GreyMixer<true>>(settings);
}

MixerPointer make_half_colours(const AnaglyphSettings& settings) {
    return std::make_unique<HalfColourMixer>(settings);
}

}  // namespace zemora
