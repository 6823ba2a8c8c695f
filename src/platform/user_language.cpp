#include "platform/user_language.h"

#include <cstdlib>
#include <string_view>

namespace zemora {

bool user_speaks_german() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return std::string_view(value).substr(0, 2) == "de";
        }
    }
    return false;
}

}  // namespace zemora
