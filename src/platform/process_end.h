#pragma once
/// The one place that ends the process before the end of `main`.

#include <functional>

namespace zemora {

inline constexpr int kExitDone = 0;
inline constexpr int kExitFailure = 1;

/// What `end_process` does first, wherever in the program the end is called for: files of the run are
/// closed. An empty function takes it back.
void set_last_action(std::function<void()> action);

/// Does the last action, flushes the console, removes what the run keeps in its temporary folder and ends the process.
[[noreturn]] void end_process(int exit_code);

}  // namespace zemora
