#include "config/rule_surroundings.h"

namespace zemora {

namespace {

/// "A, B and C".
std::string key_list(std::span<const Parameter> settings, const MessageCatalogue& messages) {
    std::string list;
    for (std::size_t i = 0; i < settings.size(); ++i) {
        const bool is_last = i + 1 == settings.size();
        list += i == 0 ? "" : is_last ? messages.either({" and ", " und "}) : ", ";
        list += row_of(settings[i]).key;
    }
    return list;
}

}  // namespace

Failure refused_settings(std::span<const Parameter> settings, const RuleSurroundings& surroundings,
                         const MessageCatalogue& messages) {
    std::string place;
    if (file_exists(surroundings.parameter_file)) {
        place = " in " + printable(surroundings.parameter_file);
    }
    Failure failure;
    failure.ends_run = true;
    failure.note.text = format_text(messages.either({"Please check %s%s.\n", "Bitte %s%s pruefen.\n"}),
                                    key_list(settings, messages).c_str(), place.c_str());
    return failure;
}

}  // namespace zemora
