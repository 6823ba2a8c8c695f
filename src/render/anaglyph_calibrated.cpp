// The mixes that weaken what shines through the wrong filter, as it was measured for a monitor or a print.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "numerics/rounding.h"
#include "render/anaglyph_greys.h"
#include "render/anaglyph_mixers.h"

namespace zemora {

namespace {

constexpr GreyShape kNeutral;

/// Greys of both views, 0 to 255.
struct Greys {
    double left;
    double right;
};

Greys greys_of(const std::uint8_t* left, const std::uint8_t* right) {
    return {grey_of(luminance(left), kNeutral), grey_of(luminance(right), kNeutral)};
}

/// The fraction is cut off; not-a-number gives 0.
std::uint8_t cut_to_byte(double value) {
    return value >= 255.0 ? 255 : (value > 0.0 ? static_cast<std::uint8_t>(value) : 0);
}

/// `AnaglyphType` 6: solves for the two lights that leave each eye its own grey.
class MonitorMixer : public AnaglyphMixer {
public:
    explicit MonitorMixer(const MonitorCalibration& calibration)
        : black_cyan_(calibration.black_cyan),
          black_red_(calibration.black_red),
          white_red_(calibration.white_red),
          white_cyan_(calibration.white_cyan) {}

    bool mix(const std::uint8_t* left, const std::uint8_t* right, std::uint8_t* mixed,
             int count) const override {
        for (int i = 0; i < count * kPixelBytes; i += kPixelBytes) {
            const Greys greys = greys_of(left + i, right + i);
            const Lights lights = solve(greys.left / 256.0, greys.right / 256.0);
            mixed[i + 2] = cut_to_byte(lights.red * 256.0);
            mixed[i + 1] = mixed[i] = cut_to_byte(lights.cyan * 256.0);
        }
        return true;
    }

private:
    struct Lights {
        double red;
        double cyan;
    };

    [[nodiscard]] Lights solve(double left, double right) const {
        constexpr int kMostRounds = 10;
        constexpr double kSmallChange = 0.001;
        Lights lights{(1.0 - left) * black_cyan_ + left, (1.0 - right) * black_red_ + right};
        for (int round = 0; round < kMostRounds; ++round) {
            const Lights last = lights;
            lights.red = ((1.0 - left - last.cyan) * black_cyan_ + left) /
                         (1.0 - black_cyan_ * last.cyan + white_red_ * last.cyan);
            lights.cyan = ((1.0 - right - last.red) * black_red_ + right) /
                          (1.0 - last.red * black_red_ + white_cyan_ * last.red);
            if (std::abs(lights.red - last.red) <= kSmallChange &&
                std::abs(lights.cyan - last.cyan) <= kSmallChange) {
                break;
            }
        }
        return lights;
    }

    double black_cyan_;
    double black_red_;
    double white_red_;
    double white_cyan_;
};

/// Brightness behind a filter by the amount of both inks, 0 to 255.
using Heights = std::vector<float>;

constexpr int kInks = 256;

std::size_t place_of(int red, int cyan) {
    return static_cast<std::size_t>(red) * kInks + static_cast<std::size_t>(cyan);
}

float height_at(const Heights& heights, int red, int cyan) {
    return heights[place_of(red, cyan)];
}

/// Walks one ink step by step towards its target.
class InkSearch {
public:
    explicit InkSearch(int start) : ink_(start) {}

    /// One step down or up. True when the search is done in this round: it stands at a limit, or the
    /// direction has just changed.
    bool step(bool down) {
        const int direction = down ? -1 : 1;
        const bool turned = direction + direction_ == 0;
        direction_ = direction;
        const int next = ink_ + direction;
        if (next < 0 || next >= kInks) {
            return true;
        }
        ink_ = next;
        return turned;
    }
    [[nodiscard]] int ink() const { return ink_; }

private:
    int ink_;
    int direction_ = 0;
};

/// `AnaglyphType` 7: looks for the inks that give each eye its grey on paper.
class PrintMixer : public AnaglyphMixer {
public:
    explicit PrintMixer(const PrintCalibration& calibration)
        : black_cyan_(calibration.black_cyan),
          black_red_(calibration.black_red),
          green_percent_(calibration.green_percent),
          red_heights_(kInks * kInks),
          cyan_heights_(kInks * kInks) {
        for (int i = 0; i < kInks; ++i) {
            for (int j = 0; j < kInks; ++j) {
                const std::size_t at = place_of(i, j);
                red_heights_[at] = red_height(calibration, i / 256.0, j / 256.0);
                cyan_heights_[at] = cyan_height(calibration, i / 256.0, j / 256.0);
            }
        }
    }

    bool mix(const std::uint8_t* left, const std::uint8_t* right, std::uint8_t* mixed,
             int count) const override {
        for (int i = 0; i < count * kPixelBytes; i += kPixelBytes) {
            if (!mix_pixel(greys_of(left + i, right + i), mixed + i)) {
                return false;
            }
        }
        return true;
    }

private:
    /// Paper white, the ink itself and what the other ink takes away.
    static float red_height(const PrintCalibration& c, double red, double cyan) {
        return static_cast<float>(
            c.white_red * std::pow(red, c.gamma_white_red_red) * std::pow(cyan, c.gamma_white_red_cyan) +
            red +
            std::pow(cyan, c.gamma_black_red_cyan) *
                (c.black_cyan * std::pow(1.0 - red, c.gamma_black_red_red) + c.shape_red * hump(red)));
    }
    static float cyan_height(const PrintCalibration& c, double red, double cyan) {
        return static_cast<float>(
            c.white_cyan * std::pow(cyan, c.gamma_white_cyan_cyan) * std::pow(red, c.gamma_white_cyan_red) +
            cyan +
            std::pow(red, c.gamma_black_cyan_red) *
                (c.black_red * std::pow(1.0 - cyan, c.gamma_black_cyan_cyan) + c.shape_cyan * hump(cyan)));
    }
    /// 0 for no ink and for full ink.
    static double hump(double ink) { return ink * ink * ink + ink - 2.0 * ink * ink; }

    [[nodiscard]] bool mix_pixel(const Greys& greys, std::uint8_t* pixel) const {
        constexpr int kMostRounds = 1000;
        const double left = greys.left / 256.0;
        const double right = greys.right / 256.0;
        const double red_target = black_cyan_ * (1.0 - left) + left;
        const double cyan_target = black_red_ * (1.0 - right) + right;
        InkSearch red(std::clamp(round_half_up(greys.left), 0, kInks - 1));
        InkSearch cyan(std::clamp(round_half_up(greys.right), 0, kInks - 1));
        for (int round = 0; round < kMostRounds; ++round) {
            const bool red_done = red.step(red_target <= height_at(red_heights_, red.ink(), cyan.ink()));
            const bool cyan_done = cyan.step(cyan_target <= height_at(cyan_heights_, red.ink(), cyan.ink()));
            if (red_done && cyan_done) {
                const std::int64_t green = static_cast<std::int64_t>(cyan.ink()) * green_percent_ / 100;
                pixel[2] = static_cast<std::uint8_t>(red.ink());
                pixel[1] = static_cast<std::uint8_t>(std::clamp<std::int64_t>(green, 0, kInks - 1));
                pixel[0] = static_cast<std::uint8_t>(cyan.ink());
                return true;
            }
        }
        return false;
    }

    double black_cyan_;
    double black_red_;
    int green_percent_;
    Heights red_heights_;
    Heights cyan_heights_;
};

}  // namespace

MixerPointer make_by_monitor(const AnaglyphSettings& settings) {
    return std::make_unique<MonitorMixer>(settings.monitor);
}

MixerPointer make_by_print(const AnaglyphSettings& settings) {
    return std::make_unique<PrintMixer>(settings.print);
}

}  // namespace zemora
