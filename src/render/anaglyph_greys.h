#pragma once
/// The grey of a pixel as an anaglyph shows it in one colour.

#include <cstdint>
#include <vector>

namespace zemora {

/// How greys are changed; each 1 when neutral.
struct GreyShape {
    double density = 1.0;
    double brightness = 1.0;
    double gamma = 1.0;
};

/// Luminance of a pixel, 0 to 255.
[[nodiscard]] inline double luminance(const std::uint8_t* pixel) {
    return 0.299 * pixel[2] + 0.587 * pixel[1] + 0.114 * pixel[0];
}

/// The grey of a luminance: not rounded, not limited above.
[[nodiscard]] double grey_of(double luminance, const GreyShape& shape);

/// The greys of all colours, worked out ahead to single precision.
class GreyTable {
public:
    explicit GreyTable(const GreyShape& shape);

    /// Near `grey_of`, by less than one part in 10^7; not-a-number where the curve is so steep that this
    /// cannot be said.
    [[nodiscard]] float near_grey(const std::uint8_t* pixel) const {
        return greys_[kRed * pixel[2] + kGreen * pixel[1] + kBlue * pixel[0]];
    }

private:
    // Luminance in 1/1000 is a whole number.
    static constexpr unsigned kRed = 299;
    static constexpr unsigned kGreen = 587;
    static constexpr unsigned kBlue = 114;
    std::vector<float> greys_;
};

/// The byte next to `value`, which is at least 0; -1 where the number that it stands for, by some parts in
/// 10^7, may round to another byte.
[[nodiscard]] inline int sure_byte(float value) {
    constexpr float kUnsure = 2e-4F;
    if (!(value < 256.0F)) {
        return value >= 256.0F ? 255 : -1;
    }
    const float raised = value + 0.5F;
    const int whole = static_cast<int>(raised);
    const float rest = raised - static_cast<float>(whole);
    if (rest < kUnsure || rest > 1.0F - kUnsure) {
        return -1;
    }
    return whole > 255 ? 255 : whole;
}

}  // namespace zemora
