#pragma once
/// The steps of the colour adaptation, on one pair of table planes.

#include <array>

#include "analysis/histogram.h"

namespace zemora {

/// One plane of a view's tables: entries in 8.8 fixed point.
using ToneLevels = std::array<std::uint16_t, kLevels>;

/// Both views of something.
template <class T>
struct BothViews {
    T left{};
    T right{};
};

/// Which view keeps its tone, by `ColorLeftRight`.
enum class ToneTarget { right = -1, mean = 0, left = 1 };
[[nodiscard]] ToneTarget tone_target(int color_left_right);

/// Identity, then the tables that bring both histograms together. `pixels` is the count of the
/// picture, from which the constant follows that fills empty bins.
[[nodiscard]] BothViews<ToneLevels> match_histograms(const BothViews<Histogram>& histograms,
                                                     ToneTarget target, std::int64_t pixels);

/// The same by straight lines between the percentiles, bent at the mean.
[[nodiscard]] BothViews<ToneLevels> match_lines(const BothViews<Histogram>& histograms, ToneTarget target);

/// Line y = slope x + offset on 8-bit levels that spreads the counted range over 1 to 245.
struct StretchLine {
    double slope = 1.0;
    double offset = 0.0;
    bool found = false;
};
[[nodiscard]] StretchLine stretch_line(const BothViews<Histogram>& histograms, ToneTarget target);
/// Applies the line, with a hard end or bent softly towards black and white.
void stretch_hard(ToneLevels& levels, const StretchLine& line);
void stretch_soft(ToneLevels& levels, const StretchLine& line);

/// Coefficient g of the curve g u^2 + (1 - g) u that brings the mean of the histogram to one half;
/// not limited; 0 for a histogram that says nothing.
[[nodiscard]] double gamma_coefficient(const Histogram& histogram);
/// Bends the entries by that curve.
void bend(ToneLevels& levels, double g);

}  // namespace zemora
