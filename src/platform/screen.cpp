#include "platform/screen.h"

#include <SDL.h>

#include <cstdlib>

namespace zemora {

ScreenSize screen_size() {
    ScreenSize size;
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    if (wayland == nullptr && std::getenv("DISPLAY") == nullptr) {
        return size;
    }
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_VIDEODRIVER, wayland == nullptr ? "x11" : "wayland,x11");
    if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
        return size;
    }
    SDL_DisplayMode mode;
    if (SDL_GetDesktopDisplayMode(0, &mode) == 0 && mode.w > 0 && mode.h > 0) {
        size = {mode.h, mode.w};
    }
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
    return size;
}

}  // namespace zemora
