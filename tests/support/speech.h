#pragma once
/// What is needed to speak to the user, in English, with the settings that rule it.

#include "config/voice.h"

namespace zemora::test {

struct Speech {
    ParameterSet parameters;
    Console console;
    MessageCatalogue messages{Language::english};
    Voice voice{console, messages, parameters};
};

}  // namespace zemora::test
