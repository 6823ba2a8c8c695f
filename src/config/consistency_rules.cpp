#include "config/consistency_rules.h"

#include <algorithm>
#include <limits>
#include <variant>

#include "config/codec_choice.h"
#include "config/number_scan.h"
#include "config/video_suffixes.h"

namespace zemora {

namespace {

enum class RuleScope { video, every };

/// What follows when a rule's texts are shown.
enum class RuleOutcome {
    stop,          ///< The settings are refused, which ends the run.
    wait_above_0,  ///< Wait for Enter when `StopAtError` is above 0.
    wait_above_1,
    go,
};

/// A text that a rule shows: a catalogue row, one of two languages, or two languages one after the
/// other, with the settled value of a setting in it or behind it.
struct RuleText {
    enum class Kind { none, row, either, both, name };
    Kind kind = Kind::none;
    Msg message{};
    BothTexts text{"", ""};
    std::variant<std::monostate, int ParameterSet::*, std::string ParameterSet::*> value{};
    int ParameterSet::*only_if_set = nullptr;  ///< Shown when this was not 0 before the change.
};

constexpr RuleText row(Msg message) {
    return {RuleText::Kind::row, message};
}
constexpr RuleText row(Msg message, int ParameterSet::*value) {
    return {RuleText::Kind::row, message, {"", ""}, value};
}
consteval RuleText either(const char* english, const char* german) {
    return {RuleText::Kind::either, {}, {english, german}};
}
consteval RuleText both(const char* german, const char* english) {
    return {RuleText::Kind::both, {}, {english, german}};
}
consteval RuleText name(const char* label, std::string ParameterSet::*value) {
    return {RuleText::Kind::name, {}, {label, label}, value};
}
constexpr RuleText if_set(int ParameterSet::*field, RuleText text) {
    text.only_if_set = field;
    return text;
}

struct RuleKeys {
    Parameter list[5];
    std::size_t count;
};
template <class... Keys>
constexpr RuleKeys keys(Keys... list) {
    return {{list...}, sizeof...(list)};
}

struct ConsistencyRule {
    RuleScope scope;
    int number;
    bool (*applies)(const ParameterSet& p, const RuleSurroundings& s);
    void (*change)(ParameterSet& p);
    RuleOutcome outcome;
    RuleKeys keys;
    RuleText texts[4];
};

// Conditions of the table. Options may set values far outside the limits of the file.

template <class... Values>
constexpr bool is_one_of(int value, Values... values) {
    return ((value == values) || ...);
}

constexpr bool exactly_one(int a, int b) {
    return (a != 0) != (b != 0);
}

constexpr bool differ_in_parity(int a, int b) {
    return (a & 1) != (b & 1);
}

/// Without running out of the range.
constexpr int negated(int value) {
    return -std::max(value, -std::numeric_limits<int>::max());
}

namespace layout = setting::stereo_image_input;

bool has_two_files(const ParameterSet& p) {
    return is_one_of(p.stereo_image_input, layout::two_files, layout::photo_and_depth_files);
}

bool has_one_file(const ParameterSet& p) {
    return is_one_of(p.stereo_image_input, layout::side_by_side, layout::half_width, layout::anaglyph,
                     layout::photo_and_depth_side_by_side, layout::phone_photo);
}

bool has_depth(const ParameterSet& p) {
    return p.stereo_image_input >= layout::photo_and_depth_files &&
           p.stereo_image_input <= layout::phone_photo;
}

bool stores_beside_input(const ParameterSet& p) {
    return is_one_of(p.left_right_output, setting::left_right_output::beside_input,
                     setting::left_right_output::with_eye_endings) ||
           p.stereo_output == setting::stereo_output::beside_input ||
           p.anaglyph_output == setting::anaglyph_output::beside_input;
}

/// A side of the framed picture is no multiple of 4, and no fixed size takes its place.
bool has_odd_framed_size(const ParameterSet& p) {
    const long height = 0L + p.output_height + p.frame_top + p.frame_bottom;
    const long width = 0L + p.output_width + p.frame_left_right + p.frame_central;
    return (p.fill_height == 0 && height % 4 != 0) || (p.fill_width == 0 && width % 4 != 0);
}

/// The nearest value to `FrameFloating` whose half fits into `FrameLeftRight`.
int allowed_floating(const ParameterSet& p) {
    const int limit = static_cast<int>(
        std::min(2L * std::max(p.frame_left_right, 0), 0L + std::numeric_limits<int>::max()));
    return std::clamp(p.frame_floating, -limit, limit);
}

/// All pictures of a show come out in one size.
bool has_fixed_show_size(const ParameterSet& p) {
    if (p.cropp_output == setting::cropp_output::common_area) {
        return (p.output_height != 0 || p.fill_height != 0) && (p.output_width != 0 || p.fill_width != 0);
    }
    return p.fill_height != 0 && p.fill_width != 0;
}

bool has_viewer(const RuleSurroundings& s, const std::string& viewer) {
    const std::string path = join_path(s.program_folder, "32/" + viewer);
    return file_exists(path) || file_exists(path + ".exe");
}

using enum Parameter;
using enum Msg;

constexpr ConsistencyRule kRules[] = {
#define RULE(scope, number, condition, change, outcome, keys, ...)                                    \
    {RuleScope::scope,                                                                                \
     number,                                                                                          \
     []([[maybe_unused]] const ParameterSet& p, [[maybe_unused]] const RuleSurroundings& s) -> bool { \
         return condition;                                                                            \
     },                                                                                               \
     []([[maybe_unused]] ParameterSet& p) { change; },                                                \
     RuleOutcome::outcome,                                                                            \
     keys,                                                                                            \
     {__VA_ARGS__}},
#include "config/consistency_rules.inc"
};

constexpr bool numbers_are_consecutive() {
    int number = 0;
    return std::all_of(std::begin(kRules), std::end(kRules),
                       [&number](const ConsistencyRule& rule) { return rule.number == ++number; });
}
static_assert(numbers_are_consecutive());

/// Where a row's text takes a value, it takes just the one that the row gives.
constexpr bool placeholders_have_values() {
    for (const ConsistencyRule& rule : kRules) {
        for (const RuleText& text : rule.texts) {
            const Placeholders wanted =
                placeholders_of(kMessageTable[static_cast<int>(text.message)].english);
            const bool has_number = std::holds_alternative<int ParameterSet::*>(text.value);
            if (text.kind == RuleText::Kind::row && wanted.count != 0 &&
                (!has_number || !(wanted == Placeholders{{'d'}, 1}))) {
                return false;
            }
        }
    }
    return true;
}
static_assert(placeholders_have_values());

std::string row_text(const RuleText& text, const ParameterSet& p, const MessageCatalogue& messages) {
    const char* raw = messages.raw(text.message);
    if (!std::holds_alternative<int ParameterSet::*>(text.value)) {
        return raw;
    }
    const int value = p.*std::get<int ParameterSet::*>(text.value);
    return placeholders_of(raw).count == 0 ? raw + number_text(value) : detail::format_unchecked(raw, value);
}

/// Always whole lines.
std::string shown_text(const RuleText& text, const ParameterSet& p, const MessageCatalogue& messages) {
    std::string shown;
    switch (text.kind) {
        case RuleText::Kind::none: return {};
        case RuleText::Kind::row: shown = row_text(text, p, messages); break;
        case RuleText::Kind::either: shown = messages.either(text.text); break;
        case RuleText::Kind::both: shown = std::string(text.text.german) + text.text.english; break;
        case RuleText::Kind::name:
            shown = text.text.english + printable(p.*std::get<std::string ParameterSet::*>(text.value));
            break;
    }
    return shown.ends_with('\n') ? shown : shown + '\n';
}

Result<void> conclude(const ConsistencyRule& rule, const RuleSurroundings& surroundings, Voice& voice) {
    switch (rule.outcome) {
        case RuleOutcome::stop:
            return refused_settings(std::span(rule.keys.list, rule.keys.count), surroundings,
                                    voice.messages());
        case RuleOutcome::wait_above_0: voice.wait(Severity::error); break;
        case RuleOutcome::wait_above_1: voice.wait(Severity::warning); break;
        case RuleOutcome::go: break;
    }
    return {};
}

Result<void> apply_rule(const ConsistencyRule& rule, ParameterSet& parameters,
                        const RuleSurroundings& surroundings, Voice& voice) {
    const ParameterSet before = parameters;
    rule.change(parameters);
    for (const RuleText& text : rule.texts) {
        if (text.only_if_set == nullptr || before.*text.only_if_set != 0) {
            voice.print(shown_text(text, parameters, voice.messages()));
        }
    }
    return conclude(rule, surroundings, voice);
}

/// `VideoMode` by the input: a video file or script, numbered pictures taken as a video, or pictures.
}  // namespace

int derived_video_mode(const ParameterSet& p) {
    if (p.input_mode == setting::input_mode::video_folders) {
        return setting::video_mode::images_as_video;
    }
    const bool is_video = p.input_mode == setting::input_mode::single &&
                          is_video_name(has_one_file(p) ? p.stereo_file_name : p.left_file_name);
    return is_video ? setting::video_mode::video : setting::video_mode::images;
}

Result<void> apply_consistency_rules(ParameterSet& parameters, const RuleSurroundings& surroundings,
                                     Voice& voice) {
    parameters.video_mode = derived_video_mode(parameters);
    if (Result<void> settled = settle_video_codec(parameters, surroundings, voice); !settled) {
        return settled;
    }
    const auto& encoder = surroundings.encoder_settings;
    settle_encoder_latency(parameters, voice, encoder ? &*encoder : nullptr);
    for (const ConsistencyRule& rule : kRules) {
        const bool in_scope =
            rule.scope == RuleScope::every || parameters.video_mode != setting::video_mode::images;
        if (in_scope && rule.applies(parameters, surroundings)) {
            if (Result<void> applied = apply_rule(rule, parameters, surroundings, voice); !applied) {
                return applied;
            }
        }
    }
    return {};
}

}  // namespace zemora
