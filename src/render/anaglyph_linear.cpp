#include "render/anaglyph_linear.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "numerics/rounding.h"
#include "platform/cpu.h"
#include "render/anaglyph_linear_rows.h"
#include "render/anaglyph_mixers.h"

namespace zemora {

namespace {

constexpr int kLevels = 256;
constexpr std::uint16_t kUnsure = 256;  ///< In place of a byte: the number decides, not its place.

using Kernel = void (*)(const LinearBlock&, const LinearRule&, LinearPlaces&);

Kernel usable_kernel() {
#if defined(__x86_64__)
    if (usable_instruction_set() != InstructionSet::portable) {
        return mix_linear_avx2;  // wider vectors gain nothing: taking pixels apart takes most of the time
    }
#endif
    return mix_linear_portable;
}

std::uint8_t byte_of(double value) {
    return static_cast<std::uint8_t>(std::clamp(round_half_up(value), 0, 255));
}

double limited(double value, double limit) {
    return std::min(std::max(0.0, value), limit);
}

/// A curve and its way back for one channel, in the colour file's form: a power with a straight foot.
class PowerCurve {
public:
    PowerCurve() = default;
    PowerCurve(double gamma, double gamma_back) : gamma_(gamma), gamma_back_(gamma_back) {
        const double above_one = gamma - 1.0;
        offset_ = above_one * above_one * 0.028061224489795925;
        foot_ = above_one * 0.039 / 1.4;
        scale_ = 1.0 + offset_;
        const double base = std::max(0.0, (foot_ + offset_) / scale_);
        slope_ = std::pow(base, gamma - 1.0) * gamma / scale_;
        bound_ = std::pow(base, gamma);
    }

    /// The linear light of a value of 0 to 1.
    [[nodiscard]] double into_light(double value) const {
        return value > foot_ ? std::pow(std::max(0.0, (value + offset_) / scale_), gamma_) : value * slope_;
    }
    /// The number that rounds to the byte of a light.
    [[nodiscard]] double back(double light) const {
        return light > bound_ ? (std::pow(light, gamma_back_) * scale_ - offset_) * 256.0
                              : light / slope_ * 256.0;
    }
    /// Whether the curve back has its kink between two lights.
    [[nodiscard]] bool bends_between(double low, double high) const { return low <= bound_ && bound_ < high; }
    /// How far a rounding in `back` can carry, far on the safe side.
    [[nodiscard]] double tolerance() const { return 1e-9 * scale_; }

private:
    double gamma_ = 1.0;
    double gamma_back_ = 1.0;
    double offset_ = 0.0;
    double foot_ = 0.0;
    double scale_ = 1.0;
    double slope_ = 1.0;
    double bound_ = 0.0;
};

/// The second curve of one channel: bytes by place. Where `kUnsure` stands, `curve` has the byte.
struct BackTable {
    std::vector<std::uint16_t> bytes;
    PowerCurve curve;
};

/// `AnaglyphType` 4, 5, 8 and 9.
class LinearMixer : public AnaglyphMixer {
public:
    LinearMixer() = default;

    bool mix(const std::uint8_t* left, const std::uint8_t* right, std::uint8_t* mixed,
             int count) const override {
        LinearBlock block;
        LinearPlaces places;
        for (int done = 0; done < count; done += kLinearBlock) {
            const int size = std::min(kLinearBlock, count - done);
            const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(done) * kPixelBytes;
            spread(left + at, size, block.left);
            spread(right + at, size, block.right);
            kernel_(block, rule, places);
            gather(block, places, size, mixed + at);
        }
        return true;
    }

    LinearRule rule{};
    double into[kLinearPlanes][kLevels]{};  ///< The first curve of red, green, blue.
    BackTable back[kLinearPlanes];

private:
    /// Takes pixels apart; behind the last one stands black.
    void spread(const std::uint8_t* pixels, int size, double (&planes)[kLinearPlanes][kLinearBlock]) const {
        for (int x = 0; x < size; ++x, pixels += kPixelBytes) {
            for (int k = 0; k < kLinearPlanes; ++k) {
                planes[k][x] = into[k][pixels[kPixelBytes - 1 - k]];
            }
        }
        for (auto& plane : planes) {
            std::fill(plane + size, plane + kLinearBlock, 0.0);
        }
    }

    void gather(const LinearBlock& block, const LinearPlaces& places, int size, std::uint8_t* mixed) const {
        for (int x = 0; x < size; ++x, mixed += kPixelBytes) {
            for (int k = 0; k < kLinearPlanes; ++k) {
                const std::uint16_t byte = back[k].bytes[static_cast<std::size_t>(places.channel[k][x])];
                mixed[kPixelBytes - 1 - k] =
                    byte == kUnsure ? exact(block, k, x) : static_cast<std::uint8_t>(byte);
            }
        }
    }

    [[nodiscard]] std::uint8_t exact(const LinearBlock& block, int k, int x) const {
        const double sum = limited_term(rule.left[k], block.left[0][x], block.left[1][x], block.left[2][x],
                                        rule.term_limit) +
                           limited_term(rule.right[k], block.right[0][x], block.right[1][x],
                                        block.right[2][x], rule.term_limit);
        return byte_of(back[k].curve.back(limited(sum, rule.sum_limit)));
    }

    Kernel kernel_ = usable_kernel();
};

/// Bytes by the place light * (count - 1), cut off; the last place is the light 1 alone.
std::vector<std::uint16_t> tabulated(const PowerCurve& curve, int count) {
    std::vector<std::uint16_t> bytes(static_cast<std::size_t>(count));
    const double steps = count - 1;
#pragma omp parallel for schedule(static)
    for (int i = 0; i < count; ++i) {
        const double low = i / steps;
        const double high = i + 1 < count ? (i + 1) / steps : low;
        const std::uint8_t lowest = byte_of(curve.back(low) - curve.tolerance());
        const std::uint8_t highest = byte_of(curve.back(high) + curve.tolerance());
        const bool is_sure = lowest == highest && !curve.bends_between(low, high);
        bytes[static_cast<std::size_t>(i)] = is_sure ? lowest : kUnsure;
    }
    return bytes;
}

/// The way of the standard colour space into light, value and light 0 to 1.
double light_of(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// Its way back, as a byte.
std::uint8_t byte_of_light(double light) {
    return byte_of(light <= 0.00313 ? light * 12.92 * 256.0
                                    : (std::pow(light, 1.0 / 2.4) * 1.055 - 0.055) * 256.0);
}

}  // namespace

void mix_linear_portable(const LinearBlock& block, const LinearRule& rule, LinearPlaces& places) {
    mix_linear_rows(block, rule, places);
}

MixerPointer make_optimised(const AnaglyphSettings& /*settings*/) {
    auto mixer = std::make_unique<LinearMixer>();
    mixer->rule = {
        {{0.65, 0.29, 0.06}, {0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}},
        {{0.0, 0.0, 0.0}, {0.15, 0.8, 0.05}, {0.15, 0.05, 0.8}},
        255.0,
        255.0,
        1.0,
        0.5,
    };
    for (int k = 0; k < kLinearPlanes; ++k) {
        mixer->back[k].bytes.resize(kLevels);
        for (int i = 0; i < kLevels; ++i) {
            mixer->into[k][i] = i;
            mixer->back[k].bytes[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(i);
        }
    }
    return mixer;
}

// The matrices are the least squares fit of E. Dubois, A projection method to generate anaglyph stereo
// images, 2001.
MixerPointer make_least_squares(const AnaglyphSettings& /*settings*/) {
    constexpr int kBackLevels = 1024;
    auto mixer = std::make_unique<LinearMixer>();
    mixer->rule = {
        {{0.437, 0.449, 0.164}, {-0.062, -0.062, -0.024}, {-0.048, -0.05, -0.017}},
        {{-0.011, -0.032, -0.007}, {0.377, 0.761, -0.009}, {-0.026, -0.093, 1.234}},
        1.0,
        (kBackLevels - 1.0) / kBackLevels,
        kBackLevels,
        0.5,
    };
    std::vector<std::uint16_t> bytes(kBackLevels);
    for (int i = 0; i < kBackLevels; ++i) {
        bytes[static_cast<std::size_t>(i)] = byte_of_light(static_cast<double>(i) / kBackLevels);
    }
    for (int k = 0; k < kLinearPlanes; ++k) {
        mixer->back[k].bytes = bytes;
        for (int i = 0; i < kLevels; ++i) {
            mixer->into[k][i] = static_cast<float>(light_of(static_cast<double>(i) / kLevels));
        }
    }
    return mixer;
}

MixerPointer make_by_colour_file(const AnaglyphSettings& settings) {
    constexpr int kBackLevels = 65537;
    const ColorManagement& colours = settings.colours;
    auto mixer = std::make_unique<LinearMixer>();
    mixer->rule.term_limit = mixer->rule.sum_limit = 1.0;
    mixer->rule.scale = kBackLevels - 1;
    for (std::size_t k = 0; k < kLinearPlanes; ++k) {
        std::copy(colours.left[k].begin(), colours.left[k].end(), mixer->rule.left[k]);
        std::copy(colours.right[k].begin(), colours.right[k].end(), mixer->rule.right[k]);
        const PowerCurve curve(colours.gamma_in[k], colours.gamma_out[k]);
        mixer->back[k] = {tabulated(curve, kBackLevels), curve};
        for (int i = 0; i < kLevels; ++i) {
            mixer->into[k][i] = curve.into_light(static_cast<double>(i) / kLevels);
        }
    }
    return mixer;
}

}  // namespace zemora
