#include "analysis/colormap.h"

#include <algorithm>
#include <span>

#include "analysis/tone_matching.h"

namespace zemora {

namespace {

/// What a mode of the adaptation does.
struct ToneMode {
    bool channels;  ///< Blue, green and red by themselves, else the grey plane.
    bool lines;     ///< Straight lines in place of whole histograms.
    enum class Stretch { none, soft, hard } stretch;
    bool gamma_always;
};

// clang-format off
constexpr std::array<ToneMode, 10> kModes = {{
    {false, false, ToneMode::Stretch::none, false},  // 1
    {false, false, ToneMode::Stretch::soft, false},  // 2
    {true,  false, ToneMode::Stretch::none, false},  // 3
    {true,  false, ToneMode::Stretch::soft, false},  // 4
    {false, true,  ToneMode::Stretch::none, false},  // 5
    {false, true,  ToneMode::Stretch::soft, false},  // 6
    {true,  true,  ToneMode::Stretch::none, false},  // 7
    {true,  true,  ToneMode::Stretch::soft, false},  // 8
    {false, false, ToneMode::Stretch::hard, true},   // 9
    {false, false, ToneMode::Stretch::soft, true},   // 10
}};
// clang-format on

/// Histograms of one view: the grey one alone, or blue, green, red.
using ViewHistograms = std::array<Histogram, kPixelBytes>;

ConstPicture counted_part(ConstPicture view, const CountRectangle* r) {
    const bool valid = r != nullptr && r->first_row >= 0 && r->first_row <= r->last_row &&
                       r->last_row < view.height && r->first_column >= 0 &&
                       r->first_column <= r->last_column && r->last_column < view.width;
    return valid ? view.part(r->first_column, r->first_row, r->last_column - r->first_column + 1,
                             r->last_row - r->first_row + 1)
                 : view;
}

/// The count from which the constant of the histogram matching follows: up to the far corner.
std::int64_t nominal_pixels(ConstPicture view, const CountRectangle* r) {
    const ConstPicture part = counted_part(view, r);
    if (r == nullptr || part.bits == view.bits) {
        return static_cast<std::int64_t>(part.width) * part.height;
    }
    return static_cast<std::int64_t>(r->last_column + 1) * (r->last_row + 1);
}

ViewHistograms count(ConstPicture view, bool channels, Colour passe) {
    if (channels) {
        return channel_histograms(view, passe);
    }
    return {grey_histogram(view, passe), {}, {}};
}

/// The planes that a mode works on.
std::span<ToneLevels> planes_of(ToneTables& tables, bool channels) {
    const std::span all(tables.plane);
    return channels ? all.subspan(1, kPixelBytes) : all.first(1);
}

/// The grey histogram as the tables would make it: each bin moves to the whole part of its entry.
/// With channels the three entries of a bin make one grey value, which takes their counts together.
Histogram mapped_histogram(const ViewHistograms& histograms, const ToneTables& tables, bool channels) {
    Histogram mapped{};
    const auto whole = [&tables](std::size_t plane, std::size_t i) { return tables.plane[plane][i] >> 8; };
    for (std::size_t i = 0; i < kLevels; ++i) {
        const int level = channels ? grey_value(whole(1, i), whole(2, i), whole(3, i)) : whole(0, i);
        std::uint32_t& bin = mapped[static_cast<std::size_t>(level)];
        bin += histograms[0][i];
        if (channels) {
            bin += histograms[1][i] + histograms[2][i];
        }
    }
    return mapped;
}

/// One run of the adaptation.
class Adaptation {
public:
    Adaptation(AnalysisState& state, const ToneMode& mode, const BothViews<ViewHistograms>& counts)
        : state_(state), mode_(mode), counts_(counts), target_(tone_target(state.options.color_left_right)) {}

    void match(std::int64_t pixels) {
        const auto left = planes_of(state_.tone_left, mode_.channels);
        const auto right = planes_of(state_.tone_right, mode_.channels);
        for (std::size_t c = 0; c < left.size(); ++c) {
            const BothViews<Histogram> histograms{counts_.left[c], counts_.right[c]};
            const BothViews<ToneLevels> matched = mode_.lines ? match_lines(histograms, target_)
                                                              : match_histograms(histograms, target_, pixels);
            left[c] = matched.left;
            right[c] = matched.right;
        }
    }

    void stretch() {
        const StretchLine line = stretch_line(mapped(), target_);
        if (!line.found || mode_.stretch == ToneMode::Stretch::none) {
            return;
        }
        for (ToneTables* tables : {&state_.tone_left, &state_.tone_right}) {
            for (ToneLevels& levels : planes_of(*tables, mode_.channels)) {
                if (mode_.stretch == ToneMode::Stretch::hard) {
                    stretch_hard(levels, line);
                } else {
                    stretch_soft(levels, line);
                }
            }
        }
    }

    void balance_gamma() {
        if (!mode_.gamma_always && state_.options.auto_gamma_adjust == setting::auto_gamma_adjust::off) {
            return;
        }
        const BothViews<Histogram> histograms = mapped();
        bend_view(state_.tone_left, gamma_coefficient(histograms.left));
        bend_view(state_.tone_right, gamma_coefficient(histograms.right));
    }

private:
    [[nodiscard]] BothViews<Histogram> mapped() const {
        return {mapped_histogram(counts_.left, state_.tone_left, mode_.channels),
                mapped_histogram(counts_.right, state_.tone_right, mode_.channels)};
    }
    /// How many times weaker the curve is than one that brings the mean to the middle.
    [[nodiscard]] static double gamma_divisor(int auto_gamma_adjust) {
        switch (auto_gamma_adjust) {
            case setting::auto_gamma_adjust::weak: return 3.0;
            case setting::auto_gamma_adjust::medium: return 2.0;
            default: return 1.0;
        }
    }
    void bend_view(ToneTables& tables, double g) const {
        if (!mode_.gamma_always) {
            g /= gamma_divisor(state_.options.auto_gamma_adjust);
        }
        for (ToneLevels& levels : planes_of(tables, mode_.channels)) {
            bend(levels, std::clamp(g, -1.0, 1.0));
        }
    }

    AnalysisState& state_;
    const ToneMode& mode_;
    const BothViews<ViewHistograms>& counts_;
    ToneTarget target_;
};

/// Dark colours that would come out as the passepartout colour are raised by the smallest amount.
void keep_from_passe_colour(ToneTables& tables, Colour passe) {
    constexpr std::size_t kDarkLevels = 10;
    const auto raise = [](std::uint16_t& level) {
        level = static_cast<std::uint16_t>(std::min(level + 1, 65535));
    };
    const auto whole = [&tables](std::size_t plane, std::size_t i) { return tables.plane[plane][i] >> 8; };
    for (std::size_t i = 0; i < kDarkLevels; ++i) {
        for (std::size_t j = 0; j < kDarkLevels; ++j) {
            for (std::size_t k = 0; k < kDarkLevels; ++k) {
                if (whole(0, i) == passe.blue && whole(0, j) == passe.green && whole(0, k) == passe.red) {
                    raise(tables.plane[0][i]);
                }
                if (whole(1, i) == passe.blue && whole(2, j) == passe.green && whole(3, k) == passe.red) {
                    raise(tables.plane[1][i]);
                }
            }
        }
    }
}

}  // namespace

void colormap_identity(AnalysisState& state) {
    state.tone_left = ToneTables::identity();
    state.tone_right = ToneTables::identity();
}

void colormap_adapt(AnalysisState& state, const StereoPicture& pair, const CountRectangle* rectangle,
                    int mode) {
    if (mode >= 1 && mode <= static_cast<int>(kModes.size())) {
        const ToneMode& how = kModes[static_cast<std::size_t>(mode - 1)];
        const BothViews<ViewHistograms> counts{
            count(counted_part(pair.left, rectangle), how.channels, state.options.passe_colour),
            count(counted_part(pair.right, rectangle), how.channels, state.options.passe_colour)};
        Adaptation adaptation(state, how, counts);
        adaptation.match(nominal_pixels(pair.left, rectangle));
        adaptation.stretch();
        adaptation.balance_gamma();
    }
    keep_from_passe_colour(state.tone_left, state.options.passe_colour);
    keep_from_passe_colour(state.tone_right, state.options.passe_colour);
}

}  // namespace zemora
