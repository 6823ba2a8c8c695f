#include "report/height_judgement.h"

#include <algorithm>
#include <cstddef>

namespace zemora {

namespace {

// The error that 95 % of the picture stay below, as a part of the picture's height, with the least limit in
// pixels: small pictures are not measured more finely.
constexpr double kGoodParts = 1000.0;
constexpr double kLeastGood = 0.5;
constexpr double kUnusableParts = 300.0;
constexpr double kLeastUnusable = 1.5;

constexpr double kLeastAgreement = 0.5;  // below it another correction may be the right one

constexpr int kLeastMatched = 6;  // tiles that make a check

// Facts of the causes.
constexpr int kFewTiles = kHeightCheckTiles / 3;  // with contrast
constexpr int kAmbiguousParts = 4;                // one of so many tiles is much
constexpr double kVeryDeep = 1.0 / 15.0;          // of the width, the limit of the judgement of the window
constexpr int kManyParts = 2;                     // one of so many tiles is enough to see a shape
constexpr double kSmooth = 4.0;  // the error is so many times larger than from neighbour to neighbour

constexpr BothTexts kVerdicts[] = {
    {"good", "gut"}, {"visible", "sichtbar"}, {"do not use", "nicht verwenden"}};

constexpr BothTexts kRemedies[] = {
    {"", ""},
    {"The scene is very deep, and near and far objects ask for different corrections: a shorter distance of "
     "the "
     "lenses helps, or a detail without the nearest objects.\n",
     "Die Szene ist sehr tief, nahe und ferne Teile verlangen verschiedene Korrekturen: eine kleinere Basis "
     "hilft, oder ein Ausschnitt ohne die naechsten Teile.\n"},
    {"Repeating patterns fit at several heights: please check the pair by eye, and if need be give the "
     "corrections "
     "by hand (EstimateGeometry 0).\n",
     "Muster, die sich wiederholen, passen in mehreren Hoehen: bitte das Bild mit dem Auge pruefen und die "
     "Korrekturen notfalls von Hand vorgeben (EstimateGeometry 0).\n"},
    {"Too little of the picture is sharp and rich in contrast: sharper views help, or corrections given by "
     "hand "
     "(EstimateGeometry 0).\n",
     "Zu wenig im Bild ist scharf und kontrastreich: schaerfere Ansichten helfen, oder von Hand vorgegebene "
     "Korrekturen (EstimateGeometry 0).\n"},
    {"The lenses draw differently towards the edges: please correct their distortion in both views before "
     "mounting.\n",
     "Die Objektive zeichnen zum Rand hin verschieden: bitte vor der Montage die Verzeichnung beider "
     "Ansichten "
     "korrigieren.\n"},
    {"The views do not agree everywhere: please check whether they belong together and whether something "
     "moved "
     "between the exposures.\n",
     "Die Ansichten stimmen nicht ueberall ueberein: bitte pruefen, ob sie zusammengehoeren und ob sich "
     "zwischen "
     "den Aufnahmen etwas bewegt hat.\n"},
};

static_assert(std::size(kVerdicts) == static_cast<std::size_t>(HeightVerdict::unchecked));
static_assert(std::size(kRemedies) == static_cast<std::size_t>(HeightCause::unclear) + 1);

HeightVerdict verdict_of(const HeightCheck& check) {
    const auto limit = [&check](double parts, double least) {
        return std::max(check.height_input_px / parts, least * check.pixel_input_px);
    };
    if (check.matched < kLeastMatched) {
        return HeightVerdict::unchecked;
    }
    if (check.most_input_px > limit(kUnusableParts, kLeastUnusable)) {
        return HeightVerdict::unusable;
    }
    const bool is_good =
        check.most_input_px <= limit(kGoodParts, kLeastGood) && check.agreement >= kLeastAgreement;
    return is_good ? HeightVerdict::good : HeightVerdict::visible;
}

HeightCause cause_of(const HeightCheck& check, double depth) {
    if (check.tiles < kFewTiles) {
        return HeightCause::sharpness;
    }
    if (check.ambiguous * kAmbiguousParts >= check.tiles || check.agreement < kLeastAgreement) {
        return HeightCause::pattern;
    }
    if (depth > kVeryDeep) {
        return HeightCause::depth;
    }
    const bool has_shape = check.matched * kManyParts >= check.tiles;
    return has_shape && check.most_input_px > kSmooth * check.rough_input_px ? HeightCause::distortion
                                                                             : HeightCause::unclear;
}

}  // namespace

HeightJudgement judge_heights(const HeightCheck& check, double depth) {
    const HeightVerdict verdict = verdict_of(check);
    return {verdict, verdict == HeightVerdict::good ? HeightCause::none : cause_of(check, depth)};
}

std::string height_remark(const HeightCheck& check, HeightVerdict verdict, const MessageCatalogue& messages) {
    if (verdict == HeightVerdict::unchecked) {
        return format_text(messages.either({" (could not be checked, %d of %d places were found again)",
                                            " (nicht pruefbar, %d von %d Stellen wurden wiedergefunden)"}),
                           check.matched, kHeightCheckTiles);
    }
    const BothTexts& words = kVerdicts[static_cast<std::size_t>(verdict)];
    return format_text(messages.either({" (median; 95 %% of the picture below %.2f pixel of the input): %s",
                                        " (Median; 95 %% des Bildes unter %.2f Pixel der Eingabe): %s"}),
                       check.most_input_px, messages.either(words));
}

std::string height_remedy(HeightCause cause, const MessageCatalogue& messages) {
    const BothTexts& words = kRemedies[static_cast<std::size_t>(cause)];
    return messages.either(words);
}

}  // namespace zemora
