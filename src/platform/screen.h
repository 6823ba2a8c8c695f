#pragma once
/// The screen of the user.

namespace zemora {

struct ScreenSize {
    int height = 1080;  ///< Pixels; where no screen can be asked.
    int width = 1920;
};

/// Size of the user's first screen. Only a desktop is asked: on a bare console the question would take it
/// over.
[[nodiscard]] ScreenSize screen_size();

}  // namespace zemora
