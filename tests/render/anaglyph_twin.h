#pragma once
/// The anaglyph mixes pixel by pixel in double precision, without tables that are not part of the mix.

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "render/anaglyph_mix.h"

namespace zemora::testing {

/// Channels of a pixel by name.
struct Rgb {
    double r = 0;
    double g = 0;
    double b = 0;
};

class AnaglyphTwin {
public:
    explicit AnaglyphTwin(const AnaglyphSettings& settings) : s_(settings) {
        if (s_.type == 7) {
            build_heights();
        }
    }

    /// Nothing when the search of a print has no end.
    [[nodiscard]] std::optional<Colour> mix(Rgb l, Rgb r) const {
        const bool neutral = s_.type >= 6;
        const bool has_greys = s_.type <= 1 || s_.type == 3 || s_.type == 6 || s_.type == 7;
        const double left = has_greys ? grey(l, neutral ? 1.0 : s_.gamma_red, neutral) : 0.0;
        const double right = has_greys ? grey(r, neutral ? 1.0 : s_.gamma_cyan, neutral) : 0.0;
        switch (s_.type) {
            case 0:
                return colour(share(s_.balance[0], left, right), share(s_.balance[1], left, right),
                              share(s_.balance[2], left, right));
            case 1:
                return colour(mean(s_.balance[0], l.r, r.r, left, right),
                              mean(s_.balance[1], l.g, r.g, left, right),
                              mean(s_.balance[2], l.b, r.b, left, right));
            case 2: return colour(l.r, r.g, r.b);
            case 3: return colour(left, 0.7 * r.g + 0.3 * r.r, 0.7 * r.b + 0.3 * r.r);
            case 4:
                return colour(0.65 * l.r + 0.29 * l.g + 0.06 * l.b, 0.8 * r.g + 0.15 * r.r + 0.05 * r.b,
                              0.05 * r.g + 0.15 * r.r + 0.8 * r.b);
            case 6: return monitor(left / 256.0, right / 256.0);
            case 7: return print(left, right);
            case 8:
            case 9: return by_file(l, r);
            default: return least_squares(l, r);
        }
    }

private:
    static double q(double x) { return std::floor(x + 0.5); }
    static std::uint8_t byte(double x) {
        return static_cast<std::uint8_t>(std::isnan(x) ? 0.0 : std::clamp(x, 0.0, 255.0));
    }
    static Colour colour(double r, double g, double b) { return {byte(q(b)), byte(q(g)), byte(q(r))}; }

    [[nodiscard]] double grey(Rgb p, double gamma, bool neutral) const {
        const double y = 0.299 * p.r + 0.587 * p.g + 0.114 * p.b;
        const double density = neutral ? 1.0 : s_.density;
        const double brightness = neutral ? 1.0 : s_.brightness;
        const double g = ((y - 128) * density + 128) * brightness / 255;
        return 255 * std::pow(g < 0 ? 0 : g, gamma);
    }
    static double share(double f, double left, double right) { return f < 0 ? -f * left : f * right; }
    static double mean(double f, double l, double r, double left, double right) {
        return 0.5 * (f < 0 ? l - f * left : r + f * right);
    }

    static double limit(double x) { return x < 0 ? 0 : (x > 1 ? 1 : x); }
    static double table_light(double byte) {
        const double v = byte / 256;
        return static_cast<float>(v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4));
    }
    static double table_back(double sum) {
        const double v = std::clamp(q(sum * 1024), 0.0, 1023.0) / 1024;
        return v <= 0.00313 ? q(v * 12.92 * 256) : q((std::pow(v, 1 / 2.4) * 1.055 - 0.055) * 256);
    }
    static Colour least_squares(Rgb l, Rgb r) {
        l = {table_light(l.r), table_light(l.g), table_light(l.b)};
        r = {table_light(r.r), table_light(r.g), table_light(r.b)};
        return colour(table_back(limit(0.437 * l.r + 0.449 * l.g + 0.164 * l.b) +
                                 limit(-0.011 * r.r - 0.032 * r.g - 0.007 * r.b)),
                      table_back(limit(-0.062 * l.r - 0.062 * l.g - 0.024 * l.b) +
                                 limit(0.377 * r.r + 0.761 * r.g - 0.009 * r.b)),
                      table_back(limit(-0.048 * l.r - 0.05 * l.g - 0.017 * l.b) +
                                 limit(-0.026 * r.r - 0.093 * r.g + 1.234 * r.b)));
    }

    [[nodiscard]] Colour monitor(double l, double r) const {
        const double a = s_.monitor.black_cyan;
        const double b = s_.monitor.black_red;
        double x = (1 - l) * a + l;
        double y = (1 - r) * b + r;
        for (int round = 0; round < 10; ++round) {
            const double next_x = ((1 - l - y) * a + l) / (1 - a * y + s_.monitor.white_red * y);
            const double next_y = ((1 - r - x) * b + r) / (1 - x * b + s_.monitor.white_cyan * x);
            const bool settled = std::fabs(next_x - x) <= 0.001 && std::fabs(next_y - y) <= 0.001;
            x = next_x;
            y = next_y;
            if (settled) {
                break;
            }
        }
        const std::uint8_t cyan = byte(std::trunc(y * 256));
        return {cyan, cyan, byte(std::trunc(x * 256))};
    }

    void build_heights() {
        const PrintCalibration& p = s_.print;
        for (int i = 0; i < 256; ++i) {
            for (int j = 0; j < 256; ++j) {
                const double r = i / 256.0;
                const double c = j / 256.0;
                red_[i][j] = static_cast<float>(p.white_red * std::pow(r, p.gamma_white_red_red) *
                                                    std::pow(c, p.gamma_white_red_cyan) +
                                                r +
                                                std::pow(c, p.gamma_black_red_cyan) *
                                                    (p.black_cyan * std::pow(1 - r, p.gamma_black_red_red) +
                                                     p.shape_red * (r * r * r + r - 2 * r * r)));
                cyan_[i][j] = static_cast<float>(p.white_cyan * std::pow(c, p.gamma_white_cyan_cyan) *
                                                     std::pow(r, p.gamma_white_cyan_red) +
                                                 c +
                                                 std::pow(r, p.gamma_black_cyan_red) *
                                                     (p.black_red * std::pow(1 - c, p.gamma_black_cyan_cyan) +
                                                      p.shape_cyan * (c * c * c + c - 2 * c * c)));
            }
        }
    }

    /// One step of a search; whether it is done for this round.
    static bool walk(int& ink, int& direction, bool down) {
        const int last = direction;
        direction = down ? -1 : 1;
        if ((down && ink == 0) || (!down && ink == 255)) {
            return true;
        }
        ink += direction;
        return last != 0 && last != direction;
    }

    [[nodiscard]] std::optional<Colour> print(double left, double right) const {
        const double red_target = s_.print.black_cyan * (1 - left / 256) + left / 256;
        const double cyan_target = s_.print.black_red * (1 - right / 256) + right / 256;
        int xi = byte(q(left));
        int yi = byte(q(right));
        int red_direction = 0;
        int cyan_direction = 0;
        for (int round = 0; round < 1000; ++round) {
            const bool red_done = walk(xi, red_direction, red_target <= red_[xi][yi]);
            const bool cyan_done = walk(yi, cyan_direction, cyan_target <= cyan_[xi][yi]);
            if (red_done && cyan_done) {
                return Colour{byte(yi),
                              byte(std::trunc(static_cast<double>(yi) * s_.print.green_percent / 100)),
                              byte(xi)};
            }
        }
        return std::nullopt;
    }

    struct Curve {
        double g, h, o, t, s, slope, bound;
    };
    [[nodiscard]] Curve curve(std::size_t k) const {
        Curve c{};
        c.g = s_.colours.gamma_in[k];
        c.h = s_.colours.gamma_out[k];
        const double a = c.g - 1;
        c.o = a * a * 0.028061224489795925;
        c.t = a * 0.039 / 1.4;
        c.s = 1 + c.o;
        c.slope = std::pow(std::max(0.0, (c.t + c.o) / c.s), c.g - 1) * c.g / c.s;
        c.bound = std::pow(std::max(0.0, (c.t + c.o) / c.s), c.g);
        return c;
    }
    static double light(const Curve& c, double byte) {
        const double v = byte / 256;
        return v > c.t ? std::pow((v + c.o) / c.s, c.g) : v * c.slope;
    }
    [[nodiscard]] Colour by_file(Rgb l, Rgb r) const {
        const std::array<Curve, 3> c = {curve(0), curve(1), curve(2)};
        l = {light(c[0], l.r), light(c[1], l.g), light(c[2], l.b)};
        r = {light(c[0], r.r), light(c[1], r.g), light(c[2], r.b)};
        std::array<double, 3> out{};
        for (std::size_t k = 0; k < 3; ++k) {
            const auto& m = s_.colours.left[k];
            const auto& n = s_.colours.right[k];
            const double u = limit(limit(m[0] * l.r + m[1] * l.g + m[2] * l.b) +
                                   limit(n[0] * r.r + n[1] * r.g + n[2] * r.b));
            out[k] = u > c[k].bound ? (std::pow(u, c[k].h) * c[k].s - c[k].o) * 256 : u / c[k].slope * 256;
        }
        return colour(out[0], out[1], out[2]);
    }

    AnaglyphSettings s_;
    std::array<std::array<float, 256>, 256> red_{};
    std::array<std::array<float, 256>, 256> cyan_{};
};

}  // namespace zemora::testing
