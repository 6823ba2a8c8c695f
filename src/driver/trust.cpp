#include "driver/trust.h"

#include <cmath>

namespace zemora {

namespace {

constexpr double kMostSize = 0.04;
constexpr double kMostAngle = 5.0 * kRadiansPerDegree;
constexpr double kMostRejected = 0.25;
constexpr double kLeastAgreement = 0.5;

constexpr BothTexts kReasons[] = {
    {"the views differ in size by more than 4 percent",
     "die Ansichten sind um mehr als 4 Prozent verschieden gross"},
    {"a rotation or vergence is above 5 degrees", "eine Drehung oder Vergenz liegt ueber 5 Grad"},
    {"more than a quarter of the matches contradict the others",
     "mehr als ein Viertel der Zuordnungen widerspricht den anderen"},
    {"the views match in more than one way, as patterns do",
     "die Ansichten passen auf mehr als eine Art zueinander, wie bei Mustern"},
    {"the remaining error of height is too large", "der verbliebene Hoehenfehler ist zu gross"},
};
static_assert(std::size(kReasons) == static_cast<std::size_t>(Doubt::height) + 1);

}  // namespace

std::vector<Doubt> doubts_of(const TrustFacts& facts) {
    const Correction& c = facts.correction;
    std::vector<Doubt> doubts;
    const auto add_if = [&doubts](bool doubtful, Doubt doubt) {
        if (doubtful) {
            doubts.push_back(doubt);
        }
    };
    add_if(std::fabs(c.size) > kMostSize, Doubt::size);
    add_if(std::fabs(c.rotation_rad) > kMostAngle || std::fabs(c.vergence_v_rad) > kMostAngle ||
               std::fabs(c.vergence_h_rad) > kMostAngle,
           Doubt::angle);
    add_if(facts.rejected_share > kMostRejected, Doubt::rejected);
    add_if(facts.agreement < kLeastAgreement, Doubt::pattern);
    add_if(facts.heights == HeightVerdict::unusable, Doubt::height);
    return doubts;
}

std::string doubt_text(const std::vector<Doubt>& doubts, const MessageCatalogue& messages) {
    std::string text;
    for (const Doubt doubt : doubts) {
        const BothTexts& reason = kReasons[static_cast<std::size_t>(doubt)];
        text +=
            text.empty() ? messages.either({"Not told as success: ", "Nicht als Erfolg gewertet: "}) : ", ";
        text += messages.either(reason);
    }
    return text.empty() ? text : text + ".\n";
}

}  // namespace zemora
