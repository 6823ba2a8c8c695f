#include "platform/quiet_tiff.h"

#include <dlfcn.h>

#include <cstdarg>
#include <initializer_list>

namespace zemora {

namespace {

using Handler = void (*)(const char* module, const char* format, std::va_list values);
using SetHandler = Handler (*)(Handler);

/// The library comes with the image library and has no header here: its two setters are looked up by name.
bool silence() {
    for (const char* setter : {"TIFFSetWarningHandler", "TIFFSetErrorHandler"}) {
        if (auto* set = reinterpret_cast<SetHandler>(::dlsym(RTLD_DEFAULT, setter)); set != nullptr) {
            set(nullptr);
        }
    }
    return true;
}

}  // namespace

void silence_tiff_library() {
    [[maybe_unused]] static const bool silent = silence();
}

}  // namespace zemora
