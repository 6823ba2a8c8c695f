#include "driver/second_opinion.h"

#include <algorithm>
#include <cmath>

#include "driver/measuring.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

/// Agreement below which no correction is believed. Pairs of other pictures have reached 0.25, pairs full of
/// a pattern with a wrong correction 0.36; a sound start has 0.7 and more.
constexpr double kLeastAgreement = 0.38;

/// Why the start of the pair is in doubt; null where it is not.
const char* reason_of_doubt(const AnalysisState& analysis, int width, const MessageCatalogue& messages) {
    constexpr float kMostSpread = 0.01F;    // of the width
    constexpr float kMostRejected = 0.25F;  // of the cells
    if (analysis.ambiguous_shift) {
        return messages.either(
            {"two shifts fit about as well", "zwei Verschiebungen passen etwa gleich gut"});
    }
    if (analysis.first_grid_spread > kMostSpread * static_cast<float>(width)) {
        return messages.either(
            {"the heights of the first grid spread far", "die Hoehen des ersten Gitters streuen stark"});
    }
    if (analysis.rejected_share > kMostRejected) {
        return messages.either(
            {"many matches contradict the others", "viele Zuordnungen widersprechen den anderen"});
    }
    return nullptr;
}

/// Pixels of the reduced pair per input pixel.
double reduced_scale(const Pipeline& pipeline) {
    return static_cast<double>(pipeline.input.reduced_height()) / pipeline.input.height();
}

CorrectionValues reduced_values(const Pipeline& pipeline, const PairRun& pair) {
    return values_of(pair.correction, reduced_scale(pipeline));
}

int percent(double share) {
    constexpr double kPercent = 100.0;
    return round_half_up(kPercent * share);
}

void tell_no_correction(Voice& voice, double agreement) {
    voice.tell_everywhere(format_text(
        voice.messages().either(
            {"Left and right view match in several ways or not at all: the best correction fits %d %% of "
             "the\n"
             "picture. Are they views of one scene? Is a repeating pattern in front?\n",
             "Linke und rechte Ansicht passen auf mehrere Arten oder gar nicht zueinander: Die beste "
             "Korrektur\n"
             "passt zu %d %% des Bildes. Zeigen sie dieselbe Szene? Steht ein regelmaessiges Muster "
             "davor?\n"}),
        percent(agreement)));
}

/// Takes the best correction as the new start; the reduced pair has not been warped with it yet.
void take_start(Pipeline& pipeline, PairRun& pair, const CorrectionValues& best) {
    AnalysisState& analysis = pipeline.analysis;
    analysis.ErrorPixel_x = {};
    analysis.CQOK3 = {};
    pair.wide->guide_cells(analysis, best);
    analysis.previous_width = static_cast<float>(pipeline.input.reduced_width());
    pair.correction = correction_of(best, reduced_scale(pipeline));
    pair.reduced = true;
    pair.started_wide = true;
}

/// Whether the views overlap enough to be mounted, as phase 1 asks.
bool is_shift_too_large(const CorrectionValues& values, int width) {
    constexpr float kLargestShift = 0.25F;  // of the width
    return std::fabs(values.shift) >= kLargestShift * static_cast<float>(width);
}

/// `has_start`: there is a correction to compare with.
Opinion ask(Pipeline& pipeline, PairRun& pair, bool has_start) {
    constexpr double kClearlyMore = 1.05;
    Voice& voice = pipeline.voice;
    const std::string step =
        voice.messages().either({"Zemora::analyse:  phase 2: search far and wide           ",
                                 "Zemora::Analyse:    Phase 2: Suche weit und breit             "});
    pair.wide.emplace(pipeline.analysis, pipeline.input.reduced(), progress_of(pipeline, step));
    const std::optional<CorrectionValues> best = pair.wide->best_correction();
    if (!best) {
        return has_start ? Opinion::start_stays : Opinion::no_correction;
    }
    const double at_best = pair.wide->agreement(*best);
    const double at_start = has_start ? pair.wide->agreement(reduced_values(pipeline, pair)) : 0.0;
    pair.wide_agreement = std::max(at_best, at_start);
    if (pair.wide_agreement < kLeastAgreement) {
        tell_no_correction(voice, pair.wide_agreement);
        return Opinion::no_correction;
    }
    if (is_shift_too_large(*best, pipeline.input.reduced_width())) {
        return has_start ? Opinion::start_stays : Opinion::no_correction;
    }
    if (at_best < kClearlyMore * at_start) {
        return Opinion::start_stays;
    }
    if (!has_start) {  // the cells have searches of no use, perhaps of the pair before
        pipeline.analysis.TW_A = {};
        pipeline.analysis.DONE = {};
    }
    take_start(pipeline, pair, *best);
    return Opinion::new_start;
}

}  // namespace

Opinion ask_for_start(Pipeline& pipeline, PairRun& pair) {
    return pipeline.analysis.robust && !pair.wide ? ask(pipeline, pair, false) : Opinion::no_correction;
}

Opinion ask_after_round(Pipeline& pipeline, PairRun& pair) {
    const AnalysisState& analysis = pipeline.analysis;
    if (!analysis.robust) {
        return Opinion::start_stays;
    }
    Voice& voice = pipeline.voice;
    const char* reason = reason_of_doubt(analysis, pipeline.input.reduced_width(), voice.messages());
    if (!pair.wide && pair.iteration == 0 && reason != nullptr) {
        if (voice.verbose() > 0) {
            voice.print(
                format_text(voice.messages().either(
                                {"The start is doubtful (%s), it is looked for far and wide.\n",
                                 "Der Start ist zweifelhaft (%s), er wird weit und breit gesucht.\n"}),
                            reason));
        }
        return ask(pipeline, pair, true);
    }
    if (pair.wide && pair.reduced) {
        pair.wide->guide_cells(pipeline.analysis, reduced_values(pipeline, pair));
    }
    return Opinion::start_stays;
}

}  // namespace zemora
