#include "analysis/second_opinion.h"

#include <algorithm>
#include <cmath>

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
    if (analysis.first_grid_spread_px > kMostSpread * static_cast<float>(width)) {
        return messages.either(
            {"the heights of the first grid spread far", "die Hoehen des ersten Gitters streuen stark"});
    }
    if (analysis.rejected_share > kMostRejected) {
        return messages.either(
            {"many matches contradict the others", "viele Zuordnungen widersprechen den anderen"});
    }
    return nullptr;
}

int percent(double share) {
    constexpr double kPercent = 100.0;
    return round_half_up(kPercent * share);
}

void tell_no_correction(Notes& notes, double agreement) {
    notes.tell_everywhere(format_text(
        notes.messages().either(
            {"Left and right view match in several ways or not at all: the best correction fits %d %% of "
             "the\n"
             "picture. Are they views of one scene? Is a repeating pattern in front?\n",
             "Linke und rechte Ansicht passen auf mehrere Arten oder gar nicht zueinander: Die beste "
             "Korrektur\n"
             "passt zu %d %% des Bildes. Zeigen sie dieselbe Szene? Steht ein regelmaessiges Muster "
             "davor?\n"}),
        percent(agreement)));
}

/// Whether the views overlap enough to be mounted, as phase 1 asks.
bool is_shift_too_large(const Correction& correction, int width) {
    constexpr float kLargestShift = 0.25F;  // of the width
    return static_cast<float>(std::fabs(correction.shift_px)) >= kLargestShift * static_cast<float>(width);
}

}  // namespace

/// Takes the best correction as the new start; the reduced pair has not been warped with it yet.
void SecondOpinion::take_start(const Correction& best, PairGeometry& geometry) {
    analysis_.dx = {};
    analysis_.valid = {};
    wide_->guide_cells(analysis_, best);
    analysis_.previous_width = static_cast<float>(reduced_.left.width);
    geometry.correction = best.scaled_down(scale_);
    geometry.started_wide = true;
}

/// `has_start`: there is a correction to compare with.
Opinion SecondOpinion::ask(PairGeometry& geometry, bool has_start) {
    constexpr double kClearlyMore = 1.05;
    const char* step =
        notes_.messages().either({"Zemora::analyse:  phase 2: search far and wide           ",
                                  "Zemora::Analyse:    Phase 2: Suche weit und breit             "});
    wide_.emplace(analysis_, reduced_, [this, step](double percent) { notes_.progress(step, percent); });
    const std::optional<Correction> best = wide_->best_correction();
    if (!best) {
        return has_start ? Opinion::start_stays : Opinion::no_correction;
    }
    const double at_best = wide_->agreement(*best);
    const double at_start =
        has_start ? wide_->agreement(geometry.correction.scaled(scale_).rounded_to_float()) : 0.0;
    geometry.agreement = std::max(at_best, at_start);
    if (geometry.agreement < kLeastAgreement) {
        tell_no_correction(notes_, geometry.agreement);
        return Opinion::no_correction;
    }
    if (is_shift_too_large(*best, reduced_.left.width)) {
        return has_start ? Opinion::start_stays : Opinion::no_correction;
    }
    if (at_best < kClearlyMore * at_start) {
        return Opinion::start_stays;
    }
    if (!has_start) {  // the cells have searches of no use, perhaps of the pair before
        analysis_.search_columns = {};
        analysis_.cell_course = {};
    }
    take_start(*best, geometry);
    return Opinion::new_start;
}

Opinion SecondOpinion::ask_for_start(PairGeometry& geometry) {
    return analysis_.options.robust && !wide_ ? ask(geometry, false) : Opinion::no_correction;
}

Opinion SecondOpinion::ask_after_round(PairGeometry& geometry, bool reduced) {
    if (!analysis_.options.robust) {
        return Opinion::start_stays;
    }
    const char* reason = reason_of_doubt(analysis_, reduced_.left.width, notes_.messages());
    if (!wide_ && geometry.rounds == 0 && reason != nullptr) {
        if (notes_.verbose() > 0) {
            notes_.print(
                format_text(notes_.messages().either(
                                {"The start is doubtful (%s), it is looked for far and wide.\n",
                                 "Der Start ist zweifelhaft (%s), er wird weit und breit gesucht.\n"}),
                            reason));
        }
        return ask(geometry, true);
    }
    if (wide_ && reduced) {
        wide_->guide_cells(analysis_, geometry.correction.scaled(scale_).rounded_to_float());
    }
    return Opinion::start_stays;
}

}  // namespace zemora
