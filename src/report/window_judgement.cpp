#include "report/window_judgement.h"

#include <algorithm>
#include <array>

namespace zemora {

namespace {

/// What stands in front of the verdicts.
enum class Preface { window_moved_back, ratio_assumed, ratio_given };

// Each list of verdicts has its hundred of keys.
constexpr int key(DepthVerdict verdict) {
    return static_cast<int>(verdict);
}
constexpr int key(NearVerdict verdict) {
    return 100 + static_cast<int>(verdict);
}
constexpr int key(EdgeVerdict verdict) {
    return 200 + static_cast<int>(verdict);
}
constexpr int key(FarVerdict verdict) {
    return 300 + static_cast<int>(verdict);
}
constexpr int key(Preface preface) {
    return 400 + static_cast<int>(preface);
}

struct JudgementText {
    int key;
    BothTexts words;
};

constexpr JudgementText kTexts[] = {
#define TEXT(list, verdict, english, german) {key(list::verdict), {english, german}},
#include "report/window_judgement_texts.inc"
#undef TEXT
};

constexpr const JudgementText* find_text(int wanted) {
    return std::find_if(std::begin(kTexts), std::end(kTexts),
                        [wanted](const JudgementText& text) { return text.key == wanted; });
}

constexpr bool have_texts(int first, int last) {
    for (int wanted = first; wanted <= last; ++wanted) {
        if (find_text(wanted) == std::end(kTexts)) {
            return false;
        }
    }
    return true;
}
static_assert(have_texts(key(DepthVerdict::unsuited), key(DepthVerdict::too_flat)));
static_assert(have_texts(key(NearVerdict::very_far_behind_unfavourable),
                         key(NearVerdict::probably_too_far_before)));
static_assert(have_texts(key(EdgeVerdict::not_judged), key(EdgeVerdict::no_violation)));
static_assert(have_texts(key(FarVerdict::painful), key(FarVerdict::too_near)));
static_assert(have_texts(key(Preface::window_moved_back), key(Preface::ratio_given)));

template <class Verdict>
const char* words_of(Verdict verdict, const MessageCatalogue& messages) {
    const JudgementText* text = find_text(key(verdict));
    return messages.either(text->words);
}

// Limits of deviation and far point, fractions of the projected width.
constexpr double kUnsuited = 1.0 / 15.0;
constexpr double kPrintOnly = 0.05;
constexpr double kCritical = 1.0 / 30.0;
constexpr double kTypical = 0.01;

// Limits of the near point behind the window, fractions of the projected width.
constexpr double kVeryFarBehind = 0.02;
constexpr double kFarBehind = 0.01;

constexpr double kLimitPerMille = 33.333;  // of the projected width; the recommended deviation
constexpr double kModestlyBefore = 0.6;    // of the far point's distance behind the window
constexpr double kRoomAtEdges = 150.0;     // parts of the width; above one the middle may come forward

/// Which range a figure lies in: 0 above the first of the falling limits, their count at or below the last.
template <std::size_t count>
std::size_t range_of(double figure, const std::array<double, count>& limits) {
    std::size_t range = 0;
    while (range < count && !(figure > limits[range])) {
        ++range;
    }
    return range;
}

/// The near point behind the window; `has_room` when the edges stand well behind the near point.
NearVerdict judge_behind(double near_point, double deviation, bool has_room) {
    using enum NearVerdict;
    const NearVerdict close = has_room ? close_behind_with_room : close_behind_favourable;
    const NearVerdict table[3][4] = {
        {very_far_behind_unfavourable, very_far_behind_in_print, very_far_behind,
         very_far_behind_unfavourable},
        {clearly_behind, too_far_behind_in_print, too_far_behind, clearly_behind_control},
        {close_behind, close, close, close_behind_favourable},
    };
    return table[range_of(near_point, std::array{kVeryFarBehind, kFarBehind})]
                [range_of(deviation, std::array{kUnsuited, kPrintOnly, kCritical})];
}

/// The near point before the window, and what that means for the edges.
void judge_before(WindowJudgement& judgement, bool cuts_edge) {
    using enum NearVerdict;
    constexpr NearVerdict kTable[3][4] = {
        {before_warning, before_warning, before, before_as_designed},
        {far_before, clearly_before, clearly_before, possibly_too_far_before},
        {extremely_before, extremely_before, extremely_before, probably_too_far_before},
    };
    const double u = judgement.far_point;
    const std::size_t column = range_of(judgement.deviation, std::array{kUnsuited, kPrintOnly, kTypical});
    const std::size_t row = judgement.near_point > -kModestlyBefore * u ? 0
                            : judgement.near_point > -u                 ? 1
                                                                        : 2;
    judgement.near_verdict = kTable[row][column];
    if (column == 1 && cuts_edge) {
        judgement.edges = EdgeVerdict::no_solution;
    } else if (column == 2) {
        judgement.edges = cuts_edge ? EdgeVerdict::violation : EdgeVerdict::no_violation;
    }
}

std::string ratio_text(const WindowJudgement& judgement, int projection_ratio,
                       const MessageCatalogue& messages) {
    return projection_ratio == setting::projection_ratio::none
               ? format_text(words_of(Preface::ratio_assumed, messages), judgement.picture_ratio,
                             judgement.limit_per_mille)
               : format_text(words_of(Preface::ratio_given, messages), judgement.projection_ratio,
                             judgement.picture_ratio, judgement.limit_per_mille);
}

}  // namespace

double projected_ratio(int projection_ratio, double picture_ratio) {
    switch (projection_ratio) {
        case setting::projection_ratio::ratio_4_3: return 1.333;
        case setting::projection_ratio::ratio_16_10: return 1.6;
        case setting::projection_ratio::ratio_16_9: return 1.777;
        case setting::projection_ratio::cinema: return 1.896;
        default: return picture_ratio;
    }
}

WindowJudgement judge_window(const WindowFigures& figures) {
    const double width = std::max(1, figures.width);
    WindowJudgement judgement;
    const double a = judgement.picture_ratio = width / std::max(1, figures.height);
    const double p = judgement.projection_ratio = projected_ratio(figures.projection_ratio, a);
    const double k = judgement.picture_share = a / std::max(a, p);
    judgement.limit_per_mille = kLimitPerMille * p / std::min(a, p);
    judgement.deviation = k * (figures.far_px - figures.near_px) / width;
    judgement.near_point =
        k * (std::min(figures.left_curtain_px, figures.right_curtain_px) + figures.near_px) / width;
    judgement.far_point = k * figures.far_px / width;
    judgement.window_moved_back =
        figures.estimate_window == setting::estimate_window::within_limit && figures.near_px < 0.0;
    const std::array limits{kUnsuited, kPrintOnly, kCritical, kTypical};
    judgement.depth = static_cast<DepthVerdict>(range_of(judgement.deviation, limits));
    judgement.far_verdict = static_cast<FarVerdict>(range_of(judgement.far_point, limits));
    const double edge_px = std::min(figures.left_edge_px, figures.right_edge_px);
    if (judgement.near_point > 0.0) {
        judgement.near_verdict = judge_behind(judgement.near_point, judgement.deviation,
                                              edge_px - figures.near_px > width / kRoomAtEdges);
    } else {
        judge_before(judgement, edge_px < 0.0);
    }
    return judgement;
}

std::vector<std::string> judgement_texts(const WindowJudgement& judgement, int projection_ratio,
                                         const MessageCatalogue& messages) {
    std::vector<std::string> texts;
    if (judgement.window_moved_back) {
        texts.emplace_back(words_of(Preface::window_moved_back, messages));
    }
    texts.push_back(ratio_text(judgement, projection_ratio, messages));
    texts.emplace_back(words_of(judgement.depth, messages));
    texts.push_back(std::string(words_of(judgement.near_verdict, messages)) +
                    words_of(judgement.edges, messages));
    texts.emplace_back(words_of(judgement.far_verdict, messages));
    return texts;
}

}  // namespace zemora
